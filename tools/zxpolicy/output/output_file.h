// A file that is written whole or not at all.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "output/descriptor_output.h"

namespace tool {

// What is written goes to a temporary file in the same folder, which takes the name, and the mode of a file that has it
// already, when all is written. Otherwise it is removed, also on a signal that ends the program. There is one such file
// at a time. What is no regular file, such as a pipe or a terminal, and a file that the program has open for writing
// already, such as that of standard output, are written directly. Other names of the old file, made by ln, keep the old
// text.
class OutputFile {
public:
    // Throws a UsageError when it cannot be written, or is one of those that the command needs, which are `kept`; "-"
    // is standard input there.
    explicit OutputFile(const std::string& path, const std::vector<std::string>& kept = {});
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& stream() { return _stream; }
    // Puts what was written in place. Throws a ToolError.
    void keep();

private:
    void require(bool isDone) const;
    void openBeside(const std::string& target);
    void forgetTemporary();
    void discard();

    std::string _name;    // for messages
    std::string _target;  // whose place is taken: without symbolic links; empty for what is written directly
    std::string _temporary;
    int _descriptor = -1;
    std::optional<DescriptorBuffer> _buffer;
    std::ostream _stream{nullptr};
};

}  // namespace tool

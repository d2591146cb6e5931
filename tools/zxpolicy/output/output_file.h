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
// at a time. What is no regular file, such as a pipe or a terminal, and the file that standard output or standard error
// is, are written directly.
class OutputFile {
public:
    // Throws a UsageError when it cannot be written, or is one of those that the command needs, which are `kept`.
    explicit OutputFile(const std::string& path, const std::vector<std::string>& kept = {});
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& stream() { return _stream; }
    // Puts what was written in place. Throws a ToolError.
    void keep();

private:
    void require(bool isDone) const;
    void openBeside();
    void forgetTemporary();
    void discard();

    std::string _name;    // for messages
    std::string _target;  // without symbolic links
    std::string _temporary;
    int _descriptor = -1;
    std::optional<DescriptorBuffer> _buffer;
    std::ostream _stream{nullptr};
};

}  // namespace tool

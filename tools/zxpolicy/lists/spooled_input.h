// Standard input as a file that can be opened by a path.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace tool {

// Reads standard input to its end. Who gets the path waits for nobody who writes into a pipe, and needs no right to
// open the terminal, the pipe or the file of the user who started the program.
class SpooledInput {
public:
    // Throws a ToolError.
    SpooledInput();

    // Valid as long as the object.
    const std::string& path() const { return _path; }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Close> _file;  // has no name, and is gone with the last that has it open
    std::string _path;
};

}  // namespace tool

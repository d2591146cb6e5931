#include "lists/spooled_input.h"

#include <cerrno>
#include <cstring>

#include "tool_error.h"

namespace tool {

namespace {

void requireSpool(bool isGood) {
    if (!isGood)
        throw ToolError(kFailed, std::string("cannot keep standard input in a temporary file: ") +
                                     std::strerror(errno) + "; import a file instead");
}

}  // namespace

SpooledInput::SpooledInput() : _file(std::tmpfile()) {
    requireSpool(_file != nullptr);
    char buffer[65536];
    for (size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, stdin)) > 0;)
        requireSpool(std::fwrite(buffer, 1, count, _file.get()) == count);
    if (std::ferror(stdin) != 0) throw UsageError(std::string("cannot read standard input: ") + std::strerror(errno));
    requireSpool(std::fflush(_file.get()) == 0);
    _path = "/proc/self/fd/" + std::to_string(fileno(_file.get()));
}

}  // namespace tool

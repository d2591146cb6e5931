// Where finished log entries go.
#pragma once

#include <string>

namespace zxbase {

enum class LogKind { debug, application };

// Writes one entry, without its line end, to the target that the environment chose. An entry reaches standard error in
// one piece, so that entries of several threads and processes do not mix. What cannot be written is dropped.
void writeLogLine(LogKind kind, const std::string& line);

}  // namespace zxbase

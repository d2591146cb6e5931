// Turns foreign text into text that stays on one line of a log.
#pragma once

#include <string>

namespace zxbase {

// Appends `text` (null counts as empty) to `line`, control characters written as \xHH: those of ASCII, and those that
// UTF-8 writes in two bytes. So no text can end its entry early, forge another one, or steer a terminal.
void appendEscaped(std::string& line, const char* text);

}  // namespace zxbase

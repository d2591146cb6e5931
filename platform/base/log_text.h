// Turns foreign text into text that stays on one line of a log.
#pragma once

#include <string>

namespace zxbase {

// Appends `text` (null counts as empty) to `line`. Written as \xHH, byte by byte, is what could end the entry early,
// forge another one, steer a terminal or show the text in another order than it has: control characters (those of
// ASCII, U+0080 to U+009F), the separators of lines and paragraphs, marks of writing direction, and bytes that are no
// UTF-8.
void appendEscaped(std::string& line, const char* text);

}  // namespace zxbase

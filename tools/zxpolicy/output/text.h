// Small operations on texts: case, UTF-8, widths, and forms for a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// The text with ASCII letters in lower case; other bytes stay.
std::string lowerCase(std::string_view text);

// Decodes the UTF-8 sequence at `position` and moves past it. False when there is none: malformed, overlong, a
// surrogate or beyond U+10FFFF; `position` stays then.
bool nextCodePoint(std::string_view text, size_t& position, uint32_t& codePoint);

bool isUtf8(std::string_view text);

// Whether a character stays in its line, steers no terminal and leaves the order of its neighbours alone: no control
// character, separator of lines or paragraphs, or mark of writing direction.
bool isFitForLine(uint32_t codePoint);

// The number of columns that a terminal shows for the text: one per code point, none for colours.
size_t displayWidth(std::string_view text);

// The text as it may stand in a line of output: what is not fit for one, and bytes that are no UTF-8, as \xHH.
std::string oneLine(std::string_view text);

// The same in double quotes, with quotes and backslashes escaped, cut to about `most` characters.
std::string inQuotes(std::string_view text, size_t most = 60);

// A number with commas between thousands.
std::string grouped(uint64_t number);

// The same with what is counted, such as "1 mail" and "2 mails".
std::string counted(uint64_t number, const char* noun);

}  // namespace tool

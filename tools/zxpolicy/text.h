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

// The number of columns that a terminal shows for the text: one per code point.
size_t displayWidth(std::string_view text);

// The text with control characters as \xHH, so that it stays one line and steers no terminal.
std::string oneLine(std::string_view text);

// The text in double quotes with control characters, quotes and backslashes escaped, cut to about `most` characters.
std::string inQuotes(std::string_view text, size_t most = 60);

// A number with commas between thousands.
std::string grouped(uint64_t number);

}  // namespace tool

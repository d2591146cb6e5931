// How a text stands in a policy file.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// The text as a plain scalar where every YAML reader takes that as this text, else in double quotes; bytes that are
// no UTF-8 as !!binary.
std::string yamlText(std::string_view text);

// The same, never plain.
std::string yamlQuoted(std::string_view text);

}  // namespace tool

// What a pattern asks of one part of an address: of its local part, or of its domain.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The parts of an address.
enum class AddressPart { Name, Domain };

// The characters of a part that are kept; patterns and addresses are cut to them.
size_t longestText(AddressPart part);

// A pattern for one part, sorted by what deciding on it takes.
struct PartPattern {
    enum class Form {
        Everything,  // matches any text
        Literal,     // matches `text`, and nothing else
        Suffix,      // matches at least one more label before the labels in `text`
        Brackets,    // "[*]": any domain literal
        Irregular    // anything else: stars at other places, blanks, fifty labels and more
    };

    Form form = Form::Literal;
    bool isWhole = false;  // a domain literal: dots do not divide it
    std::string text;      // in lower case, without blanks around it

    // Tells patterns of a part from each other.
    std::string key() const {
        return std::string(1, static_cast<char>('0' + static_cast<int>(form))) + (isWhole ? '[' : '.') + text;
    }
};

// The pattern for the local part, or the domain, of a parsed pattern for addresses.
PartPattern localPartPattern(const char* text);
PartPattern domainPattern(const char* text);

// Whether the pattern matches a text, as the library decides it.
bool matchesPart(const PartPattern& pattern, const std::string& text);

// The text as comparisons see it: in lower case, without the blanks around it.
std::string comparedText(std::string_view text);

// The labels of such a text that count: its first fifty.
std::string countedLabels(const std::string& text);

// The most labels of a text that count.
constexpr size_t kMaxLabels = 50;

}  // namespace tool

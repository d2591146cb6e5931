#include "analysis/part_pattern.h"

#include <algorithm>

#include "output/text.h"
#include "pattern/ascii.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/wildcard_pattern.h"

namespace tool {

namespace {

// Whether comparing the text takes no interpretation.
bool isPlain(std::string_view text) {
    const auto isSpecial = [](char c) { return c == '*' || c == ' ' || (c >= '\t' && c <= '\r'); };
    return std::none_of(text.begin(), text.end(), isSpecial) &&
           static_cast<size_t>(std::count(text.begin(), text.end(), '.')) + 2 < kMaxLabels;
}

PartPattern partPattern(const char* text, bool isWhole) {
    PartPattern pattern;
    pattern.text = comparedText(text);
    pattern.isWhole = isWhole;
    const std::string_view all = pattern.text;
    if (ZxPolWildcardPattern(text, isWhole ? "" : ".", '\0').isSingleWildcard()) {
        pattern.form = PartPattern::Form::Everything;
        pattern.text.clear();
    } else if (isPlain(all)) {
        pattern.form = PartPattern::Form::Literal;
    } else if (all == "[*]" && isWhole) {
        pattern.form = PartPattern::Form::Brackets;
    } else if (all.substr(0, 2) == "*." && isPlain(all.substr(2)) && !isWhole) {
        pattern.form = PartPattern::Form::Suffix;
        pattern.text.erase(0, 2);
    } else {
        pattern.form = PartPattern::Form::Irregular;
    }
    return pattern;
}

}  // namespace

size_t longestText(AddressPart part) {
    return part == AddressPart::Name ? ZxPolCondWildcardPattern::maxName : ZxPolCondWildcardPattern::maxDomain;
}

PartPattern localPartPattern(const char* text) {
    return partPattern(text, false);
}

PartPattern domainPattern(const char* text) {
    const std::string_view domain = text;
    return partPattern(text, domain.size() >= 2 && domain.front() == '[' && domain.back() == ']');
}

bool matchesPart(const PartPattern& pattern, const std::string& text) {
    const std::string whole = pattern.form == PartPattern::Form::Everything ? "*"
                              : pattern.form == PartPattern::Form::Suffix   ? "*." + pattern.text
                                                                            : pattern.text;
    return ZxPolWildcardPattern(whole.c_str(), pattern.isWhole ? "" : ".", '\0') == text.c_str();
}

std::string comparedText(std::string_view text) {
    while (!text.empty() && zxpol::isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && zxpol::isBlank(text.back()))
        text.remove_suffix(1);
    return lowerCase(text);
}

std::string countedLabels(const std::string& text) {
    size_t end = 0;
    for (size_t labels = 0; labels < kMaxLabels; ++labels) {
        end = text.find('.', end);
        if (end == std::string::npos) return text;
        ++end;
    }
    return text.substr(0, end - 1);
}

}  // namespace tool

// Wildcard and condition patterns against the slow matcher. The first line of an input holds the separators, behind a
// double quote where that quotes; the second is the pattern, the others are subjects.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "bytes.h"
#include "fail.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"
#include "pattern/wildcard_pattern.h"
#include "slow_condition.h"

using fuzz::shown;

namespace {

struct Case {
    std::string separators;
    char quote;
    std::string pattern;
    std::vector<std::string> subjects;
};

Case caseOf(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    Case made;
    made.separators = fuzz::upToNul(bytes.until('\n'));
    const bool isQuoting = !made.separators.empty() && made.separators[0] == '"';
    made.quote = isQuoting ? '"' : '\0';
    if (isQuoting) made.separators.erase(0, 1);
    made.separators.resize(std::min(made.separators.size(), ZxPolWildcardPattern::maxSeparators));
    made.pattern = fuzz::upToNul(bytes.until('\n'));
    for (const std::string& line : bytes.lines())
        made.subjects.push_back(fuzz::upToNul(line));
    return made;
}

void checkWildcard(const Case& given) {
    const ZxPolWildcardPattern pattern(given.pattern.c_str(), given.separators.c_str(), given.quote);
    ZxPolWildcardPattern assigned("x", given.separators.c_str(), given.quote);
    assigned = given.pattern.c_str();
    const bool cutsAtLetters = std::any_of(given.separators.begin(), given.separators.end(),
                                           [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; });
    for (const std::string& subject : given.subjects) {
        const bool right = slow::textMatches(given.pattern, subject, given.separators, given.quote);
        if ((pattern == subject.c_str()) != right) fuzz::fail("pattern " + shown(given.pattern) + shown(subject));
        // A letter may be a separator, and that in one case only.
        if (!cutsAtLetters && (pattern == oracle::lower(subject).c_str()) != right)
            fuzz::fail("letter case " + shown(subject));
        if ((assigned == subject.c_str()) != slow::textMatches(given.pattern, subject, "", given.quote))
            fuzz::fail("assigned pattern " + shown(given.pattern) + shown(subject));
    }
}

void checkCondition(const std::string& text, const std::string& subject) {
    ZxPolCondWildcardPattern pattern(text.c_str());
    const slow::Halves right = slow::halvesOf(text);
    fuzz::requireSame(right.name, std::string(pattern.getName()), "name of " + shown(text));
    fuzz::requireSame(right.domain, std::string(pattern.getDomain()), "domain of " + shown(text));
    const bool isMatch = slow::conditionMatches(text, subject);
    if ((pattern == subject.c_str()) != isMatch) fuzz::fail("condition " + shown(text) + shown(subject));
    if ((pattern == ZxPolCondWildcardPattern(subject.c_str())) != isMatch)
        fuzz::fail("condition pair " + shown(text) + shown(subject));
    for (const ZxPolMatchWeightType kind : {ZXPOL_WEIGHT_DOMAIN_FIRST, ZXPOL_WEIGHT_NAME_FIRST}) {
        const uint32_t weight = ZxPolPriority::calcWeight(pattern, kind);
        if (weight > ZxPolPriority::maxWeight()) fuzz::fail("weight of " + shown(text));
    }
}

// Where a pattern may be stored it is an address or stands for all; an address without a star may always be stored.
void checkValidity(const std::string& text) {
    const bool isPattern = ZxPolCondWildcardPattern::isPatternValid(text.c_str());
    const bool isAddress = slow::isAddress(text);
    const bool isWildcard = text == "*" || text == "*@*";
    if (isPattern && !isAddress && !isWildcard) fuzz::fail("taken as a pattern: " + shown(text));
    if (isAddress && text.find('*') == std::string::npos && !isPattern) fuzz::fail("no pattern: " + shown(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Case given = caseOf(data, size);
    checkWildcard(given);
    checkValidity(given.pattern);
    for (const std::string& subject : given.subjects) {
        checkCondition(given.pattern, subject);
        checkValidity(subject);
    }
    return 0;
}

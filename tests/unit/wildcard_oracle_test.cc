// The wildcard pattern against the slow oracle: all small cases, then random ones; and condition patterns of the
// accepted forms against plain string predicates.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "pattern/cond_wildcard_pattern.h"
#include "pattern/quick_match.h"
#include "pattern/rfc2822_checker.h"
#include "pattern/wildcard_pattern.h"
#include "support/wildcard_oracle.h"

namespace {

// All texts over an alphabet up to a length, the empty one included.
std::vector<std::string> allTexts(const std::string& alphabet, size_t maxLength) {
    std::vector<std::string> texts{""};
    for (size_t begin = 0, length = 1; length <= maxLength; ++length) {
        const size_t end = texts.size();
        for (; begin < end; ++begin) {
            for (char c : alphabet)
                texts.push_back(texts[begin] + c);
        }
    }
    return texts;
}

// Compares every pattern with every subject.
void compareAll(const std::vector<std::string>& patterns, const std::vector<std::string>& subjects,
                const char* separators, char quote) {
    std::vector<oracle::Segments> cutSubjects;
    for (const std::string& subject : subjects)
        cutSubjects.push_back(oracle::parse(subject, separators, quote));
    for (const std::string& text : patterns) {
        const ZxPolWildcardPattern pattern(text.c_str(), separators, quote);
        const oracle::Segments cutPattern = oracle::parse(text, separators, quote);
        for (size_t i = 0; i < subjects.size(); ++i) {
            ASSERT_EQ(pattern == subjects[i].c_str(), oracle::matches(cutPattern, subjects[i], cutSubjects[i]))
                << "pattern <" << text << "> subject <" << subjects[i] << "> separators <" << separators << ">";
        }
    }
}

TEST(WildcardOracle, AllSmallPatternsAndSubjectsCutAtDots) {
    compareAll(allTexts("ab.*", 5), allTexts("ab.", 5), ".", '\0');
}

TEST(WildcardOracle, AllLongerPatternsOfDotsAndStars) {
    compareAll(allTexts("a.*", 7), allTexts("a.", 7), ".", '\0');
}

TEST(WildcardOracle, AllSmallPatternsAndSubjectsUncut) {
    compareAll(allTexts("ab*", 6), allTexts("ab", 7), "", '\0');
}

TEST(WildcardOracle, AllSmallPatternsWithQuotes) {
    compareAll(allTexts("a.*\"", 5), allTexts("a.\"", 5), ".", '"');
}

TEST(WildcardOracle, AllSmallPatternsWithBlanksAndCase) {
    compareAll(allTexts("aA.* \r", 4), allTexts("aA. \r", 4), ".", '\0');
}

// The tokens that the real tokenizer leaves in the text.
std::vector<std::string> realTokens(std::string text, const char* separators, char quote) {
    unsigned int count = 77;
    EXPECT_EQ(ZxPolRfc2822Checker::getTokens(&text[0], separators, count, quote), &text[0]);
    std::vector<std::string> tokens;
    const char* token = text.c_str();
    for (unsigned int i = 0; i < count; ++i) {
        tokens.emplace_back(token);
        token += tokens.back().size() + 1;
    }
    return tokens;
}

TEST(WildcardOracle, AllSmallTextsAsTokens) {
    for (const std::string& text : allTexts("a.\"\\", 8)) {
        ASSERT_EQ(realTokens(text, ".", '"'), oracle::tokens(text, ".", '"')) << "<" << text << ">";
    }
    for (const std::string& text : allTexts("a.@\"", 6)) {
        ASSERT_EQ(realTokens(text, ".@", '"'), oracle::tokens(text, ".@", '"')) << "<" << text << ">";
        ASSERT_EQ(realTokens(text, ".@", '\0'), oracle::tokens(text, ".@", '\0')) << "<" << text << ">";
    }
}

class Dice {
public:
    Dice() {
        const char* given = std::getenv("ZX_SEED");
        _seed = given != nullptr ? std::strtoul(given, nullptr, 10) : std::random_device()();
        _engine.seed(static_cast<std::mt19937::result_type>(_seed));
    }

    unsigned long seed() const { return _seed; }
    size_t below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(_engine); }

    std::string text(const std::string& alphabet, size_t maxLength) {
        std::string result(below(maxLength + 1), ' ');
        for (char& c : result)
            c = alphabet[below(alphabet.size())];
        return result;
    }

    // A subject that has a chance to match: the pattern with its stars replaced.
    std::string fromPattern(const std::string& pattern, const std::string& alphabet) {
        std::string result;
        for (char c : pattern)
            result += c == '*' ? text(alphabet, 4) : std::string(1, c);
        return result;
    }

private:
    unsigned long _seed = 0;
    std::mt19937 _engine;
};

TEST(WildcardOracle, RandomTexts) {
    Dice dice;
    SCOPED_TRACE("ZX_SEED=" + std::to_string(dice.seed()));
    const std::string alphabets[] = {"ab.*", "aAbB.*\"\\ ", "a.*\t\r\n\x80\xff@", ".*", "xyz.....****[]"};
    const char* separatorSets[] = {".", "", ".@", "a", "A", "\"", "ab.@* ", ".."};
    const size_t lengths[] = {5, 12, 40, 200};
    for (int round = 0; round < 60000; ++round) {
        const std::string& alphabet = alphabets[dice.below(std::size(alphabets))];
        const char* separators =
            separatorSets[dice.below(4) > 0 ? dice.below(2) : dice.below(std::size(separatorSets))];
        const char quote = dice.below(3) == 0 ? '"' : '\0';
        const size_t length = lengths[dice.below(std::size(lengths))];
        const std::string pattern = dice.text(alphabet, length);
        const std::string subject =
            dice.below(2) == 0 ? dice.fromPattern(pattern, alphabet) : dice.text(alphabet, length);
        const oracle::Segments cutPattern = oracle::parse(pattern, separators, quote);
        const ZxPolWildcardPattern real(pattern.c_str(), separators, quote);
        ASSERT_EQ(real.segmentCount(), cutPattern.size()) << "<" << pattern << "> <" << separators << ">";
        for (unsigned int i = 0; i < real.segmentCount(); ++i)
            ASSERT_EQ(real.segment(i), cutPattern[i]);
        ASSERT_EQ(real == subject.c_str(),
                  oracle::matches(cutPattern, subject, oracle::parse(subject, separators, quote)))
            << "pattern <" << pattern << "> subject <" << subject << "> separators <" << separators << "> quote "
            << quote;
    }
}

// The short cut for everyday comparisons may leave an answer open, but may not give a wrong one.
void checkQuickAnswer(const std::string& pattern, const std::string& subject, const char* separators) {
    const zxpol::QuickAnswer quick = zxpol::quickMatch(pattern.c_str(), subject.c_str());
    if (quick == zxpol::QuickAnswer::unknown) return;
    const bool expected =
        oracle::matches(oracle::parse(pattern, separators, '\0'), subject, oracle::parse(subject, separators, '\0'));
    ASSERT_EQ(quick == zxpol::QuickAnswer::yes, expected) << "pattern <" << pattern << "> subject <" << subject << ">";
}

TEST(WildcardOracle, QuickAnswersAreRight) {
    const std::vector<std::string> subjects = allTexts("aA. \r", 4);
    for (const std::string& pattern : allTexts("a.* \r", 4)) {
        for (const std::string& subject : subjects)
            checkQuickAnswer(pattern, subject, ".");
    }
}

TEST(WildcardOracle, QuickAnswersAreRightAroundFiftySegments) {
    for (size_t dots = 45; dots <= 55; ++dots) {
        for (const char* patternHead : {"", "*.", "a"}) {
            std::string pattern = patternHead;
            for (size_t i = 0; i < dots; ++i)
                pattern += "a.";
            for (const char* subjectHead : {"", "b.", "a", "a.a."}) {
                for (const char* subjectTail : {"", "a", "a.", ".b"}) {
                    std::string subject = subjectHead;
                    for (size_t i = 0; i < dots; ++i)
                        subject += "a.";
                    checkQuickAnswer(pattern, subject + subjectTail, ".");
                }
            }
        }
    }
}

TEST(WildcardOracle, QuickAnswersAreGivenInEverydayCases) {
    using zxpol::QuickAnswer;
    using zxpol::quickMatch;
    EXPECT_EQ(quickMatch("*", "anything at all "), QuickAnswer::yes);
    EXPECT_EQ(quickMatch("mail.example.com", "Mail.Example.com"), QuickAnswer::yes);
    EXPECT_EQ(quickMatch("mail.example.com", "mail.example.org"), QuickAnswer::no);
    EXPECT_EQ(quickMatch("*.example.com", "mail.example.com"), QuickAnswer::yes);
    EXPECT_EQ(quickMatch("*.example.com", "example.com"), QuickAnswer::no);
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// What a pattern of an accepted form means, in terms of the whole texts.
bool nameMeans(const std::string& pattern, const std::string& name) {
    return pattern == "*" || oracle::lower(pattern) == oracle::lower(name);
}

bool domainMeans(const std::string& pattern, const std::string& domain) {
    if (pattern == "*") return true;
    if (pattern == "[*]") return domain.size() > 2 && domain.front() == '[' && domain.back() == ']';
    if (pattern[0] == '*') return endsWith(oracle::lower(domain), oracle::lower(pattern.substr(1)));
    return oracle::lower(pattern) == oracle::lower(domain);
}

TEST(WildcardOracle, AcceptedFormsMeanWhatTheySay) {
    const std::string names[] = {"*", "a", "A.b", "john.smith", "o'neil+tag"};
    const std::string patternDomains[] = {"*", "b", "a.b", "*.b", "*.a.b", "*.A.B", "[*]", "[10.0.0.1]", "[a]"};
    std::vector<std::string> domains;
    for (const std::string& text : allTexts("ab.", 5)) {
        if (!text.empty() && text[0] != '.') domains.push_back(text);
    }
    for (const char* more : {"[10.0.0.1]", "[10.0.0.2]", "[a]", "[A]", "[a.b]", "a.b.a.b.a.b", "x.a.b", "xa.b"}) {
        domains.emplace_back(more);
    }
    for (const std::string& name : names) {
        for (const std::string& domain : patternDomains) {
            const std::string text = name + "@" + domain;
            ASSERT_TRUE(ZxPolCondWildcardPattern::isPatternValid(text.c_str())) << text;
            const ZxPolCondWildcardPattern pattern(text.c_str());
            for (const char* addressName : {"a", "A", "a.B", "john.smith", "O'Neil+Tag", "b"}) {
                for (const std::string& addressDomain : domains) {
                    const std::string address = addressName + ("@" + addressDomain);
                    ASSERT_EQ(pattern == address.c_str(),
                              nameMeans(name, addressName) && domainMeans(domain, addressDomain))
                        << "pattern " << text << " address " << address;
                }
            }
        }
    }
}

}  // namespace

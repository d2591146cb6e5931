// The classes of addresses, held against all addresses over a small alphabet and the library's own answers.
#include "analysis/address_space.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>

#include "../support/experiment.h"
#include "addrlist/addr_cache.h"
#include "analysis/address_spelling.h"
#include "analysis/analysis_limit.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"
#include "small_policy.h"

namespace {

using tool::AddressClass;
using tool::AddressSpace;
using tool::allTexts;
using tool::MatchedTest;

// A test as the library carries it out.
struct Test {
    std::string pattern;  // where there is no list
    std::unique_ptr<ZxPolAddrCache> list;

    int weightOf(const std::string& address, ZxPolMatchWeightType type) const {
        const size_t colon = address.find(':');
        const std::string text = colon == std::string::npos ? address : address.substr(colon + 1);
        if (list != nullptr) {
            uint32_t weight = 0;
            return list->matchAddress(text.c_str(), &weight, type) ? static_cast<int>(weight) : -1;
        }
        const ZxPolCondWildcardPattern parsed(pattern.c_str());
        return parsed == text.c_str() ? static_cast<int>(ZxPolPriority::calcWeight(parsed, type)) : -1;
    }
};

class Tests {
public:
    explicit Tests(ZxPolMatchWeightType type) : _type(type), _space(type) {}

    void addPattern(const std::string& pattern) {
        _space.addPattern(_space.addTest(), pattern);
        _tests.push_back({pattern, nullptr});
    }

    void addList(const std::vector<std::string>& entries) {
        const uint32_t test = _space.addTest();
        auto list = std::make_unique<ZxPolAddrCache>();
        for (const std::string& entry : entries) {
            _space.addEntry(test, entry);
            int result = 0;
            list->insertAddress(entry.c_str(), ZxPolAddrCache::listOf(entry.c_str()), &result);
        }
        _tests.push_back({"", std::move(list)});
    }

    std::vector<AddressClass> classes() { return _space.classes(); }

    std::vector<MatchedTest> matchedBy(const std::string& address) const {
        std::vector<MatchedTest> matched;
        for (uint32_t i = 0; i < _tests.size(); ++i) {
            const int weight = _tests[i].weightOf(address, _type);
            if (weight >= 0) matched.push_back({i, static_cast<uint32_t>(weight)});
        }
        return matched;
    }

    std::string text() const {
        std::string text;
        for (const Test& test : _tests) {
            text += test.list == nullptr ? "\n  " + test.pattern : "\n  list:";
            for (uint32_t i = 0; test.list != nullptr && i < test.list->size(); ++i)
                text += std::string(" ") + test.list->getUserOrder(i);
        }
        return text;
    }

private:
    ZxPolMatchWeightType _type;
    AddressSpace _space;
    std::vector<Test> _tests;
};

std::string textOf(const std::vector<MatchedTest>& matched) {
    std::string text;
    for (const MatchedTest& test : matched)
        text += std::to_string(test.test) + ":" + std::to_string(test.weight) + " ";
    return text;
}

// What is wrong with the classes, or the empty text: one of which the witness is no member, two alike, or an address
// in none.
std::string faultOf(Tests& tests, const std::vector<std::string>& addresses) {
    std::map<std::vector<MatchedTest>, bool> known;
    for (const AddressClass& one : tests.classes()) {
        if (one.isMalformed && tool::isWellFormed(one.witness))
            return "the witness \"" + one.witness + "\" is well-formed, and its class is said to have no such address";
        if (tests.matchedBy(one.witness) != one.matched)
            return "the witness \"" + one.witness + "\" matches " + textOf(tests.matchedBy(one.witness)) +
                   "instead of " + textOf(one.matched);
        if (!known.emplace(one.matched, one.isMalformed).second) return "two classes match " + textOf(one.matched);
    }
    for (const std::string& address : addresses) {
        const auto found = known.find(tests.matchedBy(address));
        if (found == known.end()) return "\"" + address + "\" is in no class: " + textOf(tests.matchedBy(address));
        if (found->second && tool::isWellFormed(address))
            return "\"" + address + "\" is well-formed, and its class is said to have no such address";
    }
    return "";
}

// All pairs of a local part and a domain, and texts with quotes, colons and blanks.
std::vector<std::string> manyAddresses() {
    std::vector<std::string> addresses{
        "",      "@",     "\"\"",    " ",    " @ ",  "\"a@a\"",     "\"a@a\"@a", "x:a@a", "\" a\"@a", "a@a@a",
        "A@A.B", "x:a:b", "x:a:b@a", "x:a:", "x::b", "x:a@b@c:d@a", "(@a",       "a@(",   "\x80@a",   "a@\x80"};
    const std::vector<std::string> names = allTexts("ab.", 3);
    const std::vector<std::string> domains = allTexts("ab.", 4);
    for (const std::string& name : names)
        for (const std::string& domain : domains)
            addresses.push_back(name + "@" + domain);
    for (const std::string& name : names) {
        addresses.push_back(name);
        for (const std::string& inside : allTexts("a.", 2)) {
            addresses.push_back(name + "@[" + inside + "]");
            addresses.push_back(name + "@b.[" + inside);
            addresses.push_back("\"" + name + "@" + inside + "\"");
            addresses.push_back("\" " + name + "\"@" + inside);
        }
    }
    for (const std::string& text : allTexts("a. ", 4)) {
        addresses.push_back(text + "@b");
        addresses.push_back("b@" + text);
    }
    for (const std::string& text : allTexts("a.\"@", 5))
        addresses.push_back(text);
    for (const std::string& text : allTexts("a\"@\\", 4))
        addresses.push_back(text + "@b");
    return addresses;
}

class Random {
public:
    explicit Random(uint32_t seed) : _engine(seed) {}
    size_t below(size_t n) { return _engine() % n; }
    std::string pick(const std::vector<std::string>& from) { return from[below(from.size())]; }

    std::string text(const std::string& alphabet, size_t most) {
        std::string text;
        for (size_t length = below(most + 1); length > 0; --length)
            text += alphabet[below(alphabet.size())];
        return text;
    }

    // A pattern of the forms that the library accepts as valid.
    std::string validPattern() {
        const std::string label = pick({"a", "b", "ab"});
        const std::string name = pick({"*", "*", "a", "b", "a.b", "\"*\""});
        const std::string domain =
            pick({"*", "a", "b", "a.b", "b.a", "*.a", "*.b", "*.a.b", "*.b.b", "[*]", "[a]", "[a.a]"});
        return below(12) == 0 ? pick({"*", "*@*"}) : name + "@" + domain;
    }

    // Any text that a store might hold.
    std::string anyPattern() {
        const std::string name = text(below(3) == 0 ? "ab.*\" " : "ab.*", 4);
        const std::string domain = text(below(3) == 0 ? "ab.*[] " : "ab.*", 6);
        if (below(10) == 0) return name + "@[" + domain + "]";
        if (below(10) == 0) return "\"" + text("ab.*@\"\\", 4) + "\"@" + domain;
        return below(10) == 0 ? name : name + "@" + domain;
    }

    std::string address() {
        return pick({"a", "b", "a.b", "\"a\"", "\"a@b\""}) + "@" + pick({"a", "b", "a.b", "b.a", "a.a.b", "[a]"});
    }

    // Any plain text that a list might hold.
    std::string entry() {
        return below(8) == 0
                   ? pick({"a:b", "a", "a:", ":b", "a:b@a", "\"a@\"a\"@b", "\"\".a\"", "\"\\\"@\"", "\"@\"\".a"})
                   : address();
    }

private:
    std::mt19937 _engine;
};

void checkRandom(uint32_t seed, const std::vector<std::string>& addresses, bool onlyValid) {
    Random random(seed);
    Tests tests(random.below(2) == 0 ? ZXPOL_WEIGHT_DOMAIN_FIRST : ZXPOL_WEIGHT_NAME_FIRST);
    const auto pattern = [&] { return onlyValid ? random.validPattern() : random.anyPattern(); };
    for (size_t count = 1 + random.below(4); count > 0; --count) {
        if (random.below(3) != 0) {
            tests.addPattern(random.below(3) == 0 ? random.address() : pattern());
            continue;
        }
        std::vector<std::string> entries;
        for (size_t entry = random.below(5); entry > 0; --entry)
            entries.push_back(random.below(2) == 0 ? random.entry() : pattern());
        tests.addList(entries);
    }
    EXPECT_EQ(faultOf(tests, addresses), "") << "seed " << seed << tests.text();
}

std::vector<std::vector<MatchedTest>> matchedOf(Tests& tests) {
    std::vector<std::vector<MatchedTest>> all;
    for (const AddressClass& one : tests.classes())
        all.push_back(one.matched);
    return all;
}

// Labels beyond the fiftieth do not count for "*.b", and do for "[*]".
TEST(AddressSpace, KnowsADomainLiteralWhoseFirstFiftyLabelsEndOtherwise) {
    for (const char* other : {"*@*.b.c", "*@*.b*.c"}) {
        Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
        tests.addPattern("*@[*]");
        tests.addPattern(other);
        EXPECT_EQ(faultOf(tests, {}), "");
        EXPECT_EQ(matchedOf(tests).size(), 4U) << other;
    }
}

TEST(AddressSpace, TellsAnAddressOfAListFromThePatternOfTheSameText) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addPattern("a@b");
    tests.addList({"a@b"});
    EXPECT_EQ(faultOf(tests, {"a@b", "\" a\"@b", "\"a@b\"", "c@b"}), "");
    // Both; the pattern alone, with a blank that it does not see; the list alone, with quotes around the whole;
    // neither.
    EXPECT_EQ(matchedOf(tests).size(), 4U);
}

// Only quotes around the whole keep a pattern for the domain from what a list finds.
TEST(AddressSpace, TellsClassesWithoutAWellFormedAddress) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addPattern("*@b");
    tests.addList({"a@b"});
    std::vector<std::string> malformed;
    for (const AddressClass& one : tests.classes())
        if (one.isMalformed) malformed.push_back(one.witness);
    EXPECT_EQ(malformed, std::vector<std::string>{"\"a@b\""});
    // Another address of the list that is no member of the domain makes up for it.
    Tests others(ZXPOL_WEIGHT_DOMAIN_FIRST);
    others.addPattern("*@b");
    others.addList({"a@b", "c@d"});
    for (const AddressClass& one : others.classes())
        EXPECT_TRUE(tool::isWellFormed(one.witness) && !one.isMalformed) << one.witness;
}

TEST(AddressSpace, TakesInternationalisedAddressesAndTheNullSenderForWellFormed) {
    for (const char* address : {"a@b", "j\xC3\xBCrg@b", "", "smtp:a@b", "\"a b\"@b"})
        EXPECT_TRUE(tool::isWellFormed(address)) << address;
    for (const char* address : {"a", "a b@b", "\"a@b\"", "@b", "a@"})
        EXPECT_FALSE(tool::isWellFormed(address)) << address;
}

// What a pattern matches may depend on whether there is any text before it.
TEST(AddressSpace, TellsNothingReadFromTextThatChangesNothing) {
    const std::vector<std::string> addresses = manyAddresses();
    const std::vector<std::vector<std::string>> sets{
        {"* a@c"}, {"*.*@*", "*a@*", "@*"}, {"*@*.*", "*@*a", "*@"}, {"*@* a"}, {"*.*.*@*", "*b@*"}};
    for (const std::vector<std::string>& patterns : sets) {
        Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
        for (const std::string& pattern : patterns)
            tests.addPattern(pattern);
        EXPECT_EQ(faultOf(tests, addresses), "") << tests.text();
    }
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addPattern("* a@c");
    EXPECT_EQ(faultOf(tests, {"x a@c", "a@c", " a@c", "x@c"}), "");
}

// Of the longest domains the label before the suffix has room for a character, or for none.
TEST(AddressSpace, FindsTheLabelBeforeTheLongestSuffix) {
    for (size_t length = 249; length <= 256; ++length) {
        const std::string suffix = std::string(length - 2, 'd') + ".e";
        std::vector<std::string> addresses{"a@." + suffix, "a@" + suffix, "a@x." + suffix, "a@." + suffix + "e"};
        Tests one(ZXPOL_WEIGHT_DOMAIN_FIRST);
        one.addList({"*@*." + suffix, "*@x." + suffix, "*@*.e"});
        one.addPattern("*@*.e");
        one.addPattern("*@x." + suffix);
        EXPECT_EQ(faultOf(one, addresses), "") << length;
        // All labels of one letter have addresses of their own, and so has the empty one.
        Tests many(ZXPOL_WEIGHT_DOMAIN_FIRST);
        many.addPattern("*@*.e");
        many.addList({"*@*." + suffix});
        many.addPattern("*@." + suffix);
        for (char c = 'a'; c <= 'z'; ++c)
            many.addPattern(std::string("*@") + c + "." + suffix);
        addresses.push_back("a@0." + suffix);
        EXPECT_EQ(faultOf(many, addresses), "") << length;
        Tests names(ZXPOL_WEIGHT_DOMAIN_FIRST);
        names.addList({"*." + suffix + "@*", "x." + suffix + "@*"});
        names.addPattern("*.e@*");
        EXPECT_EQ(faultOf(names, {"." + suffix + "@a", "x." + suffix + "@a", "0." + suffix + "@a"}), "") << length;
    }
}

// The labels behind which the fiftieth ends may leave no room for names.
TEST(AddressSpace, FindsTheDomainLiteralOfFiftyLabelsBeforeALongSuffix) {
    for (const size_t length : {100U, 150U, 195U, 200U, 201U, 202U, 210U}) {
        const std::string suffix(length, 'd');
        Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
        tests.addPattern("*@[*]");
        tests.addPattern("*@*." + suffix);
        EXPECT_EQ(faultOf(tests,
                          {"a@[" + std::string(49, '.') + suffix + ".]", "a@[" + std::string(48, '.') + suffix + ".]"}),
                  "")
            << length;
    }
}

// The quotes of the one pattern, and what the other asks for, can stand side by side in some orders only.
TEST(AddressSpace, FindsALocalPartThatCanBeWritten) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addPattern("*\"*@*");
    tests.addPattern("\"*@b*\"@*");
    EXPECT_EQ(faultOf(tests, {"\"@b\"x\"@d", "\"@bx\"@d", "a\"a@d", "a@d"}), "");
    EXPECT_EQ(matchedOf(tests).size(), 4U);
}

TEST(AddressSpace, FindsTheEntryOfAListThatHoldsAColonAndNoAt) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addList({"a:b", "a:b@c", "plain"});
    tests.addPattern("a:b");
    tests.addPattern("a:b@*");
    tests.addPattern("b");
    EXPECT_EQ(faultOf(tests, {"a:b", "smtp:a:b", "smtp:a:b@", "smtp:a:b@c", "plain", "x:plain", "b"}), "");
}

// Local parts are cut at their length before quotes are taken off, and lists know them in full.
TEST(AddressSpace, FindsLongEntriesOfListsWithAndWithoutQuotes) {
    const std::string local(300, 'a');
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addList({local + "@b", local + "@"});
    tests.addPattern("\"*@*");
    EXPECT_EQ(faultOf(tests, {local + "@b", "\"" + local + "\"@b", local + "@", "\"" + local + "\"@", "\"x@b"}), "");
    EXPECT_EQ(matchedOf(tests).size(), 4U);
}

// An address that lists hold with any number of blanks around it is still the same for patterns.
TEST(AddressSpace, FindsAnAddressThatListsDoNotHold) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    tests.addPattern("a@b");
    tests.addList({"a@b", " a@b", "a@b ", "a @b", "a@ b", "  a@b"});
    EXPECT_EQ(faultOf(tests, {"a@b", "   a@b", "x@b"}), "");
    EXPECT_EQ(matchedOf(tests).size(), 4U);
}

// Every usual character begins a pattern of its own.
TEST(AddressSpace, FindsACharacterThatNoPatternNames) {
    const std::string blanks = " \t\n";
    for (const std::string spared : {"(", "\"", "\x80", ""}) {
        Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
        std::vector<std::string> entries;
        for (int c = 1; c < 256; ++c) {
            const char character = static_cast<char>(c);
            const bool isUpper = c >= 'A' && c <= 'Z';
            if (isUpper || character == '.' || blanks.find(character) != std::string::npos || spared[0] == character)
                continue;
            const bool isQuoted = character == '@';
            if (character != '*') entries.push_back(isQuoted ? "\"@*\"@*" : std::string(1, character) + "*@*");
        }
        tests.addList(entries);
        std::vector<std::string> addresses{"a@a",
                                           "(a@a",
                                           "\x80"
                                           "a@a",
                                           "\x01"
                                           "a@a",
                                           "\\a@a",
                                           "x::a@a",
                                           "*a@a",
                                           "]a@a",
                                           ".a@a"};
        EXPECT_EQ(faultOf(tests, addresses), "") << spared;
    }
}

TEST(AddressSpace, GivesUpWherePatternsCombineInTooManyWays) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    for (char c = 'a'; c <= 'z'; ++c)
        tests.addPattern(std::string("*") + c + "*@*");
    EXPECT_THROW(tests.classes(), tool::AnalysisLimit);
}

TEST(AddressSpace, TakesManyPatternsOfTheUsualForms) {
    Tests tests(ZXPOL_WEIGHT_DOMAIN_FIRST);
    std::vector<std::string> entries;
    for (int i = 0; i < 20000; ++i)
        entries.push_back((i % 2 == 0 ? "*@d" : "*@*.d") + std::to_string(i) + ".example");
    tests.addList(entries);
    for (int i = 0; i < 20000; ++i)
        entries[static_cast<size_t>(i)] = "n" + std::to_string(i) + (i % 2 == 0 ? "@*" : "@e.example");
    tests.addList(entries);
    EXPECT_EQ(faultOf(tests, {"n0@d0.example", "x@x.d1.example", "n1@e.example", "x@x"}), "");
}

TEST(AddressSpace, HoldsEveryAddressOfASmallAlphabetForValidPatterns) {
    const std::vector<std::string> addresses = manyAddresses();
    for (uint32_t seed = 1; seed <= zxtest::shortOrLong<uint32_t>(60, 4000) && !HasFailure(); ++seed)
        checkRandom(seed, addresses, true);
}

TEST(AddressSpace, HoldsEveryAddressOfASmallAlphabetForAnyPatterns) {
    const std::vector<std::string> addresses = manyAddresses();
    for (uint32_t seed = 1; seed <= zxtest::shortOrLong<uint32_t>(60, 4000) && !HasFailure(); ++seed)
        checkRandom(seed, addresses, false);
}

}  // namespace

// The classes of addresses, held against all addresses over a small alphabet and the library's own answers.
#include "analysis/address_space.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <set>

#include "../support/experiment.h"
#include "addrlist/addr_cache.h"
#include "analysis/part_automaton.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"

namespace {

using tool::AddressClass;
using tool::AddressSpace;
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
    std::set<std::vector<MatchedTest>> known;
    for (const AddressClass& one : tests.classes()) {
        if (tests.matchedBy(one.witness) != one.matched)
            return "the witness \"" + one.witness + "\" matches " + textOf(tests.matchedBy(one.witness)) +
                   "instead of " + textOf(one.matched);
        if (!known.insert(one.matched).second) return "two classes match " + textOf(one.matched);
    }
    for (const std::string& address : addresses)
        if (known.count(tests.matchedBy(address)) == 0)
            return "\"" + address + "\" is in no class: " + textOf(tests.matchedBy(address));
    return "";
}

// All texts of up to `length` characters.
std::vector<std::string> allTexts(const std::string& alphabet, size_t length) {
    std::vector<std::string> texts{""};
    for (size_t begin = 0; length > 0; --length) {
        const size_t end = texts.size();
        for (; begin < end; ++begin)
            for (char c : alphabet)
                texts.push_back(texts[begin] + c);
    }
    return texts;
}

// All pairs of a local part and a domain, and texts with quotes, colons and blanks.
std::vector<std::string> manyAddresses() {
    std::vector<std::string> addresses{"",          "@",     "\"\"",     " ",     " @ ",  "\"a@a\"",
                                       "\"a@a\"@a", "x:a@a", "\" a\"@a", "a@a@a", "A@A.B"};
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
        return below(10) == 0 ? name : name + "@" + domain;
    }

    std::string address() {
        return pick({"a", "b", "a.b", "\"a\"", "\"a@b\""}) + "@" + pick({"a", "b", "a.b", "b.a", "a.a.b", "[a]"});
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
            entries.push_back(random.below(2) == 0 ? random.address() : pattern());
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

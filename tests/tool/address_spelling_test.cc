// Addresses by their parts and by their sort keys, for all short texts that quotes can divide in strange ways.
#include "analysis/address_spelling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "../support/experiment.h"
#include "analysis/analysis_limit.h"
#include "small_policy.h"

namespace tool {

namespace {

const char* const kCharacters = "a.@\"\\";

bool haveSameParts(const AddressParts& a, const AddressParts& b) {
    return a.name == b.name && a.domain == b.domain;
}

}  // namespace

TEST(AddressSpelling, WritesEveryLocalPartAndDomain) {
    for (const std::string& text : allTexts(kCharacters, 6)) {
        const AddressParts parts = partsOf(text);
        const std::vector<std::string> found = spellings(parts.name, parts.domain);
        ASSERT_FALSE(found.empty()) << text;
        for (const std::string& spelling : found)
            ASSERT_TRUE(haveSameParts(partsOf(spelling), parts)) << text << " as " << spelling;
        ASSERT_TRUE(isLocalPart(parts.name) || parts.name.find("\\\"@") != std::string::npos) << text;
    }
}

TEST(AddressSpelling, FindsAnAddressForEachWayToDivideASortKey) {
    for (const std::string& text : allTexts(kCharacters, 5)) {
        const AddressParts parts = partsOf(text);
        const std::vector<std::string> found = addressesOfKey(parts.sortKey);
        const auto isAlike = [&](const std::string& address) { return haveSameParts(partsOf(address), parts); };
        ASSERT_TRUE(std::any_of(found.begin(), found.end(), isAlike)) << text;
        for (const std::string& address : found)
            ASSERT_EQ(partsOf(address).sortKey, parts.sortKey) << text;
    }
}

// Words in rows, of which not all places for quotes are tried.
TEST(AddressSpelling, FindsAnAddressForEachWayToQuoteManyWords) {
    const std::vector<std::string> words{"a",  "\"a",   "a\"",    "\"a\"",     "a\"a",
                                         "\\", "a\\\"", "\"\\\"", "\"a\\\"\"", "\"@\""};
    const auto texts = zxtest::shortOrLong<uint32_t>(300, 50000);
    std::mt19937 random(1);
    uint32_t decided = 0;
    for (uint32_t i = 0; i < texts; ++i) {
        std::string text = words[random() % words.size()];
        for (size_t count = 3 + random() % 4; count > 0; --count)
            text += "." + words[random() % 2 == 0 ? 0 : random() % words.size()];
        text += random() % 2 == 0 ? "@b" : "";
        const AddressParts parts = partsOf(text);
        std::vector<std::string> found;
        try {
            found = addressesOfKey(parts.sortKey);
        } catch (const AnalysisLimit&) {
            continue;
        }
        ++decided;
        ASSERT_TRUE(std::any_of(found.begin(), found.end(), [&](const std::string& address) {
            return haveSameParts(partsOf(address), parts) && (isWellFormed(address) || !isWellFormed(text));
        })) << text;
    }
    EXPECT_GT(decided, texts / 2);
}

TEST(AddressSpelling, TriesFewPlacesForQuotesInARowOfWords) {
    std::string entry = R"("a\"b")";
    for (char c = 'c'; c <= 'z'; ++c)
        entry.append(".").append(1, c);
    EXPECT_LE(addressesOfKey(partsOf(entry + "@x.example").sortKey).size(), 64U);
    const std::vector<std::string> found = addressesOfKey(partsOf(R"("a\"".b.c.d.e.f.g@x)").sortKey);
    for (const char* address : {R"("a\"".b.c.d.e.f.g@x)", R"("a\".b.c.d.e.f.g"@x)"})
        EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const std::string& one) {
            return haveSameParts(partsOf(one), partsOf(address)) && isWellFormed(one);
        })) << address;
}

TEST(AddressSpelling, TellsLocalPartsThatNoAddressHas) {
    for (const char* name : {"a\"@b", "\"@", "a.\"@.b.c.d.e.f", "a.\"@.b.c.d.e.f\\"}) {
        EXPECT_FALSE(isLocalPart(name)) << name;
        EXPECT_TRUE(spellings(name, "a").empty()) << name;
    }
    EXPECT_TRUE(spellings(std::string(255, 'a'), "b").empty());
    EXPECT_TRUE(spellings("a", std::string(256, 'b')).empty());
}

// What stands behind the end of a text that is cut for its length may still close its quotes.
TEST(AddressSpelling, WritesTheLongestLocalPartsThatBeginWithAQuote) {
    const std::string name = '"' + std::string(100, 'a') + "@" + std::string(152, 'a');
    const std::vector<std::string> found = spellings(name, "b");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(partsOf(found.front()).name, name);
    EXPECT_EQ(partsOf(found.front()).domain, "b");
}

TEST(AddressSpelling, WritesTheKindBeforeATextWithAColon) {
    EXPECT_EQ(spellings("a:b", ""), (std::vector<std::string>{"smtp:a:b", "smtp:a:b@"}));
    EXPECT_EQ(addressesOfKey("a:b"), std::vector<std::string>{"smtp:a:b"});
    EXPECT_EQ(partsOf("smtp:a:b").sortKey, "a:b");
}

TEST(AddressSpelling, GivesUpWhereQuotesStandInTooManyWays) {
    const std::string name = "\"\".@b.\"\".c.\"\".d.\"\".e";
    try {
        spellings(name, "i");
        FAIL();
    } catch (const AnalysisLimit& limit) {
        EXPECT_EQ(limit.localPart(), name);
    }
}

}  // namespace tool

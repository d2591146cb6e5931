// Addresses by their parts and by their sort keys, for all short texts that quotes can divide in strange ways.
#include "analysis/address_spelling.h"

#include <gtest/gtest.h>

#include <algorithm>

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
    EXPECT_THROW(spellings("\"\".@b.c.d.e.f.g.h", "i"), AnalysisLimit);
}

}  // namespace tool

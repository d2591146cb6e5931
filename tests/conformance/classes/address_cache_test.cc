// ZxPolAddrCache: finding, matching, weights and orders of the addresses of one list.
#include "addrlist/addr_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <random>
#include <vector>

#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"
#include "support/raw_store.h"

namespace {

using Lines = std::vector<std::string>;
constexpr auto exact = ZxPolAddrCache::ExactList;
constexpr auto wildcard = ZxPolAddrCache::WildCardList;

class AddressCache : public testing::Test {
protected:
    void SetUp() override { unsetenv("order"); }

    void insert(const Lines& addresses) {
        for (const std::string& address : addresses) {
            int error = ZXPOL_E_PARSE;
            cache.insertAddress(address.c_str(), ZxPolAddrCache::listOf(address.c_str()), &error);
            EXPECT_CODE(ZXPOL_S_OK, error);
        }
    }
    int remove(const char* address, ZxPolAddrCache::ListType type) {
        int error = ZXPOL_S_OK;
        cache.removeAddress(address, type, &error);
        return error;
    }
    Lines enumerated() {
        Lines found;
        for (uint32_t index = 0;; ++index) {
            char buffer[64];
            uint32_t size = sizeof buffer;
            int error = ZXPOL_S_OK;
            cache.enumAddress(index, buffer, &size, &error);
            if (error < 0) {
                EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
                return found;
            }
            found.emplace_back(buffer);
        }
    }
    Lines ordered(bool isAscending) {
        Lines found;
        for (uint32_t index = 0;; ++index) {
            const char* text = cache.getAlphaOrder(index, isAscending);
            if (text == nullptr) return found;
            found.emplace_back(text);
        }
    }
    // The weight of a match, or nothing.
    std::optional<uint32_t> weigh(const char* address, ZxPolAddrCache::ListType type,
                                  ZxPolMatchWeightType kind = ZXPOL_WEIGHT_DOMAIN_FIRST, uint32_t weight = 0) {
        EXPECT_EQ(cache.matchAddress(address, type, nullptr, kind), cache.matchAddress(address, type, &weight, kind));
        if (!cache.matchAddress(address, type, nullptr, kind)) return std::nullopt;
        return weight;
    }

    ZxPolAddrCache cache;
};

TEST_F(AddressCache, AStarChoosesTheList) {
    EXPECT_EQ(0u, static_cast<uint32_t>(wildcard));
    EXPECT_EQ(1u, static_cast<uint32_t>(exact));
    for (const char* address : {"*", "a@*", "*@b.c", "a*b@c", "\"*\"@c"})
        EXPECT_EQ(wildcard, ZxPolAddrCache::listOf(address)) << address;
    for (const char* address : {"", "a@b", "?@b"})
        EXPECT_EQ(exact, ZxPolAddrCache::listOf(address)) << address;
}

TEST_F(AddressCache, KeepsTheFirstOfEqualAddresses) {
    insert({"Some@b.c", "some@B.C", "Some@b.c", "\"SOME\"@b.c", "*@d.e", "*@D.E"});
    EXPECT_EQ((Lines{"Some@b.c", "*@d.e"}), enumerated());
    EXPECT_EQ(2u, cache.size());
    EXPECT_TRUE(cache.findAddress("\"some\"@b.c", exact));
    EXPECT_FALSE(cache.findAddress("some@b.c", wildcard));
    EXPECT_TRUE(cache.findAddress("*@D.e", wildcard));
    EXPECT_FALSE(cache.findAddress("*@D.e", exact));
    EXPECT_FALSE(cache.findAddress("some@b.cc", exact));
    EXPECT_FALSE(cache.findAddress("", exact));
}

TEST_F(AddressCache, TheCallerChoosesTheListNotTheAddress) {
    int error = ZXPOL_S_OK;
    cache.insertAddress("*@b.c", exact, &error);
    cache.insertAddress("d@e.f", wildcard, &error);
    EXPECT_FALSE(weigh("a@b.c", exact));
    EXPECT_EQ(5000u, weigh("*@b.c", exact));
    EXPECT_EQ(5000u, weigh("D@e.f", wildcard));
    EXPECT_EQ((Lines{"d@e.f", "*@b.c"}), ordered(true));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove("*@b.c", wildcard));
    EXPECT_CODE(ZXPOL_S_OK, remove("*@b.c", exact));
}

TEST_F(AddressCache, RemovingClosesTheGapInTheUserOrder) {
    insert({"c@x.y", "a@x.y", "b@x.y"});
    EXPECT_CODE(ZXPOL_S_OK, remove("C@x.y", exact));
    EXPECT_STREQ("a@x.y", cache.getUserOrder(0));
    EXPECT_STREQ("b@x.y", cache.getUserOrder(1));
    const ZxPolAddrCache::ItemList items = cache._itemsOf(exact);
    ASSERT_EQ(2u, items.size());
    EXPECT_STREQ("a@x.y", items[0].address);
    EXPECT_EQ(0u, items[0].position);
    EXPECT_EQ(1u, items[1].position);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove("c@x.y", exact));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove("a@x.y", wildcard));
    EXPECT_EQ((Lines{"a@x.y", "b@x.y"}), enumerated());
    insert({"c@x.y"});
    EXPECT_EQ((Lines{"a@x.y", "b@x.y", "c@x.y"}), enumerated());
    EXPECT_EQ(2u, cache._itemsOf(exact)[2].position);
}

TEST_F(AddressCache, DescendingBeginsAtTheNextToLastPlainAddress) {
    EXPECT_EQ(Lines{}, ordered(false));
    insert({"a@x.y"});
    EXPECT_EQ(Lines{}, ordered(false));
    EXPECT_EQ(Lines{"a@x.y"}, ordered(true));
    insert({"c@x.y", "b@x.y"});
    EXPECT_EQ((Lines{"b@x.y", "a@x.y"}), ordered(false));
    insert({"*@b.b", "*@a.a"});
    EXPECT_EQ((Lines{"*@b.b", "*@a.a", "b@x.y", "a@x.y"}), ordered(false));
    EXPECT_EQ((Lines{"*@a.a", "*@b.b", "a@x.y", "b@x.y", "c@x.y"}), ordered(true));
    EXPECT_EQ(nullptr, cache.getAlphaOrder(4, false));
    EXPECT_EQ(nullptr, cache.getAlphaOrder(5, false));
    EXPECT_EQ(nullptr, cache.getAlphaOrder(0xffffffffu, false));
    EXPECT_EQ(nullptr, cache.getAlphaOrder(0xffffffffu, true));
    EXPECT_EQ(nullptr, cache.getUserOrder(5));
}

TEST_F(AddressCache, DescendingWithWildcardsAloneIsComplete) {
    insert({"*@b.b", "*@c.c", "*@a.a"});
    EXPECT_EQ((Lines{"*@c.c", "*@b.b", "*@a.a"}), ordered(false));
}

TEST_F(AddressCache, TheLowerBoundIsTheFirstKeyNotLess) {
    const auto bound = [this](const char* key) { return cache._lowerBound(key, cache._itemsOf(exact)); };
    EXPECT_EQ(0u, bound("a"));
    insert({"\"bb\"@x.y", "D@x.y", "f@x.y", "d@x.z"});
    EXPECT_EQ(0u, bound(""));
    EXPECT_EQ(0u, bound("bb@x.y"));
    EXPECT_EQ(0u, bound("BB@X.Y"));
    EXPECT_EQ(1u, bound("bb@x.ya"));
    EXPECT_EQ(1u, bound("d@x.y"));
    EXPECT_EQ(2u, bound("D@X.Z"));
    EXPECT_EQ(3u, bound("e"));
    EXPECT_EQ(3u, bound("f@x.y"));
    EXPECT_EQ(4u, bound("f@x.yz"));
    EXPECT_EQ(4u, bound("zz"));
    EXPECT_EQ(0u, cache._lowerBound("zz", cache._itemsOf(wildcard)));
}

TEST_F(AddressCache, AnExactMatchWeighsMost) {
    insert({"Abc@d.e"});
    EXPECT_EQ(5000u, weigh("aBC@D.e", exact));
    EXPECT_EQ(5000u, weigh("\"abc\"@d.e", exact, ZXPOL_WEIGHT_NAME_FIRST));
    uint32_t weight = 77;
    EXPECT_FALSE(cache.matchAddress("x@d.e", exact, &weight, ZXPOL_WEIGHT_DOMAIN_FIRST));
    EXPECT_EQ(77u, weight);
}

TEST_F(AddressCache, TheLargestWeightOfAllWildcardsIsKept) {
    insert({"*", "user@*", "*@*.b.c", "user@*.b.c", "*@mail.b.c", "*@*"});
    EXPECT_EQ(4000u, weigh("user@mail.b.c", wildcard));
    EXPECT_EQ(4002u, weigh("user@mail.b.c", wildcard, ZXPOL_WEIGHT_NAME_FIRST));
    EXPECT_EQ(3002u, weigh("user@x.b.c", wildcard));
    EXPECT_EQ(2002u, weigh("other@x.b.c", wildcard, ZXPOL_WEIGHT_NAME_FIRST));
    EXPECT_EQ(3000u, weigh("other@mail.b.c", wildcard, ZXPOL_WEIGHT_NAME_FIRST));
    EXPECT_EQ(1000u, weigh("user@b.c", wildcard));
    EXPECT_EQ(0u, weigh("other@b.c", wildcard));
    EXPECT_EQ(4000u, weigh("user@mail.b.c", wildcard, static_cast<ZxPolMatchWeightType>(7)));
    // A weight never gets less.
    EXPECT_EQ(4500u, weigh("user@mail.b.c", wildcard, ZXPOL_WEIGHT_DOMAIN_FIRST, 4500));
    EXPECT_EQ(4000u, weigh("user@mail.b.c", wildcard, ZXPOL_WEIGHT_DOMAIN_FIRST, 3999));
}

TEST_F(AddressCache, AWildcardThatDoesNotMatchLeavesTheWeight) {
    insert({"*@mail.b.c"});
    uint32_t weight = 1234;
    EXPECT_FALSE(cache.matchAddress("a@b.c", wildcard, &weight, ZXPOL_WEIGHT_DOMAIN_FIRST));
    EXPECT_EQ(1234u, weight);
}

TEST_F(AddressCache, ClearingLeavesNothing) {
    insert({"a@b.c", "*@d.e"});
    cache.clear();
    EXPECT_EQ(Lines{}, enumerated());
    EXPECT_FALSE(cache.findAddress("a@b.c", exact));
    EXPECT_FALSE(weigh("x@d.e", wildcard));
    insert({"f@g.h", "a@b.c"});
    EXPECT_EQ((Lines{"f@g.h", "a@b.c"}), enumerated());
    EXPECT_EQ((Lines{"a@b.c", "f@g.h"}), ordered(true));
}

TEST_F(AddressCache, EnumeratingTellsTheSizeThatIsNeeded) {
    insert({"abc@d"});
    char buffer[8] = "???????";
    uint32_t size = 5;
    int error = ZXPOL_S_OK;
    cache.enumAddress(0, buffer, &size, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    EXPECT_EQ(6u, size);
    EXPECT_STREQ("???????", buffer);
    cache.enumAddress(0, buffer, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(6u, size);
    EXPECT_STREQ("abc@d", buffer);
    size = 8;
    cache.enumAddress(1, buffer, &size, &error);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
}

// Entries and addresses of any form, also such that no list accepts: the answer is that of comparing each pattern.
TEST_F(AddressCache, WildcardsOfAnyFormMatchAsTheirPatternsDo) {
    std::mt19937 random(4711);
    const char* const pieces[] = {"a", "b",  "ab", "*", "a*", "*b", ".", ".", "@",
                                  "@", "\"", "*.", "[", "]",  "A",  " ", "\\"};
    const auto text = [&] {
        std::string made;
        for (size_t count = random() % 8; count > 0; --count)
            made += pieces[random() % std::size(pieces)];
        return made;
    };
    int matches = 0;
    for (int round = 0; round < 4000; ++round) {
        ZxPolAddrCache some;
        int error = ZXPOL_S_OK;
        for (size_t count = random() % 6; count > 0; --count)
            some.insertAddress(text().c_str(), wildcard, &error);
        Lines entries;
        for (uint32_t at = 0; at < some.size(); ++at)
            entries.emplace_back(some.getUserOrder(at));
        for (int ask = 0; ask < 20; ++ask) {
            const std::string address = text();
            const auto kind = static_cast<ZxPolMatchWeightType>(random() % 2);
            uint32_t expected = 0, weight = 0;
            bool isMatch = false;
            for (const std::string& entry : entries) {
                const ZxPolCondWildcardPattern asked(address.c_str());
                ZxPolCondWildcardPattern pattern(entry.c_str());
                if (!(pattern == asked)) continue;
                isMatch = true;
                expected = std::max(expected, ZxPolPriority::calcWeight(pattern, kind));
            }
            matches += isMatch ? 1 : 0;
            ASSERT_EQ(isMatch, some.matchAddress(address.c_str(), wildcard, &weight, kind))
                << address << " in " << testing::PrintToString(entries);
            ASSERT_EQ(expected, weight) << address << " in " << testing::PrintToString(entries);
        }
    }
    EXPECT_GT(matches, 5000);
}

}  // namespace

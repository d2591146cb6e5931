// ZxPolAddrCache against the plainest list there is: random insertions and removals of texts of any form, and after
// each all orders, positions and lower bounds.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "addrlist/addr_cache.h"
#include "pattern/rfc2822_checker.h"
#include "support/raw_store.h"
#include "zxbase.h"

namespace {

using Lines = std::vector<std::string>;
using Type = ZxPolAddrCache::ListType;

std::string keyOf(const std::string& address) {
    std::string key(address.size() + 1, '\0');
    ZxPolRfc2822Checker::stripLocalPartBoundary(key.data(), address.c_str());
    return key.c_str();
}

bool isLess(const std::string& a, const std::string& b) {
    return kr_stricmp(keyOf(a).c_str(), keyOf(b).c_str()) < 0;
}
bool isEqual(const std::string& a, const std::string& b) {
    return kr_stricmp(keyOf(a).c_str(), keyOf(b).c_str()) == 0;
}

// The addresses in the order of insertion, each with its list.
class PlainCache {
public:
    bool has(const std::string& address, Type type) const { return find(address, type) != _entries.end(); }
    void insert(const std::string& address, Type type) {
        if (!has(address, type)) _entries.push_back({address, type});
    }
    bool remove(const std::string& address, Type type) {
        const auto found = find(address, type);
        if (found == _entries.end()) return false;
        _entries.erase(found);
        return true;
    }
    Lines userOrder() const {
        Lines all;
        for (const Entry& entry : _entries)
            all.push_back(entry.address);
        return all;
    }
    Lines sorted(Type type) const {
        Lines some;
        for (const Entry& entry : _entries) {
            if (entry.type == type) some.push_back(entry.address);
        }
        std::sort(some.begin(), some.end(), isLess);
        return some;
    }
    Lines order(bool isAscending) const {
        Lines first = sorted(ZxPolAddrCache::WildCardList), second = sorted(ZxPolAddrCache::ExactList);
        if (!isAscending) {
            std::reverse(first.begin(), first.end());
            std::reverse(second.begin(), second.end());
            if (!second.empty()) second.erase(second.begin());
        }
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

private:
    struct Entry {
        std::string address;
        Type type;
    };
    std::vector<Entry>::const_iterator find(const std::string& address, Type type) const {
        return std::find_if(_entries.begin(), _entries.end(),
                            [&](const Entry& entry) { return entry.type == type && isEqual(entry.address, address); });
    }
    std::vector<Entry> _entries;
};

class AddressCacheOrder : public testing::Test {
protected:
    std::string text() {
        static const char* const pieces[] = {"a", "A", "b", "_", "~", "0", "\"", "\"",
                                             ".", ".", "@", "@", "*", " ", "\\", "\xe4"};
        std::string made;
        for (size_t count = random() % 7; count > 0; --count)
            made += pieces[random() % std::size(pieces)];
        return made;
    }
    Lines order(bool isAscending) {
        Lines found;
        while (const char* address = cache.getAlphaOrder(static_cast<uint32_t>(found.size()), isAscending))
            found.emplace_back(address);
        return found;
    }
    Lines userOrder() {
        Lines found;
        while (const char* address = cache.getUserOrder(static_cast<uint32_t>(found.size())))
            found.emplace_back(address);
        return found;
    }
    void check(Type type) {
        ASSERT_EQ(plain.userOrder(), userOrder());
        ASSERT_EQ(plain.order(true), order(true));
        ASSERT_EQ(plain.order(false), order(false));
        const Lines sorted = plain.sorted(type);
        const std::string asked = text();
        ASSERT_EQ(plain.has(asked, type), cache.findAddress(asked.c_str(), type)) << asked;
        const auto bound = std::lower_bound(sorted.begin(), sorted.end(), asked, isLess);
        const ZxPolAddrCache::ItemList items = cache._itemsOf(type);
        ASSERT_EQ(static_cast<size_t>(bound - sorted.begin()), cache._lowerBound(keyOf(asked).c_str(), items)) << asked;
        ASSERT_EQ(sorted.size(), items.size());
        for (size_t at = 0; at < sorted.size(); ++at) {
            ASSERT_EQ(sorted[at], items[at].address);
            ASSERT_STREQ(items[at].address, cache.getUserOrder(items[at].position));
        }
    }

    std::mt19937 random{20260};
    ZxPolAddrCache cache;
    PlainCache plain;
};

TEST_F(AddressCacheOrder, IsThatOfThePlainestList) {
    size_t removed = 0, kept = 0;
    for (int step = 0; step < 4000; ++step) {
        const std::string address = text();
        const Type type = random() % 2 == 0 ? ZxPolAddrCache::WildCardList : ZxPolAddrCache::ExactList;
        int error = ZXPOL_E_PARSE;
        if (random() % 2 == 0) {
            cache.insertAddress(address.c_str(), type, &error);
            EXPECT_CODE(ZXPOL_S_OK, error);
            plain.insert(address, type);
        } else {
            cache.removeAddress(address.c_str(), type, &error);
            const bool wasThere = plain.remove(address, type);
            ASSERT_EQ(zxtest::codeText(wasThere ? ZXPOL_S_OK : ZXPOL_E_NOT_FOUND), zxtest::codeText(error)) << address;
            removed += wasThere ? 1 : 0;
        }
        kept = std::max(kept, plain.userOrder().size());
        if (step % 25 == 0) check(type);
        if (HasFatalFailure()) return;
        if (step % 2000 == 1999) {
            cache.clear();
            plain = PlainCache();
        }
    }
    EXPECT_GT(removed, 300u);
    EXPECT_GT(kept, 100u);
}

}  // namespace

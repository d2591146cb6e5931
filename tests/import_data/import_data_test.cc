// Real lists and directory exports imported through the flat interface, and read back in all three orders and from the
// store's values. What must come of each file is worked out by independent means, see counted_data.h.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "import_data/counted_data.h"
#include "support/data_file.h"
#include "support/policy_fixture.h"

using importdata::Case;
using importdata::caseOf;
using importdata::Entry;
using importdata::expectedOrders;
using importdata::Orders;
using importdata::Texts;
using zxtest::codeText;
using zxtest::Handle;

namespace {

// The order in which addresses are enumerated, as long as this object lives; null for the order of insertion.
class OrderOfEnumeration {
public:
    explicit OrderOfEnumeration(const char* order) {
        if (order != nullptr)
            setenv("order", order, 1);
        else
            unsetenv("order");
    }
    ~OrderOfEnumeration() { unsetenv("order"); }
    OrderOfEnumeration(const OrderOfEnumeration&) = delete;
    OrderOfEnumeration& operator=(const OrderOfEnumeration&) = delete;
};

// Expects equal texts; of texts that differ it shows the first difference only.
void expectSame(const Texts& expected, const Texts& found, const std::string& what) {
    const size_t common = std::min(expected.size(), found.size());
    size_t at = 0;
    while (at < common && expected[at] == found[at])
        ++at;
    if (at < common) {
        EXPECT_EQ(expected[at], found[at]) << what << ", entry " << at;
    }
    EXPECT_EQ(expected.size(), found.size()) << what;
}

// How many entries at the beginning hold a star.
size_t starred(const Texts& entries) {
    const auto exact = std::find_if(entries.begin(), entries.end(),
                                    [](const std::string& entry) { return entry.find('*') == std::string::npos; });
    return static_cast<size_t>(exact - entries.begin());
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

class ImportOfRealData : public zxtest::StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        if (HasFatalFailure()) return;
        int error = ZXPOL_S_OK;
        _hive.reset(zxpol_openAddrListHive(store(), &error));
        ASSERT_GE(error, 0) << codeText(error);
    }
    void TearDown() override {
        _hive.reset();
        StoreTest::TearDown();
    }

    Handle createList(const std::string& name) const {
        const _ZxPolAddrListAttr attr = {};
        int error = ZXPOL_S_OK;
        Handle list(zxpol_createAddrList(_hive.get(), name.c_str(), &attr, &error));
        EXPECT_TRUE(list != nullptr) << name << ": " << codeText(error);
        return list;
    }

    // What an import passed over, by its debug messages.
    struct Skipped {
        size_t invalid = 0;
        size_t duplicates = 0;
    };

    static Skipped import(const Handle& list, const Case& row, uint32_t replace = 0) {
        const importdata::ImportFile file(row);
        const uint32_t format = row.format == "1" ? 1 : 0;
        const zxtest::DebugMessages messages;
        int error = ZXPOL_S_OK;
        zxpol_importAddress(list.get(), format, replace, file.path(), &error);
        EXPECT_CODE(row.result(), error);
        Skipped skipped;
        for (const std::string& message : messages.all()) {
            if (endsWith(message, "' is not valid. Skip!")) ++skipped.invalid;
            if (endsWith(message, "' already exist")) ++skipped.duplicates;
        }
        return skipped;
    }

    static Texts enumerated(const Handle& list, const char* order) {
        const OrderOfEnumeration inThis(order);
        Texts found;
        char address[ZXPOL_ADDRESS_SIZE];
        for (uint32_t index = 0;; ++index) {
            uint32_t size = sizeof address;
            int error = ZXPOL_S_OK;
            zxpol_enumAddress(list.get(), index, address, &size, &error);
            if (error < 0) {
                EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
                return found;
            }
            found.emplace_back(address);
            EXPECT_EQ(found.back().size() + 1, size) << address;
        }
    }

    static void expectAllOrders(const Handle& list, const Orders& expected) {
        expectSame(expected.user, enumerated(list, nullptr), "unset");
        expectSame(expected.ascending, enumerated(list, "ascending"), "ascending");
        expectSame(expected.descending, enumerated(list, "decending"), "descending");
    }

    // The addresses in the values of a list, in the order of their numbers. No value has more than 2048 bytes.
    Texts stored(const std::string& name) const {
        const zxtest::RawKey key = raw("AddressList\\" + name);
        Texts found;
        for (size_t number = 1;; ++number) {
            uint32_t type = 0;
            const std::optional<std::string> image = key.bytes("address" + std::to_string(number), &type);
            if (!image) return found;
            EXPECT_EQ(ZXREG_MULTI_STRING, type) << number;
            EXPECT_LE(image->size(), 2048u) << number;
            Texts addresses = zxtest::splitAt(*image, '\0');
            EXPECT_TRUE(addresses.size() >= 2 && addresses.end()[-1].empty() && addresses.end()[-2].empty()) << number;
            addresses.resize(addresses.size() < 2 ? 0 : addresses.size() - 2);
            found.insert(found.end(), addresses.begin(), addresses.end());
        }
    }

private:
    Handle _hive;
};

ZXTEST_ON_BOTH_ENGINES(ImportOfRealData);

TEST_P(ImportOfRealData, GivesTheCountedEntriesInAllOrders) {
    size_t number = 0;
    for (const Case& row : importdata::allCases()) {
        SCOPED_TRACE(row.name());
        const std::string name = "list" + std::to_string(++number);
        const Handle list = createList(name);
        if (list == nullptr) continue;
        const Skipped skipped = import(list, row);
        EXPECT_EQ(row.invalid, skipped.invalid);
        EXPECT_EQ(row.duplicates, skipped.duplicates);
        const Orders& expected = expectedOrders(row);
        ASSERT_EQ(row.accepted, expected.user.size());
        EXPECT_EQ(row.wildcards, starred(expected.ascending));
        expectAllOrders(list, expected);
        expectSame(expected.user, stored(name), "stored");
    }
    EXPECT_GT(number, 0u);
}

TEST_P(ImportOfRealData, ASecondTimeAddsNothing) {
    const Case row = caseOf("lists/university_domains_hipo_MIT.txt");
    const Handle list = createList("twice");
    ASSERT_NE(nullptr, list);
    import(list, row);
    const Skipped skipped = import(list, row);
    EXPECT_EQ(row.invalid, skipped.invalid);
    EXPECT_EQ(row.offered - row.invalid, skipped.duplicates);
    expectAllOrders(list, expectedOrders(row));
    expectSame(expectedOrders(row).user, stored("twice"), "stored");
}

TEST_P(ImportOfRealData, ReplacingLeavesNothingOfTheOldEntries) {
    const Case before = caseOf("lists/freemail_willwhite_ISC.txt");
    const Case after = caseOf("directory/openldap_its9282_exampledb.ldif");
    const Handle list = createList("replaced");
    ASSERT_NE(nullptr, list);
    import(list, before);
    import(list, after, 1);
    expectAllOrders(list, expectedOrders(after));
    expectSame(expectedOrders(after).user, stored("replaced"), "stored");
}

TEST_P(ImportOfRealData, AddsToWhatIsThere) {
    const Case lists[] = {caseOf("directory/openldap_test.ldif"),
                          caseOf("lists/welcome_senders_spamassassin_Apache2.txt"),
                          caseOf("directory/studio_sevenseas.ldif")};
    const Handle list = createList("added");
    ASSERT_NE(nullptr, list);
    std::vector<Entry> all;
    for (const Case& row : lists) {
        import(list, row);
        const std::vector<Entry> entries = importdata::countedEntries(row);
        all.insert(all.end(), entries.begin(), entries.end());
    }
    expectAllOrders(list, importdata::ordersOf(all));
    expectSame(importdata::textsOf(all), enumerated(list, "user"), "user");
    expectSame(importdata::textsOf(all), stored("added"), "stored");
}

}  // namespace

// ZxPolNormalAddrList: what no flat function shows - the weight of a match, the batches of an import, the dropped
// cache.
#include "addrlist/normal_addr_list.h"

#include "addrlist/addr_list_hive.h"
#include "support/list_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::Lines;
using zxtest::sized;
using zxtest::TestFile;

class NormalList : public zxtest::ListTest {
protected:
    static ZxPolNormalAddrList& listOf(const Handle& handle) {
        return *static_cast<ZxPolNormalAddrList*>(static_cast<ZxPolAddrList*>(handle->object));
    }
    // "weight", or "none".
    static std::string weigh(const Handle& list, const char* address, ZxPolMatchWeightType kind) {
        uint32_t weight = 4711;
        int error = ZXPOL_E_PARSE;
        const bool isMatch = listOf(list).matchAddress(address, &weight, kind, &error);
        EXPECT_CODE(ZXPOL_E_PARSE, error);
        EXPECT_EQ(isMatch, listOf(list).matchAddress(address, nullptr, kind, nullptr));
        if (!isMatch) {
            EXPECT_EQ(0u, weight);
        }
        return isMatch ? std::to_string(weight) : "none";
    }
};
ZXTEST_ON_BOTH_ENGINES(NormalList);

TEST_P(NormalList, APlainEntryWeighsMostEvenWhereWildcardsMatchToo) {
    const Handle list = create("L", {"*@b.c", "a@b.c", "*"});
    for (const auto kind : {ZXPOL_WEIGHT_DOMAIN_FIRST, ZXPOL_WEIGHT_NAME_FIRST}) {
        EXPECT_EQ("5000", weigh(list, "A@b.c", kind));
        EXPECT_EQ("5000", weigh(list, "\"a\"@b.c", kind));
        EXPECT_EQ(kind == ZXPOL_WEIGHT_DOMAIN_FIRST ? "4000" : "3000", weigh(list, "x@b.c", kind));
        EXPECT_EQ("0", weigh(list, "x@y.z", kind));
    }
}

TEST_P(NormalList, AMissSetsTheWeightToTheLeast) {
    const Handle list = create("L", {"*@b.c", "a@b.c"});
    EXPECT_EQ("none", weigh(list, "a@b.d", ZXPOL_WEIGHT_DOMAIN_FIRST));
    EXPECT_EQ("none", weigh(list, "", ZXPOL_WEIGHT_NAME_FIRST));
}

TEST_P(NormalList, WildcardsWeighByTheKindOfWeight) {
    const Handle list = create("L", {"u@*.x.c", "*@m.x.c", "*@*.y.x.c", "n@*", "v@[*]"});
    const auto both = [&](const char* address) {
        return weigh(list, address, ZXPOL_WEIGHT_DOMAIN_FIRST) + " " + weigh(list, address, ZXPOL_WEIGHT_NAME_FIRST);
    };
    EXPECT_EQ("4000 4002", both("u@m.x.c"));
    EXPECT_EQ("4000 3000", both("v@m.x.c"));
    EXPECT_EQ("3002 4002", both("u@z.y.x.c"));
    EXPECT_EQ("2003 2003", both("v@z.y.x.c"));
    EXPECT_EQ("2003 2003", both("n@z.y.x.c"));
    EXPECT_EQ("1000 1000", both("n@other"));
    // The label that is a star in brackets holds no name, the domain has no other.
    EXPECT_EQ("3000 4000", both("v@[10.0.0.1]"));
    EXPECT_EQ("none none", both("v@other"));
}

TEST_P(NormalList, AddressesAreValidAsPatternsOf511CharactersAtMost) {
    for (const char* valid : {"a@b", "*", "*@*", "a@*.b", "\"a@b\"@c"})
        EXPECT_TRUE(ZxPolNormalAddrList::_isAddressValid(valid)) << valid;
    for (const char* invalid : {"", "a", "a*@b", "a@b.*", "a@ b", "a\t@b", "\x80@b"})
        EXPECT_FALSE(ZxPolNormalAddrList::_isAddressValid(invalid)) << invalid;
    EXPECT_FALSE(ZxPolNormalAddrList::_isAddressValid(nullptr));
    EXPECT_TRUE(ZxPolNormalAddrList::_isAddressValid(sized(511, 'a').c_str()));
    EXPECT_FALSE(ZxPolNormalAddrList::_isAddressValid(sized(512, 'a').c_str()));
}

TEST_P(NormalList, DroppingTheCacheLeavesOpenObjectsWhole) {
    const Handle old = create("L", {"a@b.c"});
    int error = ZXPOL_E_PARSE;
    ZxPolNormalAddrList::clearAddrCacheByName("L", &error);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    ZxPolNormalAddrList::clearAddrCacheByName("Nowhere", &error);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    EXPECT_EQ(Lines{"a@b.c"}, addresses(old));
    EXPECT_EQ("5000", weigh(old, "a@b.c", ZXPOL_WEIGHT_DOMAIN_FIRST));
    const Handle fresh = open();
    EXPECT_EQ(Lines{"a@b.c"}, addresses(fresh));
    EXPECT_CODE(ZXPOL_S_OK, insert(old, {"d@e.f"}));
    EXPECT_CODE(ZXPOL_S_OK, insert(fresh, {"g@h.i"}));
    EXPECT_EQ(imagesOf({{"a@b.c", "d@e.f", "g@h.i"}}), images());
    EXPECT_EQ((Lines{"a@b.c", "d@e.f", "g@h.i"}), addresses(open()));
}

TEST_P(NormalList, AnAttributeRecordOfAnotherTypeIsRefused) {
    const Handle list = create("L");
    _ZxPolAddrListAttr attr = normalAttributes("changed");
    attr.type = ZXPOL_ADDRLIST_DIRECTORY;
    int error = ZXPOL_S_OK;
    listOf(list).setAttrib(&attr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ("L", key().text("displayName"));
    EXPECT_EQ(0u, key().number("type"));
}

// ---- the batches of an import -----------------------------------------------------------------------------

// Counts the addresses of each batch instead of inserting them, and answers with the codes given, one after the other.
class Recorder : public ZxPolNormalAddrList {
public:
    explicit Recorder(_ZxPolComHandle* key, std::vector<int> codes = {})
        : ZxPolNormalAddrList(key, "L", &_made), _codes(std::move(codes)) {}
    void insertAddresses(const char** addresses, int* error) override {
        size_t count = 0;
        while (addresses[count] != nullptr)
            ++count;
        *error = batches.size() < _codes.size() ? _codes[batches.size()] : ZXPOL_S_OK;
        batches.push_back(count);
    }
    int importing(const std::string& content) {
        int error = ZXPOL_S_OK;
        importAddresses(0, 0, TestFile(content).path().c_str(), &error);
        return error;
    }
    std::vector<size_t> batches;

private:
    int _made = ZXPOL_S_OK;
    const std::vector<int> _codes;
};

class ImportBatches : public zxtest::ListTest {
protected:
    void SetUp() override {
        ListTest::SetUp();
        if (!HasFatalFailure()) create();
    }
    _ZxPolComHandle* listKey() const {
        int error = ZXREG_S_OK;
        return zxreg_openKey(store(), "AddressList\\L", &error);
    }
    static std::string lines(size_t count, size_t length = 16) {
        std::string content;
        for (size_t at = 0; at < count; ++at)
            content += sized(length, static_cast<char>('a' + at % 26)) + "\n";
        return content;
    }
    using Counts = std::vector<size_t>;
};
ZXTEST_ON_BOTH_ENGINES(ImportBatches);

TEST_P(ImportBatches, HaveAtMost2047Addresses) {
    Recorder list(listKey());
    EXPECT_CODE(ZXPOL_S_OK, list.importing(lines(5000)));
    EXPECT_EQ((Counts{2047, 2047, 906}), list.batches);
    list.batches.clear();
    EXPECT_CODE(ZXPOL_S_OK, list.importing(lines(2047)));
    EXPECT_EQ(Counts{2047}, list.batches);
    list.batches.clear();
    EXPECT_CODE(ZXPOL_S_OK, list.importing(lines(2048)));
    EXPECT_EQ((Counts{2047, 1}), list.batches);
}

TEST_P(ImportBatches, AreHandedOverBeforeTheirTextIsTooMuch) {
    Recorder list(listKey());
    // 99 times 512 bytes leave 512 of 51200.
    EXPECT_CODE(ZXPOL_S_OK, list.importing(lines(200, 511)));
    EXPECT_EQ((Counts{99, 99, 2}), list.batches);
    list.batches.clear();
    // 507 times 100 bytes leave 500, one less leaves 600.
    EXPECT_CODE(ZXPOL_S_OK, list.importing(lines(1000, 99)));
    EXPECT_EQ((Counts{507, 493}), list.batches);
}

TEST_P(ImportBatches, InvalidOnesAreRememberedToTheEnd) {
    Recorder list(listKey(), {ZXPOL_E_INVALID_FORMAT, ZXPOL_S_OK});
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, list.importing(lines(5000)));
    EXPECT_EQ(3u, list.batches.size());
}

TEST_P(ImportBatches, AFailureDoesNotEndTheReadingAndTheLastResultStands) {
    Recorder first(listKey(), {ZXREG_E_IO});
    EXPECT_CODE(ZXPOL_S_OK, first.importing(lines(5000)));
    EXPECT_EQ(3u, first.batches.size());
    Recorder last(listKey(), {ZXPOL_S_OK, ZXPOL_S_OK, ZXREG_E_IO});
    EXPECT_CODE(ZXREG_E_IO, last.importing(lines(5000)));
    Recorder mixed(listKey(), {ZXPOL_S_OK, ZXPOL_E_INVALID_FORMAT, ZXREG_E_IO});
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, mixed.importing(lines(5000)));
}

TEST_P(ImportBatches, OfAListThatTakesNoneEndTheImport) {
    Recorder list(listKey(), {ZXPOL_S_OK, ZXPOL_E_NOT_SUPPORTED});
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, list.importing(lines(5000)));
    EXPECT_EQ((Counts{2047, 2047}), list.batches);
}

}  // namespace

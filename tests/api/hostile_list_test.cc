// Normal lists used as no well-meaning caller would: missing and endless arguments, names at their limits, huge calls.
#include "guarded_buffer.h"
#include "support/list_fixture.h"
#include "support/store_dump.h"

using namespace zxtest;

namespace {

class HostileListUse : public ListTest {
protected:
    std::string content() const { return describe(readStore(PolicyTest::store())); }

    // Runs `call` on a list with one address and expects the code, with the store as it was.
    template <class Call>
    void expectRefused(int code, Call call) {
        const Handle list = create("L", {"kept@b.c"});
        const std::string before = content();
        int error = ZXPOL_S_OK;
        call(list.get(), &error);
        EXPECT_CODE(code, error);
        EXPECT_EQ(before, content());
        EXPECT_EQ(Lines{"kept@b.c"}, addresses(list));
    }
};
ZXTEST_ON_BOTH_ENGINES(HostileListUse);

TEST_P(HostileListUse, NullAndEmptyArrays) {
    const char* none[] = {nullptr};
    for (const char** array : {static_cast<const char**>(nullptr), static_cast<const char**>(none)}) {
        expectRefused(ZXPOL_E_INVALID_ARG,
                      [&](_ZxPolComHandle* list, int* error) { zxpol_insertAddress(list, array, error); });
        expectRefused(ZXPOL_E_INVALID_ARG,
                      [&](_ZxPolComHandle* list, int* error) { zxpol_removeAddress(list, array, error); });
    }
}

TEST_P(HostileListUse, NoResultAndResultsThatHoldAFailure) {
    const char* array[] = {"x@y.z", "kept@b.c", nullptr};
    char buffer[16];
    uint32_t size = sizeof buffer;
    const TestFile file("x@y.z\n");
    expectRefused(ZXPOL_E_PARSE, [&](_ZxPolComHandle* list, int* error) {
        *error = ZXPOL_E_PARSE;
        for (int* result : {static_cast<int*>(nullptr), error}) {
            zxpol_insertAddress(list, array, result);
            zxpol_removeAddress(list, array, result);
            zxpol_importAddress(list, 0, 1, file.path().c_str(), result);
            zxpol_enumAddress(list, 0, buffer, &size, result);
        }
        EXPECT_EQ(sizeof buffer, size);
    });
}

TEST_P(HostileListUse, NoHandleAndHandlesOfOtherKinds) {
    const char* array[] = {"x@y.z", nullptr};
    char buffer[16];
    uint32_t size = sizeof buffer;
    _ZxPolComHandle empty = {ZXPOL_HANDLE_ADDRLIST, nullptr};
    for (_ZxPolComHandle* handle : {static_cast<_ZxPolComHandle*>(nullptr), listHive(), ruleHive(), &empty}) {
        const int code = handle == nullptr ? ZXPOL_E_INVALID_ARG : ZXPOL_E_WRONG_HANDLE;
        expectRefused(code, [&](_ZxPolComHandle*, int* e) { zxpol_insertAddress(handle, array, e); });
        expectRefused(code, [&](_ZxPolComHandle*, int* e) { zxpol_removeAddress(handle, array, e); });
        expectRefused(code, [&](_ZxPolComHandle*, int* e) { zxpol_importAddress(handle, 0, 0, "/x", e); });
        expectRefused(code, [&](_ZxPolComHandle*, int* e) { zxpol_enumAddress(handle, 0, buffer, &size, e); });
    }
}

TEST_P(HostileListUse, AddressesOfControlCharactersAndHighBytes) {
    const Handle list = create();
    Lines odd = {"",       " ",      "\t",      "\n",         "a@b\n",   "a\r@b",
                 "\x01@b", "a@\x7f", "a\x80@b", "\xc3\xa4@b", "%s%n@%d", "a@b c"};
    for (int byte = 1; byte < 0x20; ++byte)
        odd.push_back(std::string("a") + static_cast<char>(byte) + "@b");
    const int code = insert(list, odd);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, code);
    // What a message might take for a conversion is an ordinary text.
    EXPECT_EQ(Lines{"%s%n@%d"}, addresses(list));
    EXPECT_TRUE(ZX_FAILURE(remove(list, {"", "\n", "\x80"})));
    for (const std::string& address : odd)
        EXPECT_EQ(address == "%s%n@%d", holds(address)) << address;
}

TEST_P(HostileListUse, AMegabyteAsOneAddress) {
    const Handle list = create("L", {"a@b.c"});
    const std::string huge = sized(1u << 20, 'x');
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, insert(list, {huge, huge + "*"}));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {huge, "*" + huge}));
    EXPECT_FALSE(holds(huge));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(list));
}

TEST_P(HostileListUse, AHundredThousandAddressesInOneCall) {
    Lines all;
    for (size_t at = 0; at < 100000; ++at)
        all.push_back("user" + std::to_string(at) + "@somewhere.example");
    const Handle list = create("L", all);
    EXPECT_EQ(all, addresses(list));
    EXPECT_EQ(all, addressesInStore());
    // All but every thousandth; the rest stays in the order in which it was inserted.
    Lines gone, left;
    for (size_t at = 0; at < all.size(); ++at)
        (at % 1000 == 7 ? left : gone).push_back(all[at]);
    EXPECT_CODE(ZXPOL_S_OK, remove(list, gone));
    EXPECT_EQ(left, addresses(list));
    EXPECT_EQ(left, addressesInStore());
    EXPECT_EQ(2u, images().size());
}

TEST_P(HostileListUse, OneAddressAHundredThousandTimes) {
    const Handle list = create("L", Lines(100000, "a@b.c"));
    EXPECT_EQ(imagesOf({{"a@b.c"}}), images());
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, Lines(1000, "a@b.c")));
    EXPECT_EQ(imagesOf({}), images());
}

TEST_P(HostileListUse, NamesHave255BytesAtMost) {
    const std::string longest(255, 'n'), tooLong(256, 'n');
    const Handle list = create(longest, {"a@b.c"});
    EXPECT_EQ(Lines{"a@b.c"}, addresses(open(longest)));
    const _ZxPolAddrListAttr attr = normalAttributes();
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_createAddrList(listHive(), tooLong.c_str(), &attr, &error));
    EXPECT_TRUE(ZX_FAILURE(error));
    EXPECT_TRUE(ZX_FAILURE(codeOfOpening(tooLong)));
    EXPECT_TRUE(ZX_FAILURE(deleteList(tooLong)));
    EXPECT_EQ(Lines{longest}, raw("AddressList").subkeys());
    EXPECT_CODE(ZXPOL_S_OK, deleteList(longest));
}

TEST_P(HostileListUse, BuffersEndWhereTheyEnd) {
    const std::string address = sized(511, 'a');
    const Handle list = create("L", {address});
    for (const uint32_t room : {0u, 1u, 511u, 512u}) {
        GuardedBuffer buffer(room);
        uint32_t size = room;
        int error = ZXPOL_S_OK;
        zxpol_enumAddress(list.get(), 0, buffer.get(), &size, &error);
        EXPECT_CODE(room < 512 ? ZXPOL_E_BUFFER_TOO_SMALL : ZXPOL_S_OK, error) << room;
        EXPECT_EQ(512u, size);
        EXPECT_TRUE(room < 512 ? buffer.isUntouched() : buffer.isIntact()) << room;
    }
}

TEST_P(HostileListUse, RecordsWithoutNulAreRefused) {
    _ZxPolAddrListAttr attr = normalAttributes();
    std::memset(attr.displayName, 'x', sizeof attr.displayName);
    expectRefused(ZXPOL_E_INVALID_ARG, [&](_ZxPolComHandle* list, int* e) { zxpol_setAddrListAttrib(list, &attr, e); });
    attr = normalAttributes();
    std::memset(attr.comment, 'x', sizeof attr.comment);
    expectRefused(ZXPOL_E_INVALID_ARG, [&](_ZxPolComHandle*, int* e) {
        EXPECT_EQ(nullptr, zxpol_createAddrList(listHive(), "New", &attr, e));
    });
    // The fields of a directory list are not looked at.
    attr = normalAttributes();
    std::memset(attr.server, 'x', sizeof(_ZxPolAddrListAttr) - offsetof(_ZxPolAddrListAttr, server));
    int error = ZXPOL_S_OK;
    zxpol_setAddrListAttrib(create().get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(HostileListUse, AttributesOfANormalListAreTheCommonOnes) {
    _ZxPolAddrListAttr attr = normalAttributes("shown");
    setField(attr.comment, "words");
    setField(attr.server, "not kept");
    int error = ZXPOL_S_OK;
    const Handle list = create();
    zxpol_setAddrListAttrib(list.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ((Lines{"type", "displayName", "comment"}), key().valueNames());
    _ZxPolAddrListAttr read = {};
    read.type = 9;
    read.port = 4711;
    setField(read.server, "untouched");
    zxpol_getAddrListAttrib(list.get(), &read, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("shown", read.displayName);
    EXPECT_STREQ("words", read.comment);
    EXPECT_EQ(0u, read.type);
    EXPECT_EQ(4711u, read.port);
    EXPECT_STREQ("untouched", read.server);
    zxpol_getAddrListAttrib(list.get(), nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    key().removeValue("comment");
    zxpol_getAddrListAttrib(list.get(), &read, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
}

}  // namespace

// The address-list hive and directory lists.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class AddressLists : public zxtest::PolicyTest {
protected:
    static _ZxPolAddrListAttr attributes() {
        _ZxPolAddrListAttr attr = {};
        zxtest::setField(attr.displayName, "shown");
        zxtest::setField(attr.comment, "words");
        attr.type = ZXPOL_ADDRLIST_DIRECTORY;
        zxtest::setField(attr.server, "ldap.example");
        attr.port = 389;
        zxtest::setField(attr.searchroot, "dc=example");
        attr.authentication = 7;
        attr.schematype = 0xfedcba98u;
        zxtest::setField(attr.username, "cn=reader");
        zxtest::setField(attr.password, "hush");
        zxtest::setField(attr.filter, "(mail=*)");
        return attr;
    }
    int create(const char* name, const _ZxPolAddrListAttr& attr) {
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createAddrList(listHive(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    int openCode(const char* name) {
        int error = ZXPOL_S_OK;
        const Handle found(zxpol_openAddrList(listHive(), name, &error));
        EXPECT_EQ(error >= 0, found != nullptr);
        return error;
    }
    Handle open(const char* name) {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openAddrList(listHive(), name, &error));
        EXPECT_TRUE(found != nullptr) << zxtest::codeText(error);
        return found;
    }
    int read(const char* name, _ZxPolAddrListAttr* attr) {
        int error = ZXPOL_S_OK;
        zxpol_getAddrListAttrib(open(name).get(), attr, &error);
        return error;
    }
    int remove(const char* name) {
        int error = ZXPOL_S_OK;
        zxpol_deleteAddrList(listHive(), name, &error);
        return error;
    }
    int refresh() {
        int error = ZXPOL_S_OK;
        zxpol_refreshLdapCache(listHive(), &error);
        return error;
    }
    RawKey key(const std::string& name) { return raw("AddressList\\" + name); }
};
ZXTEST_ON_BOTH_ENGINES(AddressLists);

TEST_P(AddressLists, SettingsAreStoredWithTheirTypesInOrder) {
    EXPECT_CODE(ZXPOL_S_OK, create("L", attributes()));
    const RawKey list = key("L");
    EXPECT_EQ((Lines{"displayName", "comment", "type", "server", "port", "schematype", "searchroot", "authentication",
                     "username", "password", "filter"}),
              list.valueNames());
    EXPECT_EQ("shown", list.text("displayName"));
    EXPECT_EQ("words", list.text("comment"));
    EXPECT_EQ(1u, list.number("type"));
    EXPECT_EQ("ldap.example", list.text("server"));
    EXPECT_EQ(389u, list.number("port"));
    EXPECT_EQ(0xfedcba98u, list.number("schematype"));
    EXPECT_EQ("dc=example", list.text("searchroot"));
    EXPECT_EQ(7u, list.number("authentication"));
    EXPECT_EQ("cn=reader", list.text("username"));
    EXPECT_EQ("(mail=*)", list.text("filter"));
    uint32_t type = 0;
    EXPECT_TRUE(list.bytes("password", &type));
    EXPECT_EQ(ZXREG_PROTECTED_STRING, type);
}

TEST_P(AddressLists, SettingsAreReadBackButThePasswordIsASecret) {
    const _ZxPolAddrListAttr given = attributes();
    create("L", given);
    _ZxPolAddrListAttr attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read("L", &attr));
    EXPECT_STREQ("secret", attr.password);
    EXPECT_STREQ(given.displayName, attr.displayName);
    EXPECT_STREQ(given.comment, attr.comment);
    EXPECT_EQ(1u, attr.type);
    EXPECT_STREQ(given.server, attr.server);
    EXPECT_EQ(given.port, attr.port);
    EXPECT_STREQ(given.searchroot, attr.searchroot);
    EXPECT_EQ(given.authentication, attr.authentication);
    EXPECT_EQ(given.schematype, attr.schematype);
    EXPECT_STREQ(given.username, attr.username);
    EXPECT_STREQ(given.filter, attr.filter);
}

TEST_P(AddressLists, AnEmptyPasswordIsASecretToo) {
    _ZxPolAddrListAttr attr = attributes();
    zxtest::setField(attr.password, "");
    create("L", attr);
    EXPECT_CODE(ZXPOL_S_OK, read("L", &attr));
    EXPECT_STREQ("secret", attr.password);
}

TEST_P(AddressLists, ASettingOfAnotherTypeLeavesItsField) {
    create("L", attributes());
    key("L").setText("port", "389");
    key("L").setNumber("server", 5);
    key("L").setText("password", "plain");
    _ZxPolAddrListAttr attr = {};
    attr.port = 4711;
    zxtest::setField(attr.server, "kept");
    zxtest::setField(attr.password, "kept too");
    EXPECT_CODE(ZXPOL_S_OK, read("L", &attr));
    EXPECT_EQ(4711u, attr.port);
    EXPECT_STREQ("kept", attr.server);
    EXPECT_STREQ("kept too", attr.password);
    EXPECT_STREQ("(mail=*)", attr.filter);
}

TEST_P(AddressLists, AMissingSettingEndsTheReading) {
    create("L", attributes());
    key("L").removeValue("searchroot");
    _ZxPolAddrListAttr attr = {};
    attr.authentication = 4711;
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read("L", &attr));
    EXPECT_EQ(389u, attr.port);
    EXPECT_EQ(0xfedcba98u, attr.schematype);
    EXPECT_EQ(4711u, attr.authentication);
    EXPECT_STREQ("", attr.filter);
}

TEST_P(AddressLists, MissingCommonAttributesAreNotNoticed) {
    create("L", attributes());
    key("L").removeValue("displayName");
    _ZxPolAddrListAttr attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read("L", &attr));
    EXPECT_STREQ("ldap.example", attr.server);
}

TEST_P(AddressLists, ASettingLongerThanItsFieldIsCut) {
    create("L", attributes());
    key("L").setText("server", std::string(300, 's'));
    _ZxPolAddrListAttr attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read("L", &attr));
    EXPECT_EQ(std::string(255, 's'), attr.server);
    EXPECT_EQ(389u, attr.port);
}

TEST_P(AddressLists, NullRecordsAreRefused) {
    create("L", attributes());
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, read("L", nullptr));
    int error = ZXPOL_S_OK;
    zxpol_setAddrListAttrib(open("L").get(), nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_createAddrList(listHive(), "M", nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(AddressLists, OtherTypesAreRefusedAndNoKeyIsMade) {
    _ZxPolAddrListAttr attr = attributes();
    for (const uint32_t type : {2u, 0xffffffffu}) {
        attr.type = type;
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("L", attr));
    }
    attr.type = ZXPOL_ADDRLIST_DIRECTORY;
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("", attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create(nullptr, attr));
    EXPECT_TRUE(raw("AddressList").subkeys().empty());
}

TEST_P(AddressLists, CreatingAnExistingListChangesItsSettings) {
    create("L", attributes());
    _ZxPolAddrListAttr attr = attributes();
    attr.port = 636;
    EXPECT_CODE(ZXPOL_S_OK, create("L", attr));
    EXPECT_EQ(636u, key("L").number("port"));
    EXPECT_EQ(Lines{"L"}, raw("AddressList").subkeys());
}

TEST_P(AddressLists, WritingTypeZeroIsStored) {
    create("L", attributes());
    _ZxPolAddrListAttr attr = attributes();
    attr.type = ZXPOL_ADDRLIST_NORMAL;
    int error = ZXPOL_S_OK;
    const Handle list = open("L");
    zxpol_setAddrListAttrib(list.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(0u, key("L").number("type"));
    // The object that is open stays a directory list.
    EXPECT_CODE(ZXPOL_S_OK, error);
    attr = {};
    zxpol_getAddrListAttrib(list.get(), &attr, &error);
    EXPECT_EQ(1u, attr.type);
    EXPECT_STREQ("ldap.example", attr.server);
}

TEST_P(AddressLists, OperationsOnAddressesAreNotSupportedWhateverTheArguments) {
    create("L", attributes());
    const Handle list = open("L");
    const char* addresses[] = {"a@b.c", nullptr};
    char buffer[16];
    uint32_t size = sizeof buffer;
    for (const bool null : {false, true}) {
        int error = ZXPOL_S_OK;
        zxpol_insertAddress(list.get(), null ? nullptr : addresses, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
        error = ZXPOL_S_OK;
        zxpol_removeAddress(list.get(), null ? nullptr : addresses, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
        error = ZXPOL_S_OK;
        zxpol_enumAddress(list.get(), 0, null ? nullptr : buffer, null ? nullptr : &size, &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
        error = ZXPOL_S_OK;
        zxpol_importAddress(list.get(), 9, 9, null ? nullptr : "/none", &error);
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    }
}

TEST_P(AddressLists, OpeningNeedsAKindThatIsKnown) {
    create("L", attributes());
    EXPECT_CODE(ZXREG_E_NOT_FOUND, openCode("M"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, openCode(""));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, openCode(nullptr));
    key("L").setNumber("type", 7);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, openCode("L"));
    key("L").removeValue("type");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, openCode("L"));
}

TEST_P(AddressLists, AreEnumeratedInTheOrderOfTheStore) {
    for (const char* name : {"c", "a", "b"})
        create(name, attributes());
    EXPECT_EQ("c a b", names(zxpol_enumAddrList, listHive()));
    char name[8];
    uint32_t size = 1;
    int error = ZXPOL_S_OK;
    zxpol_enumAddrList(listHive(), 0, name, &size, &error);
    EXPECT_EQ(6u, zxtest::reasonOf(error));
    EXPECT_EQ(1u, size);
    error = ZXPOL_S_OK;
    zxpol_enumAddrList(listHive(), 0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumAddrList(listHive(), 0, name, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(AddressLists, DeletingReportsWhatTheStoreSays) {
    create("L", attributes());
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("M"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(""));
    EXPECT_CODE(ZXPOL_S_OK, remove("L"));
    EXPECT_TRUE(raw("AddressList").subkeys().empty());
}

TEST_P(AddressLists, RefreshingTellsWhetherThereIsAList) {
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, refresh());
    create(std::string(255, 'l').c_str(), attributes());
    EXPECT_CODE(ZXPOL_S_OK, refresh());
}

TEST_P(AddressLists, ClosingSucceedsAfterAFailure) {
    create("L", attributes());
    int error = ZXPOL_E_PARSE;
    zxpol_closeAddrList(open("L").release(), &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    _ZxPolComHandle* hive = zxpol_openAddrListHive(store(), &error);
    ASSERT_NE(nullptr, hive);
    error = ZXPOL_E_PARSE;
    zxpol_closeAddrListHive(hive, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(AddressLists, OutliveTheirHive) {
    create("L", attributes());
    const Handle list = open("L");
    closeHives();
    _ZxPolAddrListAttr attr = {};
    int error = ZXPOL_S_OK;
    zxpol_getAddrListAttrib(list.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("ldap.example", attr.server);
}

}  // namespace

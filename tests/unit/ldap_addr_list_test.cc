// ZxPolLdapAddrList: the settings as they are stored, well or badly.
#include "unit/match_fixture.h"

namespace {

using namespace zxtest;

class LdapAddrList : public MatchTest {
protected:
    void SetUp() override {
        MatchTest::SetUp();
        addDirectoryList("Far");
        int error = ZXPOL_S_OK;
        _list.reset(lists().openAddrList("Far", &error));
        ASSERT_NE(nullptr, _list) << codeText(error);
    }

    ZxPolAddrList& list() const { return *_list; }
    RawKey stored() const { return raw("AddressList\\Far"); }

    _ZxPolAddrListAttr read(int expected = ZXPOL_S_OK) const {
        _ZxPolAddrListAttr attr{};
        attr.port = 77;
        setText(attr.server, "before");
        setText(attr.filter, "before");
        int error = ZXPOL_E_EXCEPTION;
        list().getAttrib(&attr, &error);
        EXPECT_CODE(expected, error);
        return attr;
    }

private:
    std::unique_ptr<ZxPolAddrList> _list;
};

TEST_F(LdapAddrList, StoresTheSettingsInOrder) {
    EXPECT_EQ(std::vector<std::string>({"displayName", "comment", "type", "server", "port", "schematype", "searchroot",
                                        "authentication", "username", "password", "filter"}),
              stored().valueNames());
    EXPECT_EQ("ldap.example.com", stored().text("server"));
    EXPECT_EQ(3u, stored().number("schematype"));
    uint32_t type = 0;
    stored().bytes("password", &type);
    EXPECT_EQ(ZXREG_PROTECTED_STRING, type);
}

TEST_F(LdapAddrList, HidesAPasswordOfItsOwnTypeOnly) {
    EXPECT_STREQ("secret", read().password);
    stored().setText("password", "plain");
    EXPECT_STREQ("", read().password);
}

TEST_F(LdapAddrList, PassesOverSettingsOfAnotherType) {
    stored().setText("port", "389");
    stored().setNumber("server", 1);
    const _ZxPolAddrListAttr attr = read();
    EXPECT_EQ(77u, attr.port);
    EXPECT_STREQ("before", attr.server);
    EXPECT_EQ(2u, attr.authentication);
    EXPECT_EQ(3u, attr.schematype);
    EXPECT_STREQ("(mail=*)", attr.filter);
}

TEST_F(LdapAddrList, CutsTextsToTheirFields) {
    stored().setText("server", std::string(1000, 's'));
    stored().setBytes("filter", ZXREG_STRING, std::string(1024, 'f'));
    const _ZxPolAddrListAttr attr = read();
    EXPECT_EQ(std::string(255, 's'), attr.server);
    EXPECT_EQ(std::string(1023, 'f'), attr.filter);
    EXPECT_STREQ("dc=example", attr.searchroot);
}

TEST_F(LdapAddrList, ReadsTextsWithoutTheirNul) {
    stored().setBytes("server", ZXREG_STRING, "abc");
    stored().setBytes("searchroot", ZXREG_STRING, "");
    const _ZxPolAddrListAttr attr = read();
    EXPECT_STREQ("abc", attr.server);
    EXPECT_STREQ("", attr.searchroot);
}

TEST_F(LdapAddrList, StopsReadingAtAMissingOrHugeSetting) {
    stored().removeValue("port");
    const _ZxPolAddrListAttr missing = read(ZXPOL_E_NOT_FOUND);
    EXPECT_STREQ("ldap.example.com", missing.server);
    EXPECT_STREQ("before", missing.filter);
    stored().setNumber("port", 1);
    stored().setText("username", std::string(2048, 'u'));
    const _ZxPolAddrListAttr huge = read(ZXPOL_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(1u, huge.port);
    EXPECT_STREQ("", huge.password);
}

TEST_F(LdapAddrList, NeedsNoNameToBeRead) {
    stored().removeValue("displayName");
    stored().removeValue("comment");
    EXPECT_STREQ("ldap.example.com", read().server);
}

TEST_F(LdapAddrList, RefusesTextsWithoutNulAndWritesNothing) {
    const auto code = [&](auto field) {
        _ZxPolAddrListAttr attr = directoryAttr("changed");
        std::memset(attr.*field, 'x', sizeof(attr.*field));
        int error = ZXPOL_S_OK;
        list().setAttrib(&attr, &error);
        return error;
    };
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::displayName));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::comment));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::server));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::searchroot));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::username));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::password));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(&_ZxPolAddrListAttr::filter));
    EXPECT_STREQ("Far", read().displayName);
}

TEST_F(LdapAddrList, RefusesNullRecords) {
    int error = ZXPOL_S_OK;
    list().getAttrib(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    list().setAttrib(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    _ZxPolAddrListAttr attr{};
    list().getAttrib(&attr, nullptr);
    list().setAttrib(&attr, nullptr);
    EXPECT_EQ(0u, attr.type);
    EXPECT_STREQ("Far", read().displayName);
}

TEST_F(LdapAddrList, AnswersAMatchWithARefusal) {
    uint32_t weight = 77;
    int error = ZXPOL_S_OK;
    EXPECT_TRUE(list().matchAddress("a@b.example", &weight, ZXPOL_WEIGHT_NAME_FIRST, &error));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    EXPECT_EQ(0u, weight);
    error = ZXPOL_S_OK;
    EXPECT_TRUE(list().matchAddress(nullptr, nullptr, ZXPOL_WEIGHT_NAME_FIRST, &error));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    EXPECT_TRUE(list().matchAddress(nullptr, nullptr, ZXPOL_WEIGHT_NAME_FIRST, nullptr));
}

TEST_F(LdapAddrList, RefusesAllElseWhateverTheArguments) {
    int errors[4] = {};
    list().insertAddresses(nullptr, &errors[0]);
    list().removeAddresses(nullptr, &errors[1]);
    list().enumAddress(0, nullptr, nullptr, &errors[2]);
    list().importAddresses(9, 9, nullptr, &errors[3]);
    for (const int error : errors)
        EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
}

}  // namespace

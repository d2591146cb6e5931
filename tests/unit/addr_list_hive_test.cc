// ZxPolAddrListHive: the kinds of lists, and what the flat interface does not show.
#include "addrlist/ldap_addr_list.h"
#include "addrlist/normal_addr_list.h"
#include "unit/match_fixture.h"

namespace {

using namespace zxtest;

class AddrListHive : public MatchTest {
protected:
    using List = std::unique_ptr<ZxPolAddrList>;

    List open(const char* name, int* error) const { return List(lists().openAddrList(name, error)); }
    List create(const char* name, const _ZxPolAddrListAttr* attr, int* error) const {
        return List(lists().createAddrList(name, attr, error));
    }
    std::vector<std::string> names() const { return raw("AddressList").subkeys(); }
};

TEST_F(AddrListHive, MakesTheKindOfListThatIsAskedFor) {
    _ZxPolAddrListAttr attr = directoryAttr("Far");
    int error = ZXPOL_S_OK;
    EXPECT_NE(nullptr, dynamic_cast<ZxPolLdapAddrList*>(create("Far", &attr, &error).get()));
    attr.type = ZXPOL_ADDRLIST_NORMAL;
    EXPECT_NE(nullptr, dynamic_cast<ZxPolNormalAddrList*>(create("Near", &attr, &error).get()));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::vector<std::string>({"Far", "Near"}), names());
}

TEST_F(AddrListHive, RefusesWhatCannotBeAList) {
    const auto code = [&](const char* name, const _ZxPolAddrListAttr* attr) {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, create(name, attr, &error));
        return error;
    };
    _ZxPolAddrListAttr attr = directoryAttr("Far");
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code(nullptr, &attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("", &attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("Far", nullptr));
    attr.type = 2;
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("Far", &attr));
    attr = directoryAttr("Far");
    std::memset(attr.password, 'x', sizeof attr.password);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, code("Far", &attr));
    EXPECT_EQ(std::vector<std::string>(), names());
}

TEST_F(AddrListHive, DoesNothingWithoutAResult) {
    const _ZxPolAddrListAttr attr = directoryAttr("Far");
    EXPECT_EQ(nullptr, create("Far", &attr, nullptr));
    EXPECT_EQ(nullptr, open("Far", nullptr));
    EXPECT_EQ(nullptr, ZxPolAddrListHive::open(store(), nullptr));
    EXPECT_EQ(std::vector<std::string>(), names());
}

TEST_F(AddrListHive, OpensAListByTheTypeThatIsStored) {
    addDirectoryList("Far");
    int error = ZXPOL_E_EXCEPTION;
    EXPECT_NE(nullptr, open("Far", &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    RawKey stored = raw("AddressList\\Far");
    stored.setNumber("type", 0);
    EXPECT_NE(nullptr, dynamic_cast<ZxPolNormalAddrList*>(open("Far", &error).get()));
    EXPECT_CODE(ZXPOL_S_OK, error);
    stored.setNumber("type", 2);
    EXPECT_EQ(nullptr, open("Far", &error));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
    stored.setText("type", "one");
    EXPECT_EQ(nullptr, open("Far", &error));
    EXPECT_LT(error, 0);
    stored.removeValue("type");
    EXPECT_EQ(nullptr, open("Far", &error));
    EXPECT_EQ(0x1804u, reasonOf(error));
}

TEST_F(AddrListHive, LeavesItsListsUsableWhenItIsGone) {
    addDirectoryList("Far");
    int error = ZXPOL_S_OK;
    std::unique_ptr<ZxPolAddrListHive> other(ZxPolAddrListHive::open(store(), &error));
    const List list(other->openAddrList("Far", &error));
    other.reset();
    ASSERT_NE(nullptr, list);
    _ZxPolAddrListAttr attr{};
    list->getAttrib(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("Far", attr.displayName);
}

TEST_F(AddrListHive, RefusesToDeleteWithoutAName) {
    addDirectoryList("Far");
    int error = ZXPOL_S_OK;
    lists().deleteAddrList(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    lists().deleteAddrList("", &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(std::vector<std::string>({"Far"}), names());
}

}  // namespace

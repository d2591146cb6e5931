// Several objects on one list, lists of one name in several stores, and lists that change or vanish under an object.
#include "support/list_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::Lines;
using zxtest::RawKey;

class SharingAList : public zxtest::ListTest {
protected:
    // A second store with an address-list hive.
    class OtherStore {
    public:
        OtherStore() {
            int error = ZXREG_S_OK;
            _root.reset(zxreg_openStore("memory:", &error));
            _hive.reset(zxpol_openAddrListHive(_root.get(), &error));
            EXPECT_CODE(ZXPOL_S_OK, error);
        }
        Handle create(const char* name) {
            const _ZxPolAddrListAttr attr = normalAttributes();
            int error = ZXPOL_S_OK;
            return Handle(zxpol_createAddrList(_hive.get(), name, &attr, &error));
        }
        int remove(const char* name) {
            int error = ZXPOL_S_OK;
            zxpol_deleteAddrList(_hive.get(), name, &error);
            return error;
        }

    private:
        Handle _root, _hive;
    };
};
ZXTEST_ON_BOTH_ENGINES(SharingAList);

TEST_P(SharingAList, EachObjectSeesWhatTheOtherDoes) {
    const Handle one = create();
    const Handle two = open();
    EXPECT_CODE(ZXPOL_S_OK, insert(one, {"a@b.c", "*@d.e"}));
    EXPECT_EQ((Lines{"a@b.c", "*@d.e"}), addresses(two));
    EXPECT_CODE(ZXPOL_S_OK, remove(two, {"a@b.c"}));
    EXPECT_EQ(Lines{"*@d.e"}, addresses(one));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(one, {"a@b.c"}));
    EXPECT_CODE(ZXPOL_S_OK, insert(one, {"f@g.h"}));
    EXPECT_CODE(ZXPOL_S_OK, insert(two, {"i@j.k"}));
    EXPECT_EQ((Lines{"*@d.e", "f@g.h", "i@j.k"}), addresses(one));
    EXPECT_EQ(imagesOf({{"*@d.e", "f@g.h", "i@j.k"}}), images());
}

TEST_P(SharingAList, ClosingOneLeavesTheOther) {
    Handle one = create("L", {"a@b.c"});
    const Handle two = open();
    one.reset();
    closeHives();
    EXPECT_EQ(Lines{"a@b.c"}, addresses(two));
    EXPECT_CODE(ZXPOL_S_OK, insert(two, {"d@e.f"}));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), addresses(two));
}

TEST_P(SharingAList, CreatingAnExistingListOpensIt) {
    create("L", {"a@b.c"});
    EXPECT_EQ(Lines{"a@b.c"}, addresses(create("L")));
    EXPECT_EQ(imagesOf({{"a@b.c"}}), images());
}

TEST_P(SharingAList, ListsOfOneNameInTwoStoresAreTwo) {
    OtherStore other;
    const Handle here = create("L", {"a@b.c"});
    const Handle there = other.create("L");
    EXPECT_EQ(Lines{}, addresses(there));
    EXPECT_CODE(ZXPOL_S_OK, insert(there, {"d@e.f"}));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(here));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(open()));
    EXPECT_EQ(Lines{"d@e.f"}, addresses(there));
    EXPECT_TRUE(holds("a@b.c"));
    EXPECT_FALSE(holds("d@e.f"));
    EXPECT_CODE(ZXPOL_S_OK, remove(there, {"d@e.f"}));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(open()));
    EXPECT_CODE(ZXPOL_S_OK, other.remove("L"));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(open()));
    EXPECT_CODE(ZXPOL_S_OK, insert(here, {"g@h.i"}));
    EXPECT_EQ((Lines{"a@b.c", "g@h.i"}), addresses(open()));
}

TEST_P(SharingAList, DeletingAnotherStoresListLeavesOpenObjectsWhole) {
    OtherStore other;
    const Handle here = create("L", {"a@b.c"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, other.remove("L"));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(here));
    EXPECT_CODE(ZXPOL_S_OK, insert(here, {"d@e.f"}));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), addresses(open()));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), addresses(here));
    EXPECT_EQ(imagesOf({{"a@b.c", "d@e.f"}}), images());
}

TEST_P(SharingAList, ADeletedListIsFreshWhenItIsCreatedAgain) {
    create("L", {"a@b.c", "*@d.e"});
    EXPECT_CODE(ZXPOL_S_OK, deleteList());
    EXPECT_CODE(ZXREG_E_NOT_FOUND, codeOfOpening());
    const Handle again = create();
    EXPECT_EQ(Lines{}, addresses(again));
    EXPECT_FALSE(holds("a@b.c"));
    EXPECT_CODE(ZXPOL_S_OK, insert(again, {"a@b.c"}));
    EXPECT_EQ(imagesOf({{"a@b.c"}}), images());
}

TEST_P(SharingAList, AListDeletedWhileItIsOpenCannotBeChanged) {
    const Handle open1 = create("L", {"a@b.c"});
    EXPECT_CODE(ZXPOL_S_OK, deleteList());
    EXPECT_TRUE(ZX_FAILURE(insert(open1, {"d@e.f"})));
    EXPECT_TRUE(ZX_FAILURE(remove(open1, {"a@b.c"})));
    EXPECT_FALSE(raw("AddressList").hasKey("L"));
    addresses(open1);
    _ZxPolAddrListAttr attr = normalAttributes();
    int error = ZXPOL_S_OK;
    zxpol_getAddrListAttrib(open1.get(), &attr, &error);
    EXPECT_TRUE(ZX_FAILURE(error));
}

TEST_P(SharingAList, AnObjectOnADeletedListDoesNotTouchTheOneCreatedAgain) {
    const Handle old = create("L", {"a@b.c"});
    EXPECT_CODE(ZXPOL_S_OK, deleteList());
    const Handle fresh = create("L", {"x@y.z"});
    EXPECT_TRUE(ZX_FAILURE(insert(old, {"d@e.f"})));
    EXPECT_TRUE(ZX_FAILURE(remove(old, {"x@y.z"})));
    EXPECT_EQ(Lines{"x@y.z"}, addresses(fresh));
    EXPECT_EQ(imagesOf({{"x@y.z"}}), images());
    EXPECT_CODE(ZXPOL_S_OK, insert(fresh, {"d@e.f"}));
    EXPECT_EQ((Lines{"x@y.z", "d@e.f"}), addresses(open()));
    EXPECT_FALSE(holds("a@b.c"));
}

TEST_P(SharingAList, AChangeBehindTheLibrarysBackIsSeenByTheNextOpen) {
    const Handle before = create("L", {"a@b.c"});
    EXPECT_FALSE(holds("d@e.f"));
    key().setBytes("address1", ZXREG_MULTI_STRING, zxtest::imageOf({"d@e.f", "*@g.h"}));
    EXPECT_EQ((Lines{"d@e.f", "*@g.h"}), addresses(open()));
    EXPECT_TRUE(holds("d@e.f"));
    EXPECT_TRUE(holds("any@g.h"));
    EXPECT_FALSE(holds("a@b.c"));
    key().removeValue("address1");
    EXPECT_EQ(Lines{}, addresses(open()));
    EXPECT_FALSE(holds("d@e.f"));
}

TEST_P(SharingAList, AChangeMadeThroughAnObjectGoesByWhatTheStoreHoldsNow) {
    const Handle list = create("L", {"a@b.c"});
    key().setBytes("address1", ZXREG_MULTI_STRING, zxtest::imageOf({"d@e.f"}));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"d@e.f", "a@b.c"}));
    EXPECT_EQ(imagesOf({{"d@e.f", "a@b.c"}}), images());
    key().setBytes("address1", ZXREG_MULTI_STRING, zxtest::imageOf({"g@h.i"}));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c", "g@h.i"}));
    EXPECT_EQ(Lines{}, addresses(open()));
}

TEST_P(SharingAList, DeletingReportsWhatTheStoreSays) {
    EXPECT_CODE(ZXREG_E_NOT_FOUND, deleteList("Nowhere"));
    create("L", {"a@b.c"});
    EXPECT_CODE(ZXPOL_S_OK, deleteList());
    EXPECT_CODE(ZXREG_E_NOT_FOUND, deleteList());
}

// Other programs may have stored an address twice. As long as a copy is there, the list holds it.
TEST_P(SharingAList, AnAddressStoredTwiceGoesOnMatchingUntilTheLastCopyIsGone) {
    store({{"a@b.c", "d@e.f"}, {"A@b.c"}});
    const Handle list = open();
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"a@b.c"}));
    EXPECT_EQ((Lines{"d@e.f", "A@b.c"}), addresses(list));
    EXPECT_TRUE(holds("a@b.c"));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"a@b.c"}));
    EXPECT_EQ(Lines{"d@e.f"}, addresses(list));
    EXPECT_FALSE(holds("a@b.c"));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, {"a@b.c"}));
}

TEST_P(SharingAList, AListIsTheSameWithABackslashBehindItsName) {
    const Handle list = create("L", {"a@b.c"});
    const Handle same = open("L\\");
    EXPECT_CODE(ZXPOL_S_OK, insert(same, {"d@e.f"}));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), addresses(list));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"d@e.f"}));
    EXPECT_EQ(imagesOf({{"a@b.c", "d@e.f"}}), images());
}

TEST_P(SharingAList, AnInsertionFillsTheLastValueWhoeverBeganIt) {
    const Handle list = create("L", {zxtest::sized(500, 'a'), zxtest::sized(500, 'b')});
    // Another program begins a value of its own.
    key().setBytes("address2", ZXREG_MULTI_STRING, zxtest::imageOf({"x@y.z"}));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"d@e.f"}));
    EXPECT_EQ(imagesOf({{zxtest::sized(500, 'a'), zxtest::sized(500, 'b')}, {"x@y.z", "d@e.f"}}), images());
}

}  // namespace

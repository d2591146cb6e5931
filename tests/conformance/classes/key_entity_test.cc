// Keyed entities, where the flat interface does not show what they return.
#include "store/key_entity.h"

#include "support/store_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;

class KeyedEntity : public zxtest::StoreTest {
protected:
    void make(ZxPolKeyEntity& entity, const char* name, uint32_t order = 0) {
        int error = ZXPOL_S_OK;
        const Handle child(entity.createChild(name, &error, &order));
        EXPECT_TRUE(child != nullptr) << zxtest::codeText(error);
    }
    std::optional<uint32_t> orderOf(const std::string& name) { return raw("items\\" + name).number("order"); }
};
ZXTEST_ON_BOTH_ENGINES(KeyedEntity);

TEST_P(KeyedEntity, MovingReturnsThePositionGiven) {
    ZxPolKeyEntity entity(store(), 1, "items\\", 0);
    for (const char* name : {"a", "b", "c", "d"})
        make(entity, name);
    int error = ZXPOL_S_OK;
    EXPECT_EQ(4u, entity.setChildOrder("b", 9, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(2u, entity.setChildOrder("b", 2, &error));
    EXPECT_EQ(0u, entity.setChildOrder("b", 0, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(0u, entity.setChildOrder("x", 1, &error));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_EQ(0u, entity.setChildOrder("b", 1, nullptr));
    EXPECT_EQ(2u, orderOf("b"));
}

TEST_P(KeyedEntity, CreatingAnExistingChildReturnsItsKeyAndLeavesTheWantedPosition) {
    ZxPolKeyEntity entity(store(), 1, "items\\", 0);
    for (const char* name : {"a", "b"})
        make(entity, name);
    raw("items\\b").setText("mark", "here");
    int error = ZXPOL_S_OK;
    uint32_t order = 1;
    const Handle again(entity.createChild("b", &error, &order));
    ASSERT_NE(nullptr, again);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("here", RawKey(again.get()).text("mark"));
    EXPECT_EQ(1u, order);
    EXPECT_EQ(2u, orderOf("b"));
}

TEST_P(KeyedEntity, CreatingChecksItsArguments) {
    ZxPolKeyEntity entity(store(), 1, "items\\", 0);
    uint32_t order = 0;
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, entity.createChild(nullptr, &error, &order));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, entity.createChild("", &error, &order));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    order = 0xffffffffu;
    EXPECT_EQ(nullptr, entity.createChild("a", &error, &order));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ(nullptr, entity.createChild("a", nullptr, &order));
    EXPECT_FALSE(raw().hasKey("items"));
}

TEST_P(KeyedEntity, ChildrenOfAnUnorderedEntityHaveNoPositions) {
    ZxPolKeyEntity entity(store(), 0, "", 0);
    int error = ZXPOL_S_OK;
    Handle(entity.createChild("b", &error, nullptr)).reset();
    Handle(entity.createChild("a", &error, nullptr)).reset();
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ((std::vector<std::string>{"b", "a"}), raw().subkeys());
    EXPECT_TRUE(raw("a").valueNames().empty());
    char name[8];
    uint32_t size = sizeof name;
    entity.enumChild(1, name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("a", name);
    EXPECT_EQ(1u, size);  // the store's convention: without the NUL
    entity.enumChild(2, name, &size, &error);
    EXPECT_EQ(12u, zxtest::reasonOf(error));
}

TEST_P(KeyedEntity, EnumeratingInTheStoresOrderChecksItsArguments) {
    ZxPolKeyEntity entity(store(), 0, "", 0);
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    entity.enumChild(0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    entity.enumChild(0, name, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(KeyedEntity, OnlyOrderedExactlyOneRenumbersOnDeletion) {
    ZxPolKeyEntity entity(store(), 2, "items\\", 0);
    for (const char* name : {"a", "b", "c"})
        make(entity, name);
    int error = ZXPOL_S_OK;
    entity.deleteChild("a", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(2u, orderOf("b"));
    EXPECT_EQ(3u, orderOf("c"));
    EXPECT_CODE(ZXPOL_S_OK, entity.rescanChildOrder());
    EXPECT_EQ(1u, orderOf("b"));
    EXPECT_EQ(2u, orderOf("c"));
}

TEST_P(KeyedEntity, RescanningNothingIsASuccessWhereTheContainerIs) {
    ZxPolKeyEntity entity(store(), 1, "items\\", 0);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, entity.rescanChildOrder());
    raw().makeKey("items");
    EXPECT_CODE(ZXPOL_S_OK, entity.rescanChildOrder());
}

TEST_P(KeyedEntity, APositionThatCannotBeReadIsMinusOne) {
    ZxPolKeyEntity entity(store(), 1, "items\\", 0);
    make(entity, "a");
    const RawKey container = raw("items");
    char a[] = "a", x[] = "x";
    EXPECT_EQ(1, entity.getChildOrder(container.handle(), a));
    EXPECT_EQ(-1, entity.getChildOrder(container.handle(), x));
    raw("items\\a").removeValue("order");
    EXPECT_EQ(-1, entity.getChildOrder(container.handle(), a));
}

TEST_P(KeyedEntity, ACacheThatWasEmptiedHasNoItems) {
    ZxPolKeyEntity entity(store(), 1, "items\\", 0);
    for (const char* name : {"a", "b"})
        make(entity, name);
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    entity.enumChildByOrder(0, name, &size, &error);
    entity.cleanChildList();
    size = sizeof name;
    entity.enumChildByOrder(1, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
}

TEST_P(KeyedEntity, CommonAttributesAreStringsWrittenInOrder) {
    ZxPolKeyEntity entity(store(), 0, "", 0);
    _ZxPolCommAttrib attr = {"name", "words"};
    int error = ZXPOL_S_OK;
    entity.setCommonAttrib(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ((std::vector<std::string>{"displayName", "comment"}), raw().valueNames());
    EXPECT_EQ("name", raw().text("displayName"));
    EXPECT_EQ("words", raw().text("comment"));
    attr = {};
    entity.getCommonAttrib(&attr, &error);
    EXPECT_STREQ("name", attr.displayName);
    EXPECT_STREQ("words", attr.comment);
}

TEST_P(KeyedEntity, AMissingDisplayNameKeepsTheCommentFromBeingRead) {
    ZxPolKeyEntity entity(store(), 0, "", 0);
    raw().setText("comment", "words");
    _ZxPolCommAttrib attr = {"", "kept"};
    int error = ZXPOL_S_OK;
    entity.getCommonAttrib(&attr, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_STREQ("kept", attr.comment);
}

TEST_P(KeyedEntity, TheOwnedKeyIsClosedOnlyWhenOwned) {
    raw().makeKey("a");
    const RawKey a = raw("a");
    { ZxPolKeyEntity borrowing(a.handle(), 0, "", 0); }
    EXPECT_TRUE(a.subkeys().empty());
    int error = ZXREG_S_OK;
    { ZxPolKeyEntity owning(zxreg_openKey(store(), "a", &error), 0, "", 1); }
    EXPECT_TRUE(a.valueNames().empty());
}

}  // namespace

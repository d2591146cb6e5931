// The search for references over a store that fails here and there: what cannot be read refers to nothing, and only the
// root rule's failure is told.
#include <gtest/gtest.h>

#include "map_store.h"
#include "support/raw_store.h"

namespace {

using zxtest::Handle;
using zxtest::ownStore;
using zxtest::ownSubkeys;
using Lines = std::vector<std::string>;

// The rules \A, \A\B and \C and their tasks a, b and c, each with a condition on the list L and an outcome Virus.
class OwnReference : public ::testing::Test {
protected:
    void SetUp() override {
        ownStore() = zxtest::OwnStore();
        _root.reset(zxtest::newOwnStore());
        int error = ZXPOL_S_OK;
        const Handle hive(zxpol_openRuleHive(root(), 0, &error));
        const Handle top(zxpol_openRootRule(hive.get(), &error));
        ASSERT_NE(nullptr, top) << zxtest::codeText(error);
        const Handle a = addRule(top, "A", "a");
        addRule(a, "B", "b");
        addRule(top, "C", "c");
    }
    void TearDown() override {
        EXPECT_EQ(1, ownStore().openKeys);
        _root.reset();
        EXPECT_EQ(0, ownStore().openUpdates);
    }
    _ZxPolComHandle* root() const { return _root.get(); }

    static Handle addRule(const Handle& parent, const char* name, const char* taskName) {
        _ZxPolRuleAttr attr = {};
        const _ZxPolAddrPairCond pair = {"(L)", "*"};
        const unsigned char* conditions[] = {reinterpret_cast<const unsigned char*>(&pair), nullptr};
        int error = ZXPOL_S_OK;
        Handle made(zxpol_createRule(parent.get(), name, &attr, conditions, &error));
        _ZxPolTaskAttr taskAttr = {};
        const Handle task(zxpol_createTask(made.get(), taskName, &taskAttr, &error));
        zxpol_addOutcome(task.get(), "infected", "Virus", &error);
        EXPECT_GE(error, 0) << name << ": " << zxtest::codeText(error);
        return made;
    }

    // The rule found, "none", or the failure.
    std::string first(ZxPolRefEntity entity, const char* name) {
        char path[64] = "untouched";
        uint32_t size = sizeof path;
        int error = ZXPOL_S_OK;
        const int answer = zxpol_checkReferInRule(root(), entity, name, path, &size, &error);
        EXPECT_EQ(1, ownStore().openKeys);
        EXPECT_TRUE(answer != 0 || (std::string(path) == "untouched" && size == sizeof path));
        if (error < 0) return zxtest::codeText(error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        return answer == 0 ? "none" : path;
    }
    std::string list() { return first(ZXPOL_REF_ADDRLIST, "L"); }
    std::string classification() { return first(ZXPOL_REF_CLASSIFICATION, "Virus"); }
    std::string both() { return list() + " " + classification(); }

private:
    Handle _root;
};

TEST_F(OwnReference, AreFoundAndEveryKeyIsClosed) {
    EXPECT_EQ("\\A\\B \\A\\B", both());
}

TEST_F(OwnReference, AChildThatCannotBeOpenedIsPassedOver) {
    for (const bool givesKey : {false, true}) {
        ownStore().givesKeysWithFailures = givesKey;
        ownStore().failingOpens = {{"B", zxtest::kOwnFailure}};
        EXPECT_EQ("\\A \\A", both()) << "its position cannot be read either";
        ownStore().spared["B"] = 1;
        EXPECT_EQ("\\A", list());
        ownStore().spared["B"] = 1;
        EXPECT_EQ("\\A", classification());
        ownStore().failingOpens = {{"A", zxtest::kOwnFailure}};
        EXPECT_EQ("\\C \\C", both());
        ownStore().failingOpens = {{"A", zxtest::kOwnFailure}, {"C", zxtest::kOwnFailure}};
        EXPECT_EQ("none none", both());
    }
}

TEST_F(OwnReference, ARuleWhoseChildrenCannotBeListedIsNotLookedAtItself) {
    int error = ZXPOL_S_OK;
    const Handle a(zxreg_openKey(root(), "Rule\\Mail\\rules\\A", &error));
    zxreg_deleteKey(a.get(), "rules", &error);
    ASSERT_GE(error, 0);
    EXPECT_EQ(2, ownStore().openKeys);
    char path[64];
    uint32_t size = sizeof path;
    for (const auto& [entity, name] :
         {std::make_pair(ZXPOL_REF_ADDRLIST, "L"), std::make_pair(ZXPOL_REF_CLASSIFICATION, "Virus")}) {
        size = sizeof path;
        EXPECT_EQ(1, zxpol_checkReferInRule(root(), entity, name, path, &size, &error));
        EXPECT_CODE(ZXPOL_S_OK, error);
        EXPECT_STREQ("\\C", path);
    }
}

TEST_F(OwnReference, ConditionsThatCannotBeReadReferToNothing) {
    ownStore().failingReads = {{"condition1", zxtest::kOwnFailure}};
    EXPECT_EQ("none \\A\\B", both());
    ownStore().failingReads = {{"matchType", zxtest::kOwnFailure}};
    EXPECT_EQ("none \\A\\B", both());
}

TEST_F(OwnReference, ATaskThatCannotBeOpenedIsPassedOver) {
    for (const bool givesKey : {false, true}) {
        ownStore().givesKeysWithFailures = givesKey;
        ownStore().failingOpens = {{"b", zxtest::kOwnFailure}};
        EXPECT_EQ("\\A\\B \\A", both());
        ownStore().spared["b"] = 1;
        EXPECT_EQ("\\A", classification());
    }
    ownStore().failingOpens = {{"a", zxtest::kOwnFailure}, {"b", zxtest::kOwnFailure}, {"c", zxtest::kOwnFailure}};
    EXPECT_EQ("\\A\\B none", both());
}

// A code of that reason which tells of no size is not about one long outcome.
TEST_F(OwnReference, OutcomesThatAreAlwaysTooLargeEndTheSearchInTheirTask) {
    ownStore().failingMakes = {{"Classification", zxtest::kOwnTooSmall}};
    EXPECT_EQ("\\A\\B none", both());
}

TEST_F(OwnReference, TheTasksBehindOneThatCannotBeReadAreLookedAt) {
    int error = ZXPOL_S_OK;
    const Handle b(zxreg_openKey(root(), "Rule\\Mail\\rules\\A\\rules\\B", &error));
    const Handle made(zxreg_createKey(b.get(), "tasks\\z", &error));
    const uint32_t order = 2;
    zxreg_setValue(made.get(), "order", ZXREG_NUMBER, &order, 4, &error);
    const Handle outcomes(zxreg_createKey(made.get(), "Classification", &error));
    zxreg_setValue(outcomes.get(), "o", ZXREG_STRING, "Second", 7, &error);
    ASSERT_GE(error, 0);
    ownStore().failingOpens = {{"b", zxtest::kOwnFailure}};
    ownStore().spared["b"] = 1;  // its position is read
    char path[64];
    uint32_t size = sizeof path;
    EXPECT_EQ(1, zxpol_checkReferInRule(root(), ZXPOL_REF_CLASSIFICATION, "second", path, &size, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("\\A\\B", path);
}

TEST_F(OwnReference, OutcomesThatCannotBeReachedReferToNothing) {
    ownStore().failingMakes = {{"Classification", zxtest::kOwnFailure}};
    ownStore().failingOpens = {{"Classification", zxtest::kOwnFailure}};
    EXPECT_EQ("\\A\\B none", both());
}

TEST_F(OwnReference, TheRootsFailureIsReported) {
    for (const bool givesKey : {false, true}) {
        ownStore().givesKeysWithFailures = givesKey;
        ownStore().failingMakes.clear();
        ownStore().failingOpens = {{"Mail", zxtest::kOwnFailure}};
        EXPECT_EQ(zxtest::codeText(zxtest::kOwnFailure), list());
        EXPECT_EQ(zxtest::codeText(zxtest::kOwnFailure), classification());
        ownStore().failingOpens.clear();
        ownStore().failingMakes = {{"Rule", zxtest::kOwnFailure}};
        EXPECT_EQ(zxtest::codeText(zxtest::kOwnFailure), list());
        EXPECT_EQ(zxtest::codeText(zxtest::kOwnFailure), classification());
    }
}

TEST_F(OwnReference, AnUnknownEntityIsLookedForInTheRootOnly) {
    EXPECT_EQ("none", first(static_cast<ZxPolRefEntity>(2), "L"));
    ownStore().failingOpens = {{"Mail", zxtest::kOwnFailure}};
    EXPECT_EQ(zxtest::codeText(zxtest::kOwnFailure), first(static_cast<ZxPolRefEntity>(2), "L"));
}

}  // namespace

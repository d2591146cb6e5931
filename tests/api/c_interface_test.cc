// The interface driven from C, and its records as C++ sees them.
#include <gtest/gtest.h>

#include "c_driver.h"
#include "zxpolicy.h"

namespace {

TEST(CInterface, MatchesAMail) {
    EXPECT_EQ(0, zxtestMatchFromC()) << "line of c_driver.c";
}

TEST(CInterface, ChainsCallsOnOneResult) {
    EXPECT_EQ(0, zxtestChainFromC()) << "line of c_driver.c";
}

TEST(CInterface, ChecksConditions) {
    EXPECT_EQ(0, zxtestConditionsFromC()) << "line of c_driver.c";
}

TEST(CInterface, KeepsDirectoryLists) {
    EXPECT_EQ(0, zxtestListsFromC()) << "line of c_driver.c";
}

TEST(CInterface, KeepsClassificationsAndFindsReferences) {
    EXPECT_EQ(0, zxtestClassificationsFromC()) << "line of c_driver.c";
}

TEST(CInterface, ConvertsTexts) {
    EXPECT_EQ(0, zxtestCodePagesFromC()) << "line of c_driver.c";
}

TEST(CInterface, HasTheSameRecordsInBothLanguages) {
    EXPECT_EQ(0, zxtestLayoutFromC());
    EXPECT_EQ(4u, sizeof(ZxPolCondCheck));
    EXPECT_EQ(4u, sizeof(ZxPolFilterPriorityType));
    EXPECT_EQ(4u, sizeof(ZxPolMatchPriorityType));
    EXPECT_EQ(4u, sizeof(ZxPolMatchWeightType));
    EXPECT_EQ(4u, sizeof(ZxPolRefEntity));
    EXPECT_EQ(784u + sizeof(void*), sizeof(_ZxPolTaskAttr));
    EXPECT_EQ(776u + sizeof(void*), sizeof(_ZxPolActionAttr));
    EXPECT_EQ(2616u, sizeof(_ZxPolAddrListAttr));
    EXPECT_EQ(4 * sizeof(void*), sizeof(_ZxPolMatchPair));
}

}  // namespace

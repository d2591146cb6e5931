// The log, as far as every host's log behaves alike.
#include <gtest/gtest.h>

#include <thread>

#include "zxbase.h"

namespace {

TEST(Log, IsOneObjectOfTheProcess) {
    ZxIntLog* log = grGetLog();
    ASSERT_NE(log, nullptr);
    ZxIntLog* seenByThread = nullptr;
    std::thread([&] { seenByThread = grGetLog(); }).join();
    EXPECT_EQ(seenByThread, log);
}

TEST(Log, QuestionsHaveSteadyAnswers) {
    const bool enabled = grGetLog()->isEnabled(ZX_MODULE_POLICY);
    const unsigned int level = grGetLog()->getLogLevel();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(grGetLog()->isEnabled(ZX_MODULE_POLICY), enabled);
        EXPECT_EQ(grGetLog()->getLogLevel(), level);
    }
}

}  // namespace

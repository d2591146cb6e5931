// The fixture of tests that need a store: one of each engine, gone with the test.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/raw_store.h"

namespace zxtest {

// Runs every test on both engines: the parameter is "memory" or "sqlite".
class StoreTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        std::string location = "memory:";
        if (GetParam() == std::string("sqlite")) {
            std::string folder = ::testing::TempDir() + "zxpolicy-test-XXXXXX";
            ASSERT_NE(nullptr, mkdtemp(folder.data())) << folder;
            _folder = folder;
            location = "sqlite:" + folder + "/policy.db";
        }
        int error = ZXREG_S_OK;
        _store.reset(zxreg_openStore(location.c_str(), &error));
        ASSERT_NE(nullptr, _store) << location << ": " << codeText(error) << " " << zxreg_lastErrorText();
    }

    void TearDown() override {
        _store.reset();
        if (_folder.empty()) return;
        for (const char* suffix : {"", "-wal", "-shm", "-journal", ".key"})
            std::remove((_folder + "/policy.db" + suffix).c_str());
        std::remove(_folder.c_str());
    }

    // The store's root key.
    _ZxPolComHandle* store() const { return _store.get(); }

    // An existing key of the store, by its path from the root.
    RawKey raw(const std::string& path = "") const { return RawKey(store(), path); }

private:
    Handle _store;
    std::string _folder;
};

#define ZXTEST_ON_BOTH_ENGINES(suite)                          \
    INSTANTIATE_TEST_SUITE_P(                                  \
        Engines, suite, ::testing::Values("memory", "sqlite"), \
        [](const ::testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); })

}  // namespace zxtest

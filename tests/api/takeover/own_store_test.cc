// A program that defines the nine operations of the store itself takes the store over, although the store library is
// loaded beside it. Linked with map_store.cc.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "map_store.h"
#include "policy_life.h"

namespace {

TEST(OwnStore, LivesAPolicysWholeLife) {
    _ZxPolComHandle* store = zxhost_openRoot();
    const uint64_t before = zxhost_calls();
    zxtest::livePolicyLife(store);
    EXPECT_LT(before, zxhost_calls());
    EXPECT_EQ(1u, zxhost_openKeys());
    int error = 0;
    zxreg_closeKey(store, &error);
}

// Under the spy's directory the store library beside the program is one that counts.
TEST(OwnStore, StoreLibraryBesideItIsNeverCalled) {
    using Counter = uint64_t();
    void* found = dlsym(RTLD_DEFAULT, "zxspy_calls");
    ASSERT_EQ(std::getenv("ZX_WITH_SPY") != nullptr, found != nullptr) << "not the store library that was wanted";
    if (found == nullptr) return;
    EXPECT_NE(nullptr, dlsym(RTLD_DEFAULT, "zxreg_beginUpdate"));
    _ZxPolComHandle* store = zxhost_openRoot();
    zxtest::livePolicyLife(store);
    int error = 0;
    zxreg_closeKey(store, &error);
    EXPECT_EQ(0u, reinterpret_cast<Counter*>(found)());
}

}  // namespace

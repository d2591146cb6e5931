// Another libzxregistry.so.1, earlier in the search path, takes the store over; it offers no optional service.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "map_store.h"
#include "policy_life.h"

namespace {

template <class Function>
Function* hostFunction(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

TEST(ReplacedStore, LivesAPolicysWholeLife) {
    auto* openRoot = hostFunction<decltype(zxhost_openRoot)>("zxhost_openRoot");
    ASSERT_NE(nullptr, openRoot) << "the host's library was not loaded";
    EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "zxreg_beginUpdate"));
    EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "zxreg_openStore")) << "two store libraries are loaded";
    _ZxPolComHandle* store = openRoot();
    const uint64_t before = hostFunction<decltype(zxhost_calls)>("zxhost_calls")();
    zxtest::livePolicyLife(store);
    EXPECT_LT(before, hostFunction<decltype(zxhost_calls)>("zxhost_calls")());
    EXPECT_EQ(1u, hostFunction<decltype(zxhost_openKeys)>("zxhost_openKeys")());
    int error = 0;
    hostFunction<decltype(zxreg_closeKey)>("zxreg_closeKey")(store, &error);
}

}  // namespace

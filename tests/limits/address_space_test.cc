// What fits into the address space of a 32-bit process, and what becomes of a call that does not find room.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "support/experiment.h"
#include "support/policy_fixture.h"

using namespace zxtest;

namespace {

// Runs `body`, which tells whether all went well, in a process of its own with so much address space.
template <class Body>
bool withAddressSpace(rlim_t bytes, Body body) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit = {bytes, bytes};
        _exit(setrlimit(RLIMIT_AS, &limit) == 0 && body() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A list of so many addresses and one match of so many receivers, in a store of its own. The failure's code or success.
int fillAndMatch(uint32_t addresses, uint32_t receivers) {
    int error = ZXPOL_S_OK;
    const Handle store(zxreg_openStore("memory:", &error));
    if (error < 0) return error;
    const Handle rules(zxpol_openRuleHive(store.get(), 0, &error)), lists(zxpol_openAddrListHive(store.get(), &error));
    _ZxPolAddrListAttr attr = {};
    const Handle list(zxpol_createAddrList(lists.get(), "L", &attr, &error));
    constexpr uint32_t kBatch = 10000;
    for (uint32_t begin = 0; begin < addresses && error >= 0; begin += kBatch) {
        // Taken at once, so that the test itself never misses memory in between.
        static std::vector<std::string> texts;
        static std::vector<const char*> batch;
        texts.clear();
        batch.clear();
        for (uint32_t index = begin; index < std::min(begin + kBatch, addresses); ++index)
            texts.push_back("user" + std::to_string(index) + "@example.com");
        for (const std::string& text : texts)
            batch.push_back(text.c_str());
        batch.push_back(nullptr);
        zxpol_insertAddress(list.get(), batch.data(), &error);
    }
    const std::vector<const char*> many = [receivers] {
        std::vector<const char*> all(receivers, "somebody@example.com");
        all.push_back(nullptr);
        return all;
    }();
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    zxpol_matchRuleByMailInfo(rules.get(), lists.get(), "a@x.example", const_cast<const char**>(many.data()), &pairs,
                              &count, &error);
    const int result = error;
    error = ZXPOL_S_OK;
    zxpol_freeMatchPair(pairs, count, &error);
    return result;
}

constexpr rlim_t kMiB = 1u << 20;

// Of this process: the first number of /proc/self/statm, in pages.
rlim_t addressSpaceInUse() {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

TEST(AddressSpace, HoldsABigListAndManyReceivers) {
    const rlim_t space = shortOrLong(512 * kMiB, 3072 * kMiB);
    const uint32_t addresses = shortOrLong(100000u, 2000000u);
    EXPECT_TRUE(withAddressSpace(space, [&] { return fillAndMatch(addresses, 100000) == ZXPOL_S_OK; }));
}

// With less room than that the calls say so; nothing ends the process.
TEST(AddressSpace, IsMissedWithACode) {
    EXPECT_TRUE(withAddressSpace(addressSpaceInUse() + 32 * kMiB, [] {
        const int result = fillAndMatch(2000000, 10);
        // A small list still finds its room.
        return result == ZXPOL_E_OUT_OF_MEMORY && fillAndMatch(1000, 10) == ZXPOL_S_OK;
    }));
}

}  // namespace

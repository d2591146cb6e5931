// The memory that rules and addresses take.
#include <malloc.h>

#include "limits/big_policy.h"
#include "support/experiment.h"

using namespace zxtest;

namespace {

#if defined(__SANITIZE_ADDRESS__)
// Here every piece of memory has a guard around it, and the numbers of malloc are none.
constexpr bool kIsMeasured = false;
#else
constexpr bool kIsMeasured = true;
#endif

size_t memoryInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

class Memory : public limits::BigPolicyTest {
protected:
    // Expects that `make` leaves at most so many bytes for each of `count` things.
    template <class Make>
    void expectAtMost(const char* what, size_t bytes, uint32_t count, Make make) {
        const size_t before = memoryInUse();
        make();
        if (!kIsMeasured) return;
        const size_t each = (memoryInUse() - before) / count;
        figure(sizeof(void*) == 4 ? "memory, 32-bit" : "memory, 64-bit", what, each);
        EXPECT_GT(each, 0u);
        EXPECT_LE(each, bytes) << what;
    }
};

TEST_P(Memory, OfARuleWithOneCondition) {
    constexpr uint32_t kCount = 300;
    expectAtMost("bytes of a rule with one condition", 3072, kCount, [&] {
        inOneUpdate(kCount, [&](uint32_t index) { addRule("\\", numbered("rule", index), "*@sender.example", "*"); });
    });
}

TEST_P(Memory, OfAnAddressInAnOpenList) {
    constexpr uint32_t kCount = 50000;
    Handle list;
    expectAtMost("bytes of an address in an open list", 160, kCount, [&] { list = makeList("L", kCount); });
}

// The memory of one engine: the other keeps the same tree.
INSTANTIATE_TEST_SUITE_P(Engines, Memory, ::testing::Values("memory"));

}  // namespace

// Reading what stood in a store at one moment.
#include "stored/snapshot.h"

#include <gtest/gtest.h>

namespace tool {

namespace {

void write(const Store& store, uint32_t number) {
    int result = ZXPOL_S_OK;
    zxreg_setValue(store.key(), "n", ZXREG_NUMBER, &number, sizeof number, &result);
    ASSERT_TRUE(ZX_SUCCESS(result));
}

}  // namespace

TEST(Snapshot, IsReadAgainWhileTheStoreChanges) {
    const Store store("memory:", Store::Missing::Create);
    uint32_t reads = 0;
    const auto read = [&] {
        if (++reads < 3) write(store, reads);
        return reads;
    };
    EXPECT_EQ(readAtOneMoment(store, read), 3U);
}

// What is not there counts only when the store did not change while it was looked for.
TEST(Snapshot, IsReadAgainWhenWhatWasThereHasGone) {
    const Store store("memory:", Store::Missing::Create);
    uint32_t reads = 0;
    const auto read = [&] {
        if (++reads > 1) return reads;
        write(store, reads);
        throw PolicyError("there is none");
    };
    EXPECT_EQ(readAtOneMoment(store, read), 2U);
    const auto fail = [&]() -> uint32_t { throw PolicyError("there is none"); };
    EXPECT_THROW(readAtOneMoment(store, fail), PolicyError);
}

// Where nobody can be made to wait, as in a file that may only be read, there may be no such moment.
TEST(Snapshot, FailsRatherThanMixTwoMoments) {
    const Store store("memory:", Store::Missing::Create);
    uint32_t reads = 0;
    const auto read = [&] {
        write(store, ++reads);
        return reads;
    };
    try {
        readAtOneMoment(store, read);
        FAIL() << "a changing store was read at one moment";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.code(), ZXREG_E_BUSY);
    }
    EXPECT_EQ(reads, 4U);
}

}  // namespace tool

// Memory that runs out inside the store's database: the call says so, nothing of it is kept, and the store goes on when
// there is memory again.
#include <sqlite3.h>

#include "crash/edited_store.h"
#include "support/experiment.h"
#include "support/store_dump.h"

namespace {

using zxtest::Handle;

// Which of the database's allocations fail.
struct Plan {
    uint64_t counted = 0;
    uint64_t first = 0;   // counted from 1; 0: none
    bool isOnce = false;  // else all that follow fail, too

    bool fails() {
        ++counted;
        return first != 0 && (isOnce ? counted == first : counted >= first);
    }
};
Plan plan;
sqlite3_mem_methods original;

void* take(int size) {
    return plan.fails() ? nullptr : original.xMalloc(size);
}
void* takeAgain(void* memory, int size) {
    return plan.fails() ? nullptr : original.xRealloc(memory, size);
}

// Before the database library is used for the first time.
const bool isInPlace = [] {
    if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &original) != SQLITE_OK) return false;
    sqlite3_mem_methods counting = original;
    counting.xMalloc = take;
    counting.xRealloc = takeAgain;
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &counting) == SQLITE_OK;
}();

class DatabaseMemory : public testing::Test {
protected:
    DatabaseMemory() {
        EXPECT_TRUE(isInPlace);
        open();
        change(0);
    }
    ~DatabaseMemory() override { plan = Plan(); }

    int open() {
        int error = ZXREG_S_OK;
        root.reset();
        root.reset(zxreg_openStore(("sqlite:" + folder.path() + "/policy.db").c_str(), &error));
        return error;
    }

    // An update of several writes; returns its code.
    int change(size_t number) const {
        const std::string text(500 + number % 7, static_cast<char>('a' + number % 26));
        int begun = ZXREG_S_OK;
        int error = ZXREG_S_OK;
        zxreg_beginUpdate(root.get(), &begun);
        if (begun < 0) return begun;
        for (int value = 0; value < 30 && error >= 0; ++value)
            zxreg_setValue(root.get(), ("v" + std::to_string(value)).c_str(), ZXREG_STRING, text.c_str(),
                           static_cast<uint32_t>(text.size() + 1), &error);
        int ended = ZXREG_S_OK;
        zxreg_endUpdate(root.get(), &ended);
        return error < 0 ? error : ended;
    }

    std::string text() const { return zxtest::describe(zxtest::readStore(root.get())); }

    // Makes a change while the memory fails as planned. False when there was enough for all of it.
    bool changeWithout(const Plan& wanted, size_t number) {
        const std::string before = text();
        plan = wanted;
        const int code = change(number);
        const bool hasFailed = plan.counted >= wanted.first;
        plan = Plan();
        if (code < 0) {
            EXPECT_EQ(zxtest::codeText(code), zxtest::codeText(ZXREG_E_OUT_OF_MEMORY)) << wanted.first;
            EXPECT_EQ(text() == before, true) << wanted.first;
            ++refused;
        } else {
            expectKept(before);
        }
        EXPECT_GE(change(number + 1), 0) << wanted.first << " the store is not usable any more";
        expectKept(before);
        return hasFailed;
    }

    // The store has changed, and holds the same when it is opened again.
    void expectKept(const std::string& before) {
        const std::string after = text();
        EXPECT_NE(after, before);
        EXPECT_GE(open(), 0);
        EXPECT_EQ(text() == after, true);
    }

    // Memory fails at one moment after the other, once or from then on, to behind the last one.
    void tryMoments(bool isOnce) {
        for (size_t moment = 1; changeWithout({0, moment, isOnce}, 2 * shortages) && !HasFailure(); ++shortages)
            moment += zxtest::shortOrLong<size_t>(3, 1);
        EXPECT_GT(refused, 5u);
    }

    // Opens the store while the memory fails as planned. False when there was enough for all of it.
    bool openWithout(const Plan& wanted, const std::string& content) {
        root.reset();
        plan = wanted;
        const int code = open();
        const bool hasFailed = plan.counted >= wanted.first;
        plan = Plan();
        if (code < 0) {
            EXPECT_EQ(zxtest::codeText(code), zxtest::codeText(ZXREG_E_OUT_OF_MEMORY)) << wanted.first;
            EXPECT_GE(open(), 0) << wanted.first;
            ++refused;
        }
        EXPECT_EQ(text() == content, true) << wanted.first;
        return hasFailed;
    }

    const crash::Folder folder;
    Handle root;
    size_t refused = 0;
    size_t shortages = 0;
};

}  // namespace

TEST_F(DatabaseMemory, ThatRunsOutOnceLeavesTheStoreUsable) {
    tryMoments(true);
    zxtest::figure("crash", "single shortages of memory", shortages);
}

TEST_F(DatabaseMemory, ThatRunsOutAndStaysOutLeavesTheStoreUsable) {
    tryMoments(false);
    zxtest::figure("crash", "lasting shortages of memory", shortages);
}

TEST_F(DatabaseMemory, ThatRunsOutWhileOpeningIsReported) {
    const std::string whole = text();
    for (const bool isOnce : {true, false}) {
        size_t moment = 1;
        while (openWithout({0, moment, isOnce}, whole) && !HasFailure())
            moment += zxtest::shortOrLong<size_t>(4, 1);
        EXPECT_GT(refused, 5u);
        refused = 0;
    }
}

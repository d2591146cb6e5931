// Bytes of a store's file that are not what was written: an error by name or exactly the right policy, and no change
// that spoils what was still good.
#include <set>

#include "crash/damaged_store.h"
#include "support/experiment.h"
#include "support/store_dump.h"

namespace {

using crash::PolicyEditor;
using model::RandomSource;

constexpr size_t pageSize = 4096;

class DamagedFile : public testing::Test {
protected:
    // A policy of many edits, and free pages of a large list that has been deleted.
    DamagedFile() {
        PolicyEditor model("memory:", store.folder());
        for (uint64_t index = 0; index < 400; ++index)
            model.edit(11, index);
        {
            PolicyEditor policy("sqlite:" + store.path(), store.folder());
            int error = ZXPOL_S_OK;
            zxreg_beginUpdate(policy.root(), &error);
            zxtest::writeStore(policy.root(), zxtest::readStore(model.root()));
            zxreg_endUpdate(policy.root(), &error);
            EXPECT_GE(error, 0);
            EXPECT_GE(policy.importAddresses("staff", 3), 0);
            EXPECT_GE(policy.importAddresses("staff", 0), 0);
        }
        whole = crash::readFile(store.path());
        for (size_t at = freeList() + 8; at < freeList() + 8 + 4 * numberAt(freeList() + 4); at += 4)
            unused.insert(numberAt(at) - 1);
        before = store.open();
        EXPECT_GE(store.change(), 0);
        after = store.open();
        EXPECT_GT(before.size(), 4000u);
        EXPECT_NE(before, after);
    }

    // The number in four bytes of the file.
    size_t numberAt(size_t at) const {
        size_t number = 0;
        for (size_t byte = 0; byte < 4; ++byte)
            number = number << 8 | static_cast<unsigned char>(whole[at + byte]);
        return number;
    }

    // Where a page that lists free pages begins.
    size_t freeList() const { return (numberAt(32) - 1) * pageSize; }

    // A byte, mostly of a page that is in use; often of a head, which says what is in the page.
    size_t anyByte(RandomSource& random) const {
        if (random.inPercent(10)) return random.below(random.inPercent(50) ? 200 : whole.size());
        const size_t within = random.below(random.inPercent(30) ? 8 : pageSize);
        size_t page;
        do
            page = random.below(whole.size() / pageSize);
        while (unused.count(page) != 0);
        return page * pageSize + within;
    }

    std::string flipped(size_t at, RandomSource& random) const {
        std::string bytes = whole;
        crash::flipBit(bytes, at, random);
        if (random.inPercent(30)) bytes[at] = static_cast<char>(random.below(256));
        return bytes;
    }

    // Opens a damaged file, changes it, and opens it again.
    void tryToChange(const std::string& bytes, const std::string& what) {
        store.lay(bytes, "");
        const std::string found = store.open();
        if (found.empty()) return;
        ASSERT_EQ(found == before, true) << what;
        const int code = store.change();
        const std::string left = store.open();
        if (code < 0) {
            ++refused;
            EXPECT_TRUE(crash::tellsOfDamage(code)) << what << zxtest::codeText(code);
            ASSERT_EQ(left.empty() || left == before, true) << what << " a change that failed has left another policy";
        } else {
            ++made;
            ASSERT_EQ(left == after, true) << what << (left.empty() ? " it does not open any more" : " another policy");
        }
    }

    crash::DamagedStore store;
    std::string whole;
    std::set<size_t> unused;  // pages, counted from 0
    std::string before;
    std::string after;
    size_t refused = 0;
    size_t made = 0;
};

}  // namespace

TEST_F(DamagedFile, GivesAnErrorOrTheRightPolicy) {
    const size_t flips = zxtest::shortOrLong<size_t>(200, 10000);
    RandomSource random(5);
    size_t sound = 0;
    for (size_t flip = 0; flip < flips; ++flip) {
        const size_t at = anyByte(random);
        store.lay(flipped(at, random), "");
        const std::string found = store.open();
        ASSERT_EQ(found.empty() || found == before, true) << "byte " << at;
        sound += found.empty() ? 0u : 1u;
    }
    EXPECT_GT(sound, 0u);
    EXPECT_LT(sound, flips);
    zxtest::figure("crash", "flips in the file", flips);
    zxtest::figure("crash", "of these refused", flips - sound);
}

TEST_F(DamagedFile, IsNotSpoiltFurtherByAChange) {
    const size_t flips = zxtest::shortOrLong<size_t>(100, 3000);
    RandomSource random(6);
    ASSERT_GT(numberAt(36), 10u) << "no free pages";
    for (size_t flip = 0; flip < flips && !HasFatalFailure(); ++flip) {
        const bool isInList = random.inPercent(60);
        const size_t size = isInList ? 8 + 4 * numberAt(freeList() + 4) : whole.size();
        const size_t at = (isInList ? freeList() : 0) + random.below(size);
        tryToChange(flipped(at, random), "byte " + std::to_string(at));
    }
    EXPECT_GT(refused, 0u);
    EXPECT_GT(made, 0u);
    zxtest::figure("crash", "flips followed by a change", flips);
    zxtest::figure("crash", "of these changes refused", refused);
}

// A page in use that is listed as free would be written over.
TEST_F(DamagedFile, ThatListsAUsedPageAsFreeIsNotChanged) {
    for (size_t page = 2; page <= 6; ++page) {
        std::string bytes = whole;
        const size_t last = freeList() + 4 + 4 * numberAt(freeList() + 4);
        for (size_t byte = 0; byte < 4; ++byte)
            bytes[last + byte] = static_cast<char>(page >> (24 - 8 * byte));
        tryToChange(bytes, "page " + std::to_string(page));
    }
    EXPECT_EQ(refused, 5u);
}

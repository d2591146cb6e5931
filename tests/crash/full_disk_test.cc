// A disk that is full or fails, at every call that changes the store's files: the call that suffers says so, nothing
// that was acknowledged is lost, and the store goes on when the disk does.
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <optional>
#include <stdexcept>

#include "crash/checkpoints.h"
#include "crash/damaged_store.h"
#include "crash/disk.h"
#include "support/experiment.h"

namespace {

using crash::DiskFault;
using crash::PolicyEditor;

constexpr uint64_t series = 51;
constexpr uint64_t editsBefore = 40;
constexpr uint64_t editsMade = 8;

// An error that comes from the disk rather than from what was asked for.
bool isOfDisk(int code) {
    return code == ZXREG_E_IO;
}

// A policy on the disk and the same one in memory, edited together.
class TwoPolicies {
public:
    TwoPolicies(const std::string& location, const std::string& folder)
        : _stored(location, folder), _model("memory:", folder) {}

    void editBoth(uint64_t from, uint64_t to) {
        for (uint64_t index = from; index < to; ++index)
            EXPECT_EQ(zxtest::codeText(_stored.editOpen(series, index)),
                      zxtest::codeText(_model.editOpen(series, index)));
    }

    // Makes an edit while the disk fails: done or refused.
    bool editOrFail(uint64_t index) {
        const int code = _stored.editOpen(series, index);
        if (isOfDisk(code)) return false;
        EXPECT_EQ(zxtest::codeText(code), zxtest::codeText(_model.editOpen(series, index))) << "edit " << index;
        return true;
    }

    void compare(const std::string& what) const { ASSERT_EQ(_stored.text() == _model.text(), true) << what; }
    // The code. To the database, a page that the disk cannot read is a damaged one.
    int tryToReopen(bool isReading = false) {
        _stored.reopen();
        const int code = _stored.error();
        EXPECT_TRUE(code >= 0 || isOfDisk(code) || (isReading && code == ZXREG_E_CORRUPT)) << zxtest::codeText(code);
        return code;
    }
    void reopen() {
        _stored.reopen();
        ASSERT_GE(_stored.error(), 0) << zxreg_lastErrorText();
    }

private:
    PolicyEditor _stored;
    PolicyEditor _model;
};

class FailingDisk : public testing::Test {
protected:
    FailingDisk() {
        EXPECT_EQ(store.open().empty(), false);
        made.emplace("sqlite:" + store.path(), store.folder());
        made->editBoth(0, editsBefore);
    }
    ~FailingDisk() override { crash::clearDisk(); }

    // A series of edits with the fault in it. Returns how many calls there were.
    uint64_t tryOut(const DiskFault& fault, const std::string& what) {
        const uint64_t begin = editsBefore + rounds++ * editsMade;
        crash::setDisk(store.path(), fault);
        for (uint64_t index = begin; index < begin + editsMade; ++index) {
            const bool isDone = made->editOrFail(index);
            if (!isDone) ++refused;
            made->compare(what + (isDone ? ", done" : ", refused"));
        }
        const bool isReopened = rounds % 3 == 0;
        if (isReopened) made->tryToReopen();
        const uint64_t calls = crash::clearDisk();
        if (isReopened) made->reopen();
        made->editBoth(begin, begin + editsMade);
        made->compare(what + ", afterwards");
        made->reopen();
        made->compare(what + ", opened again");
        return calls;
    }

    // Every call in turn fails, or some of them in the short form, from the first to behind the last.
    void tryEveryCall(int error, bool isOnce, const std::string& what) {
        const uint64_t step = zxtest::shortOrLong<uint64_t>(5, 1);
        uint64_t faults = 0;
        bool isReached = true;
        for (uint64_t call = 1; isReached && !HasFatalFailure(); call += step) {
            isReached = tryOut({call, isOnce, error}, what + " at call " + std::to_string(call)) >= call;
            if (isReached) ++faults;
        }
        EXPECT_GT(faults, 8u);
        EXPECT_GT(refused, 5u);
        zxtest::figure("crash", ("disk faults, " + what).c_str(), faults);
    }

    crash::DamagedStore store;
    std::optional<TwoPolicies> made;
    uint64_t rounds = 0;
    uint64_t refused = 0;
};

}  // namespace

TEST_F(FailingDisk, ThatIsFullForAWhileLosesNothing) {
    tryEveryCall(ENOSPC, false, "full");
}

TEST_F(FailingDisk, ThatIsFullForOneCallLosesNothing) {
    tryEveryCall(ENOSPC, true, "full once");
}

TEST_F(FailingDisk, ThatFailsForAWhileLosesNothing) {
    tryEveryCall(EIO, false, "failing");
}

TEST_F(FailingDisk, ThatFailsOnceLosesNothing) {
    tryEveryCall(EIO, true, "failing once");
}

// The system's limit on the size of a file instead of a full disk.
TEST_F(FailingDisk, ThatTakesNoLargerFilesLosesNothing) {
    std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t before = limit.rlim_cur;
    const uint64_t limits = zxtest::shortOrLong<uint64_t>(10, 100);
    for (uint64_t round = 0; round < limits && !HasFatalFailure(); ++round) {
        const uint64_t begin = editsBefore + round * editsMade;
        const std::string what = "limit " + std::to_string(round);
        std::vector<bool> isDone;
        limit.rlim_cur = round * 8231 % 200000;
        setrlimit(RLIMIT_FSIZE, &limit);
        for (uint64_t index = begin; index < begin + editsMade; ++index)
            isDone.push_back(made->editOrFail(index));
        limit.rlim_cur = before;
        setrlimit(RLIMIT_FSIZE, &limit);
        refused += static_cast<uint64_t>(std::count(isDone.begin(), isDone.end(), false));
        made->compare(what);
        made->editBoth(begin, begin + editsMade);
        made->reopen();
        made->compare(what + ", opened again");
    }
    EXPECT_GT(refused, 5u);
}

// The log is brought into the file after every few pages.
TEST_F(FailingDisk, WhileTheLogIsBroughtInLosesNothing) {
    crash::setLogPages(10);
    made->reopen();
    model::RandomSource random(77);
    const uint64_t faults = zxtest::shortOrLong<uint64_t>(20, 400);
    for (uint64_t fault = 0; fault < faults && !HasFatalFailure(); ++fault) {
        const uint64_t call = random.between(1, 150);
        tryOut({call, random.inPercent(50), random.inPercent(50) ? EIO : ENOSPC}, "call " + std::to_string(call));
    }
    crash::setLogPages(0);
    EXPECT_GT(refused, 5u);
    zxtest::figure("crash", "disk faults while the log is brought in", faults);
}

// A store that could not be made is not half there.
TEST_F(FailingDisk, WhileAStoreIsMadeLeavesNoneOrAWholeOne) {
    const std::string path = store.folder() + "/new.db";
    const std::string empty = PolicyEditor("memory:", store.folder()).text();
    bool isReached = true;
    for (uint64_t call = 1; isReached && !HasFailure(); ++call) {
        for (const char* suffix : {"", "-wal", "-shm", ".key"})
            std::remove((path + suffix).c_str());
        crash::setDisk(path, {call, call % 2 == 0, call % 4 < 2 ? EIO : ENOSPC});
        {
            const PolicyEditor policy("sqlite:" + path, store.folder());
            EXPECT_TRUE(policy.error() >= 0 || isOfDisk(policy.error())) << zxtest::codeText(policy.error());
            if (policy.error() < 0) ++refused;
        }
        isReached = crash::clearDisk() >= call;
        const PolicyEditor policy("sqlite:" + path, store.folder());
        ASSERT_GE(policy.error(), 0) << zxreg_lastErrorText();
        EXPECT_EQ(policy.text() == empty, true) << "call " << call;
    }
    EXPECT_GT(refused, 5u);
}

TEST_F(FailingDisk, ThatCannotBeReadKeepsAStoreFromOpening) {
    bool isReached = true;
    for (uint64_t call = 1; isReached && !HasFatalFailure(); ++call) {
        crash::setDisk(store.path(), {call, call % 2 == 0, EIO, true});
        if (made->tryToReopen(true) < 0) ++refused;
        isReached = crash::clearDisk() >= call;
        made->reopen();
        made->compare("read " + std::to_string(call));
    }
    EXPECT_GT(refused, 2u);
}

// What another process has changed is read from the disk: all of it, or the next look reads it again.
TEST_F(FailingDisk, ThatCannotBeReadHidesNothingForGood) {
    crash::EditedStore shared(52);
    const PolicyEditor watcher(shared.location(), shared.folder());
    const uint64_t faults = zxtest::shortOrLong<uint64_t>(16, 300);
    for (uint64_t round = 0; round < faults && !HasFatalFailure(); ++round) {
        crash::Writer writer(shared.writerWords(false), {});
        writer.letWork(4, 0);
        writer.kill();
        const std::string found = shared.readByOther(false);
        shared.compare(writer, found);
        crash::setDisk(shared.path(), {1 + round % 8, round % 2 == 0, EIO, true});
        std::optional<std::string> content;
        try {
            content = watcher.content();
        } catch (const std::runtime_error&) {
            ++refused;
        }
        crash::clearDisk();
        EXPECT_EQ(watcher.text() == found, true) << round;
        EXPECT_EQ(content.value_or(watcher.content()) == watcher.content(), true) << round;
    }
    EXPECT_GT(refused, 2u);
}

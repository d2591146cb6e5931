// A write-ahead log that is damaged, cut or missing: an error, or the policy as it was after one of the changes.
#include <sqlite3.h>

#include <filesystem>
#include <set>

#include "crash/damaged_store.h"
#include "support/experiment.h"

namespace {

using crash::PolicyEditor;
using model::RandomSource;

// A store that is open: its file is behind its log, whose first part has been brought into the file already.
class DamagedLog : public testing::Test {
protected:
    DamagedLog() {
        crash::writeAddressFiles(source.path());
        PolicyEditor policy("sqlite:" + path(), source.path());
        edit(policy, 0, 160);
        sqlite3* const reader = bringIn();
        edit(policy, 160, 220);
        file = crash::readFile(path());
        log = crash::readFile(path() + "-wal");
        shared = crash::readFile(path() + "-shm");
        last = policy.text();
        sqlite3_close(reader);
        std::filesystem::copy_file(path() + ".key", store.path() + ".key");
        EXPECT_GT(log.size(), 100000u);
        EXPECT_GT(states.size(), 20u);
    }

    std::string path() const { return source.path() + "/policy.db"; }

    // Closing the store would end the log.
    void edit(PolicyEditor& policy, uint64_t from, uint64_t to) {
        for (uint64_t index = from; index < to; ++index) {
            states.insert(policy.text());
            policy.editOpen(23, index);
        }
        states.insert(policy.text());
    }

    // Copies what the log holds into the file. As long as the reader that is returned looks at it, the log goes on
    // behind that instead of beginning anew.
    sqlite3* bringIn() const {
        sqlite3* reader = nullptr;
        EXPECT_EQ(sqlite3_open(path().c_str(), &reader), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(reader, "BEGIN; SELECT count(*) FROM node", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(path().c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, "PRAGMA wal_checkpoint(PASSIVE)", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
        return reader;
    }

    void tryOut(const std::string& damagedLog, const std::string& sharedMemory, const std::string& what) {
        store.lay(file, damagedLog, sharedMemory);
        const std::string found = store.open();
        if (found.empty()) {
            ++refused;
        } else {
            ASSERT_EQ(states.count(found), 1u) << what;
            (found == last ? current : older) += 1;
        }
    }

    const crash::Folder source;
    crash::DamagedStore store;
    std::string file;
    std::string log;
    std::string shared;
    std::set<std::string> states;
    std::string last;
    size_t refused = 0;
    size_t older = 0;
    size_t current = 0;
};

}  // namespace

TEST_F(DamagedLog, GivesAnErrorOrACompletePolicy) {
    const size_t flips = zxtest::shortOrLong<size_t>(60, 2000);
    RandomSource random(31);
    for (size_t flip = 0; flip < flips && !HasFatalFailure(); ++flip) {
        const size_t at = random.below(log.size());
        std::string bytes = log;
        crash::flipBit(bytes, at, random);
        tryOut(bytes, "", "byte " + std::to_string(at));
    }
    EXPECT_GT(older, 0u);
    EXPECT_GT(refused, 0u);
    zxtest::figure("crash", "flips in the log", flips);
    zxtest::figure("crash", "of these in the log refused", refused);
}

TEST_F(DamagedLog, MayBeCutOrMissing) {
    const size_t cuts = zxtest::shortOrLong<size_t>(30, 500);
    RandomSource random(32);
    tryOut("", "", "no log");
    tryOut(log, "", "the whole log");
    EXPECT_EQ(current, 1u);
    for (size_t cut = 0; cut < cuts && !HasFatalFailure(); ++cut) {
        const size_t size = random.below(log.size());
        tryOut(log.substr(0, size), "", "cut to " + std::to_string(size));
    }
    EXPECT_GT(older, 0u);
    zxtest::figure("crash", "cuts of the log", cuts);
}

// What a process that was killed has left in the shared index is made anew.
TEST_F(DamagedLog, IsReadWhateverItsIndexHolds) {
    const size_t rounds = zxtest::shortOrLong<size_t>(20, 300);
    RandomSource random(33);
    for (size_t round = 0; round < rounds && !HasFatalFailure(); ++round) {
        std::string bytes = shared;
        for (size_t flip = random.between(1, 20); flip > 0; --flip)
            bytes[random.below(random.inPercent(50) ? 136 : bytes.size())] = static_cast<char>(random.below(256));
        tryOut(log, bytes, "round " + std::to_string(round));
    }
    EXPECT_EQ(current, rounds);
}

// A writer that is killed in the middle of its work: what it was told to be done is done, the rest is whole or not at
// all, for readers of either word size.
#include <unistd.h>

#include <optional>

#include "crash/edited_store.h"
#include "support/experiment.h"

namespace {

using crash::EditedStore;
using crash::Writer;
using model::RandomSource;

// How many edits a writer may finish: few, so that there are many kills, but sometimes enough for the store to tidy up
// by itself.
size_t editsBeforeKill(RandomSource& random) {
    if (random.inPercent(20)) return 0;
    return random.inPercent(6) ? random.between(100, 300) : random.below(16);
}

}  // namespace

TEST(KilledWriter, LosesNoAcknowledgedChange) {
    const size_t kills = zxtest::shortOrLong<size_t>(50, 500);
    RandomSource random(20260);
    EditedStore store(7);
    std::optional<crash::PolicyEditor> watcher;
    for (size_t kill = 0; kill < kills && !HasFatalFailure(); ++kill) {
        // Half of the time this process has the store open, too: then what the writer shared with it in memory stays.
        if (kill % 8 == 4) watcher.emplace(store.location(), store.folder());
        if (kill % 8 == 0) watcher.reset();
        const std::string logPages = "ZX_LOG_PAGES=" + std::to_string(kill % 3 == 0 ? 15 : 0);
        Writer writer(store.writerWords((kill & 2) != 0), {logPages});
        const size_t edits = editsBeforeKill(random);
        writer.letWork(edits, static_cast<unsigned>(random.below(edits == 0 ? 12000 : 4000)));
        writer.kill();
        const std::string found = store.readByOther((kill & 1) != 0);
        store.compare(writer, found);
        ASSERT_EQ(!watcher || watcher->text() == found, true) << "kill " << kill;
    }
    EXPECT_GT(store.acknowledged(), kills * 5);
    EXPECT_GT(store.inFlight(), 0u);
    zxtest::figure("crash", "kills", kills);
    zxtest::figure("crash", "acknowledged edits checked", store.acknowledged());
    zxtest::figure("crash", "edits in flight when killed", store.inFlight());
    zxtest::figure("crash", "of these found done", store.happened());
}

// The file appears under its name when it is whole, and what a policy has besides is made by the next one to open it.
TEST(KilledWriter, LeavesNoHalfOfANewStore) {
    const size_t kills = zxtest::shortOrLong<size_t>(15, 300);
    RandomSource random(20261);
    const crash::Folder folder;
    const std::string empty = crash::PolicyEditor("memory:", folder.path()).text();
    for (size_t kill = 0; kill < kills && !HasFatalFailure(); ++kill) {
        const std::string location = "sqlite:" + folder.path() + "/new" + std::to_string(kill) + ".db";
        const std::vector<std::string> words{crash::programPath("crash_worker"), "read", location, folder.path()};
        {
            crash::Process maker(words);
            usleep(static_cast<unsigned>(random.below(25000)));
            maker.kill();
        }
        crash::Process reader(words);
        ASSERT_EQ(reader.readAll() == empty, true) << "kill " << kill;
        EXPECT_EQ(reader.wait(), 0);
    }
    zxtest::figure("crash", "kills while a store is made", kills);
}

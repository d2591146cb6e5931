// A power cut: what was not synced is lost, or half of it; what was acknowledged is there.
#include <unistd.h>

#include "crash/damaged_store.h"
#include "crash/lost_disk.h"
#include "support/experiment.h"

namespace {

using crash::EditedStore;
using crash::LostDisk;
using crash::Writer;
using model::RandomSource;

}  // namespace

TEST(PowerCut, LosesNoAcknowledgedChange) {
    const size_t cuts = zxtest::shortOrLong<size_t>(20, 300);
    RandomSource random(404);
    EditedStore store(9);
    const std::string diary = store.path() + "-diary";
    const std::string shared = store.path() + "-shm";
    uint64_t lost = 0;
    // A cut that comes between two edits loses nothing; at least one must.
    for (size_t cut = 0; (cut < cuts || (lost == 0 && cut < 10 * cuts)) && !HasFatalFailure(); ++cut) {
        LostDisk disk({store.path(), store.path() + "-wal"});
        unlink(diary.c_str());
        Writer writer(store.writerWords(false), {"ZX_DISK_LOG=" + diary, "ZX_DISK_FILES=" + store.path(),
                                                 "ZX_LOG_PAGES=" + std::to_string(cut % 2 * 20)});
        writer.letWork(random.inPercent(20) ? random.between(50, 200) : random.below(12),
                       static_cast<unsigned>(random.below(5000)));
        writer.kill();
        unlink(shared.c_str());
        disk.cutPower(crash::readFile(diary), random);
        lost += disk.lost();
        store.compare(writer, store.readByOther(false));
    }
    EXPECT_GT(store.acknowledged(), cuts * 5);
    EXPECT_GT(lost, 0u);
    zxtest::figure("crash", "power cuts", cuts);
    zxtest::figure("crash", "writes lost by them", lost);
    zxtest::figure("crash", "edits checked after them", store.acknowledged());
}

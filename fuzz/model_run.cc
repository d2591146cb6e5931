#include "model_run.h"

#include "fail.h"
#include "model/list_run.h"
#include "support/raw_store.h"

namespace fuzz {

void runBesideModel(const model::Sequence& sequence) {
    int error = ZXREG_S_OK;
    const zxtest::Handle store(zxreg_openStore("memory:", &error));
    require(store != nullptr, "the store does not open");
    const std::string difference = model::runSequence(store.get(), sequence);
    if (!difference.empty()) fail(difference);
}

}  // namespace fuzz

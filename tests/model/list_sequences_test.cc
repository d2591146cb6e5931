// Random sequences of changes of a list, done on the library and on a model that is slow and obvious. After each step
// the results and the values in the store are the same, and now and then all orders and what matches.
//
// The seeds are fixed. ZX_MODEL_ROUNDS in the environment multiplies the number of sequences; ZX_MODEL_SEED has only
// the sequence of that seed done.
#include <gtest/gtest.h>

#include <cstdlib>

#include "model/list_run.h"
#include "support/store_fixture.h"

namespace {

using model::Flavour;

uint64_t numberFrom(const char* variable, uint64_t otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

class ListSequences : public zxtest::StoreTest {
protected:
    // Does `count` sequences, fewer of them where each change is made durable.
    void run(Flavour flavour, uint64_t count) {
        const uint64_t rounds = numberFrom("ZX_MODEL_ROUNDS", 1);
        const uint64_t share = GetParam() == std::string("sqlite") ? 30 : 1;
        const uint64_t first = numberFrom("ZX_MODEL_SEED", 1);
        const bool isOne = std::getenv("ZX_MODEL_SEED") != nullptr;
        const uint64_t last = isOne ? first : count * rounds / share;
        for (uint64_t seed = first; seed <= last; ++seed) {
            if (!isSame(flavour, seed)) return;
        }
    }

private:
    bool isSame(Flavour flavour, uint64_t seed) {
        const model::Sequence sequence = model::sequenceOf(flavour, seed);
        const std::string found = model::runSequence(store(), sequence);
        if (found.empty() && !HasFailure()) return true;
        if (found.empty()) {
            ADD_FAILURE() << "seed " << seed << "\n" << model::traceOf(sequence);
            return false;
        }
        const model::Sequence least = model::shrunk(store(), sequence);
        ADD_FAILURE() << "seed " << seed << ", " << found << "\nshrunk to\n"
                      << model::traceOf(least) << model::runSequence(store(), least);
        return false;
    }
};
ZXTEST_ON_BOTH_ENGINES(ListSequences);

TEST_P(ListSequences, OfShortAddresses) {
    run(Flavour::shortAddresses, 3000);
}

TEST_P(ListSequences, OfLongAddresses) {
    run(Flavour::longAddresses, 1500);
}

TEST_P(ListSequences, OfWildcards) {
    run(Flavour::wildcards, 2500);
}

TEST_P(ListSequences, OnStrangeValues) {
    run(Flavour::strangeValues, 2000);
}

TEST_P(ListSequences, WithImports) {
    run(Flavour::imports, 1500);
}

}  // namespace

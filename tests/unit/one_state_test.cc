// Reads that must be of one state, beside changes that the reads themselves make.
#include "store/one_state.h"

#include <gtest/gtest.h>

#include "zxregistry.h"

namespace {

class OneState : public ::testing::Test {
protected:
    OneState() : _key(zxreg_openStore("memory:", &_error)) {}
    ~OneState() override {
        int error = ZXREG_S_OK;
        zxreg_closeKey(_key, &error);
    }

    // Reads while the first so many reads meet a change.
    void read(int changes) {
        zxpol::readOneState(
            _key, nullptr, &_error,
            [&] {
                ++_reads;
                _error = ZXPOL_E_NOT_FOUND;  // the answer of this read
                if (_reads > changes) return;
                int written = ZXREG_S_OK;
                zxreg_setValue(_key, "v", ZXREG_NUMBER, &_reads, sizeof _reads, &written);
                EXPECT_GE(written, 0);
            },
            [&] { ++_undone; });
    }

    int _error = ZXREG_S_OK;
    _ZxPolComHandle* _key;
    int _reads = 0;
    int _undone = 0;
};

TEST_F(OneState, IsReadOnceWhileNothingChanges) {
    read(0);
    EXPECT_EQ(1, _reads);
    EXPECT_EQ(0, _undone);
    EXPECT_EQ(ZXPOL_E_NOT_FOUND, _error) << "the read's own failure is the answer";
}

TEST_F(OneState, IsReadAgainAfterAChange) {
    read(2);
    EXPECT_EQ(3, _reads);
    EXPECT_EQ(2, _undone);
    EXPECT_EQ(ZXPOL_E_NOT_FOUND, _error);
}

TEST_F(OneState, IsReadInsideAnUpdateInTheEnd) {
    read(zxpol::kFreeReads);
    EXPECT_EQ(zxpol::kFreeReads + 1, _reads);
    EXPECT_EQ(zxpol::kFreeReads, _undone);
    EXPECT_EQ(ZXPOL_E_NOT_FOUND, _error);
}

// What changes even then is no state to answer from.
TEST_F(OneState, ThatCannotBeHadIsAFailure) {
    read(zxpol::kFreeReads + 1);
    EXPECT_EQ(zxpol::kFreeReads + 1, _reads);
    EXPECT_EQ(zxpol::kFreeReads + 1, _undone);
    EXPECT_EQ(zxpol::kStateIsChanging, _error);
}

}  // namespace

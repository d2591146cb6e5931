// A failed expectation in what is shared with the tests ends the process, as every finding does.
#include <gtest/gtest.h>

#include "fail.h"

namespace {

class Ending : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.failed()) fuzz::fail(result.message());
    }
};

const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new Ending);
    return true;
}();

}  // namespace

// The function that receives the debug messages instead of the log.
#include "frame/reg_debug.h"

#include "support/policy_fixture.h"

namespace {

std::vector<std::string> received;
void receive(const char* message) {
    received.emplace_back(message);
}
void receiveElsewhere(const char*) {}

class DebugFunction : public ::testing::Test {
protected:
    void SetUp() override { received.clear(); }
    void TearDown() override {
        int error = ZXPOL_S_OK;
        zxpol_setDebugFunction(nullptr, &error);
    }
};

TEST_F(DebugFunction, InstallingReturnsTheOneBefore) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_setDebugFunction(&receive, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(&receive, zxpol_setDebugFunction(&receiveElsewhere, &error));
    EXPECT_EQ(&receiveElsewhere, zxpol_setDebugFunction(nullptr, &error));
    EXPECT_EQ(nullptr, zxpol_setDebugFunction(nullptr, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_F(DebugFunction, AFailureAlreadyHeldChangesNothing) {
    int error = ZXPOL_S_OK;
    zxpol_setDebugFunction(&receive, &error);
    error = ZXPOL_E_PARSE;
    EXPECT_EQ(nullptr, zxpol_setDebugFunction(&receiveElsewhere, &error));
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    EXPECT_EQ(nullptr, zxpol_setDebugFunction(&receiveElsewhere, nullptr));
    error = ZXPOL_S_OK;
    EXPECT_EQ(&receive, zxpol_setDebugFunction(nullptr, &error));
}

TEST_F(DebugFunction, ReceivesTheFormattedMessageAlone) {
    int error = ZXPOL_S_OK;
    zxpol_setDebugFunction(&receive, &error);
    ZxRegDebug::debugLog(3, "file.cc", "-POLICY-", 42, "%s and %d", "text", 7);
    EXPECT_EQ(std::vector<std::string>{"text and 7"}, received);
    zxpol_setDebugFunction(nullptr, &error);
    ZxRegDebug::debugLog(3, "file.cc", "-POLICY-", 42, "not seen");
    EXPECT_EQ(1u, received.size());
}

TEST_F(DebugFunction, ReceivesAtMost511Characters) {
    int error = ZXPOL_S_OK;
    zxpol_setDebugFunction(&receive, &error);
    const std::string message = std::string(510, 'a') + "bc" + std::string(88, 'd');
    for (const size_t length : {size_t{510}, size_t{511}, size_t{512}, size_t{600}})
        ZxRegDebug::debugLog(1, "f", "-POLICY-", 1, "%s", message.substr(0, length).c_str());
    ASSERT_EQ(4u, received.size());
    EXPECT_EQ(message.substr(0, 510), received[0]);
    for (size_t at = 1; at < 4; ++at)
        EXPECT_EQ(message.substr(0, 511), received[at]);
}

class EditingMessages : public zxtest::PolicyTest {};
ZXTEST_ON_BOTH_ENGINES(EditingMessages);

TEST_P(EditingMessages, LongConditionsAreCutInTheMessage) {
    const std::string sender(400, 's'), receiver(400, 'r');  // neither is a pattern
    const zxtest::DebugMessages messages;
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, addCondition("\\", sender, receiver));
    const std::string whole = "Condition with sender: " + sender + " & receiver: " + receiver + " is not valid. Skip!";
    EXPECT_EQ(std::vector<std::string>{whole.substr(0, 511)}, messages.all());
}

}  // namespace

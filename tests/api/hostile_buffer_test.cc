// Buffers that are missing, empty, one byte too small and just large enough; indices past every end.
#include "api/guarded_buffer.h"
#include "support/policy_fixture.h"

using namespace zxtest;

namespace {

class HostileBuffer : public PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        if (HasFatalFailure()) return;
        addRule("\\", "abc");
        addTask("\\", "abc");
        addDirectoryList("abc");
    }

    // What a size becomes: with the NUL or without.
    enum Counts { withNul, withoutNul };

    // Enumerates the name "abc" into buffers of every size up to 8.
    void checkNames(NameEnumeration enumerate, _ZxPolComHandle* handle, Counts counts) {
        const uint32_t reported = counts == withNul ? 4 : 3;
        for (uint32_t capacity = 0; capacity <= 8; ++capacity) {
            GuardedBuffer buffer(capacity);
            uint32_t size = capacity;
            int error = ZXPOL_S_OK;
            enumerate(handle, 0, buffer.get(), &size, &error);
            EXPECT_EQ(reported, size) << "capacity " << capacity;
            EXPECT_TRUE(buffer.isIntact()) << "capacity " << capacity;
            if (capacity < 4) {
                EXPECT_EQ(6u, reasonOf(error)) << "capacity " << capacity;
                EXPECT_TRUE(buffer.isUntouched()) << "capacity " << capacity;
            } else {
                EXPECT_CODE(ZXPOL_S_OK, error) << "capacity " << capacity;
                EXPECT_STREQ("abc", buffer.get());
            }
        }
    }

    void checkArguments(NameEnumeration enumerate, _ZxPolComHandle* handle) {
        char buffer[16];
        uint32_t size = sizeof buffer;
        int error = ZXPOL_S_OK;
        enumerate(handle, 0, nullptr, &size, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        enumerate(handle, 0, buffer, nullptr, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        for (const uint32_t index : {1u, 2u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
            GuardedBuffer past(16);
            size = 16;
            error = ZXPOL_S_OK;
            enumerate(handle, index, past.get(), &size, &error);
            EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error) << index;
            EXPECT_TRUE(past.isUntouched()) << index;
        }
    }

    Handle task() const {
        int error = ZXPOL_S_OK;
        return Handle(zxpol_openTask(rule().get(), "abc", &error));
    }
};

TEST_P(HostileBuffer, RuleNames) {
    const Handle root = rule();
    checkNames(zxpol_enumRule, root.get(), withNul);
    checkArguments(zxpol_enumRule, root.get());
}

TEST_P(HostileBuffer, TaskNames) {
    const Handle root = rule();
    checkNames(zxpol_enumTask, root.get(), withNul);
    checkArguments(zxpol_enumTask, root.get());
}

TEST_P(HostileBuffer, ListNames) {
    checkNames(zxpol_enumAddrList, listHive(), withoutNul);
    checkArguments(zxpol_enumAddrList, listHive());
}

TEST_P(HostileBuffer, ClassificationAndActionNames) {
    const _ZxPolCommAttrib classRecord{};
    _ZxPolActionAttr actionRecord{};
    int error = ZXPOL_S_OK;
    const Handle hive(zxpol_openClassificationHive(store(), &error));
    const Handle owner(zxpol_createClassification(hive.get(), "abc", &classRecord, &error));
    const Handle action(zxpol_createAction(owner.get(), "abc", &actionRecord, &error));
    ASSERT_GE(error, 0) << codeText(error);
    checkNames(zxpol_enumClassification, hive.get(), withoutNul);
    checkArguments(zxpol_enumClassification, hive.get());
    checkNames(zxpol_enumAction, owner.get(), withNul);
    checkArguments(zxpol_enumAction, owner.get());
}

TEST_P(HostileBuffer, PathsOfReferringRules) {
    addRule("\\", "refers", "(list)");
    for (uint32_t capacity = 0; capacity <= 12; ++capacity) {
        GuardedBuffer path(capacity);
        uint32_t size = capacity;
        int error = ZXPOL_S_OK;
        EXPECT_EQ(1, zxpol_checkReferInRule(store(), ZXPOL_REF_ADDRLIST, "list", path.get(), &size, &error));
        EXPECT_EQ(8u, size) << capacity;
        EXPECT_TRUE(path.isIntact()) << capacity;
        EXPECT_CODE(capacity > 8 ? ZXPOL_S_OK : ZXPOL_E_BUFFER_TOO_SMALL, error) << capacity;
        EXPECT_EQ(capacity <= 8, path.isUntouched()) << capacity;
    }
}

TEST_P(HostileBuffer, Conditions) {
    const Handle root = rule();
    for (const uint32_t capacity : {0u, 1u, 512u, 1023u}) {
        GuardedBuffer record(capacity);
        uint32_t size = capacity;
        int error = ZXPOL_S_OK;
        zxpol_enumCondition(root.get(), 0, reinterpret_cast<unsigned char*>(record.get()), &size, &error);
        EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error) << capacity;
        EXPECT_EQ(1024u, size);
        EXPECT_TRUE(record.isUntouched());
    }
    GuardedBuffer record(1024);
    auto* bytes = reinterpret_cast<unsigned char*>(record.get());
    uint32_t size = 1024;
    int error = ZXPOL_S_OK;
    zxpol_enumCondition(root.get(), 0, bytes, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_TRUE(record.isIntact());
    for (const uint32_t index : {1u, 0x7fffffffu, 0xffffffffu}) {
        error = ZXPOL_S_OK;
        zxpol_enumCondition(root.get(), index, bytes, &size, &error);
        EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error) << index;
    }
    error = ZXPOL_S_OK;
    zxpol_enumCondition(root.get(), 0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumCondition(root.get(), 0, bytes, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(HostileBuffer, ExclusiveFilterTypesPastTheEnd) {
    for (const uint32_t index : {0u, 1u, 0xffffffffu}) {
        uint32_t filter = 4711;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_DESC_EXCLUSIVE;
        int error = ZXPOL_S_OK;
        zxpol_enumExclusiveFilterType(ruleHive(), index, &filter, &type, &error);
        EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
        EXPECT_EQ(4711u, filter);
        EXPECT_EQ(ZXPOL_FILTER_DESC_EXCLUSIVE, type);
    }
}

TEST_P(HostileBuffer, OutcomeTexts) {
    const Handle t = task();
    int error = ZXPOL_S_OK;
    zxpol_addOutcome(t.get(), "name", "value", &error);
    for (uint32_t capacity = 0; capacity <= 8; ++capacity) {
        GuardedBuffer value(capacity);
        uint32_t size = capacity;
        error = ZXPOL_S_OK;
        zxpol_getOutcome(t.get(), "name", value.get(), &size, &error);
        EXPECT_EQ(6u, size);
        EXPECT_TRUE(value.isIntact());
        if (capacity < 6) {
            EXPECT_EQ(6u, reasonOf(error)) << capacity;
            EXPECT_TRUE(value.isUntouched()) << capacity;
        } else {
            EXPECT_STREQ("value", value.get());
        }
    }
    char value[16];
    error = ZXPOL_S_OK;
    zxpol_getOutcome(t.get(), "name", value, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    uint32_t size = sizeof value;
    error = ZXPOL_S_OK;
    zxpol_getOutcome(t.get(), "other", value, &size, &error);
    EXPECT_EQ(0x1804u, reasonOf(error));
}

TEST_P(HostileBuffer, OutcomesOneByOne) {
    const Handle t = task();
    int error = ZXPOL_S_OK;
    zxpol_addOutcome(t.get(), "name", "value", &error);
    for (uint32_t nameCapacity = 0; nameCapacity <= 6; ++nameCapacity) {
        for (uint32_t valueCapacity = 0; valueCapacity <= 7; ++valueCapacity) {
            GuardedBuffer name(nameCapacity);
            GuardedBuffer value(valueCapacity);
            uint32_t nameSize = nameCapacity;
            uint32_t valueSize = valueCapacity;
            error = ZXPOL_S_OK;
            zxpol_enumOutcome(t.get(), 0, name.get(), &nameSize, value.get(), &valueSize, &error);
            EXPECT_EQ(4u, nameSize);
            EXPECT_EQ(6u, valueSize);
            EXPECT_TRUE(name.isIntact() && value.isIntact());
            const bool fits = nameCapacity >= 5 && valueCapacity >= 6;
            EXPECT_EQ(fits, ZX_SUCCESS(error) != 0) << nameCapacity << " " << valueCapacity;
            if (!fits) {
                EXPECT_EQ(6u, reasonOf(error));
                EXPECT_TRUE(name.isUntouched() && value.isUntouched()) << nameCapacity << " " << valueCapacity;
            }
        }
    }
    char text[16];
    uint32_t size = sizeof text;
    error = ZXPOL_S_OK;
    zxpol_enumOutcome(t.get(), 0, text, nullptr, text, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumOutcome(t.get(), 0, text, &size, text, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    for (const uint32_t index : {1u, 0xffffffffu}) {
        uint32_t nameSize = sizeof text;
        error = ZXPOL_S_OK;
        zxpol_enumOutcome(t.get(), index, text, &nameSize, text, &size, &error);
        EXPECT_EQ(12u, reasonOf(error)) << index;
    }
}

ZXTEST_ON_BOTH_ENGINES(HostileBuffer);

}  // namespace

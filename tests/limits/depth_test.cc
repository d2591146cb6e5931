// A rule tree of a thousand levels: the walks over it recurse, and must do so within the stack of any thread.
#include <pthread.h>
#include <sys/mman.h>

#include <cstring>
#include <functional>
#include <iostream>

#include "support/experiment.h"
#include "support/policy_fixture.h"

using namespace zxtest;

namespace {

const uint32_t kLevels = shortOrLong(1000u, 3000u);

// The bytes of stack that a walk may take for each level.
constexpr size_t kMostPerLevel = 400;

// The stack that a thread has by default.
constexpr size_t kStackSize = 8u << 20;

// Runs `body` in a thread of the stated stack and returns how much of it was used.
size_t stackUsedBy(const std::function<void()>& body) {
    void* stack = mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    EXPECT_NE(MAP_FAILED, stack);
    constexpr unsigned char kPaint = 0x5a;
    std::memset(stack, kPaint, kStackSize);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(0, pthread_attr_setstack(&attributes, stack, kStackSize));
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    EXPECT_EQ(0, pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&body)));
    EXPECT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
    const auto* bytes = static_cast<const unsigned char*>(stack);
    size_t untouched = 0;
    while (untouched < kStackSize && bytes[untouched] == kPaint)
        ++untouched;
    munmap(stack, kStackSize);
    return kStackSize - untouched;
}

class DeepTree : public PolicyTest {
protected:
    // Makes \d\d\d ..., each with the condition * to *; returns the full path of the last.
    std::string makeTree() {
        int error = ZXPOL_S_OK;
        zxreg_beginUpdate(store(), &error);
        std::string path;
        Handle parent = rule();
        const Conditions any{{"*", "*"}};
        for (uint32_t level = 0; level < kLevels; ++level) {
            _ZxPolRuleAttr attr{};
            error = ZXPOL_S_OK;
            Handle child(zxpol_createRule(parent.get(), "d", &attr, any.list(), &error));
            EXPECT_CODE(ZXPOL_S_OK, error) << level;
            if (child == nullptr) break;
            parent = std::move(child);
            path += "\\d";
        }
        zxreg_endUpdate(store(), &error);
        EXPECT_TRUE(ZX_SUCCESS(error)) << codeText(error);
        return path;
    }

    void measure(const char* what, const std::function<void()>& body) {
        const size_t used = stackUsedBy(body);
        std::cout << what << " over " << kLevels << " levels: " << used / 1024 << " KiB of stack\n";
        EXPECT_LT(used, kStackSize / 2) << what << " must leave room for its caller";
#if !defined(__SANITIZE_ADDRESS__)
        EXPECT_LT(used, 32768 + kLevels * kMostPerLevel) << what;
#endif
    }
};

TEST_P(DeepTree, IsMadeMatchedAndDeleted) {
    std::string path;
    measure("create", [&] { path = makeTree(); });
    ASSERT_EQ(2 * kLevels, path.size());
    addTask("\\", "top");
    const std::vector<std::string> expected{path + ": r@x.example | top"};
    for (const uint32_t mode : {0u, 1u}) {
        measure(mode == 0 ? "first match" : "best match",
                [&] { EXPECT_EQ(expected, matched("s@x.example", {"r@x.example"}, mode)); });
    }
    for (const ZxPolRefEntity entity : {ZXPOL_REF_ADDRLIST, ZXPOL_REF_CLASSIFICATION}) {
        measure("searching for references", [&] {
            char found[8] = "as is";
            uint32_t size = sizeof found;
            int error = ZXPOL_S_OK;
            EXPECT_EQ(0, zxpol_checkReferInRule(store(), entity, "none", found, &size, &error));
            EXPECT_CODE(ZXPOL_S_OK, error);
        });
    }
    measure("deleting a task with its marks", [&] {
        int error = ZXPOL_S_OK;
        zxpol_deleteTask(rule().get(), "top", &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    });
    measure("cleaning up conditions", [&] {
        int error = ZXPOL_S_OK;
        const Conditions any{{"*", "*"}};
        zxpol_removeConditionEx(rule("\\d").get(), any.list(), ZXPOL_COND_CHECK_HIERARCHY, nullptr, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    });
    EXPECT_EQ(std::vector<std::string>(), conditionsOf(path));
    measure("delete", [&] {
        int error = ZXPOL_S_OK;
        zxpol_deleteRule(rule().get(), "d", &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    });
    EXPECT_EQ(std::vector<std::string>(), rawRule().makeKey("rules").subkeys());
    EXPECT_EQ(std::vector<std::string>{"\\: r@x.example |"}, matched("s@x.example", {"r@x.example"}));
}

ZXTEST_ON_BOTH_ENGINES(DeepTree);

}  // namespace

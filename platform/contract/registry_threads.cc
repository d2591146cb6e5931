// Many threads on one store, each with handles of its own.
#include <atomic>
#include <chrono>
#include <thread>

#include "registry_support.h"

using namespace registry_test;

class Threads : public StoreTest {};
ON_EVERY_STORE(Threads);

namespace {

// What a reader may come across while others write.
bool isExpected(int code) {
    return code >= 0 || code == ZXREG_E_DELETED || reason(code) == notFound || reason(code) == noMoreItems;
}

void readForAWhile(const Key& top, const std::atomic<bool>& stop, std::atomic<long>& reads) {
    const Key mine = openKey(top, "");
    while (!stop) {
        for (int i = 0; i < 4; ++i) {
            int code = 0;
            const Key key = openKey(mine, "k" + std::to_string(i), &code);
            EXPECT_TRUE(isExpected(code)) << std::hex << code;
            if (!key) continue;
            char name[256];
            char data[64] = "";
            uint32_t size = sizeof data;
            zxreg_queryValue(key.get(), "v", nullptr, data, &size, &code);
            EXPECT_TRUE(isExpected(code)) << std::hex << code;
            EXPECT_TRUE(code < 0 || std::string(data, 6) == "value ") << data;
            size = sizeof name;
            zxreg_enumValue(key.get(), 0, name, &size, nullptr, nullptr, nullptr, &code);
            EXPECT_TRUE(isExpected(code)) << std::hex << code;
            zxreg_stamp(key.get(), &code);
            ++reads;
        }
        char name[256];
        uint32_t size = sizeof name;
        int code = 0;
        zxreg_enumSubkey(mine.get(), 1, name, &size, &code);
        EXPECT_TRUE(isExpected(code)) << std::hex << code;
    }
}

void writeForAWhile(const Key& top, int seed, const std::atomic<bool>& stop) {
    const Key mine = openKey(top, "");
    for (int i = seed; !stop; ++i) {
        const std::string name = "k" + std::to_string(i % 4);
        EXPECT_GE(begin(mine), 0);
        {
            const Key key = createKey(mine, name);
            for (int k = 0; k < 3; ++k) {
                EXPECT_GE(setText(key, "v", "value " + std::to_string(i + k)), 0);
            }
            EXPECT_GE(set(key, "p", ZXREG_PROTECTED_STRING, "secret"), 0);
            EXPECT_EQ(text(key, "p"), "secret");
        }
        EXPECT_GE(i % 5 == 0 ? deleteKey(mine, name) : 0, 0);
        EXPECT_GE(i % 3 == 0 ? cancel(mine) : end(mine), 0);
        const int code = setText(createKey(mine, "k3"), "v", "value x");
        EXPECT_TRUE(code == ZXREG_S_OK || code == ZXREG_E_DELETED) << std::hex << code;
    }
}

}  // namespace

TEST_P(Threads, ReadersAndWritersGetAlong) {
    std::atomic<bool> stop{false};
    std::atomic<long> reads{0};
    std::vector<std::thread> threads;
    threads.reserve(5);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] { readForAWhile(top, stop, reads); });
    }
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&, i] { writeForAWhile(top, i * 7, stop); });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GT(reads, 100);
}

TEST(ThreadsOpening, OpeningAndClosingOneStoreAtOnce) {
    const Folder folder;
    const std::string file = "sqlite:" + folder / "store.db";
    std::vector<std::thread> threads;
    threads.reserve(5);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 10; ++round) {
                const Key root = openStore(round % 2 == 0 ? file : "memory:together");
                EXPECT_GE(setText(createKey(root, "A"), "v" + std::to_string(i), std::to_string(round)), 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(values(openKey(openStore(file), "A")).size(), 4u);
}

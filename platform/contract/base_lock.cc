// The read-write lock.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "zxbase.h"

namespace {

using KR::CRWLock;
using namespace std::chrono_literals;

// Waits, with patience for a loaded machine, until the flag is set.
bool becomesTrue(const std::atomic<bool>& flag) {
    for (int i = 0; i < 20000 && !flag; ++i)
        std::this_thread::sleep_for(1ms);
    return flag;
}

TEST(ReadWriteLock, NameMayBeNull) {
    CRWLock unnamed(nullptr);
    unnamed.StartReading();
    unnamed.EndReading();
    CRWLock named("cache");
    named.StartWriting();
    named.EndWriting();
}

TEST(ReadWriteLock, ReadersShare) {
    CRWLock lock(nullptr);
    lock.StartReading();
    std::atomic<bool> entered{false};
    std::thread other([&] {
        lock.StartReading();
        entered = true;
        lock.EndReading();
    });
    EXPECT_TRUE(becomesTrue(entered));
    lock.EndReading();
    other.join();
}

TEST(ReadWriteLock, WriterWaitsForReaders) {
    CRWLock lock(nullptr);
    lock.StartReading();
    std::atomic<bool> entered{false};
    std::thread writer([&] {
        lock.StartWriting();
        entered = true;
        lock.EndWriting();
    });
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(entered);
    lock.EndReading();
    EXPECT_TRUE(becomesTrue(entered));
    writer.join();
}

TEST(ReadWriteLock, ReaderWaitsForWriter) {
    CRWLock lock(nullptr);
    lock.StartWriting();
    std::atomic<bool> entered{false};
    std::thread reader([&] {
        lock.StartReading();
        entered = true;
        lock.EndReading();
    });
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(entered);
    lock.EndWriting();
    EXPECT_TRUE(becomesTrue(entered));
    reader.join();
}

TEST(ReadWriteLock, WritersExcludeEachOther) {
    CRWLock lock(nullptr);
    int plainCounter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 5000; ++i) {
                lock.StartWriting();
                ++plainCounter;
                lock.EndWriting();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(plainCounter, 20000);
}

TEST(ReadWriteLock, ReadersNeverSeeHalfAChange) {
    CRWLock lock(nullptr);
    int a = 0;
    int b = 0;
    std::atomic<bool> stop{false};
    std::atomic<bool> torn{false};
    std::vector<std::thread> readers;
    for (int t = 0; t < 2; ++t) {
        readers.emplace_back([&] {
            while (!stop) {
                lock.StartReading();
                if (a != b) torn = true;
                lock.EndReading();
            }
        });
    }
    for (int i = 0; i < 400; ++i) {
        lock.StartWriting();
        ++a;
        std::this_thread::yield();
        ++b;
        lock.EndWriting();
    }
    stop = true;
    for (std::thread& thread : readers)
        thread.join();
    EXPECT_FALSE(torn);
    EXPECT_EQ(b, 400);
}

}  // namespace

// What the tests with several threads and processes share.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "threads/list_client.h"

namespace threads {

// A store that each thread opens by its location, there as long as the object.
class SharedStore {
public:
    // `engine` is "memory" or "sqlite".
    explicit SharedStore(const std::string& engine);
    ~SharedStore();
    SharedStore(const SharedStore&) = delete;
    SharedStore& operator=(const SharedStore&) = delete;
    const std::string& location() const { return _location; }

private:
    std::string _folder;
    std::string _location;
    _ZxPolComHandle* _root = nullptr;
};

// A failure that a list may come across when it is deleted meanwhile.
bool isOfDeletion(const Failure& failure);

// Threads that are at work until the time of a test is over: 0.6 seconds, or ZX_THREADS_SECONDS of the environment.
// A Failure that leaves one of them is a failure of the test.
class Crew {
public:
    using Turn = std::function<void()>;

    // Adds a thread: `begin` is called in it, and then what it returned again and again until the end.
    void add(std::function<Turn()> begin);
    // Adds a thread that does `work` once.
    void addOnce(Turn work);
    // Starts them and waits for their end.
    void work();

private:
    std::vector<std::function<void(const std::atomic<bool>&)>> _members;
};

// A program of this name beside this one, or in the folder that ZX_WORKERS names: of the other word size, say.
class Worker {
public:
    Worker(const std::string& program, const Addresses& arguments);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    bool isRunning();
    // Waits for its end and expects that nothing failed.
    void finish();

private:
    int _process = -1;
    int _status = -1;
};

// Expects that the open list answers what the store holds, and that no address is there twice.
void expectInStep(const ListClient& list);

// Those that begin with `prefix`.
Addresses startingWith(const std::string& prefix, const Addresses& addresses);

}  // namespace threads

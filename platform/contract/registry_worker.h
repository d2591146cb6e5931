// A second process at work on a store.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace registry_test {

// Runs the program contract_store_worker, whose source lists its commands. It stands beside the program of the tests,
// unless ZXREG_CONTRACT_WORKER names another one.
class Worker {
public:
    explicit Worker(const std::vector<std::string>& arguments);
    ~Worker();  // kills it if it still runs
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // The next line that it prints; empty at the end.
    std::string line();
    // Lets a waiting worker go on.
    void goOn();
    void kill();
    // Waits for its end: the exit status, or minus the signal that killed it.
    int wait();

private:
    pid_t _process = -1;
    int _toWorker = -1;
    int _fromWorker = -1;
};

// Runs a worker to its end; expects that nothing failed and returns the lines that it printed.
std::vector<std::string> work(const std::vector<std::string>& arguments);

}  // namespace registry_test

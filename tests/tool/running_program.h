// The program while it runs: a test feeds it, lets others work beside it, and ends it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

class RunningProgram {
public:
    // Starts the program `words`, whose first is its path; what it prints goes to two files. Throws a
    // std::runtime_error.
    RunningProgram(const std::vector<std::string>& words, const std::string& outPath, const std::string& errPath);
    // Kills it if it still runs.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Writes to its standard input. What does not fit into the pipe waits until the program reads.
    void write(const std::string& text) const;
    void closeInput();

    // The most memory that it has had so far, in KiB.
    uint64_t peakMemory() const;

    void signal(int number) const;
    // Waits for its end: the exit status, or 128 and the signal that ended it.
    int wait();

private:
    pid_t _process = -1;
    int _input = -1;
};

}  // namespace tool

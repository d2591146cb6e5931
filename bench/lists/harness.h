// What all measurements share: options, time, medians, a folder, and processes of their own.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Options {
    bool quick = false;
    int repetitions = 5;
    std::string folder;  // for files; gone at the end
};

// Throws what ends the program with exit status 1: a wrong answer, or something that does not work.
[[noreturn]] void fail(const std::string& why);

// Fails when the code is a failure.
void require(int error, const std::string& what);

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin);

// The seconds that `body` takes.
template <typename Body>
double timeOf(Body body) {
    const Clock::time_point begin = Clock::now();
    body();
    return secondsSince(begin);
}

double median(std::vector<double> values);

// Runs all contestants in turn, `repetitions` times, so that what else the machine does hits all of them, and gives the
// median of what each returns.
std::vector<double> medians(int repetitions, const std::vector<std::function<double()>>& contestants);

// A folder below $TMPDIR or /tmp that is removed with all files in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::string& path() const { return _path; }

private:
    std::string _path;
};

// Runs `body` in a child process, whose memory is little more than this program's, and gives what it returns: as many
// numbers as `count`.
std::vector<double> inChild(size_t count, const std::function<std::vector<double>()>& body);

// Bytes of memory that this process has resident.
double residentBytes();

// Runs a command of the shell, which must succeed.
void runCommand(const std::string& command);

// "1e6" for 1000000.
std::string sizeName(size_t size);

}  // namespace bench

#include "harness.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "zxregistry.h"

namespace bench {

void fail(const std::string& why) {
    throw std::runtime_error(why);
}

void require(int error, const std::string& what) {
    if (error >= 0) return;
    char code[16];
    std::snprintf(code, sizeof code, "%08x", static_cast<unsigned>(error));
    fail(what + ": " + code + " " + zxreg_lastErrorText());
}

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::vector<double> medians(int repetitions, const std::vector<std::function<double()>>& contestants) {
    std::vector<std::vector<double>> results(contestants.size());
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        for (size_t i = 0; i < contestants.size(); ++i)
            results[i].push_back(contestants[i]());
    }
    std::vector<double> middles;
    for (const std::vector<double>& values : results)
        middles.push_back(median(values));
    return middles;
}

Folder::Folder() {
    const char* parent = std::getenv("TMPDIR");
    _path = std::string(parent != nullptr && *parent != '\0' ? parent : "/tmp") + "/bench_lists.XXXXXX";
    if (mkdtemp(_path.data()) == nullptr) fail("no folder " + _path + " can be made");
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

namespace {

// The child's part: writes the numbers into the pipe.
bool sendNumbers(int pipeEnd, size_t count, const std::function<std::vector<double>()>& body) {
    try {
        const std::vector<double> numbers = body();
        const size_t size = numbers.size() * sizeof(double);
        return numbers.size() == count && write(pipeEnd, numbers.data(), size) == static_cast<ssize_t>(size);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_lists: %s\n", failure.what());
        return false;
    }
}

}  // namespace

std::vector<double> inChild(size_t count, const std::function<std::vector<double>()>& body) {
    int ends[2];
    if (pipe(ends) != 0) fail("pipe");
    std::fflush(stdout);
    const pid_t child = fork();
    if (child < 0) fail("fork");
    if (child == 0) std::_Exit(sendNumbers(ends[1], count, body) ? 0 : 1);
    close(ends[1]);
    std::vector<double> numbers(count);
    const ssize_t got = read(ends[0], numbers.data(), count * sizeof(double));
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0 || got != static_cast<ssize_t>(count * sizeof(double))) fail("a measurement in a child failed");
    return numbers;
}

double residentBytes() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void runCommand(const std::string& command) {
    if (std::system(command.c_str()) != 0) fail(command);
}

std::string sizeName(size_t size) {
    int zeros = 0;
    while (size >= 10 && size % 10 == 0) {
        size /= 10;
        ++zeros;
    }
    return std::to_string(size) + "e" + std::to_string(zeros);
}

}  // namespace bench

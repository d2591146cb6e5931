// Runs a target on files instead of what a fuzzer makes up: all files in the folders that are named, or the files.
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace files = std::filesystem;

char current[4096];

// Names the file on which the target gave up; the signal's own action follows.
void nameCurrent(int) {
    const auto ignored = write(2, current, std::strlen(current));
    static_cast<void>(ignored);
}

void announce(const std::string& path) {
    const std::string text = "with the input " + path + "\n";
    current[text.copy(current, sizeof current - 1)] = '\0';
}

// The files at a path, in the order of their names. A folder that does not exist holds none.
std::vector<std::string> filesAt(const std::string& path) {
    if (files::is_regular_file(path)) return {path};
    std::vector<std::string> found;
    if (!files::is_directory(path)) return found;
    for (const files::directory_entry& entry : files::directory_iterator(path)) {
        if (entry.is_regular_file()) found.push_back(entry.path().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void run(const std::string& path) {
    announce(path);
    // In a block of its own size, so that a byte read behind its end is seen.
    const std::string content = contentOf(path);
    const std::vector<uint8_t> input(content.begin(), content.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int count, char** arguments) {
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        struct sigaction action = {};
        action.sa_handler = nameCurrent;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
    size_t inputs = 0;
    for (int i = 1; i < count; ++i) {
        for (const std::string& path : filesAt(arguments[i])) {
            run(path);
            ++inputs;
        }
    }
    std::printf("%zu inputs\n", inputs);
    // Without inputs nothing was tested.
    return inputs == 0 ? 1 : 0;
}

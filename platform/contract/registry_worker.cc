#include "registry_worker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace registry_test {
namespace {

std::string workerPath() {
    if (const char* given = std::getenv("ZXREG_CONTRACT_WORKER")) return given;
    char self[4096] = "";
    const ssize_t size = readlink("/proc/self/exe", self, sizeof self - 1);
    const std::string path(self, size > 0 ? static_cast<size_t>(size) : 0);
    return path.substr(0, path.rfind('/') + 1) + "contract_store_worker";
}

}  // namespace

Worker::Worker(const std::vector<std::string>& arguments) {
    const std::string path = workerPath();
    std::vector<char*> words{const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    int in[2];
    int out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    const int failed = posix_spawn(&_process, path.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    _toWorker = in[1];
    _fromWorker = out[0];
    if (failed != 0) throw std::runtime_error("cannot run " + path);
}

Worker::~Worker() {
    if (_process > 0) {
        kill();
        wait();
    }
    close(_toWorker);
    close(_fromWorker);
}

std::string Worker::line() {
    std::string text;
    char byte = 0;
    while (read(_fromWorker, &byte, 1) == 1 && byte != '\n') {
        text += byte;
    }
    return text;
}

void Worker::goOn() {
    EXPECT_EQ(write(_toWorker, "\n", 1), 1);
}

void Worker::kill() {
    ::kill(_process, SIGKILL);
}

int Worker::wait() {
    int status = 0;
    EXPECT_EQ(waitpid(_process, &status, 0), _process);
    _process = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

std::vector<std::string> work(const std::vector<std::string>& arguments) {
    Worker worker(arguments);
    std::vector<std::string> lines;
    for (std::string line = worker.line(); !line.empty(); line = worker.line()) {
        lines.push_back(line);
    }
    EXPECT_EQ(worker.wait(), 0) << testing::PrintToString(arguments) << testing::PrintToString(lines);
    return lines;
}

}  // namespace registry_test

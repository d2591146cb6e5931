#include "crash/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace crash {
namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    return pointers;
}

}  // namespace

std::string programPath(const std::string& name, bool ofOtherBuild) {
    const char* const others = std::getenv("ZX_WORKERS");
    if (ofOtherBuild && others != nullptr) return std::string(others) + "/" + name;
    char self[4096] = "";
    const ssize_t size = readlink("/proc/self/exe", self, sizeof self - 1);
    const std::string path(self, size > 0 ? static_cast<size_t>(size) : 0);
    return path.substr(0, path.rfind('/') + 1) + name;
}

Process::Process(const std::vector<std::string>& words, const std::vector<std::string>& settings) {
    std::vector<char*> arguments = pointersTo(words);
    std::vector<char*> environment = pointersTo(settings);
    for (char** setting = environ; *setting != nullptr; ++setting)
        environment.push_back(*setting);
    arguments.push_back(nullptr);
    environment.push_back(nullptr);
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    const int failed =
        posix_spawn(&_process, words[0].c_str(), &actions, nullptr, arguments.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    _output = out[0];
    if (failed == 0) return;
    close(_output);
    throw std::runtime_error("cannot run " + words[0]);
}

Process::~Process() {
    if (_process > 0) {
        kill();
        wait();
    }
    close(_output);
}

bool Process::readMore() {
    char bytes[65536];
    const ssize_t size = read(_output, bytes, sizeof bytes);
    if (size > 0) _read.append(bytes, static_cast<size_t>(size));
    return size > 0;
}

bool Process::readLine(std::string& line) {
    size_t end;
    while ((end = _read.find('\n')) == std::string::npos) {
        if (!readMore()) return false;
    }
    line = _read.substr(0, end);
    _read.erase(0, end + 1);
    return true;
}

std::string Process::readAll() {
    while (readMore()) {
    }
    return std::move(_read);
}

void Process::kill() {
    ::kill(_process, SIGKILL);
}

int Process::wait() {
    int status = 0;
    if (waitpid(_process, &status, 0) != _process) throw std::runtime_error("waitpid");
    _process = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace crash

#include "running_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace tool {

RunningProgram::RunningProgram(const std::vector<std::string>& words, const std::string& outPath,
                               const std::string& errPath) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
    _input = ends[1];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], 0);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<std::string> texts = words;
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    const int failure = posix_spawn(&_process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    if (failure != 0) throw std::runtime_error("cannot run " + words.front());
}

RunningProgram::~RunningProgram() {
    closeInput();
    if (_process < 0) return;
    signal(SIGKILL);
    wait();
}

void RunningProgram::write(const std::string& text) const {
    for (size_t done = 0; done < text.size();) {
        const ssize_t written = ::write(_input, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR) throw std::runtime_error("cannot write to a program");
        if (written > 0) done += static_cast<size_t>(written);
    }
}

void RunningProgram::closeInput() {
    if (_input >= 0) close(_input);
    _input = -1;
}

uint64_t RunningProgram::peakMemory() const {
    std::ifstream status("/proc/" + std::to_string(_process) + "/status");
    const std::string label = "VmHWM:";
    for (std::string line; std::getline(status, line);)
        if (line.rfind(label, 0) == 0) return std::stoull(line.substr(label.size()));
    throw std::runtime_error("a program tells no memory");
}

void RunningProgram::signal(int number) const {
    kill(_process, number);
}

int RunningProgram::wait() {
    int status = 0;
    while (waitpid(_process, &status, 0) < 0 && errno == EINTR) {
    }
    _process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace tool

#include "tool_fixture.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace tool {

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// This process's variables without the tool's own, and the given ones.
std::vector<std::string> environmentWith(const std::vector<std::string>& more) {
    std::vector<std::string> all;
    for (char** variable = environ; *variable != nullptr; ++variable)
        if (std::string(*variable).rfind("ZXPOLICY_STORE=", 0) != 0) all.emplace_back(*variable);
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

}  // namespace

ToolTest::ToolTest() {
    std::string pattern = testing::TempDir() + "/zxpolicy-tool-XXXXXX";
    const char* made = mkdtemp(pattern.data());
    if (made == nullptr) throw std::runtime_error("cannot make a folder");
    _folder = made;
}

ToolTest::~ToolTest() {
    std::error_code ignored;
    std::filesystem::remove_all(_folder, ignored);
}

std::string ToolTest::read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string ToolTest::write(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
}

Outcome ToolTest::runPlain(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                           const std::string& input) {
    std::vector<std::string> texts{ZX_TOOL};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environmentWith(environment);
    write("in", input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, path("in").c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, path("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, path("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    const int failure =
        posix_spawn(&child, ZX_TOOL, &actions, nullptr, pointersTo(texts).data(), pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) return {-1, "", "cannot be run"};
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read(path("out")), read(path("err"))};
}

Outcome ToolTest::run(const std::vector<std::string>& arguments, const std::string& input) {
    std::vector<std::string> all{"--store", location()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return runPlain(all, {}, input);
}

Outcome ToolTest::runShell(const std::string& line) const {
    const std::string command = "cd " + _folder + " && zxpolicy=" + ZX_TOOL +
                                " && export ZXPOLICY_STORE=" + location() + " && { " + line + "\n} >" + path("out") +
                                " 2>" + path("err") + " </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read(path("out")), read(path("err"))};
}

std::string ToolTest::apply(const std::string& policy) {
    const Outcome outcome = run({"apply", "-"}, policy);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(withoutNotes(outcome.err), "");
    return outcome.out;
}

std::string ToolTest::dump() {
    const Outcome outcome = run({"dump"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
}

std::string withoutNotes(const std::string& err) {
    std::istringstream lines(err);
    std::string others;
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("zxpolicy: note: ", 0) != 0) others += line + "\n";
    return others;
}

std::string policyWithRoot(const std::string& rest) {
    return "zxpolicy: 1\nroot:\n  conditions: [{sender: \"*\", receiver: \"*\"}]\n" + rest;
}

}  // namespace tool

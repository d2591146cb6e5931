#include "threads/threads_fixture.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <thread>

#include "zxregistry.h"

namespace threads {
namespace {

std::string textOf(const Failure& failure) {
    char code[16];
    std::snprintf(code, sizeof code, "%08x", static_cast<unsigned>(failure.code));
    return failure.what + ": " + code + " " + zxreg_lastErrorText();
}

double secondsOfATest() {
    const char* const given = std::getenv("ZX_THREADS_SECONDS");
    return given != nullptr ? std::atof(given) : 0.6;
}

std::string workerPath(const std::string& program) {
    if (const char* given = std::getenv("ZX_WORKERS")) return std::string(given) + "/" + program;
    char self[4096] = "";
    const ssize_t size = readlink("/proc/self/exe", self, sizeof self - 1);
    const std::string path(self, size > 0 ? static_cast<size_t>(size) : 0);
    return path.substr(0, path.rfind('/') + 1) + program;
}

}  // namespace

SharedStore::SharedStore(const std::string& engine) {
    static int number = 0;
    _location = "memory:threads" + std::to_string(++number);
    if (engine == "sqlite") {
        _folder = ::testing::TempDir() + "zxpolicy-threads-XXXXXX";
        if (mkdtemp(_folder.data()) == nullptr) ADD_FAILURE() << _folder;
        _location = "sqlite:" + _folder + "/policy.db";
    }
    int error = ZXREG_S_OK;
    _root = zxreg_openStore(_location.c_str(), &error);
    EXPECT_GE(error, 0) << _location << " " << zxreg_lastErrorText();
}

SharedStore::~SharedStore() {
    int error = ZXREG_S_OK;
    zxreg_closeKey(_root, &error);
    if (_folder.empty()) return;
    for (const char* suffix : {"", "-wal", "-shm", "-journal", ".key"})
        std::remove((_folder + "/policy.db" + suffix).c_str());
    std::remove(_folder.c_str());
}

bool isOfDeletion(const Failure& failure) {
    return (static_cast<uint32_t>(failure.code) & 0xffffu) == 0x1804 || failure.code == ZXREG_E_DELETED;
}

void Crew::add(std::function<Turn()> begin) {
    _members.emplace_back([begin = std::move(begin)](const std::atomic<bool>& isOver) {
        const Turn turn = begin();
        do
            turn();
        while (!isOver && !::testing::Test::HasFailure());
    });
}

void Crew::addOnce(Turn work) {
    _members.emplace_back([work = std::move(work)](const std::atomic<bool>&) { work(); });
}

void Crew::work() {
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (const auto& member : _members) {
        threads.emplace_back([&member, &isOver] {
            try {
                member(isOver);
            } catch (const Failure& failure) {
                ADD_FAILURE() << textOf(failure);
            }
        });
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(secondsOfATest()));
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
}

Worker::Worker(const std::string& program, const Addresses& arguments) {
    const std::string path = workerPath(program);
    std::vector<char*> words{const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    if (posix_spawn(&_process, path.c_str(), nullptr, nullptr, words.data(), environ) != 0) {
        _process = -1;
        ADD_FAILURE() << "cannot run " << path;
    }
}

Worker::~Worker() {
    if (_process <= 0) return;
    kill(_process, SIGKILL);
    waitpid(_process, nullptr, 0);
}

bool Worker::isRunning() {
    if (_process > 0 && waitpid(_process, &_status, WNOHANG) == _process) _process = -1;
    return _process > 0;
}

void Worker::finish() {
    if (_process > 0) waitpid(_process, &_status, 0);
    _process = -1;
    EXPECT_TRUE(WIFEXITED(_status) && WEXITSTATUS(_status) == 0) << "the worker ended with " << _status;
}

void expectInStep(const ListClient& list) {
    const Addresses entries = list.entries(), stored = list.storedEntries();
    EXPECT_EQ(std::multiset<std::string>(stored.begin(), stored.end()),
              std::multiset<std::string>(entries.begin(), entries.end()));
    EXPECT_EQ(entries.size(), std::set<std::string>(entries.begin(), entries.end()).size());
}

Addresses startingWith(const std::string& prefix, const Addresses& addresses) {
    Addresses found;
    for (const std::string& address : addresses) {
        if (address.compare(0, prefix.size(), prefix) == 0) found.push_back(address);
    }
    return found;
}

}  // namespace threads

// A second process for the tests of the store: runs the commands of its command line, one after the other.
//
//   contract_store_worker [--uid N] [--gid N] LOCATION COMMAND...
//
// The options make root somebody else; other users stay who they are.
//
//   create PATH | delete PATH                keys, below the root
//   set PATH NAME TEXT | unset PATH NAME     values, strings
//   secret PATH NAME TEXT                    a protected string
//   get PATH NAME                            prints the value
//   long PATH NAME SIZE                      a string of that many bytes
//   fill PATH COUNT                          sets COUNT values n0, n1, ...
//   count PATH NAME                          sets 1, 2, ... and prints each number, for ever
//   begin | end | cancel                     an update
//   say TEXT | wait                          prints a line; waits for a line
//   limit BYTES                              files may not grow beyond that size
//   quiet PATH NAME                          reads many times with system calls forbidden, then prints "quiet"
//   die                                      is killed on the spot
//
// A command that fails prints "error" and the code, and the next one runs. Exit status 1 when anything failed.
#include <grp.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zxregistry.h"

namespace {

bool hasFailed = false;

void print(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void report(int error) {
    if (error >= 0) return;
    hasFailed = true;
    char text[32];
    std::snprintf(text, sizeof text, "error %08x", static_cast<unsigned>(error));
    print(text);
}

// Opens the key, runs `work(key, &error)` on it, closes it.
template <class Work>
void onKey(_ZxPolComHandle* root, const char* path, Work work) {
    int error = 0;
    _ZxPolComHandle* key = zxreg_openKey(root, path, &error);
    if (key == nullptr) return report(error);
    work(key, &error);
    report(error);
    zxreg_closeKey(key, &error);
}

void setText(_ZxPolComHandle* key, const char* name, uint32_t type, const std::string& text, int* error) {
    zxreg_setValue(key, name, type, text.c_str(), static_cast<uint32_t>(text.size() + 1), error);
}

void get(_ZxPolComHandle* key, const char* name, int* error) {
    std::string data(1 << 16, '\0');
    uint32_t size = static_cast<uint32_t>(data.size());
    zxreg_queryValue(key, name, nullptr, data.data(), &size, error);
    if (*error >= 0) print(data.c_str());
}

void fill(_ZxPolComHandle* key, int count, int* error) {
    *error = 0;
    for (int i = 0; i < count && *error >= 0; ++i) {
        setText(key, ("n" + std::to_string(i)).c_str(), ZXREG_STRING, std::to_string(i), error);
    }
}

void countUp(_ZxPolComHandle* key, const char* name, int* error) {
    for (int i = 1; *error >= 0; ++i) {
        setText(key, name, ZXREG_STRING, std::to_string(i), error);
        if (*error >= 0) print(std::to_string(i));
    }
}

void limitFiles(const char* bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlim_t most = static_cast<rlim_t>(std::strtoul(bytes, nullptr, 10));
    const struct rlimit limit { most, most };
    setrlimit(RLIMIT_FSIZE, &limit);
}

void readAgainAndAgain(_ZxPolComHandle* root, const char* path, const char* name, int times) {
    for (int i = 0; i < times; ++i) {
        char data[256];
        uint32_t size = sizeof data;
        int error = 0;
        _ZxPolComHandle* key = zxreg_openKey(root, path, &error);
        zxreg_queryValue(key, name, nullptr, data, &size, &error);
        size = sizeof data;
        zxreg_enumValue(key, 0, data, &size, nullptr, nullptr, nullptr, &error);
        zxreg_stamp(key, &error);
        zxreg_closeKey(key, &error);
    }
}

// The kernel kills who calls anything but read and write.
[[noreturn]] void readQuietly(_ZxPolComHandle* root, const char* path, const char* name) {
    readAgainAndAgain(root, path, name, 10);
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);
    readAgainAndAgain(root, path, name, 1000);
    const ssize_t written = write(1, "quiet\n", 6);
    for (;;) {
        syscall(SYS_exit, written == 6 ? 0 : 1);
    }
}

// Runs one command; returns how many words it took, or 0 when there is no such command.
int run(_ZxPolComHandle* root, char** words, int count) {
    const std::string command = words[0];
    int error = 0;
    const auto is = [&](const char* name, int arguments) { return command == name && count > arguments; };
    if (is("begin", 0)) return zxreg_beginUpdate(root, &error), report(error), 1;
    if (is("end", 0)) return zxreg_endUpdate(root, &error), report(error), 1;
    if (is("cancel", 0)) return zxreg_cancelUpdate(root, &error), report(error), 1;
    if (is("wait", 0)) {
        char line[16];
        if (std::fgets(line, sizeof line, stdin) == nullptr) std::exit(4);
        return 1;
    }
    if (is("die", 0)) std::raise(SIGKILL);
    if (is("say", 1)) return print(words[1]), 2;
    if (is("limit", 1)) return limitFiles(words[1]), 2;
    if (is("create", 1)) {
        _ZxPolComHandle* key = zxreg_createKey(root, words[1], &error);
        report(error);
        if (key != nullptr) zxreg_closeKey(key, &error);
        return 2;
    }
    if (is("delete", 1)) return zxreg_deleteKey(root, words[1], &error), report(error), 2;
    if (is("unset", 2)) return onKey(root, words[1], [&](auto* k, int* e) { zxreg_deleteValue(k, words[2], e); }), 3;
    if (is("get", 2)) return onKey(root, words[1], [&](auto* k, int* e) { get(k, words[2], e); }), 3;
    if (is("fill", 2)) return onKey(root, words[1], [&](auto* k, int* e) { fill(k, std::atoi(words[2]), e); }), 3;
    if (is("long", 3)) {
        const std::string text(std::strtoul(words[3], nullptr, 10), 'x');
        return onKey(root, words[1], [&](auto* k, int* e) { setText(k, words[2], ZXREG_STRING, text, e); }), 4;
    }
    if (is("count", 2)) return onKey(root, words[1], [&](auto* k, int* e) { countUp(k, words[2], e); }), 3;
    if (is("quiet", 2)) readQuietly(root, words[1], words[2]);
    const bool isSecret = is("secret", 3);
    if (!isSecret && !is("set", 3)) return 0;
    const uint32_t type = isSecret ? ZXREG_PROTECTED_STRING : ZXREG_STRING;
    onKey(root, words[1], [&](auto* k, int* e) { setText(k, words[2], type, words[3], e); });
    return 4;
}

// Follows the options; returns where the words behind them begin, or 0.
int becomeSomebodyElse(int argc, char** argv) {
    uid_t user = geteuid();
    gid_t group = getegid();
    int at = 1;
    for (; at + 1 < argc && std::strncmp(argv[at], "--", 2) == 0; at += 2) {
        const auto number = static_cast<unsigned>(std::atoi(argv[at + 1]));
        (std::strcmp(argv[at], "--uid") == 0 ? user : group) = number;
    }
    if (geteuid() != 0 || (user == 0 && group == 0)) return at;
    const bool isDone = setgroups(0, nullptr) == 0 && setgid(group) == 0 && setuid(user) == 0;
    return isDone ? at : 0;
}

int work(int argc, char** argv, int at) {
    if (argc <= at) return 2;
    int error = 0;
    _ZxPolComHandle* root = zxreg_openStore(argv[at++], &error);
    report(error);
    if (root == nullptr) return 1;
    while (at < argc) {
        const int words = run(root, argv + at, argc - at);
        if (words == 0) return 2;
        at += words;
    }
    zxreg_closeKey(root, &error);
    return hasFailed ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    const int at = becomeSomebodyElse(argc, argv);
    return at == 0 ? 3 : work(argc, argv, at);
}

// What the log under platform/base does with the environment, and what reaches standard error.
//
// The environment is read once in a process. So every test starts this program again with the variables that it wants;
// the child writes a few entries before main is reached and ends.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "zxbase.h"

namespace {

constexpr auto otherModule = static_cast<ZxModuleID>(7);
constexpr auto farModule = static_cast<ZxModuleID>(100000);

void debug(ZxModuleID module, const char* text, const char* secondText = nullptr) {
    grGetLog()->writeDebugEntry(module, 3, "src/match/walk.cc", "-POLICY-", 12, text, secondText, 2);
}

void writeEntriesOfAllKinds() {
    for (unsigned int level = 0; level < 12; ++level) {
        grGetLog()->writeWarnErrorEntry(level, 1, ("application " + std::to_string(level)).c_str(), nullptr);
    }
    debug(ZX_MODULE_POLICY, "from policy");
    debug(otherModule, "from seven");
    debug(farModule, "from far");
}

void tellSettings() {
    ZxIntLog* log = grGetLog();
    const std::string level = "level " + std::to_string(log->getLogLevel());
    const std::string enabled = std::string("enabled ") + (log->isEnabled(ZX_MODULE_POLICY) ? "2 " : "") +
                                (log->isEnabled(otherModule) ? "7 " : "") + (log->isEnabled(farModule) ? "far" : "");
    log->writeWarnErrorEntry(0, 0, level.c_str(), enabled.c_str());
}

void writeHostileTexts() {
    ZxIntLog* log = grGetLog();
    log->writeWarnErrorEntry(1, 1, "first\nforged\r\x1b[31m\x7f\x01\ttab", "second\ntext");
    log->writeWarnErrorEntry(1, 1, "caf\xc3\xa9 \\A\\B \xc2\x85 \xc2\xa0 end\xc2", nullptr);
    log->writeWarnErrorEntry(1, 1, nullptr, nullptr);
    log->writeDebugEntry(ZX_MODULE_POLICY, 3, "fi\nle", "-TAG\n-", 1, "te\nxt", "se\ncond", 2);
    log->writeDebugEntry(ZX_MODULE_POLICY, 3, nullptr, nullptr, 1, nullptr, nullptr, 2);
}

// The bytes of each text stand for characters that a line must not have, or for none at all.
constexpr const char* unfitTexts[] = {"\xc2\x80",     "\xc2\x9b",         "\xe2\x80\xa8",     "\xe2\x80\xa9",
                                      "\xd8\x9c",     "\xe2\x80\x8e",     "\xe2\x80\x8f",     "\xe2\x80\xaa",
                                      "\xe2\x80\xae", "\xe2\x81\xa6",     "\xe2\x81\xa9",     "\x80",
                                      "\xff",         "\xc0\x8a",         "\xc1\xbf",         "\xe0\x80\x8a",
                                      "\xed\xa0\x80", "\xf0\x80\x80\x8a", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80",
                                      "\xe2\x80",     "\xf0\x9f\x93"};
constexpr const char* fitTexts[] = {"\xc2\xa0",     "\xd8\x9b",     "\xe2\x80\x8b",     "\xe2\x80\xa7",
                                    "\xe2\x80\xaf", "\xe2\x81\xa5", "\xe2\x81\xaa",     "\xed\x9f\xbf",
                                    "\xee\x80\x80", "\xef\xbf\xbd", "\xf0\x9f\x93\xae", "\xf4\x8f\xbf\xbf"};

void writeEachText() {
    for (const char* text : unfitTexts)
        grGetLog()->writeWarnErrorEntry(1, 1, (std::string("a") + text + "z").c_str(), nullptr);
    for (const char* text : fitTexts)
        grGetLog()->writeWarnErrorEntry(1, 1, (std::string("a") + text + "z").c_str(), nullptr);
}

// Every byte but NUL, behind and in front of every other kind of byte that UTF-8 has.
void writeAllPairsOfBytes() {
    for (int byte = 1; byte < 256; ++byte) {
        std::string text;
        for (const char other : {'a', '\n', '\x80', '\xc2', '\xe2', '\xf0', '\xff'})
            text.append(1, static_cast<char>(byte)).append(1, other);
        grGetLog()->writeWarnErrorEntry(1, 1, text.c_str(), text.c_str());
    }
}

void writeFromThreads() {
    std::vector<std::thread> threads;
    for (char letter : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([letter] {
            const std::string text(300, letter);
            for (int i = 0; i < 200; ++i)
                grGetLog()->writeWarnErrorEntry(1, 1, text.c_str(), nullptr);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

void changeEnvironmentLate() {
    grGetLog()->getLogLevel();
    setenv("ZXBASE_LOG_LEVEL", "9", 1);
    setenv("ZXBASE_DEBUG", "all", 1);
    tellSettings();
}

void writeWithErrno() {
    errno = ERANGE;
    debug(ZX_MODULE_POLICY, "x");
    grGetLog()->writeWarnErrorEntry(1, 1, "y", nullptr);
    if (errno == ERANGE) grGetLog()->writeWarnErrorEntry(1, 1, "errno kept", nullptr);
}

void closeStandardError() {
    close(STDERR_FILENO);
    writeEntriesOfAllKinds();
}

struct Part {
    const char* name;
    void (*play)();
};

const Part parts[] = {
    {"all-kinds", writeEntriesOfAllKinds},
    {"settings", tellSettings},
    {"hostile", writeHostileTexts},
    {"each-text", writeEachText},
    {"all-pairs", writeAllPairsOfBytes},
    {"threads", writeFromThreads},
    {"late-change", changeEnvironmentLate},
    {"errno", writeWithErrno},
    {"closed", closeStandardError},
    {"huge", [] { grGetLog()->writeWarnErrorEntry(1, 1, std::string(200000, 'h').c_str(), nullptr); }}};

// Plays the part that the parent asked for, and ends the process there.
const bool playedPart = [] {
    const char* wanted = std::getenv("ZXBASE_TEST_PART");
    if (wanted == nullptr) return false;
    for (const Part& part : parts) {
        if (std::string(wanted) == part.name) {
            part.play();
            _exit(0);
        }
    }
    _exit(3);
}();

// The environment of this process without the log's variables, and with the given ones.
std::vector<std::string> childEnvironment(const std::string& part, const std::vector<std::string>& variables) {
    std::vector<std::string> result = variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (text.rfind("ZXBASE_", 0) != 0) result.push_back(text);
    }
    result.push_back("ZXBASE_TEST_PART=" + part);
    return result;
}

[[noreturn]] void becomePart(int output, const std::vector<std::string>& environment) {
    std::vector<char*> pointers;
    for (const std::string& entry : environment)
        pointers.push_back(const_cast<char*>(entry.c_str()));
    pointers.push_back(nullptr);
    char name[] = "child";
    char* arguments[] = {name, nullptr};
    dup2(output, STDERR_FILENO);
    execve("/proc/self/exe", arguments, pointers.data());
    _exit(4);
}

// The lines that a child wrote to standard error.
std::vector<std::string> play(const std::string& part, const std::vector<std::string>& variables = {}) {
    const std::vector<std::string> environment = childEnvironment(part, variables);
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) becomePart(ends[1], environment);
    close(ends[1]);
    std::string output;
    char block[4096];
    for (ssize_t got = 0; (got = read(ends[0], block, sizeof(block))) > 0;) {
        output.append(block, static_cast<size_t>(got));
    }
    close(ends[0]);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(output.empty() || output.back() == '\n');
    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Whether the line has the stamp of a time and a process, and behind it the text.
bool isEntry(const std::string& line, const std::string& text) {
    const size_t end = line.find("] ");
    return end != std::string::npos && line.find(" [") == 19 && line.substr(end + 2) == text;
}

TEST(LogSink, ByDefaultImportantApplicationEntriesGoToStandardError) {
    const auto lines = play("all-kinds");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(isEntry(lines[0], "log 0.1 application 0")) << lines[0];
    EXPECT_TRUE(isEntry(lines[1], "log 1.1 application 1")) << lines[1];
}

TEST(LogSink, DefaultSettings) {
    const auto lines = play("settings");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(isEntry(lines[0], "log 0.0 level 1 enabled ")) << lines[0];
}

TEST(LogSink, LevelIsSetByTheEnvironment) {
    EXPECT_EQ(play("all-kinds", {"ZXBASE_LOG_LEVEL=0"}).size(), 1U);
    EXPECT_EQ(play("all-kinds", {"ZXBASE_LOG_LEVEL=2"}).size(), 3U);
    EXPECT_EQ(play("all-kinds", {"ZXBASE_LOG_LEVEL=9"}).size(), 10U);
}

TEST(LogSink, LevelThatIsNoDigitCountsAsUnset) {
    for (const char* level : {"", "x", "10", "-1", "2 ", " 2", "+2"}) {
        EXPECT_EQ(play("all-kinds", {std::string("ZXBASE_LOG_LEVEL=") + level}).size(), 2U) << level;
    }
}

TEST(LogSink, DebugEntriesOfListedModules) {
    const auto lines = play("all-kinds", {"ZXBASE_DEBUG=1,2", "ZXBASE_LOG_LEVEL=0"});
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(isEntry(lines[1], "debug 2.3 -POLICY- src/match/walk.cc:12: from policy")) << lines[1];
}

TEST(LogSink, DebugEntriesOfAllModules) {
    EXPECT_EQ(play("all-kinds", {"ZXBASE_DEBUG=all", "ZXBASE_LOG_LEVEL=0"}).size(), 4U);
    EXPECT_EQ(play("all-kinds", {"ZXBASE_DEBUG=9,all", "ZXBASE_LOG_LEVEL=0"}).size(), 4U);
}

TEST(LogSink, ModuleListIsReadWithCare) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},          {"2", "2 "},   {"7,2", "2 7 "}, {"22", ""},    {",,2,", "2 "},
        {"x,2y,,7", "7 "}, {"-2", ""},    {"ALL", ""},     {"002", "2 "}, {"999,99999999999999999999", ""},
        {" 2", ""},        {"100000", ""}};
    for (const auto& [list, enabled] : cases) {
        const auto lines = play("settings", {std::string("ZXBASE_DEBUG=") + list});
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_TRUE(isEntry(lines[0], std::string("log 0.0 level 1 enabled ") + enabled)) << list << ": " << lines[0];
    }
}

TEST(LogSink, NoneAndSystemLogKeepStandardErrorClean) {
    EXPECT_TRUE(play("all-kinds", {"ZXBASE_LOG=none", "ZXBASE_DEBUG=all", "ZXBASE_LOG_LEVEL=9"}).empty());
    EXPECT_TRUE(play("all-kinds", {"ZXBASE_LOG=syslog", "ZXBASE_DEBUG=all", "ZXBASE_LOG_LEVEL=9"}).empty());
}

TEST(LogSink, UnknownTargetIsStandardError) {
    EXPECT_EQ(play("all-kinds", {"ZXBASE_LOG=stderr"}).size(), 2U);
    EXPECT_EQ(play("all-kinds", {"ZXBASE_LOG=nowhere"}).size(), 2U);
    EXPECT_EQ(play("all-kinds", {"ZXBASE_LOG="}).size(), 2U);
}

TEST(LogSink, NoTextForgesALine) {
    const auto lines = play("hostile", {"ZXBASE_DEBUG=2"});
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_TRUE(isEntry(lines[0], "log 1.1 first\\x0aforged\\x0d\\x1b[31m\\x7f\\x01\\x09tab second\\x0atext"))
        << lines[0];
    EXPECT_TRUE(isEntry(lines[1], "log 1.1 caf\xc3\xa9 \\A\\B \\xc2\\x85 \xc2\xa0 end\\xc2")) << lines[1];
    EXPECT_TRUE(isEntry(lines[2], "log 1.1 ")) << lines[2];
    EXPECT_TRUE(isEntry(lines[3], "debug 2.3 -TAG\\x0a- fi\\x0ale:1: te\\x0axt se\\x0acond")) << lines[3];
    EXPECT_TRUE(isEntry(lines[4], "debug 2.3  :1: ")) << lines[4];
}

std::string inHex(const char* text) {
    std::string hex;
    for (; *text != '\0'; ++text) {
        char byte[8];
        std::snprintf(byte, sizeof(byte), "\\x%02x", static_cast<unsigned int>(static_cast<unsigned char>(*text)));
        hex += byte;
    }
    return hex;
}

TEST(LogSink, SeparatorsDirectionMarksAndBrokenTextAreWrittenAsBytes) {
    const auto lines = play("each-text");
    ASSERT_EQ(lines.size(), std::size(unfitTexts) + std::size(fitTexts));
    size_t at = 0;
    for (const char* text : unfitTexts) {
        EXPECT_TRUE(isEntry(lines[at], "log 1.1 a" + inHex(text) + "z")) << lines[at];
        ++at;
    }
    for (const char* text : fitTexts) {
        EXPECT_TRUE(isEntry(lines[at], std::string("log 1.1 a") + text + "z")) << lines[at];
        ++at;
    }
}

TEST(LogSink, WhateverTheBytesAnEntryIsOneLine) {
    const auto lines = play("all-pairs");
    ASSERT_EQ(lines.size(), 255U);
    for (const std::string& line : lines) {
        EXPECT_NE(line.find("] log 1.1 "), std::string::npos) << line;
        for (const char c : line)
            ASSERT_FALSE(static_cast<unsigned char>(c) < 0x20 || c == '\x7f') << line;
    }
}

TEST(LogSink, EntriesOfThreadsDoNotMix) {
    const auto lines = play("threads");
    ASSERT_EQ(lines.size(), 800U);
    for (const std::string& line : lines) {
        const char letter = line.back();
        ASSERT_TRUE(isEntry(line, "log 1.1 " + std::string(300, letter))) << line;
    }
}

TEST(LogSink, EnvironmentIsReadOnce) {
    const auto lines = play("late-change");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(isEntry(lines[0], "log 0.0 level 1 enabled ")) << lines[0];
}

TEST(LogSink, ErrnoIsKept) {
    const auto lines = play("errno", {"ZXBASE_DEBUG=2"});
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(isEntry(lines[2], "log 1.1 errno kept"));
}

TEST(LogSink, HugeTextIsOneWholeLine) {
    const auto lines = play("huge");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(isEntry(lines[0], "log 1.1 " + std::string(200000, 'h')));
}

TEST(LogSink, ClosedStandardErrorLosesEntriesOnly) {
    EXPECT_TRUE(play("closed", {"ZXBASE_DEBUG=all"}).empty());
}

}  // namespace

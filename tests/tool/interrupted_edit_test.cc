// Edits that a signal ends in the middle: all of the edit is in the store, or nothing.
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

#include "../support/experiment.h"
#include "running_program.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using Clock = std::chrono::steady_clock;

// A policy whose edits write much: many rules, a long list.
std::string largePolicy(const std::string& name, int rules) {
    std::string addresses, below;
    for (int i = 0; i < 400; ++i)
        addresses += name + std::to_string(i) + "@a.example, ";
    for (int i = 1; i <= rules; ++i)
        below += "    - {name: " + name + std::to_string(i) + ", conditions: [{sender: \"*\", receiver: \"*@d" +
                 std::to_string(i) + ".example\"}], tasks: [{name: t, setting: {k: " + std::to_string(i) + "}}]}\n";
    return "zxpolicy: 1\nlists: [{name: L, addresses: [" + addresses +
           "x@x.example]}]\nclassifications: [{name: C}]\n" +
           policyWithRoot("  tasks: [{name: scan, setting: {level: 1}}]\n  rules:\n" + below).substr(12);
}

struct Edit {
    const char* name;
    std::vector<std::string> words;
};

void PrintTo(const Edit& edit, std::ostream* out) {
    *out << edit.name;
}

class InterruptedEdit : public ToolTest, public testing::WithParamInterface<Edit> {
protected:
    InterruptedEdit() {
        write("old.yaml", largePolicy("old", 40));
        write("new.yaml", largePolicy("new", 50));
        std::string lines;
        for (int i = 0; i < 5000; ++i)
            lines += "imported" + std::to_string(i) + "@i.example\n";
        write("lines.txt", lines);
        EXPECT_EQ(run({"apply", path("old.yaml")}).status, 0);
        std::filesystem::copy_file(path("policy.db"), path("fresh.db"));
        _before = dump();
        const auto begin = Clock::now();
        EXPECT_EQ(start().wait(), 0) << read(path("edit-err"));
        _duration = Clock::now() - begin;
        _after = dump();
        EXPECT_NE(_before, _after);
    }

    // Begins the edit, the files of the test standing for NEW and LINES.
    RunningProgram start() const {
        std::vector<std::string> words{ZX_TOOL, "--store", location()};
        for (const std::string& word : GetParam().words)
            words.push_back(word == "NEW" ? path("new.yaml") : word == "LINES" ? path("lines.txt") : word);
        return RunningProgram(words, path("edit-out"), path("edit-err"));
    }

    // Puts the store back as it was before the edit.
    void restore() const {
        for (const char* suffix : {"-wal", "-shm"})
            std::filesystem::remove(path("policy.db") + suffix);
        std::filesystem::copy_file(path("fresh.db"), path("policy.db"),
                                   std::filesystem::copy_options::overwrite_existing);
    }

    // Ends the edit at this share of the time that it takes. Whether it was done all the same.
    bool interrupt(int signal, double share) {
        restore();
        RunningProgram program = start();
        std::this_thread::sleep_for(std::chrono::duration<double>(_duration) * share);
        program.signal(signal);
        const int status = program.wait();
        EXPECT_TRUE(status == 0 || status == 128 + signal) << status << ": " << read(path("edit-err"));
        const std::string found = dump();
        EXPECT_TRUE(found == _before || found == _after) << "half of the edit is in the store";
        EXPECT_TRUE(status != 0 || found == _after) << "what was reported as done is not";
        return found == _after;
    }

private:
    std::string _before;
    std::string _after;
    Clock::duration _duration{};
};

}  // namespace

TEST_P(InterruptedEdit, IsAllOrNothing) {
    std::mt19937 random(7);
    const auto rounds = zxtest::shortOrLong<size_t>(4, 100);
    size_t done = 0;
    for (size_t round = 0; round < rounds && !HasFailure(); ++round)
        for (const int signal : {SIGINT, SIGTERM, SIGKILL})
            if (interrupt(signal, std::uniform_real_distribution<double>(0, 1)(random))) ++done;
    EXPECT_LT(done, rounds * 3) << "no signal came in time";
    // Nobody has to clear up first.
    EXPECT_EQ(run({"apply", path("new.yaml")}).status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, InterruptedEdit,
    testing::Values(Edit{"Apply", {"apply", "NEW"}}, Edit{"ListImport", {"list", "import", "L", "LINES"}},
                    Edit{"ListReplace", {"list", "import", "L", "LINES", "--replace"}},
                    Edit{"ListAdd", {"list", "add", "L", "a@b.example", "c@d.example"}},
                    Edit{"ListRemove", {"list", "remove", "L", "old1@a.example", "old300@a.example"}},
                    Edit{"RuleMove", {"rule", "move", "\\old40", "--position", "1"}},
                    Edit{"RuleRemove", {"rule", "remove", "\\old7"}},
                    Edit{"TaskSet", {"task", "set", "\\scan", "--setting", "level=2", "--comment", "c"}},
                    Edit{"ClassificationAdd", {"classification", "add", "D", "--comment", "c"}}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace tool

// Stores in a file or a folder that may only be read: questions are answered or fail in one line, and nothing is
// changed. An administrator may write everywhere, so there the program runs as nobody.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "command_line.h"
#include "tool_error.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using Words = std::vector<std::string>;

constexpr uid_t kNobody = 65534;

class ReadOnlyStoreTest : public ToolTest {
protected:
    ReadOnlyStoreTest() {
        apply(
            "zxpolicy: 1\nlists: [{name: L, addresses: [\"*@a.example\", x@b.example]}]\n"
            "classifications: [{name: Bad, actions: [{name: q}]}, {name: Unused}]\n" +
            policyWithRoot("  tasks: [{name: scan, outcomes: {o: Bad}}]\n  rules:\n"
                           "    - {name: A, conditions: [{sender: (L), receiver: \"*\"}]}\n"
                           "    - {name: B, conditions: [{sender: \"*\", receiver: \"*\"}]}\n")
                .substr(12));
        write("same.yaml", dump());
        write("other.yaml", policyWithRoot("  tasks: [{name: t}]\n"));
        write("mails.tsv", "x@b.example\ta@b.example\n");
        write("addresses.txt", "new@x.example\n");
        write("tests.yaml",
              "zxpolicyTest: 1\ntests: [{name: t, sender: x@b.example, expect: [{receiver: a@b.example, rule: "
              "'\\A'}]}]\n");
        write("out", "");
        write("err", "");
        _image = read(path("policy.db"));
        for (const char* name :
             {"", "policy.db", "mails.tsv", "same.yaml", "other.yaml", "addresses.txt", "tests.yaml", "out", "err"})
            EXPECT_TRUE(geteuid() != 0 || chown(path(name).c_str(), kNobody, kNobody) == 0);
    }
    // Else it could not be removed.
    ~ReadOnlyStoreTest() override { setModes(0600, 0700); }

    void setModes(mode_t file, mode_t folder) const {
        EXPECT_EQ(chmod(path("policy.db").c_str(), file), 0);
        EXPECT_EQ(chmod(path("").c_str(), folder), 0);
    }

    // Runs the program without the rights of an administrator.
    Outcome runPlainly(Words words) {
        words.insert(words.begin(), {"zxpolicy", "--store", location()});
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        // What the child has of it, it would print too.
        std::fflush(stdout);
        const pid_t child = fork();
        if (child == 0) _exit(runAsNobody(static_cast<int>(words.size()), arguments.data()));
        int status = 0;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read(path("out")), read(path("err"))};
    }

    void expectAnswers(const Words& words) {
        const Outcome outcome = runPlainly(words);
        EXPECT_EQ(outcome.status, 0) << testing::PrintToString(words) << outcome.err;
        EXPECT_NE(outcome.out, "") << testing::PrintToString(words);
    }

    // One line that says what may not be done, where, and why.
    void expectRefusal(const Words& words) {
        const Outcome outcome = runPlainly(words);
        EXPECT_EQ(outcome.status, 3) << testing::PrintToString(words) << outcome.out;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_THAT(outcome.err,
                    AllOf(StartsWith("cannot "), HasSubstr("ZXREG_E_PERMISSION (0x81021905): /"),
                          HasSubstr("/policy.db: "), HasSubstr("check the permissions of the store's file and folder")))
            << testing::PrintToString(words);
    }

    void expectUnchanged() const { EXPECT_TRUE(read(path("policy.db")) == _image); }

    std::vector<Words> questions() const {
        return {{"dump"},
                {"tree"},
                {"list"},
                {"list", "show", "L"},
                {"list", "check", "L", "x@b.example"},
                {"list", "export", "L"},
                {"refs", "list", "L"},
                {"refs", "classification", "Bad"},
                {"classification", "show"},
                {"rule", "show", "\\A"},
                {"task", "show", "\\scan"},
                {"lint"},
                {"explain", "--sender", "x@b.example", "--receiver", "a@b.example"},
                {"match", "--sender", "x@b.example", "--receiver", "a@b.example"},
                {"match", "--envelopes", path("mails.tsv")},
                {"replay", "--envelopes", path("mails.tsv")},
                {"replay", "--envelopes", path("mails.tsv"), "--against", path("same.yaml")},
                {"replay", "--envelopes", path("mails.tsv"), "--against", location()},
                {"test", path("tests.yaml")},
                {"diff", location(), path("same.yaml")},
                {"diff", "--decisions", location(), path("same.yaml")},
                {"report", "--envelopes", path("mails.tsv"), "--html", "/dev/null"},
                {"apply", path("same.yaml")}};
    }

    std::vector<Words> edits() const {
        return {{"apply", path("other.yaml")},
                {"list", "add", "L", "q@q.example"},
                {"list", "remove", "L", "x@b.example"},
                {"list", "import", "L", path("addresses.txt")},
                {"list", "import", "New", path("addresses.txt"), "--create"},
                {"rule", "add", "\\C"},
                {"rule", "set", "\\A", "--comment", "c"},
                {"rule", "move", "\\B", "--position", "1"},
                {"rule", "remove", "\\A"},
                {"task", "add", "\\t"},
                {"task", "set", "\\scan", "--comment", "c"},
                {"task", "remove", "\\scan"},
                {"classification", "add", "C"},
                {"classification", "set", "Bad", "--comment", "c"},
                {"classification", "remove", "Unused"}};
    }

private:
    // The program in this process; its exit status.
    int runAsNobody(int count, char** arguments) const {
        const int out = open(path("out").c_str(), O_WRONLY | O_TRUNC);
        const int err = open(path("err").c_str(), O_WRONLY | O_TRUNC);
        if (dup2(out, 1) < 0 || dup2(err, 2) < 0) return 100;
        if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) return 101;
        int status = 0;
        try {
            status = runCommandLine(count, arguments);
        } catch (const ToolError& failure) {
            std::cerr << failure.what() << '\n';
            status = failure.status();
        }
        std::cout.flush();
        return status;
    }

    std::string _image;
};

}  // namespace

TEST_F(ReadOnlyStoreTest, AFileThatMayOnlyBeReadAnswersAndStaysAsItIs) {
    setModes(0400, 0700);
    for (const Words& question : questions())
        expectAnswers(question);
    for (const Words& edit : edits())
        expectRefusal(edit);
    expectUnchanged();
}

// A reader takes part in the locking, in files beside the store.
TEST_F(ReadOnlyStoreTest, AFolderThatMayOnlyBeReadIsRefused) {
    for (const mode_t file : {0600U, 0400U}) {
        setModes(file, 0500);
        for (const std::vector<Words>& all : {questions(), edits()})
            for (const Words& words : all)
                expectRefusal(words);
        expectUnchanged();
    }
}

TEST_F(ReadOnlyStoreTest, AFileThatMayNotBeReadIsRefused) {
    setModes(0000, 0700);
    expectRefusal({"dump"});
    expectRefusal({"list", "add", "L", "q@q.example"});
}

}  // namespace tool

// Files that are written whole or not at all.
#include "output/output_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tool_error.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAre;

class OutputFileTest : public ToolTest {
protected:
    OutputFileTest() { std::filesystem::create_directory(path("f")); }

    static mode_t modeOf(const std::string& file) {
        struct stat status {};
        EXPECT_EQ(stat(file.c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    // The names in the folder of the files to write.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path("f")))
            names.push_back(entry.path().filename());
        return names;
    }
    // Expects a refusal, and gives what it says.
    static std::string refusal(const std::string& file) {
        try {
            OutputFile output(file);
        } catch (const UsageError& refused) {
            return refused.what();
        }
        ADD_FAILURE() << file << " was opened";
        return "";
    }
};

}  // namespace

TEST_F(OutputFileTest, WhatIsKeptTakesThePlaceAndTheModeOfTheFile) {
    const std::string file = write("f/out", "old");
    chmod(file.c_str(), 0640);
    OutputFile output(file);
    output.stream() << "new " << std::string(100000, 'x');
    output.stream().flush();
    EXPECT_EQ(read(file), "old");
    output.keep();
    EXPECT_EQ(read(file), "new " + std::string(100000, 'x'));
    EXPECT_EQ(modeOf(file), 0640U);
    EXPECT_THAT(names(), UnorderedElementsAre("out"));
}

TEST_F(OutputFileTest, ANewFileHasTheModeThatTheUserAsksFor) {
    const mode_t mask = umask(027);
    OutputFile output(path("f/out"));
    output.keep();
    umask(mask);
    EXPECT_EQ(modeOf(path("f/out")), 0640U);
}

TEST_F(OutputFileTest, WhatIsNotKeptLeavesNothing) {
    const std::string file = write("f/out", "old");
    OutputFile(file).stream() << "new" << std::flush;
    OutputFile(path("f/other")).stream() << "new" << std::flush;
    EXPECT_EQ(read(file), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("out"));
}

TEST_F(OutputFileTest, BehindALinkTheFileItselfIsWritten) {
    const std::string file = write("f/out", "old");
    std::filesystem::create_symlink(file, path("link"));
    OutputFile output(path("link"));
    output.stream() << "new";
    output.keep();
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    EXPECT_EQ(read(file), "new");
}

// The link stays one.
TEST_F(OutputFileTest, BehindALinkToAFileThatIsNotThereThatFileIsMade) {
    std::filesystem::create_symlink("b", path("f/a"));
    std::filesystem::create_symlink("../f/new", path("f/b"));
    OutputFile output(path("f/a"));
    output.stream() << "text";
    output.keep();
    EXPECT_EQ(read(path("f/new")), "text");
    EXPECT_THAT(names(), UnorderedElementsAre("a", "b", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(path("f/b")));
    std::filesystem::create_symlink("ring", path("f/ring"));
    EXPECT_THAT(refusal(path("f/ring")), HasSubstr("Too many levels of symbolic links"));
}

TEST_F(OutputFileTest, APipeIsWrittenDirectly) {
    ASSERT_EQ(mkfifo(path("f/pipe").c_str(), 0600), 0);
    const int reader = open(path("f/pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    OutputFile output(path("f/pipe"));
    output.stream() << "new";
    output.keep();
    char text[8] = "";
    EXPECT_EQ(::read(reader, text, sizeof text), 3);
    EXPECT_STREQ(text, "new");
    close(reader);
    EXPECT_THAT(names(), UnorderedElementsAre("pipe"));
}

TEST_F(OutputFileTest, WhatCannotBeWrittenIsRefusedWithTheReason) {
    EXPECT_THAT(refusal(path("none/out")), HasSubstr("none/out\": No such file or directory"));
    EXPECT_THAT(refusal(path("f")), HasSubstr("Is a directory"));
    EXPECT_THAT(refusal(path("f/none/")), HasSubstr("cannot write"));
    EXPECT_THAT(refusal("-"), HasSubstr("cannot write \"-\": name a file, or /dev/stdout"));
    EXPECT_THAT(refusal(""), HasSubstr("cannot write \"\": No such file"));
    OutputFile full("/dev/full");
    full.stream() << "text";
    try {
        full.keep();
        ADD_FAILURE();
    } catch (const ToolError& failure) {
        EXPECT_EQ(failure.status(), kFailed);
        EXPECT_STREQ(failure.what(),
                     "cannot write \"/dev/full\": No space left on device; free some space, and try again");
    }
}

// What a shell has in the file before and behind stays.
TEST_F(OutputFileTest, StandardOutputByItsNameIsWrittenWhereItStands) {
    apply(
        "zxpolicy: 1\nlists: [{name: L, addresses: [a@b.c]}]\nroot: {conditions: [{sender: \"*\", receiver: "
        "\"*\"}]}\n");
    EXPECT_EQ(runShell("echo before; $zxpolicy list export L /dev/stdout; echo behind").out, "before\na@b.c\nbehind\n");
    const Outcome other = runShell(
        "exec 5>five; echo before >&5; $zxpolicy list export L /dev/fd/5; rm five; $zxpolicy list export L /dev/fd/5");
    EXPECT_EQ(other.status, 0) << other.err;
    EXPECT_EQ(
        runShell("exec 5>five; echo before >&5; $zxpolicy list export L /dev/fd/5; echo behind >&5; cat five").out,
        "before\na@b.c\nbehind\n");
}

// What is opened in the place of a closed stream is not what the name is of.
TEST_F(OutputFileTest, NothingIsWrittenToClosedStreams) {
    apply(
        "zxpolicy: 1\nlists: [{name: L, addresses: [a@b.c]}]\nroot: {conditions: [{sender: \"*\", receiver: "
        "\"*\"}]}\n");
    for (const char* closed : {">&-", "2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        EXPECT_EQ(runShell(std::string("$zxpolicy list export L /dev/null ") + closed).status, 0) << closed;
        EXPECT_EQ(runShell(std::string("$zxpolicy list export L f/out ") + closed).status, 0) << closed;
        EXPECT_EQ(read(path("f/out")), "a@b.c\n") << closed;
        std::filesystem::remove(path("f/out"));
    }
}

TEST_F(OutputFileTest, AFileThatGrowsTooLargeLeavesTheOldOne) {
    apply(policyWithRoot(""));
    write("f/page.html", "old");
    write("mails.tsv", "a@b.c\td@e.f\n");
    const Outcome outcome =
        runShell("ulimit -f 1; $zxpolicy report --envelopes mails.tsv --html f/page.html; echo $? >status");
    EXPECT_EQ(read(path("status")), std::to_string(128 + SIGXFSZ) + "\n");
    EXPECT_EQ(read(path("f/page.html")), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("page.html"));
}

// It waits for mails with its file begun.
TEST_F(OutputFileTest, ASignalThatEndsTheProgramLeavesNothing) {
    apply(policyWithRoot(""));
    write("f/changes", "old");
    write("other.yaml", "zxpolicy: 1\nroot: {conditions: [{sender: x@y, receiver: x@y}]}\n");
    ASSERT_EQ(mkfifo(path("mails").c_str(), 0600), 0);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGALRM, SIGXCPU, SIGABRT}) {
        const Outcome outcome = runShell(
            "exec 3<>mails; ulimit -c 0; env --default-signal=INT,QUIT,TERM,HUP $zxpolicy replay --envelopes mails "
            "--against other.yaml "
            "--changes f/changes 2>said & while [ -z \"$(ls -A f | grep zxpolicy)\" ]; do sleep 0.01; done; kill -" +
            std::to_string(signal) + " $!; wait $!");
        EXPECT_EQ(outcome.status, 128 + signal);
        EXPECT_EQ(read(path("said")), "");
        EXPECT_EQ(read(path("f/changes")), "old");
        EXPECT_THAT(names(), UnorderedElementsAre("changes"));
    }
}

// A store that is written over is lost, and one whose key is gone cannot be opened any more.
TEST_F(OutputFileTest, CommandsDoNotWriteOverWhatTheyNeed) {
    const std::string store = "zxpolicy: 1\nlists: [{name: L, addresses: [a@b.c]}]\n";
    apply(store + policyWithRoot("").substr(12));
    const std::string mails = write("mails.tsv", "a@b.c\td@e.f\n");
    const std::string other = write("other.yaml", policyWithRoot(""));
    const std::string database = path("policy.db");
    const std::vector<std::vector<std::string>> commands = {
        {"list", "export", "L"},
        {"report", "--envelopes", mails, "--html"},
        {"replay", "--envelopes", mails, "--against", other, "--changes"},
    };
    for (const std::vector<std::string>& command : commands) {
        std::vector<std::string> needed = {database,          path("./policy.db"),         database + ".key",
                                           database + "-wal", path("./policy.db-journal"), path("f/../policy.db-shm")};
        if (command[0] != "list") needed.push_back(mails);
        if (command[0] == "replay") needed.push_back(other);
        for (const std::string& file : needed) {
            std::vector<std::string> words = command;
            words.push_back(file);
            const bool wasThere = std::filesystem::exists(file);
            const std::string before = wasThere ? read(file) : "";
            const Outcome outcome = run(words);
            EXPECT_EQ(outcome.status, 2) << command[0] << ' ' << file;
            EXPECT_THAT(outcome.err, HasSubstr("the command needs the file")) << command[0] << ' ' << file;
            EXPECT_EQ(std::filesystem::exists(file), wasThere) << file;
            EXPECT_EQ(wasThere ? read(file) : "", before) << file;
        }
    }
    // Its key is beside the database, wherever a link to it is.
    std::filesystem::create_symlink(database, path("f/link.db"));
    EXPECT_THAT(runShell("$zxpolicy --store sqlite:f/link.db list export L policy.db.key").err,
                HasSubstr("the command needs the file"));
    EXPECT_FALSE(std::filesystem::exists(database + ".key"));
}

TEST_F(OutputFileTest, CommandsDoNotWriteOverWhatTheyReadAsStandardInput) {
    apply(policyWithRoot(""));
    write("mails.tsv", "a@b.c\td@e.f\n");
    write("other.yaml", policyWithRoot(""));
    for (const char* command : {"report --envelopes - --html mails.tsv <mails.tsv",
                                "replay --envelopes - --against other.yaml --changes mails.tsv <mails.tsv",
                                "replay --envelopes mails.tsv --against - --changes other.yaml <other.yaml"}) {
        const Outcome outcome = runShell(std::string("$zxpolicy ") + command);
        EXPECT_EQ(outcome.status, 2) << command;
        EXPECT_THAT(outcome.err, HasSubstr("the command needs standard input as it is")) << command;
        EXPECT_EQ(read(path("mails.tsv")), "a@b.c\td@e.f\n") << command;
        EXPECT_EQ(read(path("other.yaml")), policyWithRoot("")) << command;
    }
}

}  // namespace tool

// What of a password stays in the memory of the tool, and where else it may turn up.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <iostream>
#include <streambuf>

#include "command_line.h"
#include "support/memory_scan.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using zxtest::HiddenSecret;
using zxtest::MemoryScan;

// Takes the output and keeps none of it, but whether the secret was in it.
class WatchingOutput : public std::streambuf {
public:
    explicit WatchingOutput(const HiddenSecret& secret) : _secret(secret) {}
    bool hasSeen() const { return _hasSeen; }

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        for (std::streamsize i = 0; i + static_cast<std::streamsize>(_secret.size()) <= size; ++i)
            if (_secret.isAt(text + i)) _hasSeen = true;
        return size;
    }
    int_type overflow(int_type byte) override { return traits_type::not_eof(byte); }

private:
    const HiddenSecret& _secret;
    bool _hasSeen = false;
};

// Runs the tool in this process; says whether it showed the secret.
bool showsSecret(std::vector<std::string> arguments, const HiddenSecret& secret) {
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    WatchingOutput output(secret);
    std::streambuf* const before = std::cout.rdbuf(&output);
    const int status = runCommandLine(static_cast<int>(arguments.size()), words.data());
    std::cout.rdbuf(before);
    EXPECT_EQ(status, 0);
    return output.hasSeen();
}

std::string placesOf(const std::vector<zxtest::MemoryFind>& found) {
    std::string text = std::to_string(found.size());
    for (const auto& find : found)
        text += "\n" + find.region;
    return text;
}

class PasswordMemory : public ToolTest {
protected:
    // A policy file with the secret as a password.
    std::string fileWith(const HiddenSecret& secret, const char* before) const {
        const int file = open(path("p.yaml").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const std::string head = std::string(before) + "    password: \"";
        const std::string tail = "\"\nroot: {conditions: [{sender: \"*\", receiver: \"*\"}]}\n";
        bool isWritten = ::write(file, head.data(), head.size()) > 0;
        secret.reveal([&](const char* plain) { isWritten = isWritten && ::write(file, plain, secret.size()) > 0; });
        EXPECT_TRUE(isWritten && ::write(file, tail.data(), tail.size()) > 0);
        close(file);
        return path("p.yaml");
    }

    static constexpr const char* kList = "zxpolicy: 1\nlists:\n  - name: L\n    type: directory\n";
    static constexpr const char* kChangedList =
        "zxpolicy: 1\nlists:\n  - name: L\n    type: directory\n    server: other\n";
};

}  // namespace

TEST_F(PasswordMemory, NothingOfItStaysBehindACommand) {
    MemoryScan scan;
    for (const size_t size : {39u, 20u, 12u}) {
        SCOPED_TRACE(size);
        const HiddenSecret secret = HiddenSecret::random(size);
        const std::vector<std::string> store{"zxpolicy", "--store", location()};
        const auto run = [&](const std::vector<std::string>& rest) {
            std::vector<std::string> all = store;
            all.insert(all.end(), rest.begin(), rest.end());
            const bool shows = showsSecret(all, secret);
            const auto found = scan.find(secret);
            EXPECT_TRUE(found.empty()) << testing::PrintToString(rest) << placesOf(found);
            return shows;
        };
        EXPECT_FALSE(run({"apply", fileWith(secret, kList)}));
        EXPECT_FALSE(run({"apply", "--json", fileWith(secret, kChangedList)}));
        EXPECT_FALSE(run({"apply", "--dry-run", fileWith(secret, kList)}));
        EXPECT_FALSE(run({"dump"}));
        EXPECT_FALSE(run({"list", "--json"}));
        EXPECT_FALSE(run({"rule", "set", "\\", "--comment", std::to_string(size)}));
        EXPECT_FALSE(run({"tree"}));
        EXPECT_FALSE(run({"diff", path("p.yaml"), path("p.yaml")}));
        EXPECT_TRUE(run({"dump", "--with-secrets"}));
    }
}

TEST_F(PasswordMemory, NoLogAndNoOutputShowsIt) {
    const std::vector<std::string> all{"ZXBASE_DEBUG=all", "ZXBASE_LOG_LEVEL=9"};
    const std::string policy = std::string(kList) + "    password: \"correct horse battery\"\n" +
                               "root: {conditions: [{sender: \"*\", receiver: \"*\"}]}\n";
    for (const std::vector<std::string>& command : {std::vector<std::string>{"apply", "-"},
                                                    {"apply", "--json", "-"},
                                                    {"dump"},
                                                    {"list", "--json"},
                                                    {"diff", "-", location()}}) {
        std::vector<std::string> arguments{"--store", location()};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const Outcome outcome = runPlain(arguments, all, policy);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ((outcome.out + outcome.err).find("horse"), std::string::npos) << outcome.out << outcome.err;
    }
    EXPECT_NE(run({"dump", "--with-secrets"}).out.find("correct horse battery"), std::string::npos);
}

}  // namespace tool

// Runs the tool as its users do, in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tool {

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

class ToolTest : public testing::Test {
protected:
    ToolTest();
    ~ToolTest() override;

    // Runs the program with these arguments, after --store with the test's store unless they name one.
    Outcome run(const std::vector<std::string>& arguments, const std::string& input = "");
    // Runs it with exactly these arguments, and more variables in its environment.
    Outcome runPlain(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {},
                     const std::string& input = "");

    // Runs a line of the shell in the test's folder. $zxpolicy is the program, and the test's store the default one.
    Outcome runShell(const std::string& line) const;

    // The path of a file in the test's folder; writes and reads such files.
    std::string path(const std::string& name) const { return _folder + "/" + name; }
    std::string write(const std::string& name, const std::string& text) const;
    static std::string read(const std::string& path);

    // Applies a policy text, which must succeed without a warning; returns what the tool printed.
    std::string apply(const std::string& policy);
    // The dump, which must succeed.
    std::string dump();

    std::string location() const { return "sqlite:" + path("policy.db"); }

private:
    std::string _folder;
};

// The lines of standard error that are no notes.
std::string withoutNotes(const std::string& err);

// A policy with the root rule that stands for every mail, and more lines below "root:".
std::string policyWithRoot(const std::string& rest);

}  // namespace tool

// The other process of these tests.
//
//   crash_worker write LOCATION FOLDER SEED FIRST   edits the policy for ever, beginning with the edit number FIRST
//   crash_worker read LOCATION FOLDER               prints the policy, and before it what is wrong with it
//
// A writer prints "begin N" before an edit, and "done N CODE" when its call has returned.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "crash/policy_editor.h"

namespace {

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

[[noreturn]] void write(crash::PolicyEditor& policy, uint64_t seed, uint64_t first) {
    for (uint64_t index = first;; ++index) {
        print("begin " + std::to_string(index) + "\n");
        const int code = policy.edit(seed, index);
        print("done " + std::to_string(index) + " " + std::to_string(code) + "\n");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    crash::PolicyEditor policy(argv[2], argv[3]);
    if (policy.error() < 0) {
        print("error " + zxtest::codeText(policy.error()) + " " + zxreg_lastErrorText() + "\n");
        return 1;
    }
    const std::string command = argv[1];
    if (command == "write" && argc == 6)
        write(policy, std::strtoull(argv[4], nullptr, 10), std::strtoull(argv[5], nullptr, 10));
    if (command != "read") return 2;
    print(policy.problems() + policy.text());
    return 0;
}

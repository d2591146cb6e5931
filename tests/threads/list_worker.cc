// A second process at work on a list: list_worker LOCATION LIST COMMAND ARGUMENT...
//
//   insert ADDRESS... | erase ADDRESS...
//   fill PREFIX COUNT             inserts PREFIX0@example.com, ... one by one
//   alternate FILE FILE ROUNDS    replaces the list by the one file's addresses and by the other's, in turn
//
// Exit status 0 when nothing failed.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "threads/list_client.h"

namespace {

bool run(threads::ListClient& list, const threads::Addresses& words) {
    const threads::Addresses arguments(words.begin() + 1, words.end());
    if (words[0] == "insert") return list.insert(arguments), true;
    if (words[0] == "erase") return list.erase(arguments);
    if (words[0] == "fill" && arguments.size() == 2) {
        for (const std::string& address : threads::numbered(arguments[0], std::strtoul(words[2].c_str(), nullptr, 10)))
            list.insert({address});
        return true;
    }
    if (words[0] != "alternate" || arguments.size() != 3) return false;
    for (int round = std::atoi(arguments[2].c_str()); round > 0; --round)
        list.import(arguments[static_cast<size_t>(round % 2)], true);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) return 2;
    try {
        threads::ListClient list(argv[1], argv[2]);
        list.open();
        return run(list, threads::Addresses(argv + 3, argv + argc)) ? 0 : 1;
    } catch (const threads::Failure& failure) {
        std::fprintf(stderr, "list_worker: %s: %08x\n", failure.what.c_str(), static_cast<unsigned>(failure.code));
        return 1;
    }
}

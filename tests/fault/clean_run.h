// A call of the interface in which nothing fails: what it answers, and the states that the store passes through.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "fault/scenario.h"

namespace zxtest {

struct CleanRun {
    explicit CleanRun(const Scenario& scenario);

    // What the store holds when the call's `call`-th store call is made.
    const std::string& stateBefore(uint64_t call) const;

    // Whether the store holds this at some moment of the call.
    bool passesThrough(const std::string& content) const;

    // A line of `content` that the store never holds, at whatever number or position; empty when there is none.
    std::string foreignLine(const std::string& content) const;

    // Which lines `content` has more or less than the store when the call is done; empty when they are the same.
    std::string differenceTo(const std::string& content) const;

    Outcome outcome;
    uint64_t calls = 0;
    std::string before;      // the content when the call begins
    std::string content;     // and when it is done
    std::string repeated;    // and when it is done once more
    std::string addresses;   // of the normal lists
    int repeatedResult = 0;  // what the second call reports

private:
    std::map<uint64_t, std::string> _states;  // the content after each store call that wrote
    std::set<std::string> _lines;             // of all these states
    std::set<std::string> _essences;          // the same without numbers and positions
};

// The world that a scenario begins with.
std::unique_ptr<World> worldOf(const Scenario& scenario);

// What the books say against the calls so far, after everything was closed; forgets it.
std::string troubleInBooks();

}  // namespace zxtest

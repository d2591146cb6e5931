// The records of a match: how they are collected while receivers are grouped, built for the caller, and released.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "match/task_collection.h"
#include "zxpolicy.h"

namespace zxpol {

// A matched rule and its receivers, while receivers are grouped. The receivers are the caller's strings.
struct _PrivMatchPair {
    _PrivMatchPair(std::string path, const char* firstReceiver)
        : rulePath(std::move(path)), receivers(1, firstReceiver) {}

    std::string rulePath;
    std::vector<const char*> receivers;
};

// The matched rules of one mail in the order of first match.
class MatchedRules {
public:
    // Notes that `receiver` matched the rule at `path`.
    void add(const std::string& path, const char* receiver);

    const std::vector<_PrivMatchPair>& pairs() const { return _pairs; }

private:
    std::vector<_PrivMatchPair> _pairs;
    std::unordered_map<std::string, size_t> _places;
};

// Releases `count` records with their task handles and tasks, and the array. A null array is nothing to release.
void freePairs(_ZxPolMatchPair* pairs, uint32_t count);

// The array of records for the caller. It owns all that was put in until it is handed over.
class MatchPairs {
public:
    explicit MatchPairs(size_t count);
    ~MatchPairs() { freePairs(_pairs, _count); }
    MatchPairs(const MatchPairs&) = delete;
    MatchPairs& operator=(const MatchPairs&) = delete;

    // Fills the record at `index`; the tasks are handed over, and the list keeps the paths alone. std::bad_alloc.
    void fill(size_t index, const _PrivMatchPair& matched, TaskList& tasks);

    uint32_t count() const { return _count; }

    // Hands the array over; release it with freePairs.
    _ZxPolMatchPair* release();

private:
    _ZxPolMatchPair* _pairs;
    uint32_t _count;
};

}  // namespace zxpol

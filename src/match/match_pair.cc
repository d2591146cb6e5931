#include "match/match_pair.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "frame/reg_debug.h"

namespace zxpol {

void MatchedRules::add(const std::string& path, const char* receiver) {
    const auto [place, isNew] = _places.emplace(path, _pairs.size());
    if (isNew) {
        _pairs.emplace_back(path, receiver);
    } else {
        _pairs[place->second].receivers.push_back(receiver);
    }
}

namespace {

void freeTasks(_ZxPolMatchPair& pair) {
    for (uint32_t index = 0; index < pair.taskCount; ++index) {
        delete static_cast<ZxPolTask*>(pair.tasks[index]->object);
        delete pair.tasks[index];
    }
    delete[] pair.tasks;
}

char** newReceivers(const std::vector<const char*>& receivers) {
    auto* array = new char*[receivers.size() + 1];
    // The strings stay the caller's, and are not written to.
    char** end = std::transform(receivers.begin(), receivers.end(), array,
                                [](const char* receiver) { return const_cast<char*>(receiver); });
    *end = nullptr;
    return array;
}

char* newText(const std::string& text) {
    auto* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

}  // namespace

void freePairs(_ZxPolMatchPair* pairs, uint32_t count) {
    if (pairs == nullptr) return;
    for (uint32_t index = 0; index < count; ++index) {
        freeTasks(pairs[index]);
        delete[] pairs[index].receivers;
        delete[] pairs[index].rulePath;
    }
    delete[] pairs;
}

MatchPairs::MatchPairs(size_t count) : _pairs(new _ZxPolMatchPair[count]()), _count(static_cast<uint32_t>(count)) {}

void MatchPairs::fill(size_t index, const _PrivMatchPair& matched, TaskList& tasks) {
    _ZxPolMatchPair& pair = _pairs[index];
    pair.rulePath = newText(matched.rulePath);
    pair.receivers = newReceivers(matched.receivers);
    if (tasks.empty()) return;
    pair.tasks = new _ZxPolComHandle*[tasks.size()];
    for (_TaskListEntry& entry : tasks) {
        ZXPOL_DEBUG(2, "Rule {%s} has task : <<%s>>", pair.rulePath, entry.path.c_str());
        _ZxPolComHandle* handle = makeHandle(entry.task.get(), ZXPOL_HANDLE_TASK);
        if (handle == nullptr) throw std::bad_alloc();
        entry.task.release();
        pair.tasks[pair.taskCount++] = handle;
    }
}

_ZxPolMatchPair* MatchPairs::release() {
    _count = 0;
    return std::exchange(_pairs, nullptr);
}

}  // namespace zxpol

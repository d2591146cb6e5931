// What a policy holds, as a text to compare, and what is wrong with it.
#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "crash/policy_editor.h"
#include "support/store_dump.h"

namespace crash {
namespace {

using zxtest::StoredKey;
using zxtest::StoredValue;

// Whether the numbers are first, first + 1, ... in some order.
bool areDense(const std::multiset<uint32_t>& numbers) {
    uint32_t expected = 1;
    return std::all_of(numbers.begin(), numbers.end(), [&](uint32_t number) { return number == expected++; });
}

// The positions of a key's children; nothing when they are no ordered children.
std::multiset<uint32_t> positionsOf(const StoredKey& key) {
    std::multiset<uint32_t> positions;
    for (const StoredKey& child : key.keys) {
        for (const StoredValue& value : child.values) {
            uint32_t position = 0;
            if (value.name != "order" || value.data.size() != sizeof position) continue;
            value.data.copy(reinterpret_cast<char*>(&position), sizeof position);
            positions.insert(position);
        }
    }
    return positions;
}

// The numbers of the values "address1", "condition2", ... by the word before the number.
std::map<std::string, std::multiset<uint32_t>> numbersOf(const StoredKey& key) {
    std::map<std::string, std::multiset<uint32_t>> numbers;
    for (const StoredValue& value : key.values) {
        const size_t end = value.name.find_last_not_of("0123456789");
        if (end == std::string::npos || end + 1 == value.name.size()) continue;
        const std::string word = value.name.substr(0, end + 1);
        if (word == "address" || word == "condition")
            numbers[word].insert(static_cast<uint32_t>(std::stoul(value.name.substr(end + 1))));
    }
    return numbers;
}

void findProblems(const StoredKey& key, const std::string& path, std::string& problems) {
    const std::multiset<uint32_t> positions = positionsOf(key);
    if (!positions.empty() && (positions.size() != key.keys.size() || !areDense(positions)))
        problems += "positions below " + path + " are not 1 to n\n";
    for (const auto& [word, numbers] : numbersOf(key)) {
        if (!areDense(numbers)) problems += "the numbers of " + word + " in " + path + " have gaps\n";
    }
    for (const StoredKey& child : key.keys)
        findProblems(child, path + "\\" + child.name, problems);
}

}  // namespace

std::string PolicyEditor::content() const {
    return zxtest::describe(zxtest::readStore(root()));
}

std::string PolicyEditor::text() const {
    const std::string stored = content();
    return stored + answers();
}

std::string PolicyEditor::problems() const {
    std::string problems;
    findProblems(zxtest::readStore(root()), "", problems);
    return problems;
}

std::string PolicyEditor::answers() const {
    std::string lines;
    for (const char* sender : {"a1@example.com", "a7@example.com", "b2@test.net", "x@host3.net"}) {
        for (const char* receiver : {"a14@example.com", "c@elsewhere.org"}) {
            for (const uint32_t mode : {0u, 1u})
                lines += answer(sender, receiver, mode);
        }
    }
    return lines;
}

std::string PolicyEditor::answer(const std::string& sender, const char* receiver, uint32_t mode) const {
    const char* receivers[] = {receiver, nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_matchRuleByMailInfoEx(_rules.get(), _lists.get(), mode, sender.c_str(), receivers, &pairs, &count, &error);
    std::string line = sender + " to " + receiver + ": " + zxtest::codeText(error);
    for (uint32_t at = 0; at < count; ++at)
        line += " " + std::string(pairs[at].rulePath) + " with " + std::to_string(pairs[at].taskCount) + " tasks";
    zxpol_freeMatchPair(pairs, count, &error);
    return line + "\n";
}

}  // namespace crash

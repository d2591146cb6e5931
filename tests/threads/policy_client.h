// One user of a policy, with a store key and hives of its own, as a thread or a process has them.
#pragma once

#include <string>
#include <vector>

#include "threads/list_client.h"
#include "zxpolicy.h"

namespace threads {

// Two policies that an editor puts one in the place of the other, each time in one update. In both, mails of kSwapped
// meet a rule of the policy's own with so many tasks of its own, and the list kNames is referred to; but only the first
// has the address in the list, and only the second names it in a condition. Half of a swap lets the mail through.
enum class Policy { byList, byName };
constexpr const char* kSwapped = "swapped@sender.example";
constexpr const char* kNames = "Names";

class PolicyClient {
public:
    explicit PolicyClient(const std::string& location);
    ~PolicyClient();
    PolicyClient(const PolicyClient&) = delete;
    PolicyClient& operator=(const PolicyClient&) = delete;

    // Each throws Failure, with what failed and its code.
    void createList(const char* name);
    void addRule(const std::string& name, const std::string& sender, const std::string& receiver);
    void addTask(const std::string& rule, const std::string& name);
    void removeRule(const std::string& name);
    void putInPlace(Policy policy);  // in place of the other, or of none, in one update

    // What a match answers: for each matched rule its path, and how many receivers and tasks it has. What the tasks are
    // called would be a question of its own, which a deleted task does not answer.
    Addresses match(uint32_t mode, const std::string& sender, const Addresses& receivers) const;
    // Whether a rule refers to the list.
    bool isReferredTo(const char* list) const;
    // The names of the root's children, asked for one by one.
    Addresses childNames() const;
    // The first condition of a child of the root, as "sender receiver"; empty when there is no such child.
    std::string firstCondition(const std::string& rule) const;

private:
    void _closeAll();

    _ZxPolComHandle* _store = nullptr;
    _ZxPolComHandle* _rules = nullptr;
    _ZxPolComHandle* _lists = nullptr;
    _ZxPolComHandle* _root = nullptr;
};

// What a match of kSwapped to so many receivers must answer under a policy.
Addresses answerUnder(Policy policy, size_t receivers);

}  // namespace threads

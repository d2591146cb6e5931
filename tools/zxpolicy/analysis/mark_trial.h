// What rules ask for without one of their inactive marks, tried on a copy of the policy.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "stored/store.h"

namespace tool {

class MarkTrial {
public:
    // The policy is copied when it is first needed; the store does not change meanwhile.
    explicit MarkTrial(const Store& store) : _store(store) {}

    // Whether one of the rules `matched` asks for other tasks when `rule` has no mark for `task`; that is the only one
    // for it there. True, too, where that cannot be told. Throws a StoreError, after which others can be asked about.
    bool changesTasks(const std::string& rule, const std::string& task, const std::vector<std::string>& matched);

private:
    class WithoutMark;

    void copy();
    // The tasks of a rule with all marks.
    const std::vector<std::string>& tasksOf(const std::string& rule);

    const Store& _store;
    std::optional<Store> _copy;                             // with all marks
    std::map<std::string, std::vector<std::string>> _with;  // by rule
};

}  // namespace tool

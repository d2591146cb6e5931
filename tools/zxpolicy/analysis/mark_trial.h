// What rules ask for without one of their inactive marks, tried on a copy of the policy.
#pragma once

#include <string>
#include <vector>

#include "stored/store.h"

namespace tool {

class MarkTrial {
public:
    // Copies the policy. Throws a StoreError.
    explicit MarkTrial(const Store& store);

    // Whether one of the rules `matched` asks for other tasks when `rule` has no mark for `task`; that is the only one
    // for it there. True, too, where that cannot be told.
    bool changesTasks(const std::string& rule, const std::string& task, const std::vector<std::string>& matched) const;

private:
    Store _copy{"memory:", Store::Missing::Create};
};

}  // namespace tool

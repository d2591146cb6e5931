// What the steps of a match say of its answer, held against the records.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "zxpolicy_explain.h"

namespace fuzz {

// Hears the steps of one match.
class ToldMatch {
public:
    // The observer; its context is a ToldMatch.
    static void hear(void* context, const _ZxPolMatchStep* step);

    // Fails unless the records of a match by these rules that succeeded are what its steps told.
    void requireRecords(_ZxPolComHandle* rules, const _ZxPolMatchPair* pairs, uint32_t count) const;

private:
    struct Collection {
        std::string rulePath;
        std::vector<std::string> tasks;  // full names
    };
    void hear(const _ZxPolMatchStep& step);
    void hearTask(const _ZxPolMatchStep& step);

    std::map<std::string, std::vector<const char*>> _receivers;  // by the path of their rule
    std::vector<Collection> _collections;
};

}  // namespace fuzz

// Policies of few words, so that rules are often in each other's way, and all mails over the same words.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "decisions/matcher.h"
#include "stored/store.h"

namespace tool {

// What a random policy may hold.
enum class SmallPolicyKind {
    Valid,   // conditions and entries that the library takes
    Foreign  // whatever another program may have written: any pattern, and conditions that are none
};

// Makes a policy in a store of its own, the same one for the same seed.
class SmallPolicy {
public:
    SmallPolicy(uint32_t seed, SmallPolicyKind kind);

    const Store& store() const { return _store; }
    // Changes some of it.
    void change(uint32_t seed);

private:
    size_t upTo(size_t most) { return _random() % (most + 1); }
    std::string pick(const std::vector<std::string>& from) { return from[upTo(from.size() - 1)]; }
    std::string address();
    std::string pattern();
    std::string side();
    std::string conditionText();
    void makeList(const std::string& name);
    void fillList(const std::string& name);
    void writeConditions(const std::string& ruleKey);
    void makeRules(const std::string& parentKey, const RuleHandle& parent, int depth);

    std::mt19937 _random;
    bool _isForeign;
    Store _store;
    std::vector<std::string> _ruleKeys;
};

// All texts of up to `length` characters.
std::vector<std::string> allTexts(const std::string& alphabet, size_t length);

// Ways to match: all of them in turn.
MatchOptions optionsOf(uint32_t seed);

// All addresses that tell such policies apart: over the same words, and a few more.
std::vector<std::string> smallAddresses();

// What the library decides on one mail to each of the receivers alone: the rule's path, empty for none, "!" for a match
// that fails.
std::vector<std::string> libraryDecisions(const Store& store, const MatchOptions& options, const std::string& sender,
                                          const std::vector<std::string>& receivers);

}  // namespace tool

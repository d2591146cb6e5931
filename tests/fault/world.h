// The small policy that every scenario starts from, freshly opened for each run.
#pragma once

#include <string>

#include "support/fault_memory.h"
#include "support/fault_store.h"
#include "support/records.h"
#include "support/store_dump.h"
#include "zxpolicy.h"

namespace zxtest {

// Calls a function of the library with its store calls and allocations counted, and failing as planned.
template <class Result, class... Parameters, class... Arguments>
Result lib(Result (*function)(Parameters...), Arguments... arguments) {
    const CountedCalls calls;
    const CountedAllocations allocations;
    return function(arguments...);
}

// What the store's content is when the call begins.
enum class Start { emptyStore, policy, lists };

/*
 * The policy, in the order of creation:
 *   lists     Dir, Far (directory lists)
 *   filters   26 exclusive ascending, 7 exclusive descending
 *   root      * to *; tasks scan (26, overridable), stamp (7)
 *   \A        *@a.example to *, bob@b.example to *@x.example; tasks t (26; outcomes infected, clean), u (5), v (7);
 *             marks \scan and \A\u
 *   \A\B      bob@a.example to *; task deep
 *   \A\C      *@a.example to *@y.example
 *   \D        (Dir) to *, which no mail can be checked against
 *   \E        * to carol@z.example
 *   classes   Infected (actions move, tell and log of the types 1 to 3), Clean
 */
/*
 * The lists, each of normal kind:
 *   Open, Shut   three values: four addresses of 500 bytes, five of 400, and four of 500 of which one is *@...; Open is
 *                open when the call begins
 *   Bare         no address
 * and a rule \R, (Shut) to *.
 */
class World {
public:
    // An empty store, or one with the policy, where the hives, the rules \, \A and the task \A\t are open and so are
    // the list Dir, the classification Infected and its action tell, or one with the lists, where the hives of rules
    // and lists, the rule \ and the list Open are.
    explicit World(Start start);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // What the store holds now, below its root.
    std::string content() const { return describe(readStore(store)); }

    // Whether there are normal lists in it.
    bool hasNormalLists() const { return ruleHive != nullptr && task == nullptr; }

    // What is wrong with the normal lists: one whose addresses are not the stored ones; else empty.
    std::string listTrouble() const;

    // A normal list in which an address is stored twice; else empty.
    std::string listWithTwins() const;

    // The stored addresses of all normal lists, sorted, each once.
    std::string listAddresses() const;

    // Closes everything that is open.
    void close();

    _ZxPolComHandle* store = nullptr;
    _ZxPolComHandle* ruleHive = nullptr;
    _ZxPolComHandle* listHive = nullptr;
    _ZxPolComHandle* root = nullptr;
    _ZxPolComHandle* a = nullptr;
    _ZxPolComHandle* task = nullptr;
    _ZxPolComHandle* list = nullptr;
    _ZxPolComHandle* classHive = nullptr;
    _ZxPolComHandle* classification = nullptr;
    _ZxPolComHandle* action = nullptr;
};

}  // namespace zxtest

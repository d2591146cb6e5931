// A policy that is edited at random, the same way wherever the same edits are made: each choice is a statement of its
// own, so that no compiler makes them in another order.
#pragma once

#include <cstdint>
#include <string>

#include "model/random_source.h"
#include "support/raw_store.h"

namespace crash {

class PolicyEditor {
public:
    // Opens the store and its hives. `folder` holds the address files that are imported. A failure shows in `error()`.
    PolicyEditor(std::string location, std::string folder);

    // Makes the edit number `index` of the series `seed`, which depends on these and on what the store holds. Returns
    // its result code: a failure (nothing there to be changed) is as good a result as any.
    int edit(uint64_t seed, uint64_t index);
    // The same, where some of the edits do nothing but close the store and open it again, which these leave out.
    int editOpen(uint64_t seed, uint64_t index);

    // Replaces a list by the addresses of one of the files.
    int importAddresses(const std::string& list, size_t file, bool isReplacing = true);

    // Closes everything and opens it again.
    void reopen();

    // What the store holds; with what the policy answers for some mails.
    std::string content() const;
    std::string text() const;
    // What is wrong with its positions and with its numbered values; nothing, as a rule.
    std::string problems() const;

    int error() const { return _error; }
    _ZxPolComHandle* root() const { return _root.get(); }

private:
    int editOnce(model::RandomSource& random);
    int editRules(model::RandomSource& random);
    int editConditions(model::RandomSource& random);
    int editTasks(model::RandomSource& random);
    int editOutcomes(model::RandomSource& random);
    int editMarks(model::RandomSource& random);
    int editLists(model::RandomSource& random);
    int editAddresses(model::RandomSource& random);
    int importList(model::RandomSource& random);
    int editClassifications(model::RandomSource& random);
    int editGroup(model::RandomSource& random);

    static std::string anyText(model::RandomSource& random);
    static std::string rulePath(model::RandomSource& random);
    zxtest::Handle rule(model::RandomSource& random, int& error) const;
    std::string answers() const;
    std::string answer(const std::string& sender, const char* receiver, uint32_t mode) const;

    const std::string _location;
    const std::string _folder;
    int _error = 0;
    zxtest::Handle _root;
    zxtest::Handle _rules;
    zxtest::Handle _lists;
    zxtest::Handle _classes;
};

// Writes the address files into a folder.
void writeAddressFiles(const std::string& folder);

}  // namespace crash

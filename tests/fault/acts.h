// Calls that scenarios of several states make.
#pragma once

#include <string>
#include <vector>

#include "fault/scenario.h"

namespace zxtest {

using Addresses = std::vector<std::string>;

// Opens a hive of the world's store.
Outcome openRuleHive(World& world);
Outcome openAddrListHive(World& world);
Outcome openClassificationHive(World& world);

// Create a child at a position; the answer tells the one given.
Outcome createRule(_ZxPolComHandle* parent, const char* name, uint32_t order, CondList conditions);
Outcome createTask(_ZxPolComHandle* rule, const char* name, uint32_t order);
Outcome createAction(_ZxPolComHandle* classification, const char* name, uint32_t order);

// Walks the conditions of a rule to their end, which counts as a success.
Outcome enumerateConditions(_ZxPolComHandle* rule);

// Writes out and releases a list of conflicting conditions.
void settleList(Outcome& outcome, _ZxPolErrorCond** list);

// Inserts or removes addresses.
Outcome changeAddresses(_ZxPolComHandle* list, void (*function)(_ZxPolComHandle*, const char**, int*),
                        const Addresses& addresses);

// Converts a text into a buffer of `capacity` bytes, at most 4096. A failure must write nothing.
Outcome convert(int (*function)(char*, unsigned*, const char*, unsigned), const std::string& input, unsigned capacity);

}  // namespace zxtest

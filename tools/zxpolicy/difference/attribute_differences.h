// What differs in the attributes of two versions of something, as details of its change: what stands in it by itself,
// not its order, its contents, or what is below it.
#pragma once

#include <string>
#include <vector>

#include "policy/policy_file.h"

namespace tool {

std::vector<std::string> attributeDifferences(const Rule& before, const Rule& after);
std::vector<std::string> attributeDifferences(const Task& before, const Task& after);
std::vector<std::string> attributeDifferences(const Classification& before, const Classification& after);
std::vector<std::string> attributeDifferences(const Action& before, const Action& after);
// The kind as well; not the password.
std::vector<std::string> attributeDifferences(const AddressList& before, const AddressList& after);

std::vector<std::string> attributeDifferences(FilterPriority before, FilterPriority after);

// What differs in the outcomes of a task.
std::vector<std::string> outcomeDifferences(const Task& before, const Task& after);

const char* priorityWord(FilterPriority priority);

}  // namespace tool

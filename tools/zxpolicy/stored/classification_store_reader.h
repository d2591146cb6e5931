// Classifications as the store has them.
#pragma once

#include <string>
#include <vector>

#include "policy/policy_file.h"
#include "stored/store.h"

namespace tool {

// "classification NAME", the name in quotes.
std::string classificationText(const std::string& name);

// The names in the store's order. Makes no key where there is none. Throws a StoreError.
std::vector<std::string> readClassificationNames(const Store& store);

// All classifications with their actions, in the store's order. Throws a StoreError.
std::vector<Classification> readStoredClassifications(const Store& store);

}  // namespace tool

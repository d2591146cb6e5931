// What a policy may hold, so that the store gives back what was written. Asked both for files and for stores.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "policy/policy_file.h"

namespace tool {

constexpr size_t kMaxName = 255;     // bytes of a name, and of a task's full name
constexpr size_t kMaxComment = 511;  // bytes of a comment
constexpr size_t kMaxAddress = 511;  // bytes of one side of a condition
constexpr size_t kMaxFilter = 1023;  // bytes of a directory's search filter
constexpr size_t kMaxPassword = 39;  // bytes of a directory's password

// Each returns what is wrong, as the rest of a sentence such as "is longer than 255 bytes", or the empty text.
std::string nameFault(std::string_view name);
std::string textFault(std::string_view text, size_t most);
std::string senderFault(std::string_view sender);
std::string receiverFault(std::string_view receiver);
std::string markFault(std::string_view task);

// The form in which two inactive marks count as the same: lower case, without one trailing backslash.
std::string markKey(std::string_view task);

}  // namespace tool

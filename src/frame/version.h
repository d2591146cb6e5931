// The numbers of this library's version and of the policy that it keeps in a store.
#pragma once

#include <cstdint>

namespace zxpol {

constexpr unsigned kVersionMajor = 1;
constexpr unsigned kVersionMinor = 2;
constexpr unsigned kVersionPatch = 0;
constexpr unsigned kVersionBuild = 1229;

// What a store without a version is stamped with: major version 1 in the top byte.
constexpr uint32_t kPolicyVersion = 0x01000000;
constexpr uint32_t kPolicyMajorSupported = 1;

}  // namespace zxpol

// Addresses and patterns to try a list with: valid ones, invalid ones, and near misses.
#pragma once

#include <string>
#include <vector>

#include "model/random_source.h"

namespace model {

// The same address in another letter case or with other quotes, or another one that differs little.
std::string variantOf(const std::string& address, RandomSource& random);

// A short address or pattern of few words, so that two of them often collide; now and then an invalid one.
std::string shortAddress(RandomSource& random);

// A valid wildcard pattern, of all forms that are accepted.
std::string wildcardPattern(RandomSource& random);

// A pattern that no list accepts, but that a cache or a stored value may hold.
std::string unusualPattern(RandomSource& random);

// A valid address of `length` characters, 5 at least.
std::string longAddress(size_t length, RandomSource& random);

// What is matched against a list: mostly something that nearly belongs to it.
std::string subjectFor(const std::vector<std::string>& pool, RandomSource& random);

}  // namespace model

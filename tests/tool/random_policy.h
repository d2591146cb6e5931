// Policies made at random, with all the texts that are hard to write and to read back.
#pragma once

#include <random>

#include "policy/policy_file.h"

namespace tool {

class RandomPolicy {
public:
    explicit RandomPolicy(unsigned int seed) : _random(seed) {}

    Policy make();

private:
    size_t upTo(size_t most) { return std::uniform_int_distribution<size_t>(0, most)(_random); }
    std::string text(size_t most);
    std::string name(size_t most);
    std::string address();
    Task task(const std::string& name);
    AddressList list();
    Classification classification(const std::string& name);
    std::string listAddress();
    void fillSetting(Setting& setting, const std::string& prefix, int depth);
    Rule rule(const std::string& path, int depth);

    std::mt19937 _random;
};

}  // namespace tool

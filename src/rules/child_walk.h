// One step of a walk over the children of a rule.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class ZxPolRule;

namespace zxpol {

// The path of the root rule.
constexpr const char* kRootPath = "\\";

// The path of a rule, as walks say it.
const char* pathOf(const ZxPolRule& rule);

enum class ChildStep {
    opened,    // the child is open
    unopened,  // there is a child, but it cannot be opened
    ended,     // there are no more children
    failed     // the children cannot be enumerated
};

// Opens the `index`-th child of `rule` and appends its name to `path`, the path of `rule`. On `unopened` and `failed`
// the reason is in *error; on `ended` and `failed` the path is unchanged. Has the buffers that a walk, whose depth is
// that of the tree, must not have in its own frames.
ChildStep openChild(ZxPolRule& rule, uint32_t index, std::string& path, std::unique_ptr<ZxPolRule>& child, int* error);

}  // namespace zxpol

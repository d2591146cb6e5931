#include "rules/child_walk.h"

#include "rules/rule.h"
#include "store/result.h"
#include "store/store_value.h"

namespace zxpol {

const char* pathOf(const ZxPolRule& rule) {
    return rule.name().empty() ? kRootPath : rule.name().c_str();
}

__attribute__((noinline)) ChildStep openChild(ZxPolRule& rule, uint32_t index, std::string& path,
                                              std::unique_ptr<ZxPolRule>& child, int* error) {
    char name[kNameSize];
    uint32_t size = sizeof name;
    rule.enumChildRule(index, name, &size, error);
    if (failed(*error)) return isEnd(*error) ? ChildStep::ended : ChildStep::failed;
    if (path != kRootPath) path += '\\';
    path += name;
    child.reset(rule.openChildRule(name, error));
    return child != nullptr && succeeded(*error) ? ChildStep::opened : ChildStep::unopened;
}

}  // namespace zxpol

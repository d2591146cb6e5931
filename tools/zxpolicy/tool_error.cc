#include "tool_error.h"

#include "result_names.h"
#include "zxpolicy.h"

namespace tool {

StoreError::StoreError(const std::string& what, int code)
    : ToolError(kFailed, what + ": " + describeResult(code)), _code(code) {}

void require(int code, const std::string& what) {
    if (ZX_FAILURE(code)) throw StoreError(what, code);
}

}  // namespace tool

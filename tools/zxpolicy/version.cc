#include "version.h"

#include "zxpolicy.h"

namespace tool {

std::string versionText() {
    unsigned int major = 0;
    unsigned int minor = 0;
    unsigned int patch = 0;
    unsigned int build = 0;
    libzxpolicy(&major, &minor, &patch, &build);
    return std::string("zxpolicy ") + ZXPOLICY_TOOL_VERSION + ", libzxpolicy " + std::to_string(major) + "." +
           std::to_string(minor) + "." + std::to_string(patch) + "." + std::to_string(build);
}

}  // namespace tool

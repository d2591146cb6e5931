// What --version prints.
#pragma once

#include <string>

namespace tool {

// The versions of the tool and of the library that it runs with.
std::string versionText();

}  // namespace tool

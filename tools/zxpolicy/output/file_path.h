// Which file a path is of.
#pragma once

#include <string>

namespace tool {

// The whole path without symbolic links, also of a file that is not there, as which a link may end, too. Empty when its
// folder cannot be reached, or it names none.
std::string withoutLinks(const std::string& path);

// Whether two paths are of one file, also where there is none yet.
bool areSameFile(const std::string& a, const std::string& b);

// An open descriptor through which the file can be written, or -1. Standard output and standard error count although
// they may be closed.
int writableDescriptorOf(const std::string& path);

// Whether standard input is read from the file.
bool isStandardInput(const std::string& path);

}  // namespace tool

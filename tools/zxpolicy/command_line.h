// The command line: what it takes, and what it runs.
#pragma once

namespace tool {

// Reads the command line and runs its command. Returns the exit status. Throws a ToolError.
int runCommandLine(int argc, char** argv);

}  // namespace tool

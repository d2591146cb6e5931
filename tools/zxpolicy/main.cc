// The program: every failure becomes one line on standard error.
#include <exception>
#include <iostream>
#include <new>

#include "command_line.h"
#include "output/standard_output.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

int runProgram(int argc, char** argv) {
    const StandardOutput output;
    try {
        const int status = runCommandLine(argc, argv);
        finishOutput();
        if (!std::cout) throw ToolError(kFailed, "cannot write to standard output: " + standardOutputFault());
        return status;
    } catch (const ToolError& failure) {
        std::cerr << "zxpolicy: " << oneLine(failure.what()) << '\n';
        return failure.status();
    } catch (const std::bad_alloc&) {
        std::cerr << "zxpolicy: there is not enough memory\n";
    } catch (const std::exception& failure) {
        std::cerr << "zxpolicy: internal failure: " << oneLine(failure.what()) << "; please report it\n";
    }
    return kFailed;
}

}  // namespace

}  // namespace tool

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    return tool::runProgram(argc, argv);
}

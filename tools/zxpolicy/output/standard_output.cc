#include "output/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

#include "output/descriptor_output.h"
#include "output/folding.h"
#include "output/terminal_width.h"

namespace tool {

namespace {

DescriptorBuffer& outputBuffer() {
    static DescriptorBuffer buffer(STDOUT_FILENO);
    return buffer;
}

FoldedOutput& foldedOutput() {
    static FoldedOutput folded(std::cout, terminalWidth());
    return folded;
}

// Opens what stands in the place of closed streams, so that no other file gets their numbers. Reading from the first,
// or writing to the others, fails as it does on a closed one, and no name but theirs is of the same file.
void holdClosedStreams() {
    if (fcntl(STDIN_FILENO, F_GETFD) < 0) open("/dev/null", O_WRONLY);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        int ends[2];  // the one to read from gets the lowest free number
        if (fcntl(stream, F_GETFD) < 0 && pipe(ends) == 0) close(ends[1]);
    }
}

}  // namespace

StandardOutput::StandardOutput() : _original(std::cout.rdbuf(&outputBuffer())) {
    holdClosedStreams();
}

StandardOutput::~StandardOutput() {
    finishOutput();
    std::cout.rdbuf(_original);
}

std::string standardOutputFault() {
    return writeFault(outputBuffer().failure());
}

std::ostream& reportOutput(OutputFormat format) {
    return format == OutputFormat::Text ? foldedOutput() : std::cout;
}

void finishOutput() {
    foldedOutput().finish();
    std::cout.flush();
}

}  // namespace tool

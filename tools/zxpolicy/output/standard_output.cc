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

// Reading from the first, or writing to the others, fails as it does on a closed one.
void holdClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
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

// Standard output: as it is, and for reports.
#pragma once

#include <iosfwd>
#include <string>

#include "output/output_format.h"

namespace tool {

// Has std::cout remember, for as long as the object is there, why it could not be written. A standard stream that is
// closed stays so: no file that is opened later takes its place.
class StandardOutput {
public:
    StandardOutput();
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

private:
    std::streambuf* _original;
};

// Why std::cout could not be written, and what to do.
std::string standardOutputFault();

// Standard output for a report. The lines of text are folded where they are wider than the terminal.
std::ostream& reportOutput(OutputFormat format);

// Writes all that was printed, also what is begun of a report's line.
void finishOutput();

}  // namespace tool

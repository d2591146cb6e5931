// A log that stands in for the host's: it keeps what it is told.
#pragma once

#include <string>
#include <vector>

namespace zxtest {

struct RecordingLog {
    bool debugWanted = false;
    unsigned int level = 1;
    int asked = 0;                                // how often it was asked whether debug entries are wanted
    int formatted = 0;                            // how often a text was formatted
    std::vector<std::string> debugEntries;        // "module level tag flag secondText text"
    std::vector<std::string> applicationEntries;  // "level category secondText text"
    std::vector<std::string> sources;             // "file:line" of the debug entries
};

// The one log of this program.
RecordingLog& recordingLog();

}  // namespace zxtest

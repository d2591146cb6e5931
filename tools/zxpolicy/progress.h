// A count on standard error, while it is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

class Progress {
public:
    // `unit`: what is counted, such as "mails". Without `isWanted` nothing is ever shown.
    explicit Progress(std::string unit, bool isWanted = true);
    // Wipes the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Counts one more, and shows the count a few times a second.
    void step();
    // Wipes the line, before other output.
    void clear();

private:
    std::string _unit;
    bool _isShowing;
    bool _isShown = false;
    uint64_t _count = 0;
    std::chrono::steady_clock::time_point _next;
};

}  // namespace tool

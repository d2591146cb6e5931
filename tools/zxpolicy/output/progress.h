// How far long work is, on standard error while that is a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// How far the work is.
struct ProgressState {
    uint64_t count = 0;
    std::optional<double> share;  // of the whole, 0 to 1; none where that is not known
    std::chrono::duration<double> elapsed{0};
};

// A line of at most `width` columns: with a share a bar, the percentage and how many a second, else the count. What
// there is no room for is left out.
std::string progressLine(const ProgressState& state, const std::string& unit, size_t width);

class Progress {
public:
    // `unit`: what is counted, such as "mails". `total`: how much there is to read, where that is known. Without
    // `isWanted` nothing is ever shown.
    explicit Progress(std::string unit, std::optional<uint64_t> total = {}, bool isWanted = true);
    // Wipes the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Counts one more, with what was read of the total by now, and shows that a few times a second.
    void step(uint64_t done = 0);
    // Wipes the line, before other output.
    void clear();

private:
    void show(uint64_t done, std::chrono::steady_clock::time_point now);

    std::string _unit;
    std::optional<uint64_t> _total;
    bool _isShowing;
    bool _isShown = false;
    uint64_t _count = 0;
    std::chrono::steady_clock::time_point _begin;
    std::chrono::steady_clock::time_point _next;
};

}  // namespace tool

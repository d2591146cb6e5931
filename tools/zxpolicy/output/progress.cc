#include "output/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <utility>

#include "output/terminal_width.h"
#include "output/text.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds kInterval{200};
constexpr size_t kShortestBar = 5;
constexpr size_t kLongestBar = 40;

std::string rateText(const ProgressState& state, const std::string& unit) {
    const double rate = state.elapsed.count() > 0 ? static_cast<double>(state.count) / state.elapsed.count() : 0;
    return grouped(static_cast<uint64_t>(std::llround(rate))) + ' ' + unit + "/s";
}

std::string bar(double share, size_t columns) {
    const auto full = static_cast<size_t>(share * static_cast<double>(columns));
    return '[' + std::string(full, '#') + std::string(columns - full, '.') + ']';
}

}  // namespace

std::string progressLine(const ProgressState& state, const std::string& unit, size_t width) {
    std::string line = grouped(state.count) + ' ' + unit;
    if (state.share) {
        const double share = std::clamp(*state.share, 0.0, 1.0);
        char percent[8];
        std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(share * 100));
        line = percent;
        const std::string withRate = line + "  " + rateText(state, unit);
        if (displayWidth(withRate) <= width) line = withRate;
        constexpr size_t kAround = 3;  // the brackets, and a blank
        const size_t columns = displayWidth(line) + kAround;
        if (columns + kShortestBar <= width) line = bar(share, std::min(width - columns, kLongestBar)) + ' ' + line;
    }
    return displayWidth(line) <= width ? line : "";
}

Progress::Progress(std::string unit, std::optional<uint64_t> total, bool isWanted)
    : _unit(std::move(unit)),
      _total(total),
      _isShowing(isWanted && isatty(STDERR_FILENO) != 0),
      _begin(std::chrono::steady_clock::now()),
      _next(_begin + kInterval) {}

Progress::~Progress() {
    clear();
}

void Progress::step(uint64_t done) {
    ++_count;
    if (!_isShowing) return;
    const auto now = std::chrono::steady_clock::now();
    if (now >= _next) show(done, now);
}

void Progress::show(uint64_t done, std::chrono::steady_clock::time_point now) {
    _next = now + kInterval;
    ProgressState state{_count, {}, now - _begin};
    if (_total && *_total != 0) state.share = static_cast<double>(done) / static_cast<double>(*_total);
    // The last column stays empty: some terminals begin a new line there.
    const std::string line = progressLine(state, _unit, columnsOf(STDERR_FILENO).value_or(80) - 1);
    std::cerr << '\r' + line + "\x1b[K" << std::flush;
    _isShown = true;
}

void Progress::clear() {
    if (_isShown) std::cerr << "\r\x1b[K" << std::flush;
    _isShown = false;
}

}  // namespace tool

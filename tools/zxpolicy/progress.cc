#include "progress.h"

#include <unistd.h>

#include <iostream>
#include <utility>

#include "text.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds kInterval{200};

}  // namespace

Progress::Progress(std::string unit, bool isWanted)
    : _unit(std::move(unit)),
      _isShowing(isWanted && isatty(STDERR_FILENO) != 0),
      _next(std::chrono::steady_clock::now() + kInterval) {}

Progress::~Progress() {
    clear();
}

void Progress::step() {
    ++_count;
    if (!_isShowing) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < _next) return;
    _next = now + kInterval;
    _isShown = true;
    std::cerr << '\r' << grouped(_count) << ' ' << _unit << std::flush;
}

void Progress::clear() {
    if (_isShown) std::cerr << "\r\x1b[K" << std::flush;
    _isShown = false;
}

}  // namespace tool

#include "output/terminal_width.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace tool {

std::optional<size_t> columnsOf(int descriptor) {
    winsize size{};
    if (isatty(descriptor) == 0 || ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return {};
    return size.ws_col;
}

size_t terminalWidth() {
    const char* wanted = std::getenv("COLUMNS");
    const unsigned long columns = wanted == nullptr ? 0 : std::strtoul(wanted, nullptr, 10);
    return columns > 0 ? columns : columnsOf(STDOUT_FILENO).value_or(SIZE_MAX);
}

}  // namespace tool

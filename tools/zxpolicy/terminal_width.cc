#include "terminal_width.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace tool {

size_t terminalWidth() {
    const char* wanted = std::getenv("COLUMNS");
    const unsigned long columns = wanted == nullptr ? 0 : std::strtoul(wanted, nullptr, 10);
    if (columns > 0) return columns;
    winsize size{};
    if (isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return SIZE_MAX;
}

}  // namespace tool

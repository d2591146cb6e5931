#include "log_sink.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "log_settings.h"

namespace zxbase {
namespace {

// The time and the process in front of a line on standard error; the system log adds them itself.
std::string linePrefix() {
    std::tm local = {};
    const std::time_t now = std::time(nullptr);
    char stamp[32] = "";
    if (localtime_r(&now, &local) != nullptr) std::strftime(stamp, sizeof(stamp), "%Y-%m-%d %H:%M:%S", &local);
    return std::string(stamp) + " [" + std::to_string(getpid()) + "] ";
}

void writeAll(int file, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = write(file, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        data += written;
        size -= static_cast<size_t>(written);
    }
}

}  // namespace

void writeLogLine(LogKind kind, const std::string& line) {
    switch (logSettings().target) {
        case LogTarget::none:
            return;
        case LogTarget::systemLog:
            syslog((kind == LogKind::debug ? LOG_DEBUG : LOG_WARNING) | LOG_MAIL, "%s", line.c_str());
            return;
        case LogTarget::standardError:
            const std::string whole = linePrefix() + line + "\n";
            writeAll(STDERR_FILENO, whole.data(), whole.size());
            return;
    }
}

}  // namespace zxbase

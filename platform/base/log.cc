// The process's log: decides which entries are wanted and puts them into words.
#include <cerrno>
#include <exception>
#include <string>

#include "log_settings.h"
#include "log_sink.h"
#include "log_text.h"
#include "zxbase.h"

namespace {

using zxbase::LogKind;

// Leaves the caller's errno as it was: logging in the middle of handling a failure must not change the failure.
class ErrnoKeeper {
public:
    ErrnoKeeper() : _saved(errno) {}
    ~ErrnoKeeper() { errno = _saved; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

private:
    int _saved;
};

void appendMessage(std::string& line, const char* text, const char* secondText) {
    zxbase::appendEscaped(line, text);
    if (secondText != nullptr) {
        line += ' ';
        zxbase::appendEscaped(line, secondText);
    }
}

// Makes an entry and writes it; without memory the entry is dropped, for a log must not fail its caller.
template <typename Compose>
void writeEntry(LogKind kind, Compose compose) {
    const ErrnoKeeper keeper;
    try {
        std::string line;
        compose(line);
        zxbase::writeLogLine(kind, line);
    } catch (const std::exception&) {
        return;
    }
}

}  // namespace

bool ZxIntLog::isEnabled(ZxModuleID module) {
    return zxbase::logSettings().wantsDebug(module);
}

unsigned int ZxIntLog::getLogLevel() {
    return zxbase::logSettings().level;
}

void ZxIntLog::writeDebugEntry(ZxModuleID module, unsigned int level, const char* sourceFile, const char* moduleTag,
                               unsigned int line, const char* text, const char* secondText, unsigned char) {
    if (!isEnabled(module)) return;
    writeEntry(LogKind::debug, [&](std::string& entry) {
        entry = "debug " + std::to_string(static_cast<uint32_t>(module)) + "." + std::to_string(level) + " ";
        zxbase::appendEscaped(entry, moduleTag);
        entry += ' ';
        zxbase::appendEscaped(entry, sourceFile);
        entry += ":" + std::to_string(line) + ": ";
        appendMessage(entry, text, secondText);
    });
}

void ZxIntLog::writeWarnErrorEntry(unsigned int level, unsigned char category, const char* text,
                                   const char* secondText) {
    if (level > getLogLevel()) return;
    writeEntry(LogKind::application, [&](std::string& entry) {
        entry = "log " + std::to_string(level) + "." + std::to_string(category) + " ";
        appendMessage(entry, text, secondText);
    });
}

extern "C" ZxIntLog* grGetLog() {
    static ZxIntLog log;
    return &log;
}

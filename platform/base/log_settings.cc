#include "log_settings.h"

#include <cstdlib>
#include <cstring>

namespace zxbase {
namespace {

LogTarget parseTarget(const char* text) {
    if (text != nullptr && std::strcmp(text, "syslog") == 0) return LogTarget::systemLog;
    if (text != nullptr && std::strcmp(text, "none") == 0) return LogTarget::none;
    return LogTarget::standardError;
}

unsigned int parseLevel(const char* text) {
    const bool oneDigit = text != nullptr && text[0] >= '0' && text[0] <= '9' && text[1] == '\0';
    return oneDigit ? static_cast<unsigned int>(text[0] - '0') : LogSettings().level;
}

// Takes the module numbers out of a list; anything between two commas that is not a known number is passed over.
void parseModules(const char* text, LogSettings& settings) {
    while (text != nullptr && *text != '\0') {
        const size_t length = std::strcspn(text, ",");
        if (length == 3 && std::strncmp(text, "all", 3) == 0) settings.allModules = true;
        if (length > 0 && length <= 3 && std::strspn(text, "0123456789") == length) {
            const unsigned long module = std::strtoul(text, nullptr, 10);
            if (module <= LogSettings::maxListedModule) settings.modules.set(module);
        }
        text += length;
        if (*text == ',') ++text;
    }
}

}  // namespace

LogSettings parseLogSettings(const char* target, const char* level, const char* modules) {
    LogSettings settings;
    settings.target = parseTarget(target);
    settings.level = parseLevel(level);
    parseModules(modules, settings);
    return settings;
}

const LogSettings& logSettings() {
    static const LogSettings settings =
        parseLogSettings(std::getenv("ZXBASE_LOG"), std::getenv("ZXBASE_LOG_LEVEL"), std::getenv("ZXBASE_DEBUG"));
    return settings;
}

}  // namespace zxbase

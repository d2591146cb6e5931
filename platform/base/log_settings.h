// What the environment asks of the log. Read once, at the first use of the log.
#pragma once

#include <bitset>
#include <cstdint>

namespace zxbase {

enum class LogTarget { standardError, systemLog, none };

struct LogSettings {
    // Modules with larger numbers are switched on by "all" only.
    static constexpr uint32_t maxListedModule = 255;

    LogTarget target = LogTarget::standardError;
    unsigned int level = 1;
    bool allModules = false;
    std::bitset<maxListedModule + 1> modules;

    bool wantsDebug(uint32_t module) const { return allModules || (module <= maxListedModule && modules[module]); }
};

// Interprets the three variables' texts, each of which may be null. A text that is not understood counts as unset:
// the defaults never hide an application entry of level 1.
LogSettings parseLogSettings(const char* target, const char* level, const char* modules);

// The settings of this process.
const LogSettings& logSettings();

}  // namespace zxbase

#include "frame/reg_debug.h"

#include <cstdarg>
#include <utility>

#include "zxbase.h"

namespace {

constexpr size_t kDebugMessageSize = 512;
constexpr size_t kAppMessageSize = 256;
constexpr unsigned char kDebugEntryFlag = 2;

}  // namespace

ZxPolDebugFunction ZxRegDebug::mDebugFunc = nullptr;

ZxPolDebugFunction ZxRegDebug::setDebugFunction(ZxPolDebugFunction function) {
    return std::exchange(mDebugFunc, function);
}

void ZxRegDebug::debugLog(unsigned int level, const char* sourceFile, const char* moduleTag, unsigned int line,
                          const char* format, ...) {
    const ZxPolDebugFunction function = mDebugFunc;
    if (function == nullptr && !grGetLog()->isEnabled(ZX_MODULE_POLICY)) return;
    char message[kDebugMessageSize];
    va_list arguments;
    va_start(arguments, format);
    kr_vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    message[sizeof message - 1] = '\0';
    if (function != nullptr) {
        function(message);
        return;
    }
    grGetLog()->writeDebugEntry(ZX_MODULE_POLICY, level, sourceFile, moduleTag, line, message, nullptr,
                                kDebugEntryFlag);
}

void ZxRegDebug::appLog(unsigned int level, unsigned char category, const char* format, ...) {
    if (grGetLog()->getLogLevel() < level) return;
    char message[kAppMessageSize];
    va_list arguments;
    va_start(arguments, format);
    kr_vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    message[sizeof message - 1] = '\0';
    grGetLog()->writeWarnErrorEntry(level, category, message, nullptr);
}

// Defines the host's log functions for this program, in place of the library's that would else be bound.
#include "recording_log.h"

#include <cstdio>

#include "zxbase.h"

namespace zxtest {

RecordingLog& recordingLog() {
    static RecordingLog log;
    return log;
}

}  // namespace zxtest

using zxtest::recordingLog;

bool ZxIntLog::isEnabled(ZxModuleID module) {
    ++recordingLog().asked;
    return recordingLog().debugWanted && module == ZX_MODULE_POLICY;
}

unsigned int ZxIntLog::getLogLevel() {
    return recordingLog().level;
}

void ZxIntLog::writeDebugEntry(ZxModuleID module, unsigned int level, const char* sourceFile, const char* moduleTag,
                               unsigned int line, const char* text, const char* secondText, unsigned char flag) {
    recordingLog().debugEntries.push_back(std::to_string(module) + " " + std::to_string(level) + " " + moduleTag + " " +
                                          std::to_string(flag) + " " + (secondText == nullptr ? "null" : secondText) +
                                          " " + text);
    recordingLog().sources.push_back(std::string(sourceFile) + ":" + std::to_string(line));
}

void ZxIntLog::writeWarnErrorEntry(unsigned int level, unsigned char category, const char* text,
                                   const char* secondText) {
    recordingLog().applicationEntries.push_back(std::to_string(level) + " " + std::to_string(category) + " " +
                                                (secondText == nullptr ? "null" : secondText) + " " + text);
}

ZxIntLog* grGetLog() {
    static ZxIntLog log;
    return &log;
}

int kr_vsnprintf(char* buffer, size_t size, const char* format, va_list arguments) {
    ++recordingLog().formatted;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    return std::vsnprintf(buffer, size, format, arguments);
#pragma GCC diagnostic pop
}

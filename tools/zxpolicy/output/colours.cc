#include "output/colours.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace tool {

namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool hasColours() {
    const char* terminal = std::getenv("TERM");
    return terminal != nullptr && *terminal != '\0' && std::strcmp(terminal, "dumb") != 0;
}

const char* codeOf(Tone tone) {
    switch (tone) {
        case Tone::Good:
            return "32";
        case Tone::Bad:
            return "31";
        case Tone::Faint:
            return "2";
        case Tone::Strong:
            return "1";
        case Tone::Plain:
            break;
    }
    return nullptr;
}

}  // namespace

Colours Colours::ofOutput() {
    return Colours(isatty(STDOUT_FILENO) != 0 && hasColours() && !isSet("NO_COLOR"));
}

std::string Colours::paint(const std::string& text, Tone tone) const {
    const char* code = codeOf(tone);
    if (!_isOn || code == nullptr || text.empty()) return text;
    return std::string("\x1b[") + code + "m" + text + "\x1b[0m";
}

}  // namespace tool

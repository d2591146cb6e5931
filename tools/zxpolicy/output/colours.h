// Colours for reports on a terminal.
#pragma once

#include <string>

namespace tool {

enum class Tone { Plain, Good, Bad, Faint, Strong };

class Colours {
public:
    explicit Colours(bool isOn) : _isOn(isOn) {}

    // On while standard output is a terminal that has them, unless the environment variable NO_COLOR says otherwise.
    static Colours ofOutput();

    std::string paint(const std::string& text, Tone tone) const;

private:
    bool _isOn;
};

}  // namespace tool

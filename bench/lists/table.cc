#include "table.h"

#include <cstdio>

namespace bench {

namespace {

// Three digits that count.
std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 9.995 ? "%.2f" : value < 99.95 ? "%.1f" : "%.0f", value);
    return text;
}

std::string format(double value, Unit unit) {
    switch (unit) {
        case Unit::bytes:
            return number(value) + " B";
        case Unit::times:
            return number(value) + " x";
        default:
            break;
    }
    if (value < 0.9995e-6) return number(value * 1e9) + " ns";
    if (value < 0.9995e-3) return number(value * 1e6) + " us";
    if (value < 0.9995) return number(value * 1e3) + " ms";
    return number(value) + " s";
}

}  // namespace

Table::Table() {
    _line("what", "ours", "beside", "its figure", "ratio", "target", "reached");
}

void Table::_line(const std::string& what, const std::string& ours, const std::string& name, const std::string& figure,
                  const std::string& ratio, const std::string& target, const std::string& verdict) const {
    char line[256];
    std::snprintf(line, sizeof line, "%-43s %8s  %-31s %10s %6s  %9s %s", what.c_str(), ours.c_str(), name.c_str(),
                  figure.c_str(), ratio.c_str(), target.c_str(), verdict.c_str());
    std::string text = line;
    text.erase(text.find_last_not_of(' ') + 1);
    std::puts(text.c_str());
    std::fflush(stdout);
}

std::string Table::_judge(bool isMet) {
    ++(isMet ? _met : _missed);
    return isMet ? "met" : "missed";
}

void Table::add(const Row& row) {
    std::string what = row.what;
    std::string ours = format(row.ours, row.unit);
    if (row.limit != noLimit || row.rivals.empty()) {
        const bool isJudged = row.limit != noLimit;
        _line(what, ours, "", "", "", isJudged ? "<= " + format(row.limit, row.unit) : "",
              isJudged ? _judge(row.ours <= row.limit) : "");
        what = ours = "";
    }
    for (const Rival& rival : row.rivals) {
        if (!rival.excuse.empty()) {
            _line(what, ours, rival.name, rival.excuse, "", "", "");
        } else {
            const double ratio = row.ours / rival.figure;
            const bool isJudged = rival.limit != noLimit;
            _line(what, ours, rival.name, format(rival.figure, row.unit), number(ratio),
                  isJudged ? "<= " + number(rival.limit) : "", isJudged ? _judge(ratio <= rival.limit) : "");
        }
        what = ours = "";
    }
}

void Table::close() const {
    std::printf("\n%zu targets met, %zu missed\n", _met, _missed);
}

}  // namespace bench

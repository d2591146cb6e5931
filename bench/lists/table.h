// The table of results.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

enum class Unit { seconds, bytes, times };

// No limit is set.
constexpr double noLimit = 0;

// The limit, where it applies to builds of this machine's word size only.
constexpr double onNative(double limit) {
    return sizeof(void*) == 8 ? limit : noLimit;
}

// What somebody else needs for the same thing, or why there is no figure.
struct Rival {
    std::string name;
    double figure = 0;
    std::string excuse;      // in place of the figure, when not empty
    double limit = noLimit;  // ours divided by the figure must be below
};

struct Row {
    std::string what;
    Unit unit = Unit::seconds;
    double ours = 0;
    double limit = noLimit;  // ours must not be above
    std::vector<Rival> rivals;
};

// Prints rows as they come, each rival on a line: what, ours, the rival's name and figure, ours divided by it, the
// target, and whether it is met.
class Table {
public:
    Table();
    void add(const Row& row);

    // Says how many targets were met and missed.
    void close() const;

private:
    void _line(const std::string& what, const std::string& ours, const std::string& name, const std::string& figure,
               const std::string& ratio, const std::string& target, const std::string& verdict) const;
    std::string _judge(bool isMet);

    size_t _met = 0;
    size_t _missed = 0;
};

}  // namespace bench

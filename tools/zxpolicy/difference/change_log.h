// What an apply changed, in the order in which it did.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "output/json.h"
#include "output/output_format.h"

namespace tool {

struct Change {
    enum class Kind { Created, Changed, Moved, Deleted };

    Kind kind;
    std::string what;                  // such as "rule"
    std::string name;                  // such as "\Sales"; empty for what there is one of
    std::vector<std::string> details;  // such as "enable: true -> false"
};

class ChangeLog {
public:
    void add(Change::Kind kind, const std::string& what, const std::string& name,
             const std::vector<std::string>& details = {}) {
        _changes.push_back({kind, what, name, details});
    }
    bool isEmpty() const { return _changes.empty(); }
    const std::vector<Change>& changes() const { return _changes; }

    // Text: one line for each change and one with the numbers. JSON: one object.
    void print(std::ostream& out, OutputFormat format, bool isDryRun) const;
    // "1 created, 2 changed"
    std::string numbers() const;
    // Adds the changes, and the numbers of each kind, to an object.
    void addTo(Json& document) const;

private:
    size_t count(Change::Kind kind) const;
    void printText(std::ostream& out, bool isDryRun) const;
    void printJson(std::ostream& out, bool isDryRun) const;

    std::vector<Change> _changes;
};

// "created", "changed", "moved" or "deleted"
const char* kindName(Change::Kind kind);

// "before" -> "after": what of two different texts shows the difference, from its place on where they are long.
std::string differenceText(const std::string& before, const std::string& after);

// Adds "LABEL: before -> after" to the details when the two differ.
void compare(std::vector<std::string>& details, const char* label, const std::string& before, const std::string& after);
void compare(std::vector<std::string>& details, const char* label, uint32_t before, uint32_t after);
void compare(std::vector<std::string>& details, const char* label, bool before, bool after);

// Adds "LABEL: added 1, removed 2" to the details unless both are 0.
void countChanges(std::vector<std::string>& details, const char* label, size_t added, size_t removed);

}  // namespace tool

// Finds siblings that have the same name but for letter case.
#pragma once

#include <map>
#include <string>

#include "output/text.h"
#include "policy/yaml_tree.h"

namespace tool {

class UniqueNames {
public:
    // `what`: what the names belong to, such as "task".
    UniqueNames(const YamlSource& source, std::string what) : _source(source), _what(std::move(what)) {}

    // Remembers a name. Throws a PolicyError when it stood before, in whatever letter case.
    void add(const std::string& name, const Place& place) {
        const auto [found, isNew] = _names.emplace(lowerCase(name), name);
        if (isNew) return;
        const bool isSame = found->second == name;
        _source.fail(place, _what + " " + inQuotes(name, 255) +
                                (isSame ? std::string(" stands twice")
                                        : " differs from " + inQuotes(found->second, 255) + " only in letter case"));
    }

private:
    const YamlSource& _source;
    std::string _what;
    std::map<std::string, std::string> _names;
};

}  // namespace tool

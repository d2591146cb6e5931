// A YAML document as a tree that remembers where everything stands.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tool {

// A position in a policy file, counted from 1; line 0 for what came from elsewhere.
struct Place {
    int line = 0;
    int column = 0;
};

// One node of a document.
struct YamlNode {
    enum class Kind { Null, Scalar, Sequence, Map };

    Kind kind = Kind::Null;
    Place place;
    std::string tag;              // "?" for a plain scalar, "!" for a quoted one, else as written
    std::string text;             // of a scalar
    std::vector<YamlNode> items;  // of a sequence; of a map its keys and values in turn
};

// Names the file in error messages.
class YamlSource {
public:
    explicit YamlSource(std::string name) : _name(std::move(name)) {}

    // Throws a PolicyError "FILE:LINE:COLUMN: text".
    [[noreturn]] void fail(const Place& place, const std::string& text) const;
    // "FILE:LINE:COLUMN"
    std::string at(const Place& place) const;

private:
    std::string _name;
};

// Parses a text of one document. Throws a PolicyError for what is no UTF-8 or no YAML, for more than one
// document, and for anchors and aliases, which a policy file has no use for.
YamlNode parseYaml(const YamlSource& source, const std::string& text);

}  // namespace tool

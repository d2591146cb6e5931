// Typed access to the nodes of a policy file. Everything that does not fit is an error that says where.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "policy/yaml_tree.h"

namespace tool {

// For texts that may have any length.
constexpr size_t kAnyLength = SIZE_MAX;

// Reads the value of one node; `what` names it in errors. All throw a PolicyError.
class YamlReader {
public:
    explicit YamlReader(const YamlSource& source) : _source(source) {}

    const YamlSource& source() const { return _source; }

    // A quoted or plain scalar that is no number, truth value or null; or !!binary. At most `most` bytes.
    std::string text(const YamlNode& node, const std::string& what, size_t most) const;
    // A text that names something: not empty, no backslash, at most 255 bytes.
    std::string name(const YamlNode& node, const std::string& what) const;
    // A whole number from 0 to `most`, decimal or 0x...
    uint32_t number(const YamlNode& node, const std::string& what, uint32_t most = UINT32_MAX) const;
    bool truth(const YamlNode& node, const std::string& what) const;
    // The node as a sequence or a map; anything else is an error.
    const YamlNode& sequence(const YamlNode& node, const std::string& what) const;
    const YamlNode& map(const YamlNode& node, const std::string& what) const;

    // Whether a scalar is a plain number.
    bool isNumber(const YamlNode& node) const;

private:
    void checkTag(const YamlNode& node, const std::string& what) const;

    const YamlSource& _source;
};

// The entries of a map whose keys are fixed words. Each key may stand once; the keys must be known.
class YamlFields {
public:
    // `what` names the map in errors. `known` lists the keys that may stand in it.
    YamlFields(const YamlReader& reader, const YamlNode& node, std::string what, const std::vector<const char*>& known);

    // The value of a key, or null when the map lacks it.
    const YamlNode* find(const std::string& key) const;
    // The value of a key that must be there.
    const YamlNode& need(const std::string& key) const;

    // Values with their defaults when absent: empty, 0, `otherwise`.
    std::string text(const std::string& key, size_t most) const;
    uint32_t number(const std::string& key, uint32_t most = UINT32_MAX) const;
    bool truth(const std::string& key, bool otherwise) const;
    // The items of a sequence; none when absent.
    const std::vector<YamlNode>& items(const std::string& key) const;

private:
    std::string label(const std::string& key) const { return "\"" + key + "\" of " + _what; }

    const YamlReader& _reader;
    const YamlNode& _node;
    std::string _what;
};

}  // namespace tool

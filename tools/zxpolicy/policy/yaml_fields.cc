#include "policy/yaml_fields.h"

#include <yaml-cpp/binary.h>

#include <algorithm>
#include <cctype>
#include <limits>
#include <set>
#include <string_view>

#include "output/text.h"
#include "policy/policy_check.h"

namespace tool {

namespace {

constexpr const char* kTextTag = "tag:yaml.org,2002:str";
constexpr const char* kBinaryTag = "tag:yaml.org,2002:binary";

bool isPlain(const YamlNode& node) {
    return node.kind == YamlNode::Kind::Scalar && node.tag == "?";
}

bool isTruth(const std::string& text) {
    return text == "true" || text == "True" || text == "TRUE" || text == "false" || text == "False" || text == "FALSE";
}

// Whether a plain scalar is an integer or a fraction in YAML's core schema.
bool looksLikeNumber(std::string_view text) {
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
    if (text == ".inf" || text == ".Inf" || text == ".INF" || text == ".nan" || text == ".NaN" || text == ".NAN")
        return true;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'o'))
        return std::all_of(text.begin() + 2, text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
    bool hasDigit = false;
    bool hasPoint = false;
    bool hasExponent = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool mayHaveSign = i > 0 && (text[i - 1] == 'e' || text[i - 1] == 'E');
        if (c >= '0' && c <= '9') {
            hasDigit = true;
        } else if ((c == 'e' || c == 'E') && hasDigit && !hasExponent) {
            hasExponent = true;
        } else if (c == '.' && !hasPoint && !hasExponent) {
            hasPoint = true;
        } else if (!((c == '+' || c == '-') && mayHaveSign)) {
            return false;
        }
    }
    return hasDigit;
}

// Reads decimal digits, or hexadecimal ones after 0x. False when there is anything else or the number is too large.
bool parseNumber(std::string_view text, uint32_t most, uint32_t& number) {
    const bool isHex = text.size() > 2 && text[0] == '0' && text[1] == 'x';
    if (isHex) text.remove_prefix(2);
    if (text.empty() || text.size() > 16) return false;
    uint64_t value = 0;
    for (char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit && !(isHex && std::isxdigit(static_cast<unsigned char>(c)) != 0)) return false;
        const int digit = isDigit ? c - '0' : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
        value = value * (isHex ? 16 : 10) + static_cast<uint64_t>(digit);
        if (value > most) return false;
    }
    number = static_cast<uint32_t>(value);
    return true;
}

// Whether a map has or may have a password: part of a misspelt one can stand as a key there, which nobody else may
// read.
bool mayHoldPassword(const YamlNode& node, const std::vector<const char*>& known) {
    for (size_t i = 0; i + 1 < node.items.size(); i += 2)
        if (lowerCase(node.items[i].text).find("password") != std::string::npos) return true;
    return std::any_of(known.begin(), known.end(),
                       [](const char* word) { return word == std::string_view("password"); });
}

const char* kindName(const YamlNode& node) {
    switch (node.kind) {
        case YamlNode::Kind::Null:
            return "nothing";
        case YamlNode::Kind::Sequence:
            return "a sequence";
        case YamlNode::Kind::Map:
            return "a map";
        case YamlNode::Kind::Scalar:
            break;
    }
    if (!isPlain(node)) return "a text";
    if (isTruth(node.text)) return "a truth value";
    return looksLikeNumber(node.text) ? "a number" : "a text";
}

}  // namespace

void YamlReader::checkTag(const YamlNode& node, const std::string& what) const {
    if (node.tag.empty() || node.tag == "?" || node.tag == "!") return;
    if (node.kind == YamlNode::Kind::Scalar && (node.tag == kTextTag || node.tag == kBinaryTag)) return;
    // Its name is not told: it may be a password.
    _source.fail(node.place, what + " has a tag that is not supported; a text that begins with ! needs quotes");
}

std::string YamlReader::text(const YamlNode& node, const std::string& what, size_t most) const {
    checkTag(node, what);
    const bool isText =
        node.kind == YamlNode::Kind::Scalar && (!isPlain(node) || (!isTruth(node.text) && !looksLikeNumber(node.text)));
    if (!isText) {
        const char* hint = node.kind == YamlNode::Kind::Scalar ? "; put it in quotes"
                           : node.kind == YamlNode::Kind::Null ? "; the empty text is \"\""
                                                               : "";
        _source.fail(node.place, what + " must be a text, not " + kindName(node) + hint);
    }
    std::string text = node.text;
    if (node.tag == kBinaryTag) {
        const std::vector<unsigned char> bytes = YAML::DecodeBase64(node.text);
        if (bytes.empty() && !node.text.empty()) _source.fail(node.place, what + " is not valid base64");
        text.assign(bytes.begin(), bytes.end());
    }
    const std::string fault = textFault(text, most);
    if (!fault.empty()) _source.fail(node.place, what + " " + fault);
    return text;
}

std::string YamlReader::name(const YamlNode& node, const std::string& what) const {
    std::string name = text(node, what, std::numeric_limits<size_t>::max());
    const std::string fault = nameFault(name);
    if (!fault.empty()) _source.fail(node.place, what + " " + fault);
    return name;
}

bool YamlReader::isNumber(const YamlNode& node) const {
    return isPlain(node) && looksLikeNumber(node.text);
}

uint32_t YamlReader::number(const YamlNode& node, const std::string& what, uint32_t most) const {
    checkTag(node, what);
    if (!isNumber(node)) _source.fail(node.place, what + " must be a number, not " + kindName(node));
    uint32_t number = 0;
    if (!parseNumber(node.text, most, number))
        _source.fail(node.place, what + " must be a whole number from 0 to " + std::to_string(most));
    return number;
}

bool YamlReader::truth(const YamlNode& node, const std::string& what) const {
    checkTag(node, what);
    if (!isPlain(node) || !isTruth(node.text))
        _source.fail(node.place, what + " must be true or false, not " + kindName(node));
    return node.text[0] == 't' || node.text[0] == 'T';
}

const YamlNode& YamlReader::sequence(const YamlNode& node, const std::string& what) const {
    checkTag(node, what);
    if (node.kind != YamlNode::Kind::Sequence)
        _source.fail(node.place, what + " must be a sequence, not " + kindName(node));
    return node;
}

const YamlNode& YamlReader::map(const YamlNode& node, const std::string& what) const {
    checkTag(node, what);
    if (node.kind != YamlNode::Kind::Map) _source.fail(node.place, what + " must be a map, not " + kindName(node));
    return node;
}

YamlFields::YamlFields(const YamlReader& reader, const YamlNode& node, std::string what,
                       const std::vector<const char*>& known)
    : _reader(reader), _node(reader.map(node, what)), _what(std::move(what)) {
    std::set<std::string> seen;
    const bool isSecret = mayHoldPassword(node, known);
    for (size_t i = 0; i + 1 < node.items.size(); i += 2) {
        const YamlNode& key = node.items[i];
        const bool isKnown =
            key.kind == YamlNode::Kind::Scalar &&
            std::any_of(known.begin(), known.end(), [&](const char* word) { return key.text == word; });
        if (!isKnown)
            reader.source().fail(key.place,
                                 "unknown key " + (isSecret ? "" : inQuotes(key.text) + " ") + "in " + _what);
        if (!seen.insert(key.text).second)
            reader.source().fail(key.place, "key " + inQuotes(key.text) + " stands twice in " + _what);
    }
}

const YamlNode* YamlFields::find(const std::string& key) const {
    for (size_t i = 0; i + 1 < _node.items.size(); i += 2)
        if (_node.items[i].text == key) return &_node.items[i + 1];
    return nullptr;
}

const YamlNode& YamlFields::need(const std::string& key) const {
    const YamlNode* value = find(key);
    if (value == nullptr) _reader.source().fail(_node.place, "key \"" + key + "\" is missing in " + _what);
    return *value;
}

std::string YamlFields::text(const std::string& key, size_t most) const {
    const YamlNode* value = find(key);
    return value == nullptr ? "" : _reader.text(*value, label(key), most);
}

uint32_t YamlFields::number(const std::string& key, uint32_t most) const {
    const YamlNode* value = find(key);
    return value == nullptr ? 0 : _reader.number(*value, label(key), most);
}

bool YamlFields::truth(const std::string& key, bool otherwise) const {
    const YamlNode* value = find(key);
    return value == nullptr ? otherwise : _reader.truth(*value, label(key));
}

const std::vector<YamlNode>& YamlFields::items(const std::string& key) const {
    static const std::vector<YamlNode> kNone;
    const YamlNode* value = find(key);
    return value == nullptr ? kNone : _reader.sequence(*value, label(key)).items;
}

}  // namespace tool

#include "policy/yaml_tree.h"

#include <yaml-cpp/depthguard.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/parser.h>

#include <sstream>

#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

Place placeOf(const YAML::Mark& mark) {
    return {mark.line + 1, mark.column + 1};
}

// Builds the tree from the parser's events.
class TreeBuilder : public YAML::EventHandler {
public:
    explicit TreeBuilder(const YamlSource& source) : _source(source) {}

    void OnDocumentStart(const YAML::Mark& mark) override {
        if (++_documents > 1) _source.fail(placeOf(mark), "a second document begins here; a policy file has one");
    }
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
        refuseAnchor(mark, anchor);
        add({YamlNode::Kind::Null, placeOf(mark), "", "", {}});
    }
    void OnAlias(const YAML::Mark& mark, YAML::anchor_t) override {
        _source.fail(placeOf(mark), "aliases are not supported; a text that begins with * needs quotes");
    }
    void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  const std::string& value) override {
        refuseAnchor(mark, anchor);
        add({YamlNode::Kind::Scalar, placeOf(mark), tag, value, {}});
    }
    void OnSequenceStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                         YAML::EmitterStyle::value) override {
        begin(YamlNode::Kind::Sequence, mark, tag, anchor);
    }
    void OnSequenceEnd() override { end(); }
    void OnMapStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                    YAML::EmitterStyle::value) override {
        begin(YamlNode::Kind::Map, mark, tag, anchor);
    }
    void OnMapEnd() override {
        // A value that is not there stands where its key does.
        std::vector<YamlNode>& items = _open.back().items;
        for (size_t i = 0; i + 1 < items.size(); i += 2)
            if (items[i + 1].kind == YamlNode::Kind::Null) items[i + 1].place = items[i].place;
        end();
    }

    YamlNode take() { return std::move(_root); }

private:
    void refuseAnchor(const YAML::Mark& mark, YAML::anchor_t anchor) const {
        if (anchor != YAML::NullAnchor) _source.fail(placeOf(mark), "anchors are not supported; write the value out");
    }
    void begin(YamlNode::Kind kind, const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor) {
        refuseAnchor(mark, anchor);
        _open.push_back({kind, placeOf(mark), tag, "", {}});
    }
    void end() {
        YamlNode node = std::move(_open.back());
        _open.pop_back();
        add(std::move(node));
    }
    void add(YamlNode node) {
        if (_open.empty())
            _root = std::move(node);
        else
            _open.back().items.push_back(std::move(node));
    }

    const YamlSource& _source;
    int _documents = 0;
    std::vector<YamlNode> _open;
    YamlNode _root;
};

// Refuses bytes that are no UTF-8, and NUL, saying where.
void checkBytes(const YamlSource& source, const std::string& text) {
    Place place{1, 1};
    uint32_t codePoint = 0;
    for (size_t position = 0; position < text.size();) {
        if (!nextCodePoint(text, position, codePoint)) source.fail(place, "this is not UTF-8; convert the file");
        if (codePoint == 0) source.fail(place, "a NUL byte cannot stand in a policy");
        if (codePoint == '\n')
            place = {place.line + 1, 1};
        else
            ++place.column;
    }
}

}  // namespace

std::string YamlSource::at(const Place& place) const {
    if (place.line == 0) return oneLine(_name);
    return oneLine(_name) + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

void YamlSource::fail(const Place& place, const std::string& text) const {
    throw PolicyError(at(place) + ": " + text);
}

YamlNode parseYaml(const YamlSource& source, const std::string& text) {
    checkBytes(source, text);
    std::istringstream stream(text);
    TreeBuilder builder(source);
    try {
        YAML::Parser parser(stream);
        while (parser.HandleNextDocument(builder)) {
        }
    } catch (const YAML::DeepRecursion& failure) {
        source.fail(placeOf(failure.mark), "nested too deeply");
    } catch (const YAML::Exception& failure) {
        // Behind a colon the parser quotes the file, which may have a password there.
        source.fail(placeOf(failure.mark), "not valid YAML: " + oneLine(failure.msg.substr(0, failure.msg.find(':'))));
    }
    return builder.take();
}

}  // namespace tool

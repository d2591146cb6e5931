#include "policy/policy_reader.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "output/text.h"
#include "policy/classification_reader.h"
#include "policy/list_reader.h"
#include "policy/policy_check.h"
#include "policy/policy_keys.h"
#include "policy/rule_reader.h"
#include "policy/yaml_fields.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr uint32_t kFormat = 1;

FilterPriority readPriority(const YamlReader& reader, const YamlNode& node) {
    const std::string text = reader.text(node, "\"priority\" of an exclusive filter", kMaxName);
    if (text == "asc") return FilterPriority::Ascending;
    if (text == "desc") return FilterPriority::Descending;
    reader.source().fail(node.place, "\"priority\" of an exclusive filter must be asc or desc, not " + inQuotes(text));
}

void readExclusiveFilters(const YamlReader& reader, const YamlFields& top, Policy& policy) {
    for (const YamlNode& node : top.items("exclusiveFilters")) {
        const YamlFields fields(reader, node, "an exclusive filter", kExclusiveFilterKeys);
        const uint32_t filter = reader.number(fields.need("filter"), "\"filter\" of an exclusive filter");
        const FilterPriority priority = readPriority(reader, fields.need("priority"));
        if (!policy.exclusiveFilters.emplace(filter, priority).second)
            reader.source().fail(node.place, "exclusive filter " + std::to_string(filter) + " stands twice");
    }
}

}  // namespace

Policy readPolicy(const std::string& fileName, const std::string& text) {
    const YamlSource source(fileName);
    const YamlReader reader(source);
    const YamlNode document = parseYaml(source, text);
    if (document.kind == YamlNode::Kind::Null) source.fail({1, 1}, "the file is empty; it must begin with zxpolicy: 1");
    const YamlFields top(reader, document, "the policy file", kFileKeys);
    const YamlNode& format = top.need("zxpolicy");
    if (reader.number(format, "\"zxpolicy\"") != kFormat)
        source.fail(format.place, "policy format " + inQuotes(format.text) + " is not known; this version reads 1");

    Policy policy;
    readLists(reader, top, policy);
    policy.classifications = readClassifications(reader, top);
    readExclusiveFilters(reader, top, policy);
    policy.root = readRootRule(reader, top.need("root"));
    return policy;
}

std::string fileTitle(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

std::string readFile(const std::string& path) {
    const auto close = [](std::FILE* file) { return std::fclose(file); };
    const bool isInput = path == "-";
    std::unique_ptr<std::FILE, decltype(close)> opened(isInput ? nullptr : std::fopen(path.c_str(), "rbe"), close);
    std::FILE* file = isInput ? stdin : opened.get();
    if (file == nullptr) throw UsageError("cannot open " + inQuotes(path, 4096) + ": " + std::strerror(errno));
    // The file may have passwords in it, which a buffer of the C library or one here would keep.
    std::setvbuf(file, nullptr, _IONBF, 0);
    constexpr size_t kPiece = 65536;
    std::string text;
    size_t size = 0;
    for (size_t count = 1; count > 0; size += count) {
        text.resize(size + kPiece);
        count = std::fread(text.data() + size, 1, kPiece, file);
    }
    text.resize(size);
    if (std::ferror(file) != 0) throw UsageError("cannot read " + inQuotes(path, 4096) + ": " + std::strerror(errno));
    return text;
}

}  // namespace tool

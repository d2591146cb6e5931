// Options of the command line that take one of a few words.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "output_format.h"
#include "text.h"
#include "zxpolicy.h"

namespace tool {

template <class Value>
using Words = std::map<std::string, Value>;

inline const Words<OutputFormat>& formatWords() {
    static const Words<OutputFormat> kWords{{"text", OutputFormat::Text}, {"json", OutputFormat::Json}};
    return kWords;
}

inline const Words<ZxPolMatchWeightType>& weightWords() {
    static const Words<ZxPolMatchWeightType> kWords{{"domain", ZXPOL_WEIGHT_DOMAIN_FIRST},
                                                    {"name", ZXPOL_WEIGHT_NAME_FIRST}};
    return kWords;
}

// Adds an option that takes one of the words, which must outlive the command.
template <class Value>
CLI::Option* addWord(CLI::App& command, const std::string& name, Value& value, const Words<Value>& words,
                     const std::string& help) {
    std::string list;
    for (const auto& [word, meaning] : words)
        list += (list.empty() ? "" : "|") + word;
    const auto set = [&value, &words, name, list](const std::string& text) {
        const auto found = words.find(text);
        if (found == words.end()) throw CLI::ValidationError(name, inQuotes(text) + " is not one of " + list);
        value = found->second;
    };
    return command.add_option_function<std::string>(name, set, help)->type_name(list);
}

// Adds --json, and --format as well unless that means something else in this command.
inline void addReport(CLI::App& command, OutputFormat& format, bool hasFormat = true) {
    const auto setJson = [&format](int64_t) { format = OutputFormat::Json; };
    CLI::Option* json = command.add_flag_function("--json", setJson, "Report as JSON");
    if (hasFormat) addWord(command, "--format", format, formatWords(), "How to report (default text)")->excludes(json);
}

}  // namespace tool

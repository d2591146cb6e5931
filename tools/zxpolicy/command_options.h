// Options that several commands have. It brings the command-line parser's header, which takes long to compile: only the
// files that read the command line include this.
#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

#include "decisions/match_words.h"
#include "decisions/matcher.h"
#include "output/output_format.h"
#include "output/text.h"

namespace tool {

inline constexpr const char* kDryRunHelp = "Say what would change, and change nothing";

inline const Words<OutputFormat> kFormats{{"text", OutputFormat::Text}, {"json", OutputFormat::Json}};

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

// Adds an option that takes a whole number from `least` to `most`, in decimal digits alone.
template <class Number>
CLI::Option* addNumber(CLI::App& command, const std::string& name, Number& number, const std::string& help,
                       uint32_t least = 0, uint32_t most = UINT32_MAX) {
    const auto set = [&number, name, least, most](const std::string& text) {
        const char* const textEnd = text.data() + text.size();
        uint32_t value = 0;
        const auto [end, fault] = std::from_chars(text.data(), textEnd, value);
        if (fault != std::errc() || end != textEnd || value < least || value > most)
            throw CLI::ValidationError(
                name, inQuotes(text) + " is no number from " + std::to_string(least) + " to " + std::to_string(most));
        number = value;
    };
    return command.add_option_function<std::string>(name, set, help)->type_name("NUMBER");
}

// Adds --json, and --format as well unless that means something else in this command.
inline void addReport(CLI::App& command, OutputFormat& format, bool hasFormat = true) {
    const auto setJson = [&format](int64_t) { format = OutputFormat::Json; };
    CLI::Option* json = command.add_flag_function("--json", setJson, "Report as JSON");
    if (hasFormat) addWord(command, "--format", format, kFormats, "How to report (default text)")->excludes(json);
}

// Adds the options that say how mails are matched.
inline void addMatchOptions(CLI::App& command, MatchOptions& match) {
    CLI::Option* best = command.add_flag("--best", match.isBest, "Take the best match, not the first");
    addWord(command, "--priority", match.priority, kPriorities, "What the best match compares (default total)")
        ->needs(best);
    addWord(command, "--weight", match.weight, kWeights, "What weighs more in a pattern (default domain)")->needs(best);
}

}  // namespace tool

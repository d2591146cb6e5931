// The texts of one part of an address that patterns can tell apart.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "analysis/part_pattern.h"

namespace tool {

// A text, and the patterns that match it, ascending.
struct PartWord {
    std::string text;
    std::vector<uint32_t> patterns;
    bool isKnown = false;  // one of the texts that were made known
};

/*
 * The patterns for one part, local part or domain, each once. Its words are enough: every text matches the same
 * patterns as some word that is not known, or is known itself. A local part that no address can have is no text.
 */
class PartWords {
public:
    // `fresh` are texts to show for what has no name of its own.
    PartWords(AddressPart part, std::vector<std::string> fresh) : _part(part), _fresh(std::move(fresh)) {}

    // The number of a pattern, which is kept.
    uint32_t add(const PartPattern& pattern);

    // A text that the words are to hold.
    void makeKnown(const std::string& text) { _known.insert(comparedText(text)); }

    // Throws an AnalysisLimit.
    std::vector<PartWord> words() const;

    // The patterns that match a text, ascending.
    std::vector<uint32_t> patternsOf(const std::string& text) const;

    size_t size() const { return _patterns.size(); }

private:
    void addFresh(std::vector<PartWord>& words, const std::string& before, const std::string& behind,
                  const std::vector<uint32_t>& wanted) const;
    void addRegular(std::vector<PartWord>& words) const;
    void addIrregular(std::vector<PartWord>& words) const;
    bool isKnown(const std::string& text) const { return _known.count(comparedText(text)) != 0; }
    bool isPossible(const std::string& text) const;

    AddressPart _part;
    std::vector<std::string> _fresh;
    std::vector<PartPattern> _patterns;
    std::unordered_map<std::string, uint32_t> _places;
    std::unordered_map<std::string, uint32_t> _literals;  // by the key of their pattern
    std::unordered_map<std::string, uint32_t> _suffixes;  // by the text behind "*."
    std::vector<uint32_t> _others;                        // compared one by one
    bool _hasIrregular = false;
    bool _hasBrackets = false;
    std::set<std::string> _known{""};
};

}  // namespace tool

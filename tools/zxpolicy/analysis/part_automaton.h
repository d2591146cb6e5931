// Which combinations of patterns one text can match: for patterns with stars at any place.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "analysis/part_pattern.h"

namespace tool {

/*
 * Reads all texts at once, character by character: the patterns become one automaton, and each of its states that can
 * be reached tells which patterns the texts that end there match. All characters that no pattern names are alike, so
 * that one of them stands for all.
 */
class PartAutomaton {
public:
    using IsAvoided = std::function<bool(const std::string&)>;

    // The patterns stay the caller's.
    PartAutomaton(std::vector<const PartPattern*> patterns, AddressPart part);

    // One text for each set of the patterns that some text matches exactly, texts to be avoided left out, and blank
    // ones. Throws an AnalysisLimit.
    std::vector<std::string> findTexts(const IsAvoided& isAvoided) const;

private:
    using Bits = std::vector<uint64_t>;
    struct Edge {
        enum class On { Char, InLabel, Any } on;
        char c;
        uint32_t to;
    };
    struct State;
    struct Search;

    uint32_t addNode();
    void addEdge(uint32_t from, Edge::On on, uint32_t to, char c = '\0');
    void compile(const PartPattern& pattern);
    uint32_t addSegment(uint32_t from, const std::string& segment, Edge::On inside);
    uint32_t addPieces(uint32_t from, const std::vector<std::string>& pieces, Edge::On inside);
    void collectAlphabet();
    void step(const State& from, char c, State& to) const;
    Bits matched(const State& state) const;

    std::vector<const PartPattern*> _patterns;
    AddressPart _part;
    std::vector<std::vector<Edge>> _nodes;
    std::vector<bool> _isWholeNode;                 // nodes of patterns that dots do not divide
    std::vector<std::vector<uint32_t>> _accepting;  // by pattern: it matches where all of these are active
    std::vector<uint32_t> _starts;
    std::string _alphabet;
    bool _countsLabels = false;
    bool _looksAtQuotes = false;
};

}  // namespace tool

#include "analysis/part_automaton.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

#include "analysis/analysis_limit.h"
#include "pattern/ascii.h"
#include "pattern/wildcard_pattern.h"

namespace tool {

namespace {

// The states that are looked at before an answer is given up.
constexpr size_t kMaxStates = 50000;

// The times that texts to be avoided are taken into the automaton.
constexpr int kMaxRounds = 10;

constexpr uint32_t kNoParent = UINT32_MAX;

using zxpol::isBlank;

// The segments of a pattern as the library cuts them.
std::vector<std::string> segmentsOf(const PartPattern& pattern) {
    const std::string text = pattern.form == PartPattern::Form::Suffix ? "*." + pattern.text : pattern.text;
    const ZxPolWildcardPattern parsed(text.c_str(), pattern.isWhole ? "" : ".", '\0');
    std::vector<std::string> segments;
    for (unsigned int i = 0; i < parsed.segmentCount(); ++i)
        segments.emplace_back(parsed.segment(i));
    return segments;
}

// The texts between the stars of a segment; only the first fifty count.
std::vector<std::string> piecesOf(const std::string& segment) {
    const std::string text = comparedText(segment);
    std::vector<std::string> pieces;
    for (size_t begin = 0; pieces.size() < ZxPolWildcardPattern::maxSegments;) {
        const size_t end = text.find('*', begin);
        pieces.push_back(text.substr(begin, end - begin));
        if (end == std::string::npos) break;
        begin = end + 1;
    }
    return pieces;
}

// All characters of texts but the dot and upper-case letters, those first that people like to see. Blanks, which do not
// count at the ends of a text, come last.
std::string allCharacters() {
    std::string all = "xyzwqkvjhugpfblmcdrnstioae0123456789-_!#$%&'+/=?^`{|}~,;()<>[]";
    for (int c = 128; c < 256; ++c)
        all.push_back(static_cast<char>(c));
    all += ":\\*@\"\x7f";
    for (char c = 1; c < ' '; ++c)
        if (!isBlank(c)) all.push_back(c);
    return all += " \t\n";
}

// A character that no pattern names, or NUL when they name all.
char otherCharacter(const std::set<char>& named) {
    for (char c : allCharacters())
        if (named.count(c) == 0) return c;
    return '\0';
}

}  // namespace

struct PartAutomaton::State {
    Bits nodes;
    uint32_t labels = 1;
    bool isCut = false;  // fifty labels have been read, and what follows does not count
    bool endsInBlank = false;
    bool endsInQuote = false;  // one behind no backslash
    uint32_t parent = kNoParent;
    uint32_t length = 0;
    char c = '\0';
};

PartAutomaton::PartAutomaton(std::vector<const PartPattern*> patterns, AddressPart part)
    : _patterns(std::move(patterns)), _part(part) {
    bool hasWhole = false;
    for (const PartPattern* pattern : _patterns) {
        compile(*pattern);
        hasWhole = hasWhole || pattern->isWhole;
    }
    collectAlphabet();
    // Only a domain literal, or a blank, can tell a text from its first fifty labels.
    const bool hasBlank = std::any_of(_alphabet.begin(), _alphabet.end(), isBlank);
    _countsLabels = hasWhole || hasBlank;
    const auto has = [&](char c) { return _alphabet.find(c) != std::string::npos; };
    _looksAtQuotes = part == AddressPart::Name && has('"') && has('@');
}

// ---- the automaton ----------------------------------------------------------------------------------------

uint32_t PartAutomaton::addNode() {
    _nodes.emplace_back();
    return static_cast<uint32_t>(_nodes.size() - 1);
}

void PartAutomaton::addEdge(uint32_t from, Edge::On on, uint32_t to, char c) {
    _nodes[from].push_back({on, c, to});
}

// Appends one segment of a pattern that is no wildcard; `inside` is what a star in it stands for.
uint32_t PartAutomaton::addSegment(uint32_t from, const std::string& segment, Edge::On inside) {
    return addPieces(from, piecesOf(segment), inside);
}

uint32_t PartAutomaton::addPieces(uint32_t from, const std::vector<std::string>& pieces, Edge::On inside) {
    uint32_t at = from;
    for (size_t i = 0; i < pieces.size(); ++i) {
        const bool isLast = i + 1 == pieces.size();
        if (i > 0 && isLast && pieces[i].empty()) {
            // A star at the end stands for one character at least.
            const uint32_t next = addNode();
            addEdge(at, inside, next);
            at = next;
        }
        if (i > 0) addEdge(at, inside, at);
        for (char c : pieces[i]) {
            const uint32_t next = addNode();
            addEdge(at, Edge::On::Char, next, c);
            at = next;
        }
    }
    return at;
}

/*
 * Labels before the first wildcard segment are compared one by one. A wildcard segment takes one label and any number
 * of further ones. Labels behind the last wildcard segment are compared with the end of the text, whatever took them
 * before; the wildcard segments need a label of their own each and leave one at least, and there must be no fewer
 * labels than segments. That is three automata which must all accept.
 */
void PartAutomaton::compile(const PartPattern& pattern) {
    const size_t first = _nodes.size();
    const Edge::On inside = pattern.isWhole ? Edge::On::Any : Edge::On::InLabel;
    const std::vector<std::string> segments = segmentsOf(pattern);
    const auto isWildcard = [&](size_t i) { return ZxPolWildcardPattern::isSingleWildcard(segments[i].c_str()); };
    size_t last = segments.size();
    while (last > 0 && !isWildcard(last - 1))
        --last;
    // `last` is one past the last wildcard segment; without any, all segments are compared one by one.
    const bool hasRun = last > 0 && last < segments.size();
    const size_t forward = last > 0 ? last : segments.size();

    std::vector<uint32_t> accepting;
    const auto start = [&] {
        const uint32_t node = addNode();
        _starts.push_back(node);
        return node;
    };
    const auto dot = [&](uint32_t from) {
        const uint32_t next = addNode();
        addEdge(from, Edge::On::Char, next, '.');
        return next;
    };
    uint32_t at = start();
    for (size_t i = 0; i < forward; ++i) {
        if (i > 0) at = dot(at);
        if (isWildcard(i))
            addEdge(at, Edge::On::Any, at);
        else
            at = addSegment(at, segments[i], inside);
    }
    if (hasRun) {
        at = dot(at);
        addEdge(at, Edge::On::Any, at);
    }
    accepting.push_back(at);
    if (hasRun) {
        at = start();
        addEdge(at, Edge::On::Any, at);
        for (size_t i = last; i < segments.size(); ++i)
            at = addSegment(dot(at), segments[i], inside);
        accepting.push_back(at);

        at = start();
        for (size_t i = 1; i < segments.size(); ++i) {
            addEdge(at, Edge::On::InLabel, at);
            at = dot(at);
        }
        addEdge(at, Edge::On::Any, at);
        accepting.push_back(at);
    }
    _accepting.push_back(std::move(accepting));
    _isWholeNode.resize(_nodes.size(), pattern.isWhole);
    std::fill(_isWholeNode.begin() + static_cast<std::ptrdiff_t>(first), _isWholeNode.end(), pattern.isWhole);
}

void PartAutomaton::collectAlphabet() {
    std::set<char> named{'.'};
    for (const std::vector<Edge>& edges : _nodes)
        for (const Edge& edge : edges)
            if (edge.on == Edge::On::Char) named.insert(edge.c);
    const char other = otherCharacter(named);
    if (other != '\0') _alphabet.push_back(other);
    _alphabet.append(named.begin(), named.end());
}

// ---- reading texts ----------------------------------------------------------------------------------------

void PartAutomaton::step(const State& from, char c, State& to) const {
    to.nodes.assign(from.nodes.size(), 0);
    to.labels = from.labels;
    to.isCut = from.isCut;
    to.endsInBlank = isBlank(c);
    to.endsInQuote = c == '"' && from.c != '\\';
    if (c == '.' && !to.isCut) {
        if (to.labels == kMaxLabels)
            to.isCut = true;
        else
            ++to.labels;
    }
    for (uint32_t node = 0; node < _nodes.size(); ++node) {
        if ((from.nodes[node / 64] >> (node % 64) & 1) == 0) continue;
        if (to.isCut && !_isWholeNode[node]) {
            to.nodes[node / 64] |= uint64_t{1} << (node % 64);
            continue;
        }
        for (const Edge& edge : _nodes[node]) {
            const bool isTaken = edge.on == Edge::On::Any || (edge.on == Edge::On::Char ? edge.c == c : c != '.');
            if (isTaken) to.nodes[edge.to / 64] |= uint64_t{1} << (edge.to % 64);
        }
    }
}

PartAutomaton::Bits PartAutomaton::matched(const State& state) const {
    Bits bits((_accepting.size() + 63) / 64, 0);
    for (size_t i = 0; i < _accepting.size(); ++i) {
        const auto isActive = [&](uint32_t node) { return (state.nodes[node / 64] >> (node % 64) & 1) != 0; };
        if (std::all_of(_accepting[i].begin(), _accepting[i].end(), isActive)) bits[i / 64] |= uint64_t{1} << (i % 64);
    }
    return bits;
}

// All states that texts lead to, in the order of the length of the shortest.
struct PartAutomaton::Search {
    const PartAutomaton& automaton;
    const IsAvoided& isAvoided;
    std::vector<State> states;
    std::unordered_map<std::string, uint32_t> places;
    std::map<Bits, std::string> found;
    std::map<Bits, std::string> missed;  // the patterns that only texts to be avoided were seen to match

    void run() {
        State first;
        first.nodes.assign((automaton._nodes.size() + 63) / 64, 0);
        for (uint32_t start : automaton._starts)
            first.nodes[start / 64] |= uint64_t{1} << (start % 64);
        add(std::move(first));
        for (uint32_t i = 0; i < states.size(); ++i)
            extend(i);
    }

private:
    void extend(uint32_t place) {
        if (states[place].length == longestText(automaton._part)) return;
        for (char c : automaton._alphabet) {
            if (isBlank(c) && states[place].length == 0) continue;
            // There an address would be divided.
            if (c == '@' && automaton._looksAtQuotes && states[place].endsInQuote) continue;
            State next;
            automaton.step(states[place], c, next);
            // Without a count of labels a text of too many has the same answer as its beginning.
            if (next.isCut && !automaton._countsLabels) continue;
            next.parent = place;
            next.length = states[place].length + 1;
            next.c = c;
            add(std::move(next));
        }
    }

    void add(State&& state) {
        std::string key(reinterpret_cast<const char*>(state.nodes.data()), state.nodes.size() * sizeof(uint64_t));
        // The empty text is one of its own, whatever follows it.
        key.push_back(state.length == 0 ? 1 : 0);
        if (automaton._looksAtQuotes) key.push_back(state.c == '\\' ? 2 : state.endsInQuote ? 1 : 0);
        if (automaton._countsLabels) {
            key.push_back(static_cast<char>(state.labels));
            key.push_back(static_cast<char>((state.isCut ? 2 : 0) | (state.endsInBlank ? 1 : 0)));
        }
        if (!places.emplace(std::move(key), static_cast<uint32_t>(states.size())).second) return;
        if (states.size() == kMaxStates)
            throw AnalysisLimit("the patterns with stars at unusual places combine in too many ways");
        states.push_back(std::move(state));
        note(static_cast<uint32_t>(states.size() - 1));
    }

    void note(uint32_t place) {
        const State& state = states[place];
        if (state.endsInBlank) return;
        const Bits bits = automaton.matched(state);
        if (found.count(bits) != 0) return;
        std::string text = textOf(place);
        if (!isAvoided(text)) {
            missed.erase(bits);
            found.emplace(bits, std::move(text));
        } else {
            missed.emplace(bits, std::move(text));
        }
    }

    std::string textOf(uint32_t place) const {
        std::string text;
        for (; states[place].parent != kNoParent; place = states[place].parent)
            text.push_back(states[place].c);
        std::reverse(text.begin(), text.end());
        return text;
    }
};

std::vector<std::string> PartAutomaton::findTexts(const IsAvoided& isAvoided) const {
    // A text to be avoided may hide others behind it: as a pattern of its own it does not.
    std::vector<PartPattern> hiding;
    for (int round = 0; round < kMaxRounds; ++round) {
        std::vector<const PartPattern*> patterns = _patterns;
        for (const PartPattern& pattern : hiding)
            patterns.push_back(&pattern);
        const PartAutomaton automaton(std::move(patterns), _part);
        Search search{automaton, isAvoided, {}, {}, {}, {}};
        search.run();
        std::vector<PartPattern> more;
        for (const auto& [bits, text] : search.missed) {
            const bool isHiding = std::any_of(hiding.begin(), hiding.end(),
                                              [&, &text = text](const PartPattern& p) { return p.text == text; });
            if (!isHiding && !text.empty()) {
                const bool hasBlank = std::any_of(text.begin(), text.end(), isBlank);
                more.push_back({PartPattern::Form::Literal, hasBlank, text});
            }
        }
        if (more.empty()) {
            std::vector<std::string> texts;
            for (const auto& [bits, text] : search.found)
                texts.push_back(text);
            return texts;
        }
        hiding.insert(hiding.end(), more.begin(), more.end());
    }
    throw AnalysisLimit("too many addresses stand beside patterns with stars at unusual places");
}

}  // namespace tool

#include "analysis/part_words.h"

#include <algorithm>

#include "analysis/address_spelling.h"
#include "analysis/analysis_limit.h"
#include "analysis/part_automaton.h"

namespace tool {

namespace {

// A label that no pattern names.
constexpr const char* kNewLabel = "\x01";

// The characters that a text should have left for a name.
constexpr size_t kRoomForName = 24;

}  // namespace

uint32_t PartWords::add(const PartPattern& pattern) {
    const auto number = static_cast<uint32_t>(_patterns.size());
    const auto [place, isNew] = _places.emplace(pattern.key(), number);
    if (!isNew) return place->second;
    _patterns.push_back(pattern);
    switch (pattern.form) {
        case PartPattern::Form::Literal:
            _literals.emplace(pattern.key(), number);
            _known.insert(pattern.text);
            break;
        case PartPattern::Form::Suffix:
            _suffixes.emplace(pattern.text, number);
            break;
        case PartPattern::Form::Brackets:
            _hasBrackets = true;
            _others.push_back(number);
            break;
        case PartPattern::Form::Irregular:
            _hasIrregular = true;
            _others.push_back(number);
            break;
        case PartPattern::Form::Everything:
            _others.push_back(number);
            break;
    }
    return number;
}

std::vector<uint32_t> PartWords::patternsOf(const std::string& text) const {
    std::vector<uint32_t> found;
    const std::string whole = comparedText(text);
    const std::string counted = countedLabels(whole);
    // The empty pattern matches the empty text, and no blank one.
    if (text.empty() || !whole.empty()) {
        const auto look = [&](const std::string& literal, bool isWhole) {
            const auto place = _literals.find(PartPattern{PartPattern::Form::Literal, isWhole, literal}.key());
            if (place != _literals.end()) found.push_back(place->second);
        };
        look(counted, false);
        look(whole, true);
    }
    for (size_t dot = counted.find('.'); dot != std::string::npos && !_suffixes.empty();
         dot = counted.find('.', dot + 1)) {
        const auto place = _suffixes.find(counted.substr(dot + 1));
        if (place != _suffixes.end()) found.push_back(place->second);
    }
    for (uint32_t number : _others)
        if (matchesPart(_patterns[number], text)) found.push_back(number);
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<PartWord> PartWords::words() const {
    std::vector<PartWord> words;
    for (const std::string& text : _known)
        words.push_back({text, patternsOf(text), true});
    if (_hasIrregular)
        addIrregular(words);
    else
        addRegular(words);
    return words;
}

// Whether an address can have the text; every text can be its domain.
bool PartWords::isPossible(const std::string& text) const {
    return _part == AddressPart::Domain || isLocalPart(text);
}

// Adds a text that begins and ends as told, with something new to all patterns between, and that matches just the
// patterns that are wanted; none when there is no such text.
void PartWords::addFresh(std::vector<PartWord>& words, const std::string& before, const std::string& behind,
                         const std::vector<uint32_t>& wanted) const {
    const size_t longest = longestText(_part);
    const size_t frame = before.size() + behind.size();
    if (frame > longest) return;
    const auto tryOne = [&](const std::string& middle) {
        std::string text = std::string(before).append(middle).append(behind);
        if (text.size() > longest || isKnown(text) || patternsOf(text) != wanted || !isPossible(text)) return false;
        words.push_back({std::move(text), wanted, false});
        return true;
    };
    for (const std::string& middle : _fresh)
        if (tryOne(middle)) return;
    if (tryOne("x")) return;
    // Each pattern and each known text can be in the way of one number.
    for (size_t i = 1; i <= _known.size() + _patterns.size(); ++i)
        if (tryOne("x" + std::to_string(i))) return;
    // Beside the longest texts there is room for one character, or for none.
    if (tryOne("")) return;
    for (int c = 1; c < 256; ++c)
        if (tryOne(std::string(1, static_cast<char>(c)))) return;
    if (frame + 1 < longest) throw AnalysisLimit("too many addresses stand beside patterns for long domains");
}

/*
 * Suffixes end a text one within the other, so that the longest that does says all. Labels beyond the fiftieth do not
 * count but in a domain literal: "[x.…example.com.]" ends with "]", and for a suffix with "com".
 */
void PartWords::addRegular(std::vector<PartWord>& words) const {
    std::vector<uint32_t> everything;
    for (uint32_t number : _others)
        if (_patterns[number].form == PartPattern::Form::Everything) everything.push_back(number);
    addFresh(words, "", "", everything);
    if (_hasBrackets) addFresh(words, "[", "]", _others);
    for (const auto& [suffix, number] : _suffixes) {
        const auto addBetween = [&](const std::string& before, const std::string& behind) {
            addFresh(words, before, behind, patternsOf(std::string(before).append(kNewLabel).append(behind)));
        };
        addBetween("", "." + suffix);
        if (!_hasBrackets) continue;
        addBetween("[", "." + suffix);
        // Where there is no room for letters, the labels are empty.
        const size_t count = kMaxLabels - 2 - static_cast<size_t>(std::count(suffix.begin(), suffix.end(), '.'));
        const std::string label = 2 * count + suffix.size() + kRoomForName < longestText(_part) ? "x." : ".";
        std::string labels = "[";
        for (size_t i = 0; i < count; ++i)
            labels += label;
        addBetween(labels, "." + suffix + ".]");
    }
}

void PartWords::addIrregular(std::vector<PartWord>& words) const {
    std::vector<const PartPattern*> patterns;
    for (const PartPattern& pattern : _patterns)
        if (pattern.form != PartPattern::Form::Literal && pattern.form != PartPattern::Form::Everything)
            patterns.push_back(&pattern);
    const auto isAvoided = [this](const std::string& text) { return _known.count(text) != 0 || !isPossible(text); };
    for (std::string& text : PartAutomaton(std::move(patterns), _part).findTexts(isAvoided)) {
        std::vector<uint32_t> matching = patternsOf(text);
        words.push_back({std::move(text), std::move(matching), false});
    }
    // Blanks alone may be the only text that no pattern matches.
    words.push_back({" ", patternsOf(" "), false});
}

}  // namespace tool

#include "analysis/address_spelling.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "analysis/analysis_limit.h"
#include "output/text.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/rfc2822_checker.h"

namespace tool {

namespace {

// The places for quotes in a local part of which all choices are tried.
constexpr size_t kMaxPlacesTried = 14;

// Of a local part that an error shows.
constexpr size_t kShownBytes = 255;

size_t countOf(char c, std::string_view text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), c));
}

std::string withoutKind(const std::string& address) {
    const size_t colon = address.find(':');
    return colon == std::string::npos ? address : address.substr(colon + 1);
}

// The places where a quote may have been taken off: before and behind each word, and before each "@".
size_t placesIn(const std::string& name) {
    return 2 * countOf('.', name) + 2 + countOf('@', name);
}

// The local part with quotes at the places that are chosen.
template <class IsChosen>
std::string withQuotes(const std::string& name, IsChosen isChosen) {
    std::string local;
    size_t place = 0;
    const auto quote = [&](char next) {
        if (isChosen(place++, next)) local.push_back('"');
    };
    quote('\0');
    for (char c : name) {
        if (c == '.' || c == '@') quote(c);
        local.push_back(c);
        if (c == '.') quote('\0');
    }
    quote('\0');
    return local;
}

// Whether quotes beside a word of a local part are nothing but quotes around it, or around words that it is among.
bool isPlainWord(std::string_view word) {
    return !word.empty() && word.front() != '"' && word.back() != '"' && word.back() != '\\' &&
           word.find('@') == std::string_view::npos;
}

std::vector<std::string_view> wordsOf(std::string_view name) {
    std::vector<std::string_view> words;
    for (size_t begin = 0, end = 0; end != std::string_view::npos; begin = end + 1) {
        end = name.find('.', begin);
        words.push_back(name.substr(begin, end - begin));
    }
    return words;
}

/*
 * The places that matter; all have the numbers of withQuotes.
 *
 * In a row of plain words those beside the first and the last one do. A quote before a plain word can only open a
 * section, and one behind it only close one, or else it is no quote that is taken off. What is before the row is
 * outside of quotes, in a section, or behind a quote with a backslash of which it is open whether it closes one; so is
 * what is behind the row, and each way from the one to the other can be had at the first and the last word, with the
 * same quotes taken off: a section that begins and ends in the row encloses what is the same without it, one that is
 * interrupted in the row is the same uninterrupted, and one that begins or ends in the row can do so at its first or
 * its last word.
 */
std::vector<size_t> placesThatMatter(const std::string& name) {
    const std::vector<std::string_view> words = wordsOf(name);
    // Where quotes push the end of a long local part away, how many there are counts.
    const bool isCut = name.size() + placesIn(name) >= ZxPolCondWildcardPattern::maxName;
    std::vector<size_t> places;
    size_t place = 0;
    for (size_t i = 0; i < words.size(); ++i) {
        const bool isInRow = i > 0 && i + 1 < words.size() && isPlainWord(words[i - 1]) && isPlainWord(words[i]) &&
                             isPlainWord(words[i + 1]);
        for (const size_t end = place + 2 + countOf('@', words[i]); place < end; ++place)
            if (!isInRow || isCut) places.push_back(place);
    }
    return places;
}

// Calls visit(local part) with quotes in all ways that matter until it returns true, and tells whether it did.
template <class Visit>
bool anyQuoted(const std::string& name, Visit visit) {
    const std::vector<size_t> places = placesThatMatter(name);
    if (places.size() > kMaxPlacesTried)
        throw AnalysisLimit("the quotes in the local part " + inQuotes(name, kShownBytes) + " stand in too many ways",
                            name);
    std::vector<bool> isChosen(placesIn(name));
    for (uint32_t choice = 0; choice < uint32_t{1} << places.size(); ++choice) {
        for (size_t i = 0; i < places.size(); ++i)
            isChosen[places[i]] = (choice >> i & 1) != 0;
        if (visit(withQuotes(name, [&](size_t place, char) { return isChosen[place]; }))) return true;
    }
    return false;
}

// Calls visit(local part) with quotes nowhere, around the whole, and around each word, until it returns true.
template <class Visit>
bool anyUsual(const std::string& name, Visit visit) {
    const std::string enclosed = std::string("\"").append(name).append("\"");
    // A blank without quotes around it is nothing that people see.
    if (name.find(' ') != std::string::npos && visit(enclosed)) return true;
    return visit(name) || visit(enclosed) || visit(withQuotes(name, [](size_t, char next) { return next != '@'; }));
}

// Whether a quote in the local part, or one taken off, stands behind a backslash.
bool hasEscapes(const std::string& name) {
    for (size_t at = name.find('\\'); at != std::string::npos; at = name.find('\\', at + 1))
        if (at + 1 == name.size() || std::string_view("\".@").find(name[at + 1]) != std::string_view::npos) return true;
    return false;
}

// A quote before an "@" ends the local part, unless it stands behind a backslash or the whole is cut for its length.
bool isBroken(const std::string& name) {
    if (name.size() + placesIn(name) >= ZxPolCondWildcardPattern::maxName) return false;
    for (size_t at = name.find("\"@"); at != std::string::npos; at = name.find("\"@", at + 1))
        if (at == 0 || name[at - 1] != '\\') return true;
    return false;
}

// Looks for an address with given parts.
class Speller {
public:
    Speller(const std::string& name, const std::string& domain, bool isDivided)
        : _name(name), _domain(domain), _isDivided(isDivided) {}

    std::optional<std::string> run() {
        if (_name.size() > ZxPolCondWildcardPattern::maxName || _domain.size() > ZxPolCondWildcardPattern::maxDomain ||
            isBroken(_name))
            return std::nullopt;
        const auto isRight = [&](const std::string& local) {
            // What is cut off for its length may still hold the quote that closes.
            return tryLocal(local) || (local.size() >= ZxPolCondWildcardPattern::maxName && tryLocal(local + '"'));
        };
        // Where a local part can be written in a well-formed way, it can be so with quotes around the whole.
        const bool isFound =
            anyUsual(_name, [&](const std::string& local) { return isRight(local) && isWellFormed(_found.back()); });
        if (!isFound && _found.empty() && !anyQuoted(_name, isRight)) return std::nullopt;
        return std::move(isFound ? _found.back() : _found.front());
    }

private:
    bool tryLocal(std::string text) {
        if (_isDivided) text.append("@").append(_domain);
        text = withKind(std::move(text));
        const AddressParts parts = partsOf(text);
        if (parts.name != _name || parts.domain != _domain) return false;
        _found.push_back(std::move(text));
        return true;
    }

    const std::string& _name;
    const std::string& _domain;
    bool _isDivided;
    std::vector<std::string> _found;
};

}  // namespace

AddressParts partsOf(const std::string& address) {
    const std::string text = withoutKind(address);
    const ZxPolCondWildcardPattern parsed(text.c_str());
    std::string key(text.size() + 1, '\0');
    ZxPolRfc2822Checker::stripLocalPartBoundary(key.data(), text.c_str());
    key.resize(std::char_traits<char>::length(key.c_str()));
    return {parsed.getName(), parsed.getDomain(), lowerCase(key)};
}

bool isWellFormed(const std::string& address) {
    std::string text = withoutKind(address);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, 'x');
    return text.empty() || ZxPolRfc2822Checker::checkFormatValidity(text.c_str());
}

std::string withKind(std::string text) {
    if (text.find(':') != std::string::npos) text.insert(0, "smtp:");
    return text;
}

std::vector<std::string> spellings(const std::string& name, const std::string& domain) {
    std::vector<std::string> found;
    for (const bool isDivided : {false, true}) {
        if (!isDivided && !domain.empty()) continue;
        std::optional<std::string> text = Speller(name, domain, isDivided).run();
        if (text) found.push_back(std::move(*text));
    }
    return found;
}

std::vector<std::string> addressesOfKey(const std::string& key) {
    std::vector<std::string> found;
    const auto addIfRight = [&](std::string text) {
        if (partsOf(text).sortKey == key) found.push_back(std::move(text));
        return false;
    };
    // The key can be divided at each "@", or not at all.
    for (size_t at = 0; at <= key.size(); ++at) {
        if (at < key.size() && key[at] != '@') continue;
        const std::string name = key.substr(0, at), rest = key.substr(at);
        const auto addWith = [&](const std::string& local) { return addIfRight(withKind(local + rest)); };
        // Quotes are another local part where a backslash stands before them, or where they push its end away.
        if (hasEscapes(name))
            anyQuoted(name, addWith);
        else if (name.size() + placesIn(name) > ZxPolCondWildcardPattern::maxName)
            anyUsual(name, addWith);
        else
            for (std::string& text : spellings(name, rest.empty() ? rest : rest.substr(1)))
                addIfRight(std::move(text));
    }
    return found;
}

bool isLocalPart(const std::string& name) {
    return !spellings(name, "host").empty() || !spellings(name, "").empty();
}

}  // namespace tool

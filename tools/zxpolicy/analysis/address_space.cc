#include "analysis/address_space.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <unordered_set>

#include "analysis/address_spelling.h"
#include "analysis/analysis_limit.h"
#include "output/text.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"
#include "pattern/rfc2822_checker.h"

namespace tool {

namespace {

// The pairs of local parts and domains that are looked at before an answer is given up.
constexpr size_t kMaxPairs = 4000000;

// The addresses of a class that are looked at for a well-formed one.
constexpr size_t kMaxTries = 50;

// Of each test the largest weight.
void keepLargest(std::vector<MatchedTest>& matched) {
    std::sort(matched.begin(), matched.end(), [](const MatchedTest& a, const MatchedTest& b) {
        return a.test != b.test ? a.test < b.test : a.weight > b.weight;
    });
    const auto isSameTest = [](const MatchedTest& a, const MatchedTest& b) { return a.test == b.test; };
    matched.erase(std::unique(matched.begin(), matched.end(), isSameTest), matched.end());
}

template <class Number>
void sortOnce(std::vector<Number>& numbers) {
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

// The bytes of a row of plain records, as a key.
template <class Record>
void appendBytes(std::string& key, const std::vector<Record>& records) {
    const uint64_t count = records.size();
    key.append(reinterpret_cast<const char*>(&count), sizeof count);
    key.append(reinterpret_cast<const char*>(records.data()), records.size() * sizeof(Record));
}

// Numbers things that are equal alike.
template <class Thing>
class Numbering {
public:
    uint32_t operator()(const Thing& thing) {
        return _numbers.emplace(thing, static_cast<uint32_t>(_numbers.size())).first->second;
    }
    size_t size() const { return _numbers.size(); }

private:
    std::map<Thing, uint32_t> _numbers;
};

}  // namespace

AddressSpace::AddressSpace(ZxPolMatchWeightType weightType)
    : _weightType(weightType),
      _names(AddressPart::Name, {"anyone", "someone", "somebody"}),
      _domains(AddressPart::Domain, {"anywhere.example", "elsewhere.example", "host"}) {}

std::string AddressSpace::pointKey(const std::string& name, const std::string& domain, bool isWhole) {
    std::string key = name;
    key.push_back('\0');
    key.push_back(isWhole ? '[' : '.');
    return key += domain;
}

void AddressSpace::addPattern(uint32_t test, const std::string& pattern) {
    const ZxPolCondWildcardPattern parsed(pattern.c_str());
    const MatchedTest matched{test, ZxPolPriority::calcWeight(parsed, _weightType)};
    if (parsed.isSingleWildcard()) {
        _always.push_back(matched);
        return;
    }
    const PartPattern name = localPartPattern(parsed.getName());
    const PartPattern domain = domainPattern(parsed.getDomain());
    if (name.form == PartPattern::Form::Literal && domain.form == PartPattern::Form::Literal) {
        _names.makeKnown(name.text);
        _domains.makeKnown(domain.text);
        Point& point = _points[pointKey(name.text, domain.text, domain.isWhole)];
        point.name = name.text;
        point.domain = domain.text;
        point.matched.push_back(matched);
        return;
    }
    _entries.push_back({_names.add(name), _domains.add(domain), matched});
}

void AddressSpace::addEntry(uint32_t test, const std::string& entry) {
    if (entry.find('*') != std::string::npos) return addPattern(test, entry);
    // An address of a list is looked for as it is; what stands before a colon is part of it.
    std::string key(entry.size() + 1, '\0');
    ZxPolRfc2822Checker::stripLocalPartBoundary(key.data(), entry.c_str());
    key.resize(std::strlen(key.c_str()));
    std::vector<uint32_t>& tests = _plain[lowerCase(key)];
    if (tests.empty() || tests.back() != test) tests.push_back(test);
}

void AddressSpace::addPointsOf(const std::string& name, const std::string& domain, Matched& matched) const {
    if (_points.empty()) return;
    // Blanks alone are not the empty text.
    const std::string comparedName = comparedText(name), comparedDomain = comparedText(domain);
    if (comparedName.empty() != name.empty() || comparedDomain.empty() != domain.empty()) return;
    const std::string countedName = countedLabels(comparedName);
    const auto add = [&](const std::string& text, bool isWhole) {
        const auto found = _points.find(pointKey(countedName, text, isWhole));
        if (found != _points.end())
            matched.insert(matched.end(), found->second.matched.begin(), found->second.matched.end());
    };
    add(countedLabels(comparedDomain), false);
    add(comparedDomain, true);
}

bool AddressSpace::isPoint(const std::string& name, const std::string& domain) const {
    Matched matched;
    addPointsOf(name, domain, matched);
    return !matched.empty();
}

// ---- the classes ------------------------------------------------------------------------------------------

// The texts of one part, those alike for all patterns together.
struct AddressSpace::Part {
    struct Class {
        std::vector<uint32_t> groups;  // of patterns that match
        std::vector<std::string> members;
        bool hasOthers = false;  // the members are not all there are
    };

    std::vector<uint32_t> groupOf;  // of a pattern
    std::vector<Class> classes;

    std::vector<uint32_t> groupsOf(const std::vector<uint32_t>& patterns) const {
        std::vector<uint32_t> groups;
        groups.reserve(patterns.size());
        for (uint32_t pattern : patterns)
            groups.push_back(groupOf[pattern]);
        sortOnce(groups);
        return groups;
    }

    // The members that no pattern names come first: what is true of them is true of many.
    void fill(const PartWords& source) {
        Numbering<std::vector<uint32_t>> numbering;
        std::vector<PartWord> words = source.words();
        std::stable_partition(words.begin(), words.end(), [](const PartWord& word) { return !word.isKnown; });
        for (PartWord& word : words) {
            std::vector<uint32_t> groups = groupsOf(word.patterns);
            const uint32_t number = numbering(groups);
            if (number == classes.size()) classes.push_back({std::move(groups), {}});
            classes[number].members.push_back(std::move(word.text));
            classes[number].hasOthers = classes[number].hasOthers || !word.isKnown;
        }
    }
};

class AddressSpace::Enumeration {
public:
    explicit Enumeration(const AddressSpace& space) : _space(space) {
        group();
        _names.fill(space._names);
        _domains.fill(space._domains);
    }

    std::vector<AddressClass> run() {
        if (_names.classes.size() > kMaxPairs / _domains.classes.size())
            throw AnalysisLimit("the patterns for local parts and those for domains combine in too many ways");
        for (const Part::Class& name : _names.classes)
            for (const Part::Class& domain : _domains.classes)
                addPair(name, domain);
        for (const auto& [key, point] : _space._points)
            addUnlisted(point.name, point.domain);
        for (const auto& [key, tests] : _space._plain)
            addPlain(key, tests);
        return std::move(_classes);
    }

private:
    // Patterns for one part that stand beside the same patterns for the other part, in the same tests, are alike.
    void group() {
        struct Use {
            uint32_t other;
            MatchedTest matched;
            bool operator<(const Use& b) const { return other != b.other ? other < b.other : matched < b.matched; }
            bool operator==(const Use& b) const { return other == b.other && matched == b.matched; }
        };
        const auto groupBy = [](std::vector<std::vector<Use>>& uses, std::vector<uint32_t>& groupOf) {
            Numbering<std::vector<Use>> numbering;
            for (std::vector<Use>& list : uses) {
                sortOnce(list);
                groupOf.push_back(numbering(list));
            }
        };
        std::vector<std::vector<Use>> ofDomains(_space._domains.size()), ofNames(_space._names.size());
        for (const Entry& entry : _space._entries)
            ofDomains[entry.domain].push_back({entry.name, entry.matched});
        groupBy(ofDomains, _domains.groupOf);
        for (const Entry& entry : _space._entries)
            ofNames[entry.name].push_back({_domains.groupOf[entry.domain], entry.matched});
        groupBy(ofNames, _names.groupOf);
        std::set<std::pair<uint64_t, MatchedTest>> seen;
        for (const Entry& entry : _space._entries) {
            const uint64_t place = placeOf(_names.groupOf[entry.name], _domains.groupOf[entry.domain]);
            if (seen.emplace(place, entry.matched).second) _matrix[place].push_back(entry.matched);
        }
    }

    static uint64_t placeOf(uint32_t nameGroup, uint32_t domainGroup) {
        return uint64_t{nameGroup} << 32 | domainGroup;
    }

    // What matches by patterns with a wildcard.
    Matched matchedBy(const std::vector<uint32_t>& nameGroups, const std::vector<uint32_t>& domainGroups) const {
        Matched matched = _space._always;
        for (uint32_t name : nameGroups) {
            for (uint32_t domain : domainGroups) {
                const auto found = _matrix.find(placeOf(name, domain));
                if (found != _matrix.end()) matched.insert(matched.end(), found->second.begin(), found->second.end());
            }
        }
        return matched;
    }

    // What matches, but for the plain addresses of lists.
    Matched matchedBy(const std::string& name, const std::string& domain) const {
        Matched matched = matchedBy(_names.groupsOf(_space._names.patternsOf(name)),
                                    _domains.groupsOf(_space._domains.patternsOf(domain)));
        _space.addPointsOf(name, domain, matched);
        return matched;
    }

    // Adds the class of an address, or what the address adds to what is known of it.
    void add(const std::string& address, Matched matched, bool isMalformed) {
        keepLargest(matched);
        std::string key;
        appendBytes(key, matched);
        const auto [place, isNew] = _seen.emplace(std::move(key), _classes.size());
        if (isNew) {
            _classes.push_back({address, std::move(matched), isMalformed});
            return;
        }
        AddressClass& known = _classes[place->second];
        known.isMalformed = known.isMalformed && isMalformed;
        if (!isWellFormed(known.witness) && isWellFormed(address)) known.witness = address;
    }

    // The addresses of a pair of classes of which no pattern names one in full.
    void addPair(const Part::Class& nameClass, const Part::Class& domainClass) {
        Matched matched = matchedBy(nameClass.groups, domainClass.groups);
        keepLargest(matched);
        std::string key;
        appendBytes(key, matched);
        if (_seen.count(key) != 0) return;
        // The members stand for others, which may be well-formed.
        if (const std::optional<std::string> address = unlistedOf(nameClass, domainClass))
            return add(*address, std::move(matched), false);
        if (nameClass.hasOthers || domainClass.hasOthers)
            throw AnalysisLimit("no address is found that some of the patterns match together");
    }

    // The first such address, or a well-formed one that comes soon after it.
    std::optional<std::string> unlistedOf(const Part::Class& nameClass, const Part::Class& domainClass) const {
        std::optional<std::string> first;
        size_t tries = 0;
        for (const std::string& name : nameClass.members) {
            for (const std::string& domain : domainClass.members) {
                if (_space.isPoint(name, domain)) continue;
                std::optional<std::string> address = unlisted(name, domain);
                if (!address) continue;
                if (isWellFormed(*address)) return address;
                if (!first) first = std::move(address);
                if (++tries == kMaxTries) return first;
            }
        }
        return first;
    }

    bool isListed(const std::string& address) const { return _space._plain.count(partsOf(address).sortKey) != 0; }

    // An address with these parts, or with blanks beside them, that is in no list as it is: for patterns such
    // addresses are the same, for lists they are different ones.
    std::optional<std::string> unlisted(const std::string& name, const std::string& domain) const {
        for (size_t blanks = 0;; ++blanks) {
            bool isThere = false;
            for (const auto& [local, host] : paddedWith(std::string(blanks, ' '), name, domain)) {
                for (std::string& text : spellings(local, host)) {
                    if (!isListed(text)) return std::move(text);
                    isThere = true;
                }
            }
            if (!isThere && blanks > 0) return std::nullopt;
        }
    }

    // Blanks beside nothing would be something else.
    static std::vector<std::pair<std::string, std::string>> paddedWith(const std::string& blanks,
                                                                       const std::string& name,
                                                                       const std::string& domain) {
        if (blanks.empty()) return {{name, domain}};
        std::vector<std::pair<std::string, std::string>> padded;
        if (!name.empty()) padded.insert(padded.end(), {{blanks + name, domain}, {name + blanks, domain}});
        if (!domain.empty()) padded.insert(padded.end(), {{name, blanks + domain}, {name, domain + blanks}});
        return padded;
    }

    void addUnlisted(const std::string& name, const std::string& domain) {
        Matched matched = matchedBy(name, domain);
        std::optional<std::string> address = unlisted(name, domain);
        if (address) add(*address, std::move(matched), false);
    }

    // The addresses whose sort key is one of a list. Where none that is looked at is well-formed, none is.
    void addPlain(const std::string& key, const std::vector<uint32_t>& tests) {
        for (const std::string& address : addressesOfKey(key))
            addListed(address, tests);
    }

    void addListed(const std::string& address, const std::vector<uint32_t>& tests) {
        const AddressParts parts = partsOf(address);
        const std::vector<uint32_t> nameGroups = _names.groupsOf(_space._names.patternsOf(parts.name));
        const std::vector<uint32_t> domainGroups = _domains.groupsOf(_space._domains.patternsOf(parts.domain));
        Matched matched;
        _space.addPointsOf(parts.name, parts.domain, matched);
        // Most addresses of a list are like many others.
        std::string likeness;
        appendBytes(likeness, nameGroups);
        appendBytes(likeness, domainGroups);
        appendBytes(likeness, matched);
        appendBytes(likeness, tests);
        const bool isBad = !isWellFormed(address);
        likeness.push_back(isBad ? '-' : '+');
        if (!_seenPlain.insert(std::move(likeness)).second) return;
        const Matched byPatterns = matchedBy(nameGroups, domainGroups);
        matched.insert(matched.end(), byPatterns.begin(), byPatterns.end());
        for (uint32_t test : tests)
            matched.push_back({test, ZxPolPriority::maxWeight()});
        add(address, std::move(matched), isBad);
    }

    const AddressSpace& _space;
    Part _names;
    Part _domains;
    std::unordered_map<uint64_t, Matched> _matrix;  // by group of local parts and group of domains
    std::unordered_map<std::string, size_t> _seen;  // the classes by what they match
    std::unordered_set<std::string> _seenPlain;
    std::vector<AddressClass> _classes;
};

std::vector<AddressClass> AddressSpace::classes() {
    return Enumeration(*this).run();
}

}  // namespace tool

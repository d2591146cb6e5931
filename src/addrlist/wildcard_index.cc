#include "addrlist/wildcard_index.h"

#include <algorithm>

#include "addrlist/folded_text.h"
#include "pattern/priority.h"
#include "pattern/wildcard_pattern.h"

namespace zxpol {

namespace {

bool isSame(std::string_view text, std::string_view folded) {
    return text.size() == folded.size() && equalsFolded(text.data(), folded.data(), text.size());
}

size_t dotsIn(std::string_view text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '.'));
}

}  // namespace

WildcardIndex::Place::Place(const char* entry) {
    const ZxPolCondWildcardPattern pattern(entry);
    const PatternForm patternForm(pattern);
    isUnusual = patternForm.isUnusual;
    if (isUnusual) return;
    hash = patternForm.hash();
    form = patternForm.number();
    if (patternForm.domainForm == DomainForm::suffix) suffixDots = dotsIn(patternForm.domain);
}

void WildcardIndex::insert(uint32_t reference, const Place& place) noexcept {
    if (place.isUnusual) {
        _unusual.append(reference);
    } else {
        _entries.insert(place.hash, reference);
    }
    count(place, 1);
}

void WildcardIndex::remove(uint32_t reference, const Place& place) noexcept {
    if (place.isUnusual) {
        _unusual.remove(reference);
    } else {
        _entries.remove(place.hash, reference);
    }
    count(place, static_cast<uint32_t>(-1));
}

void WildcardIndex::count(const Place& place, uint32_t by) noexcept {
    if (!place.isUnusual) _counts[place.form].fetch_add(by, std::memory_order_release);
    if (place.suffixDots) _suffixCounts[*place.suffixDots].fetch_add(by, std::memory_order_release);
    _count.fetch_add(by, std::memory_order_release);
}

// One address against the index.
class WildcardIndex::Search {
public:
    Search(const WildcardIndex& index, const char* address, bool wantsWeight, ZxPolMatchWeightType kind)
        : _index(index),
          _wantsWeight(wantsWeight),
          _kind(kind),
          _address(address),
          _name(_address.getName()),
          _domain(_address.getDomain()) {}

    void run() {
        collectLookups();
        for (size_t i = 0; i < _lookupCount && !isDone(); ++i)
            lookUp(_lookups[i]);
        compareUnusual();
    }

    uint32_t found() const { return _found; }
    uint32_t weight() const { return _weight; }

private:
    // One entry of a lookable form that would match: with any name or the address's, and where the form has a text,
    // with the address's domain from `begin` on.
    struct Lookup {
        uint64_t hash;
        size_t begin;
        DomainForm form;
        bool isAnyName;
    };
    // Two names, and four forms of which one is a suffix behind each dot.
    static constexpr size_t maxLookups = 2 * (size_t{3} + ZxPolWildcardPattern::maxSegments);

    bool isDone() const { return _found != none && !_wantsWeight; }
    bool hasEntries(bool isAnyName, DomainForm form) const {
        return _index._counts[PatternForm::numberOf(isAnyName, form)].load(std::memory_order_acquire) != 0;
    }

    // All lookups are on their way to memory before the first is looked at.
    void collectLookups() {
        const std::string_view domain = _domain.text();
        collect(DomainForm::any, domain.size());
        if (_domain.isBracketed()) collect(DomainForm::bracket, domain.size());
        collect(DomainForm::literal, 0);
        if (!hasEntries(true, DomainForm::suffix) && !hasEntries(false, DomainForm::suffix)) return;
        size_t dots = dotsIn(domain);
        for (size_t dot = domain.find('.'); dot != std::string_view::npos; dot = domain.find('.', dot + 1)) {
            if (_index._suffixCounts[--dots].load(std::memory_order_acquire) != 0) {
                collect(DomainForm::suffix, dot + 1);
            }
        }
    }

    void collect(DomainForm form, size_t begin) {
        const bool hasAnyName = hasEntries(true, form);
        const bool hasName = hasEntries(false, form);
        if (!hasAnyName && !hasName) return;
        const uint64_t domainHash = _domain.hashFrom(begin);
        if (hasAnyName)
            collect(true, form, begin, formHash(PatternForm::numberOf(true, form), emptyHash(), domainHash));
        if (hasName) collect(false, form, begin, formHash(PatternForm::numberOf(false, form), nameHash(), domainHash));
    }

    void collect(bool isAnyName, DomainForm form, size_t begin, uint64_t hash) {
        _index._entries.prefetch(hash);
        _lookups[_lookupCount++] = {hash, begin, form, isAnyName};
    }

    void lookUp(const Lookup& lookup) {
        const std::string_view wanted = _domain.text().substr(lookup.begin);
        _index._entries.find(lookup.hash, [&](uint32_t reference) {
            const ZxPolCondWildcardPattern pattern(_index._texts.text(reference).data());
            const PatternForm entry(pattern);
            if (entry.isAnyName != lookup.isAnyName || entry.domainForm != lookup.form) return false;
            if (!isSame(entry.domain, wanted)) return false;
            if (!lookup.isAnyName && !isSame(entry.name, _name.text())) return false;
            take(reference, pattern);
            return true;
        });
    }

    void compareUnusual() {
        _index._unusual.visit([&](uint32_t reference) {
            if (isDone()) return false;
            const ZxPolCondWildcardPattern pattern(_index._texts.text(reference).data());
            if (pattern == _address) take(reference, pattern);
            return true;
        });
    }

    void take(uint32_t reference, const ZxPolCondWildcardPattern& pattern) {
        const uint32_t weight = ZxPolPriority::calcWeight(pattern, _kind);
        if (_found != none && weight <= _weight) return;
        _found = reference;
        _weight = weight;
    }

    uint64_t nameHash() {
        if (!_hasNameHash) _nameHash = _name.hashFrom(0);
        _hasNameHash = true;
        return _nameHash;
    }
    uint64_t emptyHash() const { return _name.hashFrom(_name.text().size()); }

    const WildcardIndex& _index;
    const bool _wantsWeight;
    const ZxPolMatchWeightType _kind;
    const ZxPolCondWildcardPattern _address;
    const SubjectPart _name;
    const SubjectPart _domain;
    std::array<Lookup, maxLookups> _lookups;
    size_t _lookupCount = 0;
    uint64_t _nameHash = 0;
    bool _hasNameHash = false;
    uint32_t _found = none;
    uint32_t _weight = 0;
};

uint32_t WildcardIndex::findMatch(const char* address, uint32_t* weight, ZxPolMatchWeightType kind) const {
    if (_count.load(std::memory_order_acquire) == 0) return none;
    Search search(*this, address, weight != nullptr, kind);
    search.run();
    if (weight != nullptr && search.found() != none) *weight = search.weight();
    return search.found();
}

}  // namespace zxpol

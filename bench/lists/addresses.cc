#include "addresses.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

constexpr const char* syllables[] = {"ba", "ko", "du", "mi", "ne", "ra", "ti", "lo",
                                     "sa", "ve", "po", "ju", "fi", "ga", "he", "zu"};
constexpr const char* givenNames[] = {"ada",   "ana",  "anton",  "boris", "carla",  "chen",  "clara", "david",
                                      "elena", "emil", "fatima", "felix", "george", "hana",  "igor",  "ines",
                                      "jan",   "john", "julia",  "karim", "lars",   "laura", "maria", "mehmet",
                                      "nadia", "olga", "paul",   "peter", "rosa",   "sven",  "tomas", "yuki"};
constexpr const char* topDomains[] = {"com", "org", "net", "de", "co.uk", "info", "io", "fr"};

constexpr unsigned localBits = 5 + 1 + 16;
constexpr unsigned topBits = 3;
constexpr uint64_t firstMiss = uint64_t{1} << 40;

// Takes bits off the lower end of a number.
class Bits {
public:
    explicit Bits(uint64_t bits) : _bits(bits) {}
    size_t take(unsigned count) {
        const uint64_t taken = _bits & ((uint64_t{1} << count) - 1);
        _bits >>= count;
        return static_cast<size_t>(taken);
    }

private:
    uint64_t _bits;
};

// Scatters the numbers below 2^bits: each comes out exactly once.
uint64_t scatter(uint64_t number, unsigned bits) {
    const uint64_t mask = (uint64_t{1} << bits) - 1;
    number = number * 0x9e3779b97f4a7c15 & mask;
    number ^= number >> (bits / 2);
    number = number * 0xd1342543de82ef95 & mask;
    return number ^ number >> (bits / 2);
}

std::string syllablesOf(Bits& bits, int count) {
    std::string text;
    while (count-- > 0)
        text += syllables[bits.take(4)];
    return text;
}

std::string localPart(Bits& bits) {
    std::string text = givenNames[bits.take(5)];
    text += bits.take(1) == 0 ? '.' : '_';
    return text + syllablesOf(bits, 4);
}

std::string domain(Bits& bits, int count) {
    const char* top = topDomains[bits.take(topBits)];
    return syllablesOf(bits, count) + "." + top;
}

// Names and domains of the wildcard lists. The domains of queries that miss are of four syllables, their local parts
// the second half of all.
std::string entryName(uint64_t index) {
    Bits bits(scatter(index, localBits - 1));
    return localPart(bits);
}

std::string missName(Random& random) {
    Bits bits(random.below(uint64_t{1} << (localBits - 1)) | uint64_t{1} << (localBits - 1));
    return localPart(bits);
}

std::string entryDomain(uint64_t index) {
    Bits bits(scatter(index, topBits + 20));
    return domain(bits, 5);
}

std::string missDomain(Random& random) {
    Bits bits(random.next());
    return domain(bits, 4);
}

std::string wildcardEntry(size_t index) {
    if (index == 0) return "*@[*]";
    const size_t kind = index % 20;
    if (kind < 10) return "*@" + entryDomain(index);
    if (kind < 14) return "*@*." + entryDomain(index);
    if (kind < 17) return entryName(index) + "@*." + entryDomain(index);
    return entryName(index) + "@*";
}

// The domain of a host below `domain`, one or two levels down.
std::string below(const std::string& domain, Random& random) {
    constexpr const char* hosts[] = {"mx", "mail", "lists", "eu.mail"};
    return hosts[random.below(4)] + ("." + domain);
}

// An address that the entry matches.
std::string matchOf(const std::string& entry, Random& random) {
    const size_t at = entry.find('@');
    std::string name = entry.substr(0, at);
    std::string domain = entry.substr(at + 1);
    if (name == "*") name = missName(random);
    if (domain == "*") {
        domain = missDomain(random);
    } else if (domain == "[*]") {
        domain = "[192.0.2." + std::to_string(random.below(256)) + "]";
    } else if (domain.compare(0, 2, "*.") == 0) {
        domain = below(domain.substr(2), random);
    }
    return name + "@" + domain;
}

std::string missOf(Random& random) {
    const std::string domain = missDomain(random);
    return missName(random) + "@" + (random.below(2) == 0 ? domain : below(domain, random));
}

// A number below `count`. With Spread::zipf small ones are frequent: the inverse of the harmonic sums, which grow as
// the logarithm.
uint64_t pick(uint64_t count, Spread spread, Random& random) {
    if (spread == Spread::uniform) return random.below(count);
    const double share = static_cast<double>(random.next() >> 11) * 0x1p-53;
    const auto rank = static_cast<uint64_t>(std::exp(share * std::log(static_cast<double>(count) + 1)) - 1);
    // The frequent ones stand anywhere in the list. A count that is a multiple of the factor is not used.
    return std::min(rank, count - 1) * 7919 % count;
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

size_t labelsOf(const std::string& domain) {
    return static_cast<size_t>(std::count(domain.begin(), domain.end(), '.')) + 1;
}

}  // namespace

uint64_t Random::next() {
    uint64_t mixed = _state += 0x9e3779b97f4a7c15;
    mixed = (mixed ^ mixed >> 30) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ mixed >> 27) * 0x94d049bb133111eb;
    return mixed ^ mixed >> 31;
}

std::string addressAt(uint64_t index) {
    Bits bits(scatter(index, 41));
    const std::string local = localPart(bits);
    std::string address = local + "@" + domain(bits, 4);
    if (index % 16 == 0) address[0] = upper(address[0]);
    return address;
}

std::vector<std::string> addresses(uint64_t begin, uint64_t end) {
    std::vector<std::string> made;
    made.reserve(static_cast<size_t>(end - begin));
    for (uint64_t index = begin; index < end; ++index)
        made.push_back(addressAt(index));
    return made;
}

std::vector<std::string> wildcardEntries(size_t count) {
    std::vector<std::string> made;
    made.reserve(count);
    for (size_t index = 0; index < count; ++index)
        made.push_back(wildcardEntry(index));
    return made;
}

std::string lowerCased(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

uint32_t expectedWeight(const std::unordered_set<std::string>& entries, const std::string& address) {
    const size_t at = address.find('@');
    const std::string name = address.substr(0, at);
    const std::string domain = address.substr(at + 1);
    if (domain[0] == '[') return entries.count("*@[*]") != 0 ? 2000 : entries.count(name + "@*") != 0 ? 1000 : 0;
    if (entries.count("*@" + domain) != 0) return 4000;
    uint32_t weight = entries.count(name + "@*") != 0 ? 1000 : 0;
    for (size_t dot = domain.find('.'); dot != std::string::npos; dot = domain.find('.', dot + 1)) {
        const std::string end = domain.substr(dot + 1);
        const auto labels = static_cast<uint32_t>(labelsOf(end));
        if (entries.count("*@*." + end) != 0) weight = std::max(weight, 2000 + labels);
        if (entries.count(name + "@*." + end) != 0) weight = std::max(weight, 3000 + labels);
    }
    return weight;
}

void Queries::_add(const std::string& address, uint32_t weight) {
    std::string text = address;
    if (_queries.size() % 4 == 3) std::transform(text.begin(), text.end(), text.begin(), upper);
    _texts.append(text.c_str(), text.size() + 1);
    _lowered.append(lowerCased(text).c_str(), text.size() + 1);
    _queries.push_back({nullptr, nullptr, static_cast<uint32_t>(text.size()), weight});
}

void Queries::_finish() {
    size_t offset = 0;
    for (Query& query : _queries) {
        query.text = &_texts[offset];
        query.lowered = &_lowered[offset];
        offset += query.length + 1;
    }
}

Queries Queries::exact(size_t entries, size_t count, Spread spread, unsigned hits) {
    constexpr uint32_t weightOfAddress = 5000;
    Random random(entries * 1000 + hits);
    Queries queries;
    queries._queries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const bool isHit = random.below(100) < hits;
        const uint64_t index = pick(entries, spread, random);
        queries._add(addressAt(isHit ? index : firstMiss + index), isHit ? weightOfAddress : 0);
    }
    queries._finish();
    return queries;
}

Queries Queries::wildcard(const std::vector<std::string>& entries, size_t count, Spread spread, unsigned hits) {
    const std::unordered_set<std::string> known(entries.begin(), entries.end());
    Random random(entries.size() * 1000 + hits);
    Queries queries;
    queries._queries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const bool isHit = random.below(100) < hits;
        const std::string& entry = entries[static_cast<size_t>(pick(entries.size(), spread, random))];
        const std::string address = isHit ? matchOf(entry, random) : missOf(random);
        queries._add(address, expectedWeight(known, address));
    }
    queries._finish();
    return queries;
}

}  // namespace bench

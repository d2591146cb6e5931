// Addresses, list entries and queries made up for the benchmarks: the same ones in every run and in both word sizes.
//
// An address is 22 to 30 bytes long, for example "maria.kodubane@tirolosa.co.uk": a given name, "." or "_", four
// syllables, "@", four syllables and a top-level domain. There are 2^22 local parts and 2^19 domains, so a million
// addresses have about 450,000 domains. Every 16th address begins with capital letters.
//
// Of 20 entries of a wildcard list ten are "*@domain", four "*@*.domain", three "name@*.domain" and three "name@*"; the
// very first entry is "*@[*]". Their domains have five syllables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace bench {

// Numbers that look random: the generator called splitmix64.
class Random {
public:
    explicit Random(uint64_t seed) : _state(seed) {}
    uint64_t next();
    uint64_t below(uint64_t limit) { return next() % limit; }

private:
    uint64_t _state;
};

// The `index`-th address. Different indices below 2^41 give different addresses.
std::string addressAt(uint64_t index);

// The addresses from `begin` up to `end`.
std::vector<std::string> addresses(uint64_t begin, uint64_t end);

// The entries of a wildcard list, all different.
std::vector<std::string> wildcardEntries(size_t count);

// Lower-cases ASCII.
std::string lowerCased(std::string text);

// How queries are spread over the entries: evenly, or the k-th of them asked for in proportion to 1/k.
enum class Spread { uniform, zipf };

// The addresses that a list is asked for, in random order, with the answers they must get. Every fourth has capital
// letters, other than its entry.
class Queries {
public:
    struct Query {
        const char* text;     // with NUL
        const char* lowered;  // the same, lower-cased
        uint32_t length;
        uint32_t weight;  // of the best entry that matches; 0 without any
    };

    // Queries for addressAt(0) to addressAt(entries - 1), `hits` of a hundred in the list.
    static Queries exact(size_t entries, size_t count, Spread spread, unsigned hits);

    // Queries for a list of wildcard entries. About `hits` of a hundred match.
    static Queries wildcard(const std::vector<std::string>& entries, size_t count, Spread spread, unsigned hits);

    const std::vector<Query>& all() const { return _queries; }

    Queries(Queries&&) = default;
    Queries& operator=(Queries&&) = default;

private:
    Queries() = default;
    void _add(const std::string& address, uint32_t weight);
    void _finish();

    std::string _texts;
    std::string _lowered;
    std::vector<Query> _queries;
};

// The weight of the best of lower-cased wildcard entries that match a lower-cased address, found without patterns.
uint32_t expectedWeight(const std::unordered_set<std::string>& entries, const std::string& address);

}  // namespace bench

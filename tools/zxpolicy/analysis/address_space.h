// The addresses that the conditions of a policy can tell apart, as classes with an address to show for each.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "analysis/part_words.h"
#include "zxpolicy.h"

namespace tool {

// A test that an address matches, and the weight of the match.
struct MatchedTest {
    uint32_t test;
    uint32_t weight;

    bool operator==(const MatchedTest& other) const { return test == other.test && weight == other.weight; }
    bool operator<(const MatchedTest& other) const {
        return test != other.test ? test < other.test : weight < other.weight;
    }
};

// All addresses that match the same tests with the same weights.
struct AddressClass {
    std::string witness;               // one of them, a well-formed one before others
    std::vector<MatchedTest> matched;  // by test, ascending
    bool isMalformed = false;          // for sure none of them is well-formed
};

/*
 * Tests of addresses: condition patterns, and lists of patterns and plain addresses. An address, whatever text it is,
 * is in one of the classes.
 *
 * What decides on an address is its local part, its domain, and the sort key by which lists find plain addresses. The
 * patterns tell finitely many local parts and domains apart (PartWords); those alike for all patterns are taken
 * together, and the classes are the pairs of them, the addresses that patterns or lists name in full counted one by
 * one.
 */
class AddressSpace {
public:
    explicit AddressSpace(ZxPolMatchWeightType weightType);

    // Begins another test, of which the patterns and addresses to come are part, and returns its number.
    uint32_t addTest() { return _testCount++; }
    // Adds a pattern to a test.
    void addPattern(uint32_t test, const std::string& pattern);
    // Adds an entry of a list: a pattern if it has a star, else an address.
    void addEntry(uint32_t test, const std::string& entry);

    uint32_t testCount() const { return _testCount; }

    // The classes; no two match the same tests with the same weights. Throws an AnalysisLimit.
    std::vector<AddressClass> classes();

private:
    struct Entry {
        uint32_t name;    // its pattern for the local part
        uint32_t domain;  // its pattern for the domain
        MatchedTest matched;
    };
    using Matched = std::vector<MatchedTest>;
    struct Part;
    class Enumeration;

    // What patterns without a wildcard match addresses with this local part and domain; null for none.
    static std::string pointKey(const std::string& name, const std::string& domain, bool isWhole);
    void addPointsOf(const std::string& name, const std::string& domain, Matched& matched) const;
    bool isPoint(const std::string& name, const std::string& domain) const;

    ZxPolMatchWeightType _weightType;
    uint32_t _testCount = 0;
    PartWords _names;
    PartWords _domains;
    std::vector<MatchedTest> _always;
    std::vector<Entry> _entries;
    // Patterns without a wildcard.
    struct Point {
        std::string name;
        std::string domain;
        Matched matched;
    };
    std::unordered_map<std::string, Point> _points;  // by pointKey
    // Plain addresses of lists by their sort key.
    std::unordered_map<std::string, std::vector<uint32_t>> _plain;
};

}  // namespace tool

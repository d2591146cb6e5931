// All short wildcard entries beside all short addresses: whether they match, and with which weight, is what comparing
// them one by one says.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "addrlist/addr_cache.h"
#include "model/random_source.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"

namespace {

using Texts = std::vector<std::string>;

constexpr ZxPolMatchWeightType kKinds[] = {ZXPOL_WEIGHT_DOMAIN_FIRST, ZXPOL_WEIGHT_NAME_FIRST};

// All texts of up to `longest` characters of an alphabet, the empty one too.
Texts allTexts(const std::string& alphabet, size_t longest) {
    Texts texts = {""};
    for (size_t begin = 0, length = 0; length < longest; ++length) {
        const size_t end = texts.size();
        for (; begin < end; ++begin) {
            for (const char c : alphabet)
                texts.push_back(texts[begin] + c);
        }
    }
    return texts;
}

// Which patterns match which subjects, worked out one by one, and the weights of the patterns.
class Matches {
public:
    Matches(const Texts& patterns, const Texts& subjects) {
        std::vector<ZxPolCondWildcardPattern> parsed;
        for (const std::string& subject : subjects)
            parsed.emplace_back(subject.c_str());
        for (const std::string& text : patterns) {
            ZxPolCondWildcardPattern pattern(text.c_str());
            for (const ZxPolMatchWeightType kind : kKinds)
                _weights.push_back(ZxPolPriority::calcWeight(pattern, kind));
            std::vector<bool> row;
            for (const ZxPolCondWildcardPattern& subject : parsed)
                row.push_back(pattern == subject);
            _isMatch.push_back(std::move(row));
        }
    }

    bool areMatching(size_t pattern, size_t subject) const { return _isMatch[pattern][subject]; }
    uint32_t weight(size_t pattern, ZxPolMatchWeightType kind) const { return _weights[pattern * 2 + kind]; }

    // The largest weight of some patterns that match a subject; false when none does.
    bool best(const std::vector<size_t>& entries, size_t subject, ZxPolMatchWeightType kind, uint32_t& weight_) const {
        bool isMatch = false;
        for (const size_t pattern : entries) {
            if (!areMatching(pattern, subject)) continue;
            isMatch = true;
            weight_ = std::max(weight_, weight(pattern, kind));
        }
        return isMatch;
    }

private:
    std::vector<std::vector<bool>> _isMatch;
    std::vector<uint32_t> _weights;
};

std::string shown(bool isMatch, uint32_t weight) {
    return (isMatch ? "match " : "no match ") + std::to_string(weight);
}

class ShortPatterns : public ::testing::TestWithParam<std::pair<const char*, size_t>> {
protected:
    ShortPatterns() : ShortPatterns(worldOf(GetParam().first, GetParam().second)) {}

    // Puts patterns into a cache, as entries of the wildcard list whatever they are; returns those that it took.
    std::vector<size_t> fill(ZxPolAddrCache& cache, const std::vector<size_t>& patterns) const {
        std::vector<size_t> taken;
        for (const size_t pattern : patterns) {
            int error = ZXPOL_S_OK;
            const uint32_t before = cache.size();
            cache.insertAddress(_texts[pattern].c_str(), ZxPolAddrCache::WildCardList, &error);
            if (cache.size() > before) taken.push_back(pattern);
        }
        return taken;
    }

    // Expects every answer to a subject to be right; false after a failure.
    bool isRight(const ZxPolAddrCache& cache, const std::vector<size_t>& entries, size_t subject) const {
        const char* const text = _texts[subject].c_str();
        for (const ZxPolMatchWeightType kind : kKinds) {
            uint32_t expected = 0, weight = 0;
            const bool isMatch = _matches.best(entries, subject, kind, expected);
            const bool isFound = cache.matchAddress(text, ZxPolAddrCache::WildCardList, &weight, kind);
            const std::string entry = cache.findMatch(text, ZxPolAddrCache::WildCardList, kind);
            if (isFound == isMatch && weight == expected && isEntry(entry, entries, subject, isMatch, expected, kind))
                continue;
            ADD_FAILURE() << "\"" << text << "\" kind " << kind << " in" << list(entries) << ": expected "
                          << shown(isMatch, expected) << ", found " << shown(isFound, weight) << " by \"" << entry
                          << "\"";
            return false;
        }
        return true;
    }

    const Texts& _texts;
    const Matches& _matches;

private:
    struct World {
        Texts texts;
        Matches matches;
    };

    explicit ShortPatterns(const World& world) : _texts(world.texts), _matches(world.matches) {}

    // Worked out once for all tests.
    static const World& worldOf(const char* alphabet, size_t longest) {
        static std::map<std::string, World> worlds;
        const auto known = worlds.find(alphabet);
        if (known != worlds.end()) return known->second;
        Texts texts = allTexts(alphabet, longest);
        Matches matches(texts, texts);
        return worlds.emplace(alphabet, World{std::move(texts), std::move(matches)}).first->second;
    }

    bool isEntry(const std::string& entry, const std::vector<size_t>& entries, size_t subject, bool isMatch,
                 uint32_t weight, ZxPolMatchWeightType kind) const {
        if (!isMatch) return entry.empty();
        return std::any_of(entries.begin(), entries.end(), [&](size_t pattern) {
            return _texts[pattern] == entry && _matches.areMatching(pattern, subject) &&
                   _matches.weight(pattern, kind) == weight;
        });
    }

    std::string list(const std::vector<size_t>& entries) const {
        if (entries.size() > 20) return " a list of " + std::to_string(entries.size());
        std::string text;
        for (const size_t entry : entries)
            text += " \"" + _texts[entry] + "\"";
        return text;
    }
};

TEST_P(ShortPatterns, EachAlone) {
    for (size_t pattern = 0; pattern < _texts.size(); ++pattern) {
        ZxPolAddrCache cache;
        const std::vector<size_t> entries = fill(cache, {pattern});
        for (size_t subject = 0; subject < _texts.size(); ++subject) {
            if (!isRight(cache, entries, subject)) return;
        }
    }
}

TEST_P(ShortPatterns, AllTogether) {
    std::vector<size_t> all;
    for (size_t pattern = 0; pattern < _texts.size(); ++pattern)
        all.push_back(pattern);
    ZxPolAddrCache cache;
    const std::vector<size_t> entries = fill(cache, all);
    for (size_t subject = 0; subject < _texts.size(); ++subject) {
        if (!isRight(cache, entries, subject)) return;
    }
}

// Some of them, of which some are removed again.
TEST_P(ShortPatterns, SomeTogether) {
    for (uint64_t seed = 1; seed <= 800; ++seed) {
        model::RandomSource random(seed);
        std::vector<size_t> some;
        for (size_t count = random.between(2, 25); count-- > 0;)
            some.push_back(random.below(_texts.size()));
        ZxPolAddrCache cache;
        std::vector<size_t> entries = fill(cache, some);
        for (size_t count = random.below(entries.size()); count-- > 0;) {
            const size_t place = random.below(entries.size());
            int error = ZXPOL_S_OK;
            cache.removeAddress(_texts[entries[place]].c_str(), ZxPolAddrCache::WildCardList, &error);
            ASSERT_EQ(ZXPOL_S_OK, error) << _texts[entries[place]];
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(place));
        }
        for (size_t count = 60; count-- > 0;) {
            if (!isRight(cache, entries, random.below(_texts.size()))) {
                ADD_FAILURE() << "seed " << seed;
                return;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Alphabets, ShortPatterns,
                         ::testing::Values(std::make_pair("a*@.", 5), std::make_pair("a*@\".", 4),
                                           std::make_pair("a*@[]", 4), std::make_pair("aA@ *", 4),
                                           std::make_pair(".*@\t\n", 4), std::make_pair("a.\r@*", 4),
                                           std::make_pair("\\*@\"a", 4), std::make_pair("\xe4*@\xc4.", 4)));

}  // namespace

// Random changes of a cache beside a model of it: entries that no list would take, in the list that they do not belong
// to.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "model/address_source.h"
#include "model/cache_model.h"

namespace {

using model::CacheModel;
using model::RandomSource;
using ListType = ZxPolAddrCache::ListType;

constexpr ListType kTypes[] = {ZxPolAddrCache::WildCardList, ZxPolAddrCache::ExactList};

// The same changes done to a cache and to the model.
class CacheRun {
public:
    // Of up to `entries` different texts.
    CacheRun(uint64_t seed, size_t entries) : _random(seed) {
        for (size_t count = _random.between(4, entries); count-- > 0;)
            _pool.push_back(newEntry());
    }

    // Changes the cache up to `changes` times, and compares everything about twelve times meanwhile. Returns what
    // differs, or nothing.
    std::string run(size_t changes) {
        for (size_t i = 0, steps = _random.between(10, changes); i < steps; ++i) {
            const std::string found = change();
            if (!found.empty()) return found;
            if (_random.below(steps) < 12 && !isSame()) return _difference;
        }
        return isSame() ? "" : _difference;
    }

private:
    std::string newEntry() {
        const size_t choice = _random.below(100);
        if (choice < 45) return model::unusualPattern(_random);
        if (choice < 70) return model::wildcardPattern(_random);
        if (choice < 75) return model::longAddress(_random.between(200, 600), _random);
        if (choice < 80) return "*@*." + model::longAddress(_random.between(6, 12), _random).substr(4);
        if (choice < 85) return model::longAddress(_random.between(5, 12), _random);
        return model::shortAddress(_random);
    }

    std::string someEntry() {
        const std::string& entry = _random.pick(_pool);
        return _random.inPercent(25) ? model::variantOf(entry, _random) : entry;
    }

    ListType listFor(const std::string& entry) {
        return _random.inPercent(70) ? CacheModel::listOf(entry) : kTypes[_random.below(2)];
    }

    std::string change() {
        const std::string entry = someEntry();
        const ListType type = listFor(entry);
        int error = ZXPOL_E_EXCEPTION, expected = ZXPOL_S_OK;
        const size_t choice = _random.below(100);
        const char* what = "clear";
        if (choice < 60) {
            what = "insert";
            _cache.insertAddress(entry.c_str(), type, &error);
            _model.insert(entry, type);
        } else if (choice < 99 || _random.below(20) != 0) {
            what = "remove";
            _cache.removeAddress(entry.c_str(), type, &error);
            if (!_model.remove(entry, type)) expected = ZXPOL_E_NOT_FOUND;
        } else {
            _cache.clear();
            _model.clear();
            error = expected;
        }
        _trace += std::string("  ") + what + " " + std::to_string(type) + " \"" + entry + "\"\n";
        return error == expected ? "" : _trace + "result " + std::to_string(error);
    }

    bool differ(const std::string& what) {
        _difference = _trace + what;
        return false;
    }

    bool isSame() {
        if (_cache.size() != _model.size()) return differ("size " + std::to_string(_cache.size()));
        for (uint32_t index = 0; index <= _model.size(); ++index) {
            if (!isSameText(_model.inUserOrder(index), _cache.getUserOrder(index)) ||
                !isSameText(_model.inAlphaOrder(index, true), _cache.getAlphaOrder(index, true)) ||
                !isSameText(_model.inAlphaOrder(index, false), _cache.getAlphaOrder(index, false)))
                return differ("place " + std::to_string(index));
        }
        for (size_t count = 8; count-- > 0;) {
            const std::string subject = _random.inPercent(30) ? someEntry() : model::subjectFor(_pool, _random);
            if (!isSameAnswer(subject) || !isSameBound(subject)) return false;
        }
        return true;
    }

    static bool isSameText(const std::optional<std::string>& expected, const char* found) {
        return expected ? found != nullptr && *expected == found : found == nullptr;
    }

    bool isSameAnswer(const std::string& subject) {
        for (const ListType type : kTypes) {
            if (_cache.findAddress(subject.c_str(), type) != _model.find(subject, type))
                return differ("finding in " + std::to_string(type) + " \"" + subject + "\"");
            for (const ZxPolMatchWeightType kind : {ZXPOL_WEIGHT_DOMAIN_FIRST, ZXPOL_WEIGHT_NAME_FIRST}) {
                const uint32_t before = static_cast<uint32_t>(_random.pick(std::vector<uint32_t>{0, 0, 2001, 6000}));
                uint32_t expected = before, weight = before;
                const bool isMatch = _model.match(subject, type, expected, kind);
                const bool isFound = _cache.matchAddress(subject.c_str(), type, &weight, kind);
                if (isFound != isMatch || weight != expected ||
                    _cache.matchAddress(subject.c_str(), type, nullptr, kind) != isMatch)
                    return differ("matching in " + std::to_string(type) + " \"" + subject + "\" with " +
                                  std::to_string(before) + ": expected " + std::to_string(isMatch) + " " +
                                  std::to_string(expected) + ", found " + std::to_string(isFound) + " " +
                                  std::to_string(weight));
            }
        }
        return true;
    }

    // The sorted list has its bound where a search from the front finds it.
    bool isSameBound(const std::string& subject) {
        const std::string key = model::sortKeyOf(subject);
        for (const ListType type : kTypes) {
            const ZxPolAddrCache::ItemList items = _cache._itemsOf(type);
            size_t expected = 0;
            while (expected < items.size() && model::compareFolded(model::sortKeyOf(items[expected].address), key) < 0)
                ++expected;
            if (_cache._lowerBound(key.c_str(), items) != expected)
                return differ("bound in " + std::to_string(type) + " of \"" + key + "\"");
            for (size_t i = 0; i < items.size(); ++i) {
                if (!isSameText(_model.inUserOrder(items[i].position), items[i].address))
                    return differ("position of " + std::string(items[i].address));
            }
        }
        return true;
    }

    RandomSource _random;
    std::vector<std::string> _pool;
    ZxPolAddrCache _cache;
    CacheModel _model;
    std::string _trace;
    std::string _difference;
};

uint64_t numberFrom(const char* variable, uint64_t otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

void runAll(uint64_t count, size_t entries, size_t changes) {
    const uint64_t first = numberFrom("ZX_MODEL_SEED", 1);
    const bool isOne = std::getenv("ZX_MODEL_SEED") != nullptr;
    const uint64_t last = isOne ? first : count * numberFrom("ZX_MODEL_ROUNDS", 1);
    for (uint64_t seed = first; seed <= last; ++seed) {
        const std::string found = CacheRun(seed, entries).run(changes);
        ASSERT_EQ("", found) << "seed " << seed;
    }
}

TEST(CacheSequences, OfFewEntries) {
    runAll(2500, 60, 80);
}

TEST(CacheSequences, OfManyEntries) {
    runAll(25, 2500, 6000);
}

}  // namespace

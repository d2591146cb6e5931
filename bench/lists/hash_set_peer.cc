// Exact membership by absl::flat_hash_set<std::string>.
#include <absl/container/flat_hash_set.h>
#include <absl/strings/string_view.h>

#include <cstring>

#include "contestant.h"
#include "harness.h"

namespace bench {

namespace {

using HashSet = absl::flat_hash_set<std::string>;

HashSet makeHashSet(const Entries& entries) {
    HashSet set;
    set.reserve(entries.size());
    for (const std::string& entry : entries)
        set.insert(lowerCased(entry));
    return set;
}

// Lower-cases the address as part of the probe, as a mail program must.
class LoweringHashSet : public Contestant {
public:
    explicit LoweringHashSet(const Entries& entries) : _set(makeHashSet(entries)) {}
    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        for (size_t i = 0; i < count; ++i)
            weights[i] = _has(queries.all()[i].text) ? weightOfAddress : 0;
    }

private:
    bool _has(const char* address) const {
        char lowered[512];
        const size_t length = std::strlen(address);
        if (length > sizeof lowered) return false;
        for (size_t i = 0; i < length; ++i) {
            const char c = address[i];
            lowered[i] = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
        }
        return _set.contains(absl::string_view(lowered, length));
    }

    const HashSet _set;
};

class GivenHashSet : public Contestant {
public:
    explicit GivenHashSet(const Entries& entries) : _set(makeHashSet(entries)) {}
    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        for (size_t i = 0; i < count; ++i) {
            const Queries::Query& query = queries.all()[i];
            weights[i] = _set.contains(absl::string_view(query.lowered, query.length)) ? weightOfAddress : 0;
        }
    }

private:
    const HashSet _set;
};

}  // namespace

Peer loweringHashSet(const Entries& entries) {
    return makePeer("flat_hash_set, lower-casing", std::make_unique<LoweringHashSet>(entries));
}

Peer hashSet(const Entries& entries) {
    return makePeer("flat_hash_set, lower-cased", std::make_unique<GivenHashSet>(entries));
}

double hashSetBytes(const Entries& entries) {
    const double before = residentBytes();
    const HashSet set = makeHashSet(entries);
    return residentBytes() - before;
}

}  // namespace bench

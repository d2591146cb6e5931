// Wildcard match by RE2::Set.
#include <re2/set.h>

#include <algorithm>

#include "contestant.h"
#include "harness.h"

namespace bench {

namespace {

RE2::Options options() {
    RE2::Options options;
    options.set_case_sensitive(false);
    options.set_log_errors(false);
    options.set_max_mem(int64_t{2} << 30);
    return options;
}

class ExpressionSet : public Contestant {
public:
    explicit ExpressionSet(const Entries& entries) : _set(options(), RE2::UNANCHORED) {
        for (const std::string& entry : entries) {
            std::string error;
            if (_set.Add(expressionOf(entry), &error) < 0) fail("RE2: " + error);
            _weights.push_back(weightOf(entry));
        }
    }

    bool compile() { return _set.Compile(); }

    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        for (size_t i = 0; i < count; ++i) {
            const Queries::Query& query = queries.all()[i];
            RE2::Set::ErrorInfo error{};
            uint32_t best = 0;
            if (_set.Match(re2::StringPiece(query.text, query.length), &_matches, &error)) {
                for (const int entry : _matches)
                    best = std::max(best, _weights[static_cast<size_t>(entry)]);
            } else if (error.kind != RE2::Set::kNoError) {
                fail("RE2: a match ran out of memory");
            }
            weights[i] = best;
        }
    }

private:
    RE2::Set _set;
    std::vector<uint32_t> _weights;
    std::vector<int> _matches;
};

}  // namespace

Peer re2Set(const Entries& entries) {
    auto set = std::make_unique<ExpressionSet>(entries);
    if (!set->compile()) return noPeer("RE2::Set", "out of memory");
    return makePeer("RE2::Set", std::move(set));
}

}  // namespace bench

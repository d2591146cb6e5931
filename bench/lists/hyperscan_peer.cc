// Wildcard match by Hyperscan.
#include <hs/hs.h>

#include <algorithm>

#include "contestant.h"
#include "harness.h"

namespace bench {

namespace {

class Scanner : public Contestant {
public:
    explicit Scanner(hs_database_t* database, const Entries& entries) : _database(database) {
        if (hs_alloc_scratch(_database, &_scratch) != HS_SUCCESS) fail("hs_alloc_scratch");
        for (const std::string& entry : entries)
            _weights.push_back(weightOf(entry));
    }
    ~Scanner() override {
        hs_free_scratch(_scratch);
        hs_free_database(_database);
    }
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        for (size_t i = 0; i < count; ++i) {
            const Queries::Query& query = queries.all()[i];
            _best = 0;
            hs_scan(_database, query.text, query.length, 0, _scratch, &noteMatch, this);
            weights[i] = _best;
        }
    }

private:
    static int noteMatch(unsigned entry, unsigned long long, unsigned long long, unsigned, void* scanner) {
        auto* self = static_cast<Scanner*>(scanner);
        self->_best = std::max(self->_best, self->_weights[entry]);
        return 0;
    }

    hs_database_t* const _database;
    hs_scratch_t* _scratch = nullptr;
    std::vector<uint32_t> _weights;
    uint32_t _best = 0;
};

}  // namespace

Peer hyperscan(const Entries& entries) {
    std::vector<std::string> expressions;
    for (const std::string& entry : entries)
        expressions.push_back(expressionOf(entry));
    std::vector<const char*> texts;
    std::vector<unsigned> numbers;
    for (const std::string& expression : expressions) {
        numbers.push_back(static_cast<unsigned>(texts.size()));
        texts.push_back(expression.c_str());
    }
    const std::vector<unsigned> flags(texts.size(), HS_FLAG_CASELESS | HS_FLAG_SINGLEMATCH);
    hs_database_t* database = nullptr;
    hs_compile_error_t* error = nullptr;
    if (hs_compile_multi(texts.data(), flags.data(), numbers.data(), static_cast<unsigned>(texts.size()), HS_MODE_BLOCK,
                         nullptr, &database, &error) != HS_SUCCESS) {
        Peer peer = noPeer("Hyperscan", error->message);
        hs_free_compile_error(error);
        return peer;
    }
    return makePeer("Hyperscan", std::make_unique<Scanner>(database, entries));
}

}  // namespace bench

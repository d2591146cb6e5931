// Exact membership by tinycdb.
#include <cdb.h>
#include <fcntl.h>
#include <unistd.h>

#include "contestant.h"
#include "harness.h"

namespace bench {

namespace {

class ConstantDatabase : public Contestant {
public:
    ConstantDatabase(const Entries& entries, const std::string& path)
        : _file(open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {
        cdb_make maker;
        bool isMade = _file >= 0 && cdb_make_start(&maker, _file) == 0;
        for (size_t i = 0; isMade && i < entries.size(); ++i) {
            const std::string key = lowerCased(entries[i]);
            isMade = cdb_make_add(&maker, key.data(), static_cast<unsigned>(key.size()), "", 0) == 0;
        }
        if (!isMade || cdb_make_finish(&maker) != 0 || cdb_init(&_database, _file) != 0) fail(path);
    }
    ~ConstantDatabase() override {
        cdb_free(&_database);
        close(_file);
    }
    ConstantDatabase(const ConstantDatabase&) = delete;
    ConstantDatabase& operator=(const ConstantDatabase&) = delete;

    void answer(const Queries& queries, size_t count, uint32_t* weights) override {
        for (size_t i = 0; i < count; ++i) {
            const Queries::Query& query = queries.all()[i];
            weights[i] = cdb_find(&_database, query.lowered, query.length) > 0 ? weightOfAddress : 0;
        }
    }

private:
    const int _file;
    cdb _database{};
};

}  // namespace

Peer cdbFile(const Entries& entries, const std::string& folder) {
    return makePeer("tinycdb, lower-cased", std::make_unique<ConstantDatabase>(entries, folder + "/peer.cdb"));
}

}  // namespace bench

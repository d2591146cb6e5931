// Exact membership and wildcard match, for queries of four mixtures.
#include <algorithm>
#include <map>

#include "measurements.h"
#include "own_list.h"

namespace bench {

namespace {

struct Mixture {
    Spread spread;
    unsigned hits;
    const char* name;
};
constexpr Mixture mixtures[] = {{Spread::uniform, 10, "uniform, 10% hits"},
                                {Spread::uniform, 50, "uniform, 50% hits"},
                                {Spread::zipf, 10, "Zipf, 10% hits"},
                                {Spread::zipf, 50, "Zipf, 50% hits"}};

// How many of the queries the contestant answers in about a tenth of a second, but not less than a few.
size_t affordable(Contestant& contestant, const Queries& queries, std::vector<uint32_t>& weights) {
    constexpr size_t probes = 256;
    constexpr double budget = 0.1;
    const size_t all = queries.all().size();
    const double each = timeOf([&] { contestant.answer(queries, std::min(probes, all), weights.data()); }) / probes;
    return std::clamp(static_cast<size_t>(budget / each), std::min(probes, all), all);
}

void checkAnswers(const std::string& who, const Queries& queries, size_t count, const std::vector<uint32_t>& weights) {
    for (size_t i = 0; i < count; ++i) {
        const Queries::Query& query = queries.all()[i];
        if (weights[i] == query.weight) continue;
        fail(who + " answers " + std::to_string(weights[i]) + " for " + query.text + ", which is " +
             std::to_string(query.weight));
    }
}

// The median of seconds a query for each contestant that there is, ours first.
std::vector<double> secondsPerQuery(const Options& options, const std::vector<Peer>& contestants,
                                    const Queries& queries) {
    std::vector<uint32_t> weights(queries.all().size());
    std::vector<std::function<double()>> runs;
    for (const Peer& peer : contestants) {
        if (peer.contestant == nullptr) continue;
        // A first run, which is not counted, brings what it needs into the caches.
        const size_t count = affordable(*peer.contestant, queries, weights);
        runs.emplace_back([&, count] {
            const double taken = timeOf([&] { peer.contestant->answer(queries, count, weights.data()); });
            checkAnswers(peer.name, queries, count, weights);
            return taken / static_cast<double>(count);
        });
    }
    return medians(options.repetitions, runs);
}

// Adds the row, and gives our figure.
double addRow(const Options& options, Table& table, const std::string& what, double limit,
              const std::vector<Peer>& contestants, const Queries& queries) {
    const std::vector<double> figures = secondsPerQuery(options, contestants, queries);
    Row row{what, Unit::seconds, figures[0], limit, {}};
    size_t next = 1;
    for (size_t i = 1; i < contestants.size(); ++i) {
        const Peer& peer = contestants[i];
        row.rivals.push_back({peer.name, peer.contestant != nullptr ? figures[next++] : 0, peer.excuse, peer.limit});
    }
    table.add(row);
    return row.ours;
}

// The queries a run has: more where they must reach into a large list.
size_t queryCount(const Options& options, size_t size) {
    return options.quick ? 20000 : std::max<size_t>(size, 1 << 17);
}

// Keeps our figures by mixture and size, and adds rows on their growth.
class Growth {
public:
    void note(size_t mixture, size_t size, double figure) { _figures[{mixture, size}] = figure; }
    void addRows(Table& table, const std::string& what, size_t from, size_t to, double limit) const {
        for (size_t mixture = 0; mixture < std::size(mixtures); ++mixture) {
            const double growth = _figures.at({mixture, to}) / _figures.at({mixture, from});
            table.add({what + " growth " + sizeName(from) + "-" + sizeName(to) + ", " + mixtures[mixture].name,
                       Unit::times,
                       growth,
                       onNative(limit),
                       {}});
        }
    }

private:
    std::map<std::pair<size_t, size_t>, double> _figures;
};

std::vector<Peer> exactContestants(const OwnList& list, const Options& options, size_t size) {
    std::vector<Peer> contestants;
    contestants.push_back(makePeer("ours", list.contestant()));
    if (!hasPeers) return contestants;
    const Entries entries = addresses(0, size);
    contestants.push_back(loweringHashSet(entries));
    contestants.push_back(hashSet(entries));
    contestants.push_back(cdbFile(entries, options.folder));
    contestants.push_back(sqliteTable(entries));
    return contestants;
}

// A peer takes a minute to compile 100,000 wildcard entries, and longer in proportion for more.
constexpr size_t largestCompiled = 100000;

// Makes the wildcard contestants, and adds a row on how long that takes once.
std::vector<Peer> wildcardContestants(const OwnList& list, const Entries& entries, const Options& options,
                                      Table& table) {
    const std::string lines = writeLines(options, entries);
    Row row{"wildcard " + sizeName(entries.size()) + ", to make once", Unit::seconds, 0, noLimit, {}};
    row.ours = timeOf([&] { list.import(lines); });
    std::vector<Peer> contestants;
    contestants.push_back(makePeer("ours", list.contestant()));
    const auto take = [&](Peer (*make)(const Entries&), const char* name) {
        Peer peer = noPeer(name, "not tried: minutes to compile");
        double taken = 0;
        if (entries.size() <= largestCompiled) taken = timeOf([&] { peer = make(entries); });
        row.rivals.push_back({peer.name, taken, peer.excuse, noLimit});
        contestants.push_back(std::move(peer));
    };
    if (hasPeers) {
        take(&hyperscan, "Hyperscan");
        take(&re2Set, "RE2::Set");
    }
    table.add(row);
    return contestants;
}

}  // namespace

void measureMembership(const Options& options, Table& table) {
    const std::vector<size_t> sizes =
        options.quick ? std::vector<size_t>{1000, 10000} : std::vector<size_t>{1000, 10000, 100000, 1000000};
    Growth growth;
    for (const size_t size : sizes) {
        const OwnList list("memory:");
        list.import(addressFile(options, size));
        std::vector<Peer> contestants = exactContestants(list, options, size);
        for (size_t i = 0; i < std::size(mixtures); ++i) {
            const Mixture& mixture = mixtures[i];
            const Queries queries = Queries::exact(size, queryCount(options, size), mixture.spread, mixture.hits);
            const bool isJudged = size == 1000000 && mixture.spread == Spread::uniform;
            if (hasPeers) contestants[1].limit = contestants[2].limit = isJudged ? 1 : noLimit;
            const std::string what = "exact " + sizeName(size) + ", " + mixture.name;
            growth.note(i, size, addRow(options, table, what, noLimit, contestants, queries));
        }
    }
    growth.addRows(table, "exact", sizes.front(), sizes.back(), options.quick ? noLimit : 5);
}

void measureWildcards(const Options& options, Table& table) {
    const std::vector<size_t> sizes =
        options.quick ? std::vector<size_t>{100, 1000} : std::vector<size_t>{1000, 10000, 100000, 1000000};
    Growth growth;
    for (const size_t size : sizes) {
        const Entries entries = wildcardEntries(size);
        const OwnList list("memory:");
        std::vector<Peer> contestants = wildcardContestants(list, entries, options, table);
        if (hasPeers && size >= 10000) contestants[1].limit = 1;
        for (size_t i = 0; i < std::size(mixtures); ++i) {
            const Mixture& mixture = mixtures[i];
            const Queries queries = Queries::wildcard(entries, queryCount(options, size), mixture.spread, mixture.hits);
            const std::string what = "wildcard " + sizeName(size) + ", " + mixture.name;
            const double limit = options.quick || size > largestCompiled ? noLimit : onNative(500e-9);
            growth.note(i, size, addRow(options, table, what, limit, contestants, queries));
        }
    }
    if (!options.quick) growth.addRows(table, "wildcard", 1000, largestCompiled, 1.5);
}

}  // namespace bench

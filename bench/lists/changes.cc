// One insert and one removal, and many in one call, in lists of all sizes.
#include <map>

#include "measurements.h"
#include "own_list.h"
#include "sqlite_peer.h"

namespace bench {

namespace {

// Addresses to insert and to remove, none of them twice.
class Supply {
public:
    explicit Supply(size_t size) : _size(size) {}

    // Addresses that were never in the list.
    Entries fresh(size_t count) {
        _added += count;
        return addresses(_size + _added - count, _size + _added);
    }

    // Addresses that the list began with, from all over it.
    Entries present(size_t count) {
        Entries chosen;
        while (count-- > 0)
            chosen.push_back(addressAt(_removed++ * 7919 % _size));
        return chosen;
    }

private:
    const size_t _size;
    size_t _added = 0;
    size_t _removed = 0;
};

// A list in one engine, and a table of SQLite's with the same addresses where there are peers.
class Subject {
public:
    Subject(const Options& options, const char* engineName, size_t entries)
        : size(entries),
          engine(engineName),
          list(engine == "memory" ? "memory:" : "sqlite:" + _path(options)),
          supply(size),
          tableSupply(size) {
        list.import(addressFile(options, size));
        if (!hasPeers) return;
        table = std::make_unique<SqliteTable>(engine == "memory" ? ":memory:" : _path(options) + ".table");
        table->begin();
        for (const std::string& address : addresses(0, size))
            table->insert(lowerCased(address));
        table->commit();
    }

    std::string name(const std::string& what) const { return what + ", " + sizeName(size) + ", " + engine; }

    const size_t size;
    const std::string engine;
    const OwnList list;
    std::unique_ptr<SqliteTable> table;
    Supply supply;
    Supply tableSupply;

private:
    std::string _path(const Options& options) const {
        return options.folder + "/changes" + std::to_string(size) + ".db";
    }
};

// What of the entries the list says that it has must be all of them, or none.
void checkMembers(const OwnList& list, const Entries& entries, bool areMembers) {
    const size_t step = entries.size() / 100 + 1;
    for (size_t i = 0; i < entries.size(); i += step) {
        if (list.has(entries[i]) != areMembers) fail("a change was not made: " + entries[i]);
    }
}

double insert(Subject& subject, size_t count) {
    const Entries entries = subject.supply.fresh(count);
    const double taken = timeOf([&] { subject.list.insert(entries); });
    checkMembers(subject.list, entries, true);
    return taken;
}

double remove(Subject& subject, size_t count) {
    const Entries entries = subject.supply.present(count);
    const double taken = timeOf([&] { subject.list.remove(entries); });
    checkMembers(subject.list, entries, false);
    return taken;
}

double insertIntoTable(Subject& subject, size_t count) {
    const Entries entries = subject.tableSupply.fresh(count);
    return timeOf([&] {
        subject.table->begin();
        for (const std::string& entry : entries)
            subject.table->insert(lowerCased(entry));
        subject.table->commit();
    });
}

double removeFromTable(Subject& subject, size_t count) {
    const Entries entries = subject.tableSupply.present(count);
    return timeOf([&] {
        subject.table->begin();
        for (const std::string& entry : entries)
            subject.table->remove(lowerCased(entry));
        subject.table->commit();
    });
}

// Writes values of the size of a list's into a key of their own: what the store alone needs.
double writeValues(const Subject& subject, size_t count) {
    static const std::string image(2048, 'x');
    int error = ZXREG_S_OK;
    const Handle key(zxreg_createKey(subject.list.hiveKey(), "values", &error));
    require(error, "making a key");
    const double taken = timeOf([&] {
        if (count > 1) zxreg_beginUpdate(key.get(), &error);
        for (size_t i = 0; i < count && error >= 0; ++i) {
            const std::string name = "value" + std::to_string(i / 80);
            zxreg_setValue(key.get(), name.c_str(), ZXREG_MULTI_STRING, image.data(),
                           static_cast<uint32_t>(image.size()), &error);
        }
        if (count > 1 && error >= 0) zxreg_endUpdate(key.get(), &error);
    });
    require(error, "writing values");
    return taken;
}

struct Single {
    double insert = 0;
    double removal = 0;
};

Single measureSingle(const Options& options, Table& table, Subject& subject) {
    std::vector<std::function<double()>> runs{[&] { return insert(subject, 1); }, [&] { return remove(subject, 1); },
                                              [&] { return writeValues(subject, 1); }};
    if (hasPeers) {
        runs.emplace_back([&] { return insertIntoTable(subject, 1); });
        runs.emplace_back([&] { return removeFromTable(subject, 1); });
    }
    const std::vector<double> figures = medians(options.quick ? 3 : 21, runs);
    const Rival value{"the store's: one value of 2 KiB", figures[2], "", noLimit};
    Row inserted{subject.name("one insert"), Unit::seconds, figures[0], noLimit, {value}};
    Row removed{subject.name("one removal"), Unit::seconds, figures[1], noLimit, {value}};
    if (subject.size == 1000000) inserted.limit = onNative(3e-3);
    if (hasPeers) {
        inserted.rivals.push_back({"SQLite", figures[3], "", noLimit});
        removed.rivals.push_back({"SQLite", figures[4], "", noLimit});
    }
    table.add(inserted);
    table.add(removed);
    return {figures[0], figures[1]};
}

// Many in one call. The limit for inserts leaves the store's writes out, the figure does not.
void measureBulk(const Options& options, Table& table, Subject& subject) {
    const size_t count = std::min<size_t>(10000, subject.size / 10);
    std::vector<std::function<double()>> runs{[&] { return insert(subject, count); },
                                              [&] { return remove(subject, count); },
                                              [&] { return writeValues(subject, count); }};
    if (hasPeers) {
        runs.emplace_back([&] { return insertIntoTable(subject, count); });
        runs.emplace_back([&] { return removeFromTable(subject, count); });
    }
    const std::vector<double> figures = medians(options.quick ? 1 : 3, runs);
    const auto each = static_cast<double>(count);
    const bool isJudged = subject.size == 1000000;
    const std::string what = std::to_string(count);
    Row inserted{subject.name(what + " inserts, each"),
                 Unit::seconds,
                 figures[0] / each,
                 isJudged ? onNative(20e-6) : noLimit,
                 {}};
    inserted.rivals.push_back({"the store's: as many values", figures[2] / each, "", noLimit});
    Row removed{subject.name(what + " removals, all"), Unit::seconds, figures[1], isJudged ? onNative(5) : noLimit, {}};
    if (hasPeers) {
        inserted.rivals.push_back({"SQLite, one transaction", figures[3] / each, "", noLimit});
        removed.rivals.push_back({"SQLite, one transaction", figures[4], "", noLimit});
    }
    table.add(inserted);
    table.add(removed);
}

}  // namespace

void measureChanges(const Options& options, Table& table) {
    const std::vector<size_t> sizes =
        options.quick ? std::vector<size_t>{1000, 10000} : std::vector<size_t>{1000, 10000, 100000, 1000000};
    for (const char* engine : {"memory", "sqlite"}) {
        std::map<size_t, Single> singles;
        for (const size_t size : sizes) {
            Subject subject(options, engine, size);
            singles[size] = measureSingle(options, table, subject);
            if (size >= 100000 || (options.quick && size == sizes.back())) measureBulk(options, table, subject);
        }
        if (options.quick) continue;
        // The number of a list's values grows as the list.
        const Single& first = singles[sizes.front()];
        const Single& last = singles[sizes.back()];
        const std::string growth = std::string(engine) + ", growth from " + sizeName(sizes.front());
        const double limit = onNative(static_cast<double>(sizes.back()) / static_cast<double>(sizes.front()));
        table.add({"one insert, 1e6, " + growth, Unit::times, last.insert / first.insert, limit, {}});
        table.add({"one removal, 1e6, " + growth, Unit::times, last.removal / first.removal, limit, {}});
    }
}

}  // namespace bench

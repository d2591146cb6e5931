// Import, first opening and memory, each in a process of its own.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "measurements.h"
#include "own_list.h"
#include "sqlite_peer.h"

namespace bench {

namespace {

double allocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

// What memory a process takes more than at the beginning, resident and allocated.
class Memory {
public:
    double resident() const { return residentBytes() - _resident; }
    double allocated() const { return allocatedBytes() - _allocated; }

private:
    const double _resident = residentBytes();
    const double _allocated = allocatedBytes();
};

struct Import {
    double seconds;
    double resident;
};

// Imports the file of `size` addresses into a new store, in a child.
Import importInChild(const Options& options, const std::string& location, size_t size) {
    const std::vector<double> got = inChild(2, [&]() -> std::vector<double> {
        const Memory memory;
        const OwnList list(location);
        const double taken = timeOf([&] { list.import(addressFile(options, size)); });
        const double resident = memory.resident();
        if (list.enumerate() != size) fail("the import lost or doubled addresses");
        return {taken, resident};
    });
    return {got[0], got[1]};
}

void removeStore(const std::string& path) {
    for (const char* suffix : {"", "-wal", "-shm"})
        std::filesystem::remove(path + suffix);
}

// The same with a table of SQLite's.
double insertIntoTable(const Options& options, size_t size) {
    const std::string path = options.folder + "/table.db";
    removeStore(path);
    return inChild(1, [&]() -> std::vector<double> {
        SqliteTable table(path);
        const double taken = timeOf([&] {
            std::ifstream file(addressFile(options, size));
            table.begin();
            for (std::string line; std::getline(file, line);)
                table.insert(lowerCased(line));
            table.commit();
        });
        if (table.count() != size) fail("SQLite lost or doubled addresses");
        return {taken};
    })[0];
}

// The same as whole processes. A cdb is not made durable by itself.
double sortIntoCdb(const Options& options, size_t size, bool isSynced) {
    const std::string sorted = options.folder + "/sorted";
    const std::string database = options.folder + "/sorted.cdb";
    const std::string sync = isSynced ? " && sync " + database : "";
    const double taken = timeOf([&] {
        runCommand("LC_ALL=C sort -fu " + addressFile(options, size) + " >" + sorted + " && cdb -c -m " + database +
                   " " + sorted + sync);
    });
    runCommand("test $(wc -l <" + sorted + ") = " + std::to_string(size));
    return taken;
}

bool isCdbThere() {
    return std::system("command -v cdb >/dev/null") == 0;
}

struct Opening {
    double store;
    double list;
    double resident;
    double allocated;
};

// Opens the store of `size` addresses and then the list, in a child.
Opening openInChild(const std::string& location, size_t size) {
    const std::vector<double> got = inChild(4, [&]() -> std::vector<double> {
        const Memory memory;
        Handle store;
        const double storeTime = timeOf([&] { store = openStore(location); });
        std::unique_ptr<OwnList> list;
        const double listTime = timeOf([&] { list = std::make_unique<OwnList>(location); });
        const std::vector<double> numbers{storeTime, listTime, memory.resident(), memory.allocated()};
        if (list->enumerate() != size) fail("opening the list lost addresses");
        return numbers;
    });
    return {got[0], got[1], got[2], got[3]};
}

// Imports into both engines and the peers; returns the resident memory of the list in memory.
double measureImport(const Options& options, Table& table, size_t size, const std::string& path) {
    double resident = 0;
    std::vector<std::function<double()>> runs{[&] {
                                                  const Import import = importInChild(options, "memory:", size);
                                                  resident = import.resident;
                                                  return import.seconds;
                                              },
                                              [&] {
                                                  removeStore(path);
                                                  return importInChild(options, "sqlite:" + path, size).seconds;
                                              }};
    std::vector<Rival> rivals;
    if (hasPeers) {
        runs.emplace_back([&] { return insertIntoTable(options, size); });
        rivals.push_back({"SQLite, table in a file", 0, "", noLimit});
        const std::string excuse = isCdbThere() ? "" : "not installed";
        if (excuse.empty()) {
            runs.emplace_back([&] { return sortIntoCdb(options, size, false); });
            runs.emplace_back([&] { return sortIntoCdb(options, size, true); });
        }
        rivals.push_back({"sort -fu, cdb -c (LC_ALL=C)", 0, excuse, size == 1000000 ? 1 : noLimit});
        rivals.push_back({"the same, and sync", 0, excuse, noLimit});
    }
    const auto each = static_cast<double>(size);
    const std::vector<double> figures = medians(options.quick ? 1 : 3, runs);
    for (size_t i = 2; i < figures.size(); ++i)
        rivals[i - 2].figure = figures[i] / each;
    const std::string what = "import " + sizeName(size);
    table.add({what + ", memory, per address", Unit::seconds, figures[0] / each, noLimit, {}});
    table.add({what + ", sqlite, per address", Unit::seconds, figures[1] / each,
               size == 1000000 ? onNative(3e-6) : noLimit, rivals});
    return resident;
}

void measureOpening(const Options& options, Table& table, size_t size, const std::string& path, double inMemory) {
    std::vector<Opening> openings;
    for (int repetition = 0; repetition < (options.quick ? 1 : 5); ++repetition)
        openings.push_back(openInChild("sqlite:" + path, size));
    const auto each = [&](double Opening::*field) {
        std::vector<double> values;
        for (const Opening& opening : openings)
            values.push_back(opening.*field);
        return median(values) / static_cast<double>(size);
    };
    const bool isJudged = size == 1000000;
    table.add({"first opening " + sizeName(size) + ", per address",
               Unit::seconds,
               each(&Opening::list),
               isJudged ? onNative(0.5e-6) : noLimit,
               {{"opening the store before that", each(&Opening::store), "", noLimit}}});
    std::vector<Rival> rivals;
    if (hasPeers) {
        const double taken = inChild(1, [&]() -> std::vector<double> { return {hashSetBytes(addresses(0, size))}; })[0];
        rivals.push_back(
            {"flat_hash_set", taken / static_cast<double>(size), taken > 0 ? "" : "not installed", noLimit});
    }
    const std::string memory = "memory per address " + sizeName(size);
    table.add({memory + ", sqlite, resident", Unit::bytes, each(&Opening::resident),
               isJudged ? (sizeof(void*) == 8 ? 110. : 80.) : noLimit, rivals});
    table.add({memory + ", sqlite, allocated", Unit::bytes, each(&Opening::allocated), noLimit, {}});
    table.add({memory + ", memory, resident", Unit::bytes, inMemory / static_cast<double>(size), noLimit, {}});
}

}  // namespace

std::string addressFile(const Options& options, size_t size) {
    const std::string path = options.folder + "/" + sizeName(size) + ".txt";
    if (std::filesystem::exists(path)) return path;
    std::ofstream file(path);
    for (size_t i = 0; i < size; ++i) {
        file << addressAt(i) << '\n';
        if (i % 100 != 99) continue;
        std::string again = addressAt(i / 2);
        for (char& c : again)
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        file << again << '\n';
    }
    if (!file.flush()) fail(path);
    return path;
}

std::string writeLines(const Options& options, const Entries& lines) {
    const std::string path = options.folder + "/lines.txt";
    std::ofstream file(path);
    for (const std::string& line : lines)
        file << line << '\n';
    if (!file.flush()) fail(path);
    return path;
}

void measureImports(const Options& options, Table& table) {
    const std::string path = options.folder + "/import.db";
    for (const size_t size : options.quick ? std::vector<size_t>{10000} : std::vector<size_t>{100000, 1000000}) {
        addressFile(options, size);
        const double inMemory = measureImport(options, table, size, path);
        measureOpening(options, table, size, path, inMemory);
    }
}

}  // namespace bench

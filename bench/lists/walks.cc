// Walking all addresses in each order, and opening a list whose cache exists.
#include <strings.h>

#include <algorithm>
#include <cstdlib>

#include "measurements.h"
#include "own_list.h"

namespace bench {

namespace {

// Sets the environment variable "order" and puts it back.
class Order {
public:
    explicit Order(const char* order) { setenv("order", order, 1); }
    ~Order() { unsetenv("order"); }
    Order(const Order&) = delete;
    Order& operator=(const Order&) = delete;
};

constexpr const char* orders[] = {"user", "ascending", "decending"};

bool isLess(const std::string& left, const std::string& right) {
    return strcasecmp(left.c_str(), right.c_str()) < 0;
}

// What a walk over the first `size` addresses must give. The descending order leaves its first entry out.
Entries expectedWalk(size_t size, const std::string& order) {
    Entries entries = addresses(0, size);
    if (order == "user") return entries;
    std::sort(entries.begin(), entries.end(), isLess);
    if (order == "ascending") return entries;
    std::reverse(entries.begin(), entries.end());
    entries.erase(entries.begin());
    return entries;
}

void measureOrder(const Options& options, Table& table, const OwnList& list, size_t size, const char* order) {
    const Order set(order);
    if (list.addresses() != expectedWalk(size, order)) fail(std::string("a walk in the order ") + order + " is wrong");
    const Entries other = addresses(size, size + 1);
    const auto walk = [&] { return timeOf([&] { list.enumerate(); }); };
    const auto walkAfterChange = [&] {
        list.insert(other);
        list.remove(other);
        return walk();
    };
    const std::vector<double> figures = medians(options.quick ? 1 : 3, {walkAfterChange, walk});
    const auto each = static_cast<double>(size);
    const double limit = size == 1000000 ? onNative(200e-9) : noLimit;
    const std::string what = "walk " + sizeName(size) + ", " + order + ", each";
    table.add({what + ", after a change", Unit::seconds, figures[0] / each, limit, {}});
    table.add({what + ", again", Unit::seconds, figures[1] / each, limit, {}});
}

// The seconds that each of many calls of `open` takes.
template <typename Open>
double timeOfEach(Open open) {
    constexpr int count = 2000;
    const double taken = timeOf([&] {
        for (int i = 0; i < count; ++i)
            open();
    });
    return taken / count;
}

void openList(const OwnList& list) {
    int error = ZXPOL_S_OK;
    delete list.hive().openAddrList(OwnList::name, &error);
    require(error, "opening the list");
}

void openKey(const OwnList& list) {
    int error = ZXREG_S_OK;
    const Handle key(zxreg_openKey(list.hiveKey(), OwnList::name, &error));
    require(error, "opening the key");
}

void measureOpening(const Options& options, Table& table, const OwnList& list, const std::string& what) {
    const auto ours = [&] { return timeOfEach([&] { openList(list); }); };
    const auto theirs = [&] { return timeOfEach([&] { openKey(list); }); };
    const std::vector<double> figures = medians(options.repetitions, {ours, theirs});
    table.add({what, Unit::seconds, figures[0], noLimit, {{"the store's: opening a key", figures[1], "", noLimit}}});
    const double limit = options.quick ? noLimit : onNative(500e-9);
    table.add({what + ", beyond that", Unit::seconds, figures[0] - figures[1], limit, {}});
}

}  // namespace

void measureWalks(const Options& options, Table& table) {
    for (const size_t size : options.quick ? std::vector<size_t>{10000} : std::vector<size_t>{100000, 1000000}) {
        const OwnList list("memory:");
        list.import(addressFile(options, size));
        for (const char* order : orders)
            measureOrder(options, table, list, size, order);
        measureOpening(options, table, list, "open " + sizeName(size) + ", memory");
        const OwnList stored("sqlite:" + options.folder + "/walk" + std::to_string(size) + ".db");
        stored.import(addressFile(options, size));
        measureOpening(options, table, stored, "open " + sizeName(size) + ", sqlite");
    }
}

}  // namespace bench

#include "stores.h"

#include <map>

#include "file_trust.h"
#include "files.h"
#include "sqlite_engine.h"

namespace zxreg {
namespace {

// The shared stores by canonical location; stores without a name are in no map. Never destroyed, because a program may
// close its last key while it exits.
struct Stores {
    std::mutex mutex;
    std::map<std::string, Store*, std::less<>> byLocation;
};

Stores& stores() {
    static Stores& all = *new Stores;
    return all;
}

constexpr std::string_view memoryPrefix = "memory:";
constexpr std::string_view sqlitePrefix = "sqlite:";

std::unique_ptr<Engine> makeMemoryEngine(const std::string&) {
    return std::make_unique<Engine>();
}
std::unique_ptr<Engine> makeSqliteEngine(const std::string& path) {
    const OpeningWatch watch(path);
    auto engine = std::make_unique<SqliteEngine>(path);
    watch.confirm();
    return engine;
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

// A handle on the store that is known by `location`, made if need be, but not opened.
Store* shareStore(const std::string& location, const std::string& place, Store::EngineMaker makeEngine) {
    const std::lock_guard guard(stores().mutex);
    Store*& store = stores().byLocation.try_emplace(location, nullptr).first->second;
    if (store == nullptr) {
        try {
            store = new Store(location, place, makeEngine);
        } catch (...) {
            stores().byLocation.erase(location);
            throw;
        }
    }
    store->retain();
    return store;
}

Store* findStore(std::string_view location) {
    if (location == memoryPrefix) {
        Store* store = new Store(std::string(location), std::string(location), makeMemoryEngine);
        store->retain();
        return store;
    }
    if (startsWith(location, memoryPrefix)) {
        return shareStore(std::string(location), std::string(location), makeMemoryEngine);
    }
    if (startsWith(location, sqlitePrefix) && location.size() > sqlitePrefix.size()) {
        const std::string path = canonicalPath(std::string(location.substr(sqlitePrefix.size())));
        return shareStore(std::string(sqlitePrefix) + path, path, makeSqliteEngine);
    }
    throw Failure(ZXREG_E_LOCATION, "\"" + std::string(location) +
                                        "\" names no known kind of store; use memory:, memory:NAME or sqlite:PATH.");
}

}  // namespace

// The opening itself, which may take long, holds up only those who want the same store.
StoreRef openStore(std::string_view location) {
    StoreRef store(findStore(location));
    store->open();
    return store;
}

// What looks like the last handle may be joined by another one until the map is locked.
void StoreRef::releaseLast(Store* store) noexcept {
    const std::lock_guard guard(stores().mutex);
    if (!store->release()) return;
    const auto at = stores().byLocation.find(store->location());
    if (at != stores().byLocation.end() && at->second == store) stores().byLocation.erase(at);
    delete store;
}

}  // namespace zxreg

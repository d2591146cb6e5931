#include "stored/store.h"

#include <unistd.h>

#include <cerrno>

#include "output/file_path.h"
#include "output/text.h"
#include "stored/raw_key.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr const char* kFileEngine = "sqlite:";
constexpr const char* kMemoryEngine = "memory:";

}  // namespace

bool isMissingFile(const std::string& location) {
    const std::string engine = kFileEngine;
    // No path at all is no file that could be made: the store says so.
    if (location.compare(0, engine.size(), engine) != 0 || location == engine) return false;
    return access(location.c_str() + engine.size(), F_OK) != 0 && errno == ENOENT;
}

bool isMissingFileInFolder(const std::string& location) {
    if (!isMissingFile(location)) return false;
    const std::string file = location.substr(std::string(kFileEngine).size());
    const size_t slash = file.rfind('/');
    return slash == std::string::npos || access(file.substr(0, slash + 1).c_str(), F_OK) == 0;
}

std::vector<std::string> filesOf(const std::string& locationOrFile) {
    const std::string engine = kFileEngine;
    if (locationOrFile.compare(0, engine.size(), engine) != 0)
        return locationOrFile.rfind(kMemoryEngine, 0) == 0 ? std::vector<std::string>{}
                                                           : std::vector<std::string>{locationOrFile};
    // The others are beside the file itself, wherever links to it are.
    const std::string named = locationOrFile.substr(engine.size());
    const std::string whole = withoutLinks(named);
    const std::string& database = whole.empty() ? named : whole;
    return {database, database + ".key", database + "-wal", database + "-shm", database + "-journal"};
}

Store::Store(const std::string& location, Missing missing) : _location(location) {
    if (missing == Missing::Refuse && isMissingFile(location))
        throw PolicyError("there is no store at " + oneLine(location) + "; make one with apply, or give --store");
    int result = ZXREG_S_OK;
    _key = KeyHandle(zxreg_openStore(location.c_str(), &result));
    require(result, "cannot open the store " + oneLine(location));
}

bool Store::holdsPolicy() const {
    return static_cast<bool>(openRawKey(key(), kRootRuleKey));
}

void Store::requirePolicy() const {
    if (!holdsPolicy()) throw PolicyError("the store " + oneLine(_location) + " holds no policy; apply one first");
}

uint64_t Store::stamp() const {
    int result = ZXREG_S_OK;
    const uint64_t stamp = zxreg_stamp(key(), &result);
    require(result, "cannot read the store " + oneLine(_location));
    return stamp;
}

StoreUpdate::StoreUpdate(const Store& store) : _store(store) {
    int result = ZXREG_S_OK;
    zxreg_beginUpdate(store.key(), &result);
    require(result, "cannot begin an update of the store " + oneLine(store.location()));
}

StoreUpdate::~StoreUpdate() {
    int result = ZXREG_S_OK;
    if (_isOpen) zxreg_cancelUpdate(_store.key(), &result);
}

void StoreUpdate::keep() {
    int result = ZXREG_S_OK;
    _isOpen = false;
    zxreg_endUpdate(_store.key(), &result);
    require(result, "cannot write to the store " + oneLine(_store.location()) + ", nothing was changed");
}

void StoreUpdate::cancel() {
    int result = ZXREG_S_OK;
    _isOpen = false;
    zxreg_cancelUpdate(_store.key(), &result);
    require(result, "cannot take the update of the store " + oneLine(_store.location()) + " back");
}

}  // namespace tool

#include "import_pair.h"

#include <algorithm>
#include <vector>

#include "fail.h"
#include "memory_file.h"
#include "zxpolicy.h"
#include "zxregistry.h"

namespace fuzz {

namespace {

constexpr size_t kLongest = 500, kMostText = 4096;

// False when the text cannot be had without its NULs.
bool takeNuls(const std::string& text, std::string& without) {
    size_t begin = 0;
    for (size_t end = 0; end != text.size(); begin = end + 1) {
        end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const std::string kept = line.c_str();
        const bool hasNul = kept.size() < line.size();
        if (line.size() > kLongest) return false;
        if (hasNul && (kept.find_first_not_of(" \t\r") == std::string::npos || kept.back() == '\r')) return false;
        without += kept + (end == text.size() ? "" : "\n");
        if (end == text.size()) break;
    }
    return true;
}

// The result of an import, and all addresses.
std::vector<std::string> imported(_ZxPolComHandle* hive, const std::string& text) {
    const MemoryFile file(text);
    const _ZxPolAddrListAttr attr = {};
    int error = ZXPOL_S_OK, ignored = ZXPOL_S_OK;
    _ZxPolComHandle* list = zxpol_createAddrList(hive, "L", &attr, &error);
    require(list != nullptr, "the list is not made");
    zxpol_importAddress(list, 0, 0, file.path().c_str(), &error);
    std::vector<std::string> found = {std::to_string(error)};
    for (uint32_t index = 0; error != ZXPOL_E_NO_MORE_ITEMS; ++index) {
        char address[ZXPOL_ADDRESS_SIZE] = "";
        uint32_t size = sizeof address;
        error = ZXPOL_S_OK;
        zxpol_enumAddress(list, index, address, &size, &error);
        found.emplace_back(address);
    }
    zxpol_closeAddrList(list, &ignored);
    zxpol_deleteAddrList(hive, "L", &ignored);
    return found;
}

}  // namespace

void checkNuls(const std::string& text) {
    std::string without;
    if (text.size() > kMostText || text.find('\0') == std::string::npos || !takeNuls(text, without)) return;
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* store = zxreg_openStore("memory:", &error);
    _ZxPolComHandle* hive = zxpol_openAddrListHive(store, &error);
    require(hive != nullptr, "the lists do not open");
    requireSame(imported(hive, without), imported(hive, text), "NULs in " + shown(text));
    zxpol_closeAddrListHive(hive, &error);
    zxreg_closeKey(store, &error);
}

}  // namespace fuzz

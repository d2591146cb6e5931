#include "stored/store_copy.h"

#include "output/text.h"
#include "stored/raw_key.h"
#include "stored/snapshot.h"

namespace tool {

namespace {

// A key with all below it.
struct RawTree {
    std::string name;
    std::vector<RawValue> values;
    std::vector<RawTree> keys;
};

RawTree readKeyTree(_ZxPolComHandle* key, const std::string& name) {
    RawTree tree{name, rawValues(key), {}};
    for (const std::string& below : rawSubkeys(key)) {
        const KeyHandle handle = openRawKey(key, below);
        if (!handle) throw StoreError("cannot read key " + inQuotes(below, 255), ZXREG_E_NOT_FOUND);
        tree.keys.push_back(readKeyTree(handle.get(), below));
    }
    return tree;
}

void writeKeyTree(_ZxPolComHandle* key, const RawTree& tree) {
    int result = ZXREG_S_OK;
    for (RawValue value : tree.values) {
        // One that is protected has not been unlocked.
        if (value.type == ZXREG_PROTECTED_STRING) value.data.assign(1, '\0');
        zxreg_setValue(key, value.name.c_str(), value.type, value.data.data(), static_cast<uint32_t>(value.data.size()),
                       &result);
        require(result, "cannot copy value " + inQuotes(value.name, 255));
    }
    for (const RawTree& below : tree.keys) {
        const KeyHandle handle(zxreg_createKey(key, below.name.c_str(), &result));
        require(result, "cannot copy key " + inQuotes(below.name, 255));
        writeKeyTree(handle.get(), below);
    }
}

}  // namespace

void copyStore(const Store& from, const Store& to) {
    const RawTree tree = readAtOneMoment(from, [&] { return readKeyTree(from.key(), ""); });
    StoreUpdate update(to);
    writeKeyTree(to.key(), tree);
    update.keep();
}

}  // namespace tool

#include "change/apply_context.h"
#include "output/text.h"
#include "stored/raw_key.h"
#include "tool_error.h"

namespace tool {

namespace {

bool isKey(const SettingItem& item) {
    return std::holds_alternative<SettingKey>(item);
}

// Splits a path into that of the key above and the last name.
std::pair<std::string, std::string> splitPath(const std::string& path) {
    const size_t slash = path.rfind('\\');
    if (slash == std::string::npos) return {"", path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

// Writes one item below its open parent key.
class ItemWriter {
public:
    ItemWriter(_ZxPolComHandle* parent, std::string name) : _parent(parent), _name(std::move(name)) {}

    int operator()(const SettingKey&) const {
        int result = ZXREG_S_OK;
        const KeyHandle made(zxreg_createKey(_parent, _name.c_str(), &result));
        return result;
    }
    int operator()(uint32_t number) const { return set(ZXREG_NUMBER, &number, sizeof number); }
    int operator()(const std::string& text) const { return set(ZXREG_STRING, text.c_str(), text.size() + 1); }
    int operator()(const std::vector<std::string>& texts) const {
        std::string data;
        for (const std::string& text : texts)
            data.append(text).push_back('\0');
        data.push_back('\0');
        return set(ZXREG_MULTI_STRING, data.data(), data.size());
    }

private:
    int set(uint32_t type, const void* data, size_t size) const {
        int result = ZXREG_S_OK;
        zxreg_setValue(_parent, _name.c_str(), type, data, static_cast<uint32_t>(size), &result);
        return result;
    }

    _ZxPolComHandle* _parent;
    std::string _name;
};

void removeItem(_ZxPolComHandle* key, const std::string& path, bool isSubkey, const std::string& what) {
    const auto [above, name] = splitPath(path);
    const KeyHandle parent = openRawKey(key, above);
    int result = ZXREG_S_OK;
    if (isSubkey)
        zxreg_deleteKey(parent.get(), name.c_str(), &result);
    else
        zxreg_deleteValue(parent.get(), name.c_str(), &result);
    require(result, "cannot delete " + what);
}

}  // namespace

std::vector<std::string> applySetting(_ZxPolComHandle* key, const std::string& where, const Setting& current,
                                      const Setting& wanted) {
    std::vector<std::string> details;
    const auto label = [&](const std::string& path) { return "setting " + inQuotes(path) + " of " + where; };
    // Backwards, so that a key is empty when its turn comes.
    for (auto item = current.rbegin(); item != current.rend(); ++item) {
        const auto found = wanted.find(item->first);
        if (found != wanted.end() && isKey(found->second) == isKey(item->second)) continue;
        removeItem(key, item->first, isKey(item->second), label(item->first));
        if (found == wanted.end()) details.push_back("deleted setting " + inQuotes(item->first));
    }
    for (const auto& [path, item] : wanted) {
        const auto found = current.find(path);
        if (found != current.end() && found->second == item) continue;
        const auto [above, name] = splitPath(path);
        const KeyHandle parent = openRawKey(key, above);
        require(std::visit(ItemWriter(parent.get(), name), item), "cannot write " + label(path));
        details.push_back(std::string(found == current.end() ? "created" : "changed") + " setting " + inQuotes(path));
    }
    return details;
}

}  // namespace tool

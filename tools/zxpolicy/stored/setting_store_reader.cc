#include "stored/setting_store_reader.h"

#include "stored/raw_key.h"

namespace tool {

namespace {

void readBelow(_ZxPolComHandle* key, const std::string& prefix, Setting& setting) {
    for (const RawValue& value : rawValues(key)) {
        SettingItem& item = setting[prefix + value.name];
        std::vector<std::string> texts;
        if (value.type == ZXREG_NUMBER)
            item = numberOf(value);
        else if (value.type == ZXREG_MULTI_STRING && splitTexts(value, texts))
            item = texts;
        else
            item = textOf(value);
    }
    for (const std::string& name : rawSubkeys(key)) {
        setting.emplace(prefix + name, SettingKey{});
        const KeyHandle below = openRawKey(key, name);
        readBelow(below.get(), prefix + name + "\\", setting);
    }
}

}  // namespace

Setting readStoredSetting(_ZxPolComHandle* key) {
    Setting setting;
    readBelow(key, "", setting);
    return setting;
}

}  // namespace tool

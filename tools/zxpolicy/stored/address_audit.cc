#include "stored/address_audit.h"

#include <algorithm>

#include "output/text.h"
#include "policy/address_text.h"

namespace tool {

namespace {

constexpr const char* kPrefix = "address";
constexpr size_t kMaxImage = 2048;

}  // namespace

bool isAddressValue(const RawValue& value) {
    return isNumbered(value.name, kPrefix);
}

std::string addressValueFault(const RawValue& value) {
    std::vector<std::string> texts;
    if (value.type != ZXREG_MULTI_STRING) return "is of the wrong type";
    if (!splitTexts(value, texts)) return "is no list of texts";
    return value.data.size() > kMaxImage ? "is longer than 2048 bytes" : "";
}

std::vector<std::string> storedAddressFaults(const std::vector<RawValue>& values) {
    std::vector<std::string> faults;
    AddressKeys keys;
    std::vector<std::string> texts;
    for (const RawValue& value : values) {
        if (!isAddressValue(value) || value.type != ZXREG_MULTI_STRING || !splitTexts(value, texts)) continue;
        for (const std::string& address : texts) {
            const auto add = [&](const std::string& fault) {
                faults.push_back("holds " + inQuotes(address) + ", which " + fault);
            };
            const std::string fault = addressFault(address);
            if (!fault.empty()) add(fault);
            if (!keys.insert(addressKey(address)).second) add("stands twice");
        }
    }
    return faults;
}

}  // namespace tool

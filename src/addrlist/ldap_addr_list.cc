#include "addrlist/ldap_addr_list.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

#include "store/store_value.h"
#include "store/update.h"
#include "zxregistry.h"

using namespace zxpol;

namespace {

constexpr const char* kMaskedPassword = "secret";
constexpr uint32_t kSettingSize = 2048;

// How one directory setting is stored and where it stands in the record.
struct Setting {
    const char* name;
    uint32_t type;
    size_t offset;
    size_t width;
};

#define ZXPOL_SETTING(field, type) \
    { #field, type, offsetof(_ZxPolAddrListAttr, field), sizeof(_ZxPolAddrListAttr::field) }

// In the order in which they are written and read.
constexpr Setting kSettings[] = {
    ZXPOL_SETTING(server, ZXREG_STRING),
    ZXPOL_SETTING(port, ZXREG_NUMBER),
    ZXPOL_SETTING(schematype, ZXREG_NUMBER),
    ZXPOL_SETTING(searchroot, ZXREG_STRING),
    ZXPOL_SETTING(authentication, ZXREG_NUMBER),
    ZXPOL_SETTING(username, ZXREG_STRING),
    ZXPOL_SETTING(password, ZXREG_PROTECTED_STRING),
    ZXPOL_SETTING(filter, ZXREG_STRING),
};
#undef ZXPOL_SETTING

// As commonOf takes it.
static_assert(offsetof(_ZxPolAddrListAttr, displayName) == offsetof(_ZxPolCommAttrib, displayName));
static_assert(offsetof(_ZxPolAddrListAttr, comment) == offsetof(_ZxPolCommAttrib, comment));

char* fieldOf(_ZxPolAddrListAttr* attr, const Setting& setting) {
    return reinterpret_cast<char*>(attr) + setting.offset;
}
const char* fieldOf(const _ZxPolAddrListAttr* attr, const Setting& setting) {
    return reinterpret_cast<const char*>(attr) + setting.offset;
}

void writeSetting(_ZxPolComHandle* key, const Setting& setting, const _ZxPolAddrListAttr* attr, int* error) {
    const char* field = fieldOf(attr, setting);
    const size_t size = setting.type == ZXREG_NUMBER ? setting.width : std::strlen(field) + 1;
    setValue(key, setting.name, setting.type, field, static_cast<uint32_t>(size), error);
}

// Copies what fits of a text of at most `length` bytes.
void copyText(char* field, size_t width, const char* text, size_t length) {
    length = strnlen(text, std::min(length, width - 1));
    std::memcpy(field, text, length);
    field[length] = '\0';
}

// Copies a stored value of the setting's own type into the record.
void takeSetting(const Setting& setting, const char* data, size_t size, char* field) {
    if (setting.type == ZXREG_PROTECTED_STRING) {
        copyText(field, setting.width, kMaskedPassword, std::strlen(kMaskedPassword));
    } else if (setting.type == ZXREG_STRING) {
        copyText(field, setting.width, data, size);
    } else if (size >= setting.width) {
        std::memcpy(field, data, setting.width);
    }
}

void readSetting(_ZxPolComHandle* key, const Setting& setting, _ZxPolAddrListAttr* attr, int* error) {
    char data[kSettingSize];
    uint32_t size = sizeof data;
    uint32_t type = setting.type;
    queryValue(key, setting.name, &type, data, &size, error);
    if (succeeded(*error) && type == setting.type) {
        takeSetting(setting, data, std::min<size_t>(size, sizeof data), fieldOf(attr, setting));
    }
    // A password may have come back readable.
    if (type == ZXREG_PROTECTED_STRING || setting.type == ZXREG_PROTECTED_STRING) explicit_bzero(data, sizeof data);
}

void refuse(int* error) {
    if (error != nullptr) *error = ZXPOL_E_NOT_SUPPORTED;
}

}  // namespace

ZxPolLdapAddrList::ZxPolLdapAddrList(_ZxPolComHandle* listKey) : ZxPolAddrList(listKey) {}

ZxPolLdapAddrList::ZxPolLdapAddrList(StoreKey listKey) : ZxPolAddrList(std::move(listKey)) {}

ZxPolLdapAddrList::~ZxPolLdapAddrList() = default;

bool ZxPolLdapAddrList::isValidAttrib(const _ZxPolAddrListAttr* attr) {
    return attr != nullptr && isTerminated(attr->displayName) && isTerminated(attr->comment) &&
           std::all_of(std::begin(kSettings), std::end(kSettings), [attr](const Setting& setting) {
               return setting.type == ZXREG_NUMBER || isTerminated(fieldOf(attr, setting), setting.width);
           });
}

void ZxPolLdapAddrList::getAttrib(_ZxPolAddrListAttr* attr, int* error) {
    if (error == nullptr) return;
    if (attr == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    // A list without a name or a comment is still a list: their result gives way to that of the settings.
    _getCommonAttrib(commonOf(attr), error);
    attr->type = ZXPOL_ADDRLIST_DIRECTORY;
    for (const Setting& setting : kSettings) {
        readSetting(_listKey(), setting, attr, error);
        if (failed(*error)) return;
    }
}

void ZxPolLdapAddrList::setAttrib(const _ZxPolAddrListAttr* attr, int* error) {
    if (error == nullptr) return;
    if (!isValidAttrib(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_listKey(), error, [&] {
        // As in reading, the settings count and not the name that is shown for them.
        _setCommonAttrib(commonOf(attr), error);
        writeNumber(_listKey(), "type", attr->type, error);
        for (const Setting& setting : kSettings) {
            if (failed(*error)) return;
            writeSetting(_listKey(), setting, attr, error);
        }
    });
}

void ZxPolLdapAddrList::insertAddresses(const char** /*addresses*/, int* error) {
    refuse(error);
}

void ZxPolLdapAddrList::removeAddresses(const char** /*addresses*/, int* error) {
    refuse(error);
}

void ZxPolLdapAddrList::enumAddress(uint32_t /*index*/, char* /*buffer*/, uint32_t* /*size*/, int* error) {
    refuse(error);
}

void ZxPolLdapAddrList::importAddresses(uint32_t /*format*/, uint32_t /*replace*/, const char* /*path*/, int* error) {
    refuse(error);
}

bool ZxPolLdapAddrList::matchAddress(const char* /*address*/, uint32_t* weight, ZxPolMatchWeightType /*weightType*/,
                                     int* error) {
    if (weight != nullptr) *weight = 0;
    refuse(error);
    return true;
}

#include "result_names.h"

#include <array>
#include <cstdint>
#include <cstdio>

#include "output/text.h"
#include "zxpolicy.h"
#include "zxregistry.h"

namespace tool {

namespace {

struct ResultEntry {
    int code;
    const char* name;
    const char* advice;
};

#define ENTRY(name, advice) \
    ResultEntry {           \
        name, #name, advice \
    }

// The codes that the library and the store share stand here under the library's name.
const std::array kResults{
    ENTRY(ZXPOL_S_OK, "nothing to do"),
    ENTRY(ZXPOL_E_NOT_SUPPORTED, "this version does not support it; remove it from the policy"),
    ENTRY(ZXPOL_E_EXCEPTION, "an internal failure; please report it"),
    ENTRY(ZXPOL_E_OUT_OF_MEMORY, "free some memory and try again"),
    ENTRY(ZXPOL_E_BUFFER_TOO_SMALL, "a name or text is longer than the policy allows; shorten it"),
    ENTRY(ZXPOL_E_INVALID_ARG, "a name, text or number is not allowed here; correct it"),
    ENTRY(ZXPOL_E_CONVERSION, "the text cannot be converted; use UTF-8"),
    ENTRY(ZXPOL_E_INVALID_FORMAT, "an address, condition or path is malformed; correct it"),
    ENTRY(ZXPOL_E_WRONG_HANDLE, "an internal failure; please report it"),
    ENTRY(ZXPOL_E_NO_MORE_ITEMS, "the item is not there (any more); try again"),
    ENTRY(ZXPOL_E_FILE_OPEN, "check that the file exists and can be read"),
    ENTRY(ZXPOL_E_FILE_READ, "check that the file can be read to its end"),
    ENTRY(ZXPOL_E_NOT_FOUND, "the item is not in the store (any more); check the name and try again"),
    ENTRY(ZXPOL_E_ALREADY_EXISTS, "the item is there already; choose another name"),
    ENTRY(ZXPOL_E_PARSE, "the text cannot be parsed; correct it"),
    ENTRY(ZXPOL_E_VERSION, "the store was written by a later version; use that version's tool"),
    ENTRY(ZXPOL_E_CONDITION_CHECK, "cover the conditions by conditions of the parent rule"),
    ENTRY(ZXREG_E_IO, "check the disk's health and free space"),
    ENTRY(ZXREG_E_CORRUPT, "the store is damaged; restore it from a backup"),
    ENTRY(ZXREG_E_FOREIGN, "the file is no policy store; check the location"),
    ENTRY(ZXREG_E_NOT_EMPTY, "the key has subkeys; delete them first"),
    ENTRY(ZXREG_E_PERMISSION, "check the permissions of the store's file and folder"),
    ENTRY(ZXREG_E_BUSY, "another program is changing the store; try again"),
    ENTRY(ZXREG_E_DELETED, "another program has deleted the item; try again"),
    ENTRY(ZXREG_E_LOCATION, "correct --store or ZXPOLICY_STORE"),
    ENTRY(ZXREG_E_NO_UPDATE, "an internal failure; please report it"),
    ENTRY(ZXREG_E_SECRET, "restore the store's key file"),
    ENTRY(ZXREG_E_UNSAFE, "look who may have used the file, and mend it as told"),
};

#undef ENTRY

const ResultEntry* findResult(int code) {
    for (const ResultEntry& entry : kResults)
        if (entry.code == code) return &entry;
    return nullptr;
}

// Whether the store speaks about this code in zxreg_lastErrorText: its reasons begin at 0x1900.
bool isStoresOwn(int code) {
    return ZX_FAILURE(code) && (static_cast<unsigned int>(code) & 0xff00u) == 0x1900u;
}

// What the store says about its last failure, as a further part of a line.
std::string storesSentence() {
    std::string sentence = oneLine(zxreg_lastErrorText());
    while (!sentence.empty() && sentence.back() == '.')
        sentence.pop_back();
    return sentence.empty() ? "" : ": " + sentence;
}

}  // namespace

bool hasReason(int code, unsigned int reason) {
    return ZX_FAILURE(code) && (static_cast<unsigned int>(code) & 0xffffu) == reason;
}

const char* resultName(int code) {
    const ResultEntry* entry = findResult(code);
    return entry == nullptr ? "unknown result" : entry->name;
}

std::string codeText(int code) {
    char number[16];
    std::snprintf(number, sizeof number, " (0x%08x)", static_cast<unsigned int>(code));
    return std::string(resultName(code)) + number;
}

std::string describeResult(int code) {
    std::string text = codeText(code);
    if (isStoresOwn(code)) text += storesSentence();
    const ResultEntry* entry = findResult(code);
    return text + ": " + (entry == nullptr ? "see the documentation of the store in use" : entry->advice);
}

}  // namespace tool

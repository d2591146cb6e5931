// Looks at and changes a store directly, behind the library's back.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zxpolicy.h"
#include "zxregistry.h"

namespace zxtest {

// A result code as a test prints it.
inline std::string codeText(int code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(code));
    return text;
}

#define EXPECT_CODE(expected, actual) EXPECT_EQ(::zxtest::codeText(expected), ::zxtest::codeText(actual))

inline uint32_t reasonOf(int code) {
    return static_cast<uint32_t>(code) & 0xffffu;
}

// Releases a handle by its kind.
struct HandleCloser {
    void operator()(_ZxPolComHandle* handle) const {
        int error = ZXPOL_S_OK;
        switch (handle->kind) {
            case ZXREG_HANDLE_KEY:
                zxreg_closeKey(handle, &error);
                break;
            case ZXPOL_HANDLE_RULE_HIVE:
                zxpol_closeRuleHive(handle, &error);
                break;
            case ZXPOL_HANDLE_RULE:
                zxpol_closeRule(handle, &error);
                break;
            case ZXPOL_HANDLE_TASK:
                zxpol_closeTask(handle, &error);
                break;
            case ZXPOL_HANDLE_ADDRLIST_HIVE:
                zxpol_closeAddrListHive(handle, &error);
                break;
            case ZXPOL_HANDLE_ADDRLIST:
                zxpol_closeAddrList(handle, &error);
                break;
            case ZXPOL_HANDLE_CLASS_HIVE:
                zxpol_closeClassificationHive(handle, &error);
                break;
            case ZXPOL_HANDLE_CLASSIFICATION:
                zxpol_closeClassification(handle, &error);
                break;
            case ZXPOL_HANDLE_ACTION:
                zxpol_closeAction(handle, &error);
                break;
            default:
                ADD_FAILURE() << "a handle of the unknown kind " << handle->kind;
        }
        EXPECT_GE(error, 0) << codeText(error);
    }
};
using Handle = std::unique_ptr<_ZxPolComHandle, HandleCloser>;

// An open key of the store with its values and subkeys in the store's order. Failures of what a test
// takes for granted are test failures.
class RawKey {
public:
    // Opens the existing key at `path` below `base`.
    RawKey(_ZxPolComHandle* base, const std::string& path) {
        int error = ZXREG_S_OK;
        _key.reset(zxreg_openKey(base, path.c_str(), &error));
        EXPECT_TRUE(_key != nullptr) << "no key " << path << ": " << codeText(error);
    }
    explicit RawKey(_ZxPolComHandle* key) : RawKey(key, "") {}

    _ZxPolComHandle* handle() const { return _key.get(); }

    bool hasKey(const std::string& path) const {
        int error = ZXREG_S_OK;
        return Handle(zxreg_openKey(handle(), path.c_str(), &error)) != nullptr;
    }

    RawKey makeKey(const std::string& name) {
        int error = ZXREG_S_OK;
        Handle made(zxreg_createKey(handle(), name.c_str(), &error));
        EXPECT_GE(error, 0) << codeText(error);
        return RawKey(handle(), name);
    }

    void removeKey(const std::string& name) {
        int error = ZXREG_S_OK;
        zxreg_deleteKey(handle(), name.c_str(), &error);
        EXPECT_GE(error, 0) << "deleting the key " << name << ": " << codeText(error);
    }

    std::vector<std::string> subkeys() const {
        std::vector<std::string> names;
        char name[512];
        for (uint32_t index = 0;; ++index) {
            int error = ZXREG_S_OK;
            uint32_t size = sizeof name;
            zxreg_enumSubkey(handle(), index, name, &size, &error);
            if (error < 0) return names;
            names.emplace_back(name);
        }
    }

    std::vector<std::string> valueNames() const {
        std::vector<std::string> names;
        char name[512];
        for (uint32_t index = 0;; ++index) {
            int error = ZXREG_S_OK;
            uint32_t size = sizeof name;
            zxreg_enumValue(handle(), index, name, &size, nullptr, nullptr, nullptr, &error);
            if (error < 0) return names;
            names.emplace_back(name);
        }
    }

    // The bytes of a value, and its type where wanted; nothing when there is no such value.
    std::optional<std::string> bytes(const std::string& name, uint32_t* type = nullptr) const {
        std::string data(8192, '\0');
        uint32_t size = static_cast<uint32_t>(data.size()), found = 0;
        int error = ZXREG_S_OK;
        zxreg_queryValue(handle(), name.c_str(), &found, data.data(), &size, &error);
        if (error < 0) return std::nullopt;
        if (type != nullptr) *type = found;
        data.resize(size);
        return data;
    }

    std::optional<uint32_t> number(const std::string& name) const {
        uint32_t type = ~0u;
        const std::optional<std::string> data = bytes(name, &type);
        if (!data) return std::nullopt;
        EXPECT_EQ(ZXREG_NUMBER, type) << name;
        EXPECT_EQ(4u, data->size()) << name;
        uint32_t value = 0;
        data->copy(reinterpret_cast<char*>(&value), sizeof value);
        return value;
    }

    // A string value without its NUL, which must be there.
    std::optional<std::string> text(const std::string& name) const {
        uint32_t type = ~0u;
        std::optional<std::string> data = bytes(name, &type);
        if (!data) return std::nullopt;
        EXPECT_EQ(ZXREG_STRING, type) << name;
        EXPECT_FALSE(data->empty() || data->back() != '\0') << name << " has no NUL";
        if (!data->empty()) data->pop_back();
        return data;
    }

    void setBytes(const std::string& name, uint32_t type, const std::string& data) {
        int error = ZXREG_S_OK;
        zxreg_setValue(handle(), name.c_str(), type, data.data(), static_cast<uint32_t>(data.size()), &error);
        EXPECT_GE(error, 0) << "setting " << name << ": " << codeText(error);
    }
    void setNumber(const std::string& name, uint32_t value) {
        setBytes(name, ZXREG_NUMBER, std::string(reinterpret_cast<const char*>(&value), sizeof value));
    }
    void setText(const std::string& name, const std::string& value) {
        setBytes(name, ZXREG_STRING, value + std::string(1, '\0'));
    }
    void removeValue(const std::string& name) {
        int error = ZXREG_S_OK;
        zxreg_deleteValue(handle(), name.c_str(), &error);
        EXPECT_GE(error, 0) << "deleting " << name << ": " << codeText(error);
    }

private:
    Handle _key;
};

}  // namespace zxtest

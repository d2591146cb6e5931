// Policies with many things of one kind, made in one update each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/policy_fixture.h"

namespace limits {

class BigPolicyTest : public zxtest::PolicyTest {
protected:
    static std::string numbered(const std::string& prefix, uint32_t index) { return prefix + std::to_string(index); }

    // Runs `make(index)` so many times, as one update.
    template <class Make>
    void inOneUpdate(uint32_t count, Make make) {
        int error = ZXPOL_S_OK;
        zxreg_beginUpdate(store(), &error);
        for (uint32_t index = 0; index < count && !HasFailure(); ++index)
            make(index);
        zxreg_endUpdate(store(), &error);
        ASSERT_GE(error, 0) << zxtest::codeText(error) << " " << zxreg_lastErrorText();
    }

    // How many names an enumeration yields.
    static uint32_t countOf(NameEnumeration enumerate, _ZxPolComHandle* handle) {
        for (uint32_t index = 0;; ++index) {
            char name[ZXPOL_ADDRESS_SIZE];
            uint32_t size = sizeof name;
            int error = ZXPOL_S_OK;
            enumerate(handle, index, name, &size, &error);
            if (error >= 0) continue;
            EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
            return index;
        }
    }

    // A new normal list with the addresses user0@example.com, user1@example.com, ...
    zxtest::Handle makeList(const std::string& name, uint32_t count) {
        _ZxPolAddrListAttr attr = {};
        int error = ZXPOL_S_OK;
        zxtest::Handle list(zxpol_createAddrList(listHive(), name.c_str(), &attr, &error));
        EXPECT_GE(error, 0) << zxtest::codeText(error);
        if (count == 0) return list;
        std::vector<std::string> texts;
        std::vector<const char*> addresses;
        for (uint32_t index = 0; index < count; ++index)
            texts.push_back(numbered("user", index) + "@example.com");
        for (const std::string& text : texts)
            addresses.push_back(text.c_str());
        addresses.push_back(nullptr);
        zxpol_insertAddress(list.get(), addresses.data(), &error);
        EXPECT_GE(error, 0) << zxtest::codeText(error);
        return list;
    }
};

}  // namespace limits

// The records of the interface, made from a few words.
#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "zxpolicy.h"

namespace zxtest {

template <size_t N>
void setText(char (&field)[N], const std::string& text) {
    std::snprintf(field, N, "%s", text.c_str());
}

inline _ZxPolAddrPairCond pairOf(const std::string& sender, const std::string& receiver) {
    _ZxPolAddrPairCond pair{};
    setText(pair.sender, sender);
    setText(pair.receiver, receiver);
    return pair;
}

inline const unsigned char* bytesOf(const _ZxPolAddrPairCond& pair) {
    return reinterpret_cast<const unsigned char*>(&pair);
}

// A list of conditions as the interface takes it.
class CondList {
public:
    CondList(std::initializer_list<_ZxPolAddrPairCond> pairs) : _pairs(pairs) {
        for (const _ZxPolAddrPairCond& pair : _pairs)
            _list.push_back(bytesOf(pair));
        _list.push_back(nullptr);
    }
    const unsigned char** get() { return _list.data(); }

private:
    std::vector<_ZxPolAddrPairCond> _pairs;
    std::vector<const unsigned char*> _list;
};

inline _ZxPolRuleAttr ruleAttr(const std::string& displayName = "", uint32_t order = 0) {
    _ZxPolRuleAttr attr{};
    setText(attr.displayName, displayName);
    setText(attr.comment, "of " + displayName);
    attr.order = order;
    return attr;
}

inline _ZxPolTaskAttr taskAttr(const std::string& displayName, uint32_t filter = 0, int overridable = 0,
                               uint32_t order = 0) {
    _ZxPolTaskAttr attr{};
    setText(attr.displayName, displayName);
    setText(attr.comment, "of " + displayName);
    attr.order = order;
    attr.filter = filter;
    attr.enable = 1;
    attr.overridable = overridable;
    return attr;
}

inline _ZxPolAddrListAttr directoryAttr(const std::string& displayName) {
    _ZxPolAddrListAttr attr{};
    setText(attr.displayName, displayName);
    setText(attr.comment, "of " + displayName);
    attr.type = ZXPOL_ADDRLIST_DIRECTORY;
    setText(attr.server, "ldap.example.com");
    attr.port = 389;
    setText(attr.searchroot, "dc=example");
    attr.authentication = 2;
    attr.schematype = 3;
    setText(attr.username, "reader");
    setText(attr.password, "hunter2");
    setText(attr.filter, "(mail=*)");
    return attr;
}

inline _ZxPolAddrListAttr normalAttr(const std::string& displayName) {
    _ZxPolAddrListAttr attr{};
    setText(attr.displayName, displayName);
    setText(attr.comment, "of " + displayName);
    attr.type = ZXPOL_ADDRLIST_NORMAL;
    return attr;
}

inline _ZxPolCommAttrib commonAttr(const std::string& displayName) {
    _ZxPolCommAttrib attr{};
    setText(attr.displayName, displayName);
    setText(attr.comment, "of " + displayName);
    return attr;
}

inline _ZxPolActionAttr actionAttr(const std::string& displayName, uint32_t actionType = 0, uint32_t order = 0) {
    _ZxPolActionAttr attr{};
    setText(attr.displayName, displayName);
    setText(attr.comment, "of " + displayName);
    attr.order = order;
    attr.actionType = actionType;
    return attr;
}

// A valid address that takes `bytes` bytes with its NUL; `name` is its local part, so that "*" makes a pattern.
inline std::string addressOf(const std::string& name, size_t bytes) {
    return name + "@" + std::string(bytes - name.size() - 2, 'x');
}

}  // namespace zxtest

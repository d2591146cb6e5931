// The shapes that many calls of the flat interface share.
#pragma once

#include <cstring>
#include <type_traits>

#include "arguments.h"
#include "fail.h"
#include "zxregistry.h"

namespace fuzz::shapes {

using A = Arguments;

constexpr uint32_t kKey = ZXREG_HANDLE_KEY, kRuleHive = ZXPOL_HANDLE_RULE_HIVE, kRule = ZXPOL_HANDLE_RULE,
                   kTask = ZXPOL_HANDLE_TASK, kListHive = ZXPOL_HANDLE_ADDRLIST_HIVE, kList = ZXPOL_HANDLE_ADDRLIST,
                   kClassHive = ZXPOL_HANDLE_CLASS_HIVE, kClass = ZXPOL_HANDLE_CLASSIFICATION,
                   kAction = ZXPOL_HANDLE_ACTION;

// C++ leaves the order in which arguments are made open; with these they are made first, from left to right.
template <auto function, uint32_t kind>
void openByName(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    const char* name = with.name();
    with.keep(function(handle, name, with.error()));
}

template <auto function, uint32_t kind>
void openFrom(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    with.keep(function(handle, with.error()));
}

template <auto function, uint32_t kind>
void byName(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    const char* name = with.name();
    function(handle, name, with.error());
}

template <auto function, uint32_t kind>
void move(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    const char* name = with.name();
    const uint32_t position = with.index();
    function(handle, name, position, with.error());
}

// The names of lists and classifications come with the size that the store says, which is without the NUL.
enum class Size { withNul, withoutNul };

inline void requireText(const char* text, uint32_t size, uint32_t room) {
    require(size <= room && size > 0, "a size beyond the room");
    require(std::memchr(text, '\0', size) == text + size - 1, "a size that is not the text's");
}

template <auto function, uint32_t kind, Size said = Size::withNul>
void enumerate(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    const uint32_t index = with.index();
    char* buffer = with.buffer();
    uint32_t* size = with.size();
    const uint32_t room = size != nullptr ? *size : 0;
    int* error = with.error();
    function(handle, index, buffer, size, error);
    if (error != nullptr && *error >= 0) requireText(buffer, said == Size::withNul ? *size : *size + 1, room);
}

template <auto function, uint32_t kind>
void changeAddresses(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    const char** addresses = with.addresses();
    function(handle, addresses, with.error());
}

// Attributes with a key that the caller closes.
template <class Attributes>
void keepSetting(A& with, Attributes* attr, const int* error) {
    if (attr != nullptr && error != nullptr && *error >= 0) with.keep(attr->setting);
    // A failure hands out nothing that would have to be closed.
    if (attr != nullptr && error != nullptr && *error < 0) require(attr->setting == nullptr, "a key with a failure");
}

template <auto function, uint32_t kind, class Attributes>
void readAttributes(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    auto* attr = with.attributes<Attributes>();
    int* error = with.error();
    function(handle, attr, error);
    if constexpr (std::is_same_v<Attributes, _ZxPolTaskAttr> || std::is_same_v<Attributes, _ZxPolActionAttr>)
        keepSetting(with, attr, error);
}

template <auto function, uint32_t kind, class Attributes>
void writeAttributes(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    auto* attr = with.attributes<Attributes>();
    function(handle, attr, with.error());
}

template <auto function, uint32_t kind, class Attributes>
void createEntity(A& with) {
    _ZxPolComHandle* handle = with.handle(kind);
    const char* name = with.name();
    auto* attr = with.attributes<Attributes>();
    if constexpr (!std::is_same_v<Attributes, _ZxPolCommAttrib> && !std::is_same_v<Attributes, _ZxPolAddrListAttr>) {
        if (attr != nullptr) attr->order = with.index();
    }
    if constexpr (std::is_same_v<Attributes, _ZxPolAddrListAttr>) {
        if (attr != nullptr) attr->type = with.flag();
    }
    if constexpr (std::is_same_v<Attributes, _ZxPolTaskAttr>) {
        if (attr != nullptr) {
            attr->filter = with.index();
            attr->enable = static_cast<int32_t>(with.flag());
            attr->overridable = static_cast<int32_t>(with.flag());
        }
    }
    with.keep(function(handle, name, attr, with.error()));
}

}  // namespace fuzz::shapes

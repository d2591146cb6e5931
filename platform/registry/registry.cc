// The C interface: checks arguments and handles, and lets nothing but codes out.
#include <cstring>

#include "stores.h"

using namespace zxreg;

namespace {

// An open key; the handle's record and what it stands for are one.
struct Key : _ZxPolComHandle {
    Key(StoreRef openStore, NodeRef openNode) noexcept : store(std::move(openStore)), node(std::move(openNode)) {
        kind = ZXREG_HANDLE_KEY;
        object = this;
    }

    const StoreRef store;  // released after the node
    NodeRef node;
};

// Runs `work(Key&)`, which returns a code, on the key of a handle. Every function with a handle goes through here.
template <class Work>
void call(_ZxPolComHandle* handle, int* error, Work work) noexcept {
    if (error == nullptr) return;
    int code = ZXREG_S_OK;
    try {
        if (handle == nullptr) {
            code = ZXREG_E_INVALID_ARG;
        } else if (handle->kind != ZXREG_HANDLE_KEY || handle->object == nullptr) {
            code = ZXREG_E_WRONG_HANDLE;
        } else {
            code = work(*static_cast<Key*>(handle->object));
        }
        if (code < 0) noteFailure(code);
    } catch (...) {
        code = noteException();
    }
    *error = code;
}

// The same for functions that take a name: a path of keys, or the name of one value.
template <class Work>
void callWithPath(_ZxPolComHandle* handle, const char* path, int* error, Work work) noexcept {
    call(handle, error,
         [&](Key& key) { return path == nullptr ? ZXREG_E_INVALID_ARG : work(key, std::string_view(path)); });
}
template <class Work>
void callWithName(_ZxPolComHandle* handle, const char* name, int* error, Work work) noexcept {
    call(handle, error, [&](Key& key) {
        const size_t length = name == nullptr ? ZXREG_MAX_NAME + 1 : strnlen(name, ZXREG_MAX_NAME + 1);
        return length > ZXREG_MAX_NAME ? ZXREG_E_INVALID_ARG : work(key, std::string_view(name, length));
    });
}

bool isValueValid(uint32_t type, const void* data, uint32_t size) {
    if (type > ZXREG_MULTI_STRING || size > ZXREG_MAX_VALUE || (data == nullptr && size != 0)) return false;
    return type != ZXREG_NUMBER || size == sizeof(uint32_t);
}

// Where a value's type, data and size go; each pointer may be null.
struct ValueOutput {
    uint32_t* type;
    void* data;
    uint32_t* size;
};

// Copies values out of the tree. A protected string is only taken along under the tree's lock, and opened after it.
class ValueReader {
public:
    explicit ValueReader(const ValueOutput& output) : _output(output) {}

    // Whether the data fits; writes its size in any case.
    bool tellSize(const Value& value) noexcept {
        if (_output.size == nullptr) return true;
        const uint32_t capacity = *_output.size;
        *_output.size = plainSize(value);
        return _output.data == nullptr || *_output.size <= capacity;
    }

    void take(const Value& value) {
        if (_output.type != nullptr) *_output.type = value.type;
        if (_output.data == nullptr) return;
        if (value.type == ZXREG_PROTECTED_STRING) {
            _sealed = Value::make(value.id, value.name(), value.type, value.data(), value.size);
        } else if (value.size != 0) {
            std::memcpy(_output.data, value.data(), value.size);
        }
    }

    int finish(Key& key) {
        if (!_sealed) return ZXREG_S_OK;
        const SecretPlace place{key.node->id, _sealed->id, _sealed->name()};
        return key.store->openSecret(place, {_sealed->data(), _sealed->size}, _output.data);
    }

private:
    static uint32_t plainSize(const Value& value) noexcept {
        return value.type == ZXREG_PROTECTED_STRING ? value.size - sealOverhead : value.size;
    }

    const ValueOutput _output;
    ValuePtr _sealed;
};

// A number that `get(const Key&)` reads off an existing key; 0 on failure.
template <class Get>
uint64_t numberOf(_ZxPolComHandle* handle, int* error, Get get) noexcept {
    uint64_t number = 0;
    call(handle, error, [&](Key& of) {
        return of.store->read([&](const Tree&) {
            if (of.node->deleted) return ZXREG_E_DELETED;
            number = get(of);
            return ZXREG_S_OK;
        });
    });
    return number;
}

// Whether a name and its NUL fit; writes the length of the name in any case.
bool tellLength(std::string_view name, uint32_t* size) noexcept {
    const uint32_t capacity = *size;
    *size = static_cast<uint32_t>(name.size());
    return name.size() < capacity;
}

void copyName(std::string_view name, char* buffer) noexcept {
    std::memcpy(buffer, name.data(), name.size());
    buffer[name.size()] = '\0';
}

}  // namespace

_ZxPolComHandle* zxreg_openKey(_ZxPolComHandle* key, const char* name, int* error) {
    Key* opened = nullptr;
    callWithPath(key, name, error, [&](Key& from, std::string_view path) {
        NodeRef node;
        const int code = from.store->read([&](const Tree& tree) { return tree.find(*from.node, path, node); });
        if (code < 0) return code;
        opened = new Key(from.store, std::move(node));
        return code;
    });
    return opened;
}

_ZxPolComHandle* zxreg_createKey(_ZxPolComHandle* key, const char* name, int* error) {
    Key* opened = nullptr;
    callWithPath(key, name, error, [&](Key& from, std::string_view path) {
        auto made = std::make_unique<Key>(from.store, NodeRef());
        const int code = from.store->createKey(*from.node, path, made->node);
        if (code >= 0) opened = made.release();
        return code;
    });
    return opened;
}

void zxreg_closeKey(_ZxPolComHandle* key, int* error) {
    call(key, error, [](Key& closing) {
        delete &closing;
        return ZXREG_S_OK;
    });
}

void zxreg_deleteKey(_ZxPolComHandle* key, const char* name, int* error) {
    callWithPath(key, name, error,
                 [](Key& from, std::string_view path) { return from.store->deleteKey(*from.node, path); });
}

void zxreg_queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error) {
    callWithName(key, name, error, [&](Key& of, std::string_view wanted) {
        if (size == nullptr) return ZXREG_E_INVALID_ARG;
        ValueReader reader({type, data, size});
        const int code = of.store->read([&](const Tree&) {
            if (of.node->deleted) return ZXREG_E_DELETED;
            const Value* value = of.node->values.find(wanted);
            if (value == nullptr) return ZXREG_E_NOT_FOUND;
            if (!reader.tellSize(*value)) return ZXREG_E_BUFFER_TOO_SMALL;
            reader.take(*value);
            return ZXREG_S_OK;
        });
        return code < 0 ? code : reader.finish(of);
    });
}

void zxreg_setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size,
                    int* error) {
    callWithName(key, name, error, [&](Key& of, std::string_view wanted) {
        if (!isValueValid(type, data, size)) return ZXREG_E_INVALID_ARG;
        return of.store->setValue(*of.node, wanted, type, data, size);
    });
}

void zxreg_deleteValue(_ZxPolComHandle* key, const char* name, int* error) {
    callWithName(key, name, error,
                 [](Key& of, std::string_view wanted) { return of.store->deleteValue(*of.node, wanted); });
}

void zxreg_enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error) {
    call(key, error, [&](Key& of) {
        if (name == nullptr || size == nullptr) return ZXREG_E_INVALID_ARG;
        return of.store->read([&](const Tree&) {
            if (of.node->deleted) return ZXREG_E_DELETED;
            if (index >= of.node->children.size()) return ZXREG_E_NO_MORE_ITEMS;
            const std::string_view found = of.node->children.at(index).name();
            if (!tellLength(found, size)) return ZXREG_E_BUFFER_TOO_SMALL;
            copyName(found, name);
            return ZXREG_S_OK;
        });
    });
}

void zxreg_enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
                     uint32_t* dataSize, int* error) {
    call(key, error, [&](Key& of) {
        if (name == nullptr || nameSize == nullptr || (data != nullptr && dataSize == nullptr)) {
            return ZXREG_E_INVALID_ARG;
        }
        ValueReader reader({type, data, dataSize});
        const int code = of.store->read([&](const Tree&) {
            if (of.node->deleted) return ZXREG_E_DELETED;
            if (index >= of.node->values.size()) return ZXREG_E_NO_MORE_ITEMS;
            of.node->values.prefetchBehind(index);
            const Value& value = of.node->values.at(index);
            const bool nameFits = tellLength(value.name(), nameSize);
            const bool dataFits = reader.tellSize(value);
            if (!nameFits || !dataFits) return ZXREG_E_BUFFER_TOO_SMALL;
            copyName(value.name(), name);
            reader.take(value);
            return ZXREG_S_OK;
        });
        return code < 0 ? code : reader.finish(of);
    });
}

void zxreg_beginUpdate(_ZxPolComHandle* key, int* error) {
    call(key, error, [](Key& of) { return of.store->beginUpdate(*of.node); });
}

void zxreg_endUpdate(_ZxPolComHandle* key, int* error) {
    call(key, error, [](Key& of) { return of.store->endUpdate(); });
}

void zxreg_cancelUpdate(_ZxPolComHandle* key, int* error) {
    call(key, error, [](Key& of) { return of.store->cancelUpdate(); });
}

uint64_t zxreg_stamp(_ZxPolComHandle* key, int* error) {
    return numberOf(key, error, [](const Key& of) { return of.store->stampOf(*of.node); });
}

uint64_t zxreg_identity(_ZxPolComHandle* key, int* error) {
    return numberOf(key, error, [](const Key& of) { return of.node->identity; });
}

_ZxPolComHandle* zxreg_openStore(const char* location, int* error) {
    if (error == nullptr) return nullptr;
    if (location == nullptr) {
        noteFailure(*error = ZXREG_E_INVALID_ARG);
        return nullptr;
    }
    try {
        StoreRef store = openStore(location);
        NodeRef node(&store->root());
        Key* root = new Key(std::move(store), std::move(node));
        *error = ZXREG_S_OK;
        return root;
    } catch (...) {
        *error = noteException();
        return nullptr;
    }
}

const char* zxreg_lastErrorText(void) {
    return lastFailureText();
}

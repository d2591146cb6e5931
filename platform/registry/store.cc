#include "store.h"

#include <cstdlib>
#include <thread>

namespace zxreg {
namespace {

// How long a writer waits for another one.
std::chrono::milliseconds busyLimit() {
    const char* setting = std::getenv("ZXREG_BUSY_LIMIT");
    char* end = nullptr;
    const long limit = setting != nullptr ? std::strtol(setting, &end, 10) : -1;
    const bool isNumber = setting != nullptr && end != setting && *end == '\0' && limit >= 0 && limit <= 3600000;
    return std::chrono::milliseconds(isNumber ? limit : 5000);
}

}  // namespace

Store::Store(std::string location, std::string place, EngineMaker makeEngine)
    : _location(std::move(location)), _place(std::move(place)), _makeEngine(makeEngine), _busyLimit(busyLimit()) {}

void Store::open() {
    const std::lock_guard guard(_opening);
    if (_isOpen) return;
    std::unique_ptr<Engine> engine = _makeEngine(_place);
    engine->refresh(_tree);
    _engine = std::move(engine);
    _isOpen = true;
}

bool Store::releaseUnlessLast() noexcept {
    uint32_t handles = _handles.load(std::memory_order_relaxed);
    while (handles > 1) {
        if (_handles.compare_exchange_weak(handles, handles - 1, std::memory_order_acq_rel)) return true;
    }
    return false;
}

void Store::refresh() {
    const std::lock_guard guard(_engineMutex);
    _engine->refresh(_tree);
}

// Runs `apply`, which makes one change of the tree and returns a code, as an update of its own: inside the update that
// this thread has open, or durable by itself.
template <class Apply>
int Store::change(Apply apply) {
    begin();
    try {
        checkWritable();
        const int code = apply();
        if (code < 0) {
            cancel();
            return code;
        }
        record(_tree.lastChange());
    } catch (...) {
        cancel();
        throw;
    }
    end();
    return ZXREG_S_OK;
}

int Store::createKey(Node& from, std::string_view path, NodeRef& made) {
    const int code = read([&](const Tree& tree) { return tree.find(from, path, made); });
    if (code != ZXREG_E_NOT_FOUND) return code;
    begin();
    try {
        checkWritable();
        const size_t before = _tree.logSize();
        int result;
        {
            const std::unique_lock guard(_tree.lock);
            result = _tree.create(from, path, made);
        }
        if (_tree.logSize() == before) {  // refused, or made by somebody else in the meantime
            cancel();
            return result;
        }
        record(_tree.lastChange());
    } catch (...) {
        cancel();
        throw;
    }
    end();
    return ZXREG_S_OK;
}

int Store::deleteKey(Node& from, std::string_view path) {
    return change([&] {
        const std::unique_lock guard(_tree.lock);
        return _tree.remove(from, path);
    });
}

int Store::setValue(Node& node, std::string_view name, uint32_t type, const void* data, uint32_t size) {
    return change([&] {
        ValuePtr value = makeValue(node, name, type, data, size);
        const std::unique_lock guard(_tree.lock);
        return _tree.setValue(node, std::move(value));
    });
}

int Store::deleteValue(Node& node, std::string_view name) {
    return change([&] {
        const std::unique_lock guard(_tree.lock);
        return _tree.removeValue(node, name);
    });
}

ValuePtr Store::makeValue(const Node& node, std::string_view name, uint32_t type, const void* data, uint32_t size) {
    const uint64_t id = _tree.valueIdFor(node, name);
    if (type != ZXREG_PROTECTED_STRING) return Value::make(id, name, type, data, size);
    const std::lock_guard guard(_engineMutex);
    const std::string sealed = seal(_engine->sealingKey(), {node.id, id, name}, data, size);
    return Value::make(id, name, type, sealed.data(), static_cast<uint32_t>(sealed.size()));
}

int Store::openSecret(const SecretPlace& place, std::string_view sealed, void* plain) {
    const std::lock_guard guard(_engineMutex);
    if (unseal(_engine->openingKey(), place, sealed, plain)) return ZXREG_S_OK;
    throw Failure(ZXREG_E_CORRUPT, _place + ": a protected string does not open with its key.");
}

}  // namespace zxreg

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

// Runs `write`, which makes one change of the tree or none and returns a code: inside the update that this thread has
// open, or as an update of its own, whose end finds out when there is nothing to keep.
template <class Write>
int Store::update(Write write) {
    if (_updates.depth() != 0) return write();
    begin();
    int code = ZXREG_S_OK;
    try {
        code = write();
    } catch (...) {
        cancel();
        throw;
    }
    end();
    return code;
}

// Runs `apply`, which makes one change of the tree or none and returns a code, with the tree locked.
template <class Apply>
int Store::change(Apply apply) {
    return update([&] {
        recordOutstanding();
        const std::unique_lock guard(_tree.lock);
        return apply();
    });
}

int Store::createKey(Node& from, std::string_view path, NodeRef& made) {
    const int code = read([&](const Tree& tree) { return tree.find(from, path, made); });
    if (code != ZXREG_E_NOT_FOUND) return code;
    return change([&] { return _tree.create(from, path, made); });
}

int Store::deleteKey(Node& from, std::string_view path) {
    return change([&] { return _tree.remove(from, path); });
}

int Store::setValue(Node& node, std::string_view name, uint32_t type, const void* data, uint32_t size) {
    return update([&] {
        checkWritable();
        ValuePtr value = makeValue(node, name, type, data, size);
        const bool isAgain = isWrittenAgain(node, value->id);
        if (!isAgain) recordOutstanding();
        const std::unique_lock guard(_tree.lock);
        return isAgain ? _tree.setValueAgain(node, std::move(value)) : _tree.setValue(node, std::move(value));
    });
}

int Store::deleteValue(Node& node, std::string_view name) {
    return change([&] { return _tree.removeValue(node, name); });
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

#include "tree.h"

#include <algorithm>
#include <cstring>

#include "zxregistry.h"

namespace zxreg {
namespace {

constexpr char separator = '\\';

// One sequence of stamps for all stores of the process, so that no two stores ever share one.
uint64_t nextStamp() noexcept {
    alignas(8) static std::atomic<uint64_t> stamps{0};
    return stamps.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::string_view withoutTrailingSeparator(std::string_view path) noexcept {
    if (!path.empty() && path.back() == separator) path.remove_suffix(1);
    return path;
}

// Splits the first name off a path that is not empty.
std::string_view splitFirst(std::string_view& path) noexcept {
    const size_t end = path.find(separator);
    const std::string_view first = path.substr(0, end);
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    return first;
}

// Whether a path without its trailing separator consists of proper names; the empty path does.
bool isPathValid(std::string_view path) noexcept {
    if (path.empty()) return true;
    if (path.back() == separator) return false;
    while (!path.empty()) {
        const std::string_view name = splitFirst(path);
        if (name.empty() || name.size() > ZXREG_MAX_NAME) return false;
    }
    return true;
}

// Splits a valid path that is not empty into the path of the parent and the last name.
std::string_view splitLast(std::string_view& path) noexcept {
    const size_t at = path.rfind(separator);
    const std::string_view last = at == std::string_view::npos ? path : path.substr(at + 1);
    path = at == std::string_view::npos ? std::string_view() : path.substr(0, at);
    return last;
}

// Walks down a valid path; null when a level is missing.
Node* descend(const Node& from, std::string_view path) noexcept {
    Node* node = const_cast<Node*>(&from);
    while (node != nullptr && !path.empty()) {
        node = node->children.find(splitFirst(path));
    }
    return node;
}

}  // namespace

ValuePtr Value::make(uint64_t id, std::string_view name, uint32_t type, const void* data, uint32_t size) {
    void* memory = ::operator new(sizeof(Value) + name.size() + size);
    ValuePtr value(new (memory) Value(id, type, size, static_cast<uint32_t>(name.size())));
    char* bytes = static_cast<char*>(memory) + sizeof(Value);
    std::copy_n(name.data(), name.size(), bytes);
    if (size != 0) std::memcpy(bytes + name.size(), data, size);
    return value;
}

uint64_t Node::nextIdentity() noexcept {
    alignas(8) static std::atomic<uint64_t> identities{0};
    return identities.fetch_add(1, std::memory_order_relaxed) + 1;
}

Tree::Tree() : _root(new Node(rootId, nullptr, "")) {
    NodeRef guard(_root);
    _nodes.insert(_root);
    _root->retain();
    touch(*_root);
}

// No node owns another, so even a very deep tree goes without recursion.
Tree::~Tree() {
    _nodes.forEach([](Node& node) { node.release(); });
}

int Tree::find(const Node& from, std::string_view path, NodeRef& found) const noexcept {
    if (from.deleted) return ZXREG_E_DELETED;
    path = withoutTrailingSeparator(path);
    if (!isPathValid(path)) return ZXREG_E_INVALID_ARG;
    Node* node = descend(from, path);
    if (node == nullptr) return ZXREG_E_NOT_FOUND;
    found = NodeRef(node);
    return ZXREG_S_OK;
}

int Tree::create(Node& from, std::string_view path, NodeRef& made) {
    const int code = find(from, path, made);
    if (code != ZXREG_E_NOT_FOUND) return code;
    path = withoutTrailingSeparator(path);
    const std::string_view name = splitLast(path);
    Node* parent = descend(from, path);
    if (parent == nullptr) return ZXREG_E_NOT_FOUND;
    NodeRef node(new Node(_nextNodeId, parent, name));
    logChange(Change::Kind::NodeAdded, *node);
    try {
        attach(*node);
    } catch (...) {
        _log.pop_back();
        throw;
    }
    ++_nextNodeId;
    made = std::move(node);
    return ZXREG_S_OK;
}

int Tree::remove(Node& from, std::string_view path) {
    NodeRef node;
    const int code = find(from, path, node);
    if (code < 0) return code;
    if (node.get() == &from) return ZXREG_E_INVALID_ARG;
    if (!node->children.empty()) return ZXREG_E_NOT_EMPTY;
    logChange(Change::Kind::NodeRemoved, *node);
    detach(*node);
    return ZXREG_S_OK;
}

int Tree::setValue(Node& node, ValuePtr value) {
    if (node.deleted) return ZXREG_E_DELETED;
    const Value* after = value.get();
    Change& change = logChange(Change::Kind::ValueChanged, node);
    if (node.values.findId(after->id) != nullptr) {
        change.before = node.values.replace(std::move(value));
    } else {
        try {
            node.values.insert(std::move(value));
        } catch (...) {
            _log.pop_back();
            throw;
        }
        _nextValueId = std::max(_nextValueId, after->id + 1);
    }
    change.after = after;
    touch(node);
    return ZXREG_S_OK;
}

int Tree::setValueAgain(Node& node, ValuePtr value) noexcept {
    _log.back().after = value.get();
    node.values.replace(std::move(value));
    touch(node);
    return ZXREG_S_OK;
}

int Tree::removeValue(Node& node, std::string_view name) {
    if (node.deleted) return ZXREG_E_DELETED;
    const Value* value = node.values.find(name);
    if (value == nullptr) return ZXREG_E_NOT_FOUND;
    logChange(Change::Kind::ValueChanged, node).before = node.values.remove(value->id);
    touch(node);
    return ZXREG_S_OK;
}

uint64_t Tree::valueIdFor(const Node& node, std::string_view name) const noexcept {
    const Value* value = node.values.find(name);
    return value != nullptr ? value->id : _nextValueId;
}

// Nothing here allocates: whatever goes back in has been held before, and room once made is kept.
Change Tree::takeBackLast() noexcept {
    Change change = std::move(_log.back());
    _log.pop_back();
    switch (change.kind) {
        case Change::Kind::NodeAdded:
            detach(*change.node);
            change.kind = Change::Kind::NodeRemoved;
            break;
        case Change::Kind::NodeRemoved:
            attach(*change.node);
            change.kind = Change::Kind::NodeAdded;
            break;
        case Change::Kind::ValueChanged: {
            Items<ValuePtr>& values = change.node->values;
            const Value* back = change.before.get();
            if (change.after == nullptr) {
                values.insert(std::move(change.before));
            } else if (back == nullptr) {
                change.before = values.remove(change.after->id);
            } else {
                change.before = values.replace(std::move(change.before));
            }
            change.after = back;
            touch(*change.node);
        }
    }
    return change;
}

void Tree::setNextIds(uint64_t node, uint64_t value) noexcept {
    _nextNodeId = node;
    _nextValueId = value;
}

// Enters a node, with its values, below its parent. When it throws, nothing has changed.
void Tree::attach(Node& node) {
    _nodes.reserve(_nodes.size() + 1);
    node.parent->children.insert(&node);
    _nodes.insert(&node);
    node.retain();
    node.deleted = false;
    touch(node);
}

// Takes a node without subkeys out. The caller holds a reference.
void Tree::detach(Node& node) noexcept {
    node.parent->children.remove(node.id);
    _nodes.erase(&node);
    node.deleted = true;
    touch(node);
    node.release();
}

uint64_t Tree::newStamp() noexcept {
    return nextStamp();
}

// Stamps a node and all above it as changed.
void Tree::touch(Node& node) noexcept {
    const uint64_t stamp = nextStamp();
    for (Node* at = &node; at != nullptr; at = at->parent) {
        at->stamp = stamp;
    }
}

Change& Tree::logChange(Change::Kind kind, Node& node) {
    _log.push_back(Change{kind, NodeRef(&node), nullptr, nullptr});
    return _log.back();
}

}  // namespace zxreg

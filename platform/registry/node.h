// What a tree is made of: values and nodes.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "items.h"

namespace zxreg {

class Value;

struct ValueDeleter {
    void operator()(Value* value) const noexcept { ::operator delete(value); }
};
using ValuePtr = std::unique_ptr<Value, ValueDeleter>;

// A named, typed value. It never changes: a write puts another one in its place, which may carry the same id and then
// keeps its position. One allocation holds the record, the name and the data. A protected string is held sealed.
class Value {
public:
    static ValuePtr make(uint64_t id, std::string_view name, uint32_t type, const void* data, uint32_t size);

    std::string_view name() const noexcept { return {bytes(), _nameSize}; }
    const char* data() const noexcept { return bytes() + _nameSize; }

    // Whether the two are the same but for where they lie in memory.
    bool same(const Value& other) const noexcept {
        return id == other.id && type == other.type && name() == other.name() &&
               std::string_view(data(), size) == std::string_view(other.data(), other.size);
    }

    const uint64_t id;
    const uint32_t type;
    const uint32_t size;  // of the data

private:
    Value(uint64_t valueId, uint32_t valueType, uint32_t dataSize, uint32_t nameSize) noexcept
        : id(valueId), type(valueType), size(dataSize), _nameSize(nameSize) {}
    const char* bytes() const noexcept { return reinterpret_cast<const char*>(this + 1); }

    const uint32_t _nameSize;
};

// One key of the tree. Counted references are held by the tree itself, by handles and by the log of changes; a node
// that has left the tree is flagged and stays until the last of them is gone. All but the count is guarded by the
// tree's lock.
class Node {
public:
    Node(uint64_t nodeId, Node* parentNode, std::string_view nodeName)
        : id(nodeId), parent(parentNode), _name(nodeName) {}

    std::string_view name() const noexcept { return _name; }

    void retain() noexcept { _references.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept {
        if (_references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    const uint64_t id;
    const uint64_t identity = nextIdentity();  // of this process only, and never given twice
    uint64_t stamp = 0;
    Node* const parent;  // not to be followed once the node is deleted and the log is empty
    Items<Node*> children;
    Items<ValuePtr> values;
    bool deleted = false;

private:
    ~Node() = default;

    static uint64_t nextIdentity() noexcept;

    std::atomic<uint32_t> _references{0};
    const std::string _name;
};

// A counted reference to a node; may be empty.
class NodeRef {
public:
    NodeRef() noexcept = default;
    explicit NodeRef(Node* node) noexcept : _node(node) {
        if (_node != nullptr) _node->retain();
    }
    NodeRef(NodeRef&& other) noexcept : _node(std::exchange(other._node, nullptr)) {}
    NodeRef& operator=(NodeRef&& other) noexcept {
        std::swap(_node, other._node);
        return *this;
    }
    ~NodeRef() {
        if (_node != nullptr) _node->release();
    }

    Node* get() const noexcept { return _node; }
    Node& operator*() const noexcept { return *_node; }
    Node* operator->() const noexcept { return _node; }

private:
    Node* _node = nullptr;
};

}  // namespace zxreg

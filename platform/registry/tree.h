// The tree of keys and values in memory: all rules of the store, whatever makes it durable.
#pragma once

#include <string_view>
#include <vector>

#include "node.h"
#include "rw_lock.h"

namespace zxreg {

// One change of the tree, with what is needed to take it back.
struct Change {
    enum class Kind { NodeAdded, NodeRemoved, ValueChanged };

    Kind kind;
    NodeRef node;                  // added or removed with all its values, or the one whose value changed
    ValuePtr before;               // ValueChanged: the value that left the tree; null for a new one
    const Value* after = nullptr;  // ValueChanged: the value now in the tree; null for a deleted one

    bool isWriteOf(const Node& owner, uint64_t valueId) const noexcept {
        return node.get() == &owner && after != nullptr && after->id == valueId;
    }
};

// A key and a value as they came from outside.
struct NodeRow {
    uint64_t id;
    uint64_t parent;
    std::string name;
};
struct ValueRow {
    uint64_t node;
    ValuePtr value;
};

// Changes that were made outside. Rows ascend by id.
struct Delta {
    bool whole = false;  // the rows are all there is: what is not among them is gone
    std::vector<NodeRow> nodes;
    std::vector<ValueRow> values;
    std::vector<uint64_t> goneNodes;
    std::vector<std::pair<uint64_t, uint64_t>> goneValues;  // node and value
};

// Functions that answer with a code give ZXREG_S_OK or the reason; they throw std::bad_alloc only, and then nothing has
// changed. Whoever calls holds `lock`: shared for a const function, exclusive for the others. Whoever may change the
// tree is one at a time, and reads it without the lock.
class Tree {
public:
    Tree();
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    Node& root() const noexcept { return *_root; }
    Node* node(uint64_t id) const noexcept { return _nodes.find(id); }

    // The key that `path` designates below `from`.
    int find(const Node& from, std::string_view path, NodeRef& found) const noexcept;
    // The key that `path` designates, made when only its last level is missing.
    int create(Node& from, std::string_view path, NodeRef& made);
    int remove(Node& from, std::string_view path);
    // The value takes the place of the one of the same name, or the last place; its id comes from valueIdFor.
    int setValue(Node& node, ValuePtr value);
    // The same when the last change of the log is a write of that very value: the two become one change.
    int setValueAgain(Node& node, ValuePtr value) noexcept;
    int removeValue(Node& node, std::string_view name);
    uint64_t valueIdFor(const Node& node, std::string_view name) const noexcept;

    // The log of changes, oldest first, since it was last cleared.
    size_t logSize() const noexcept { return _log.size(); }
    const Change& lastChange() const noexcept { return _log.back(); }
    void clearLog() noexcept { _log.clear(); }
    // Takes the last change of the log back; returns what was done to that end, as a change of its own.
    Change takeBackLast() noexcept;

    // Brings in changes from outside, while the log is empty. Nodes that stay keep their identity. Throws Damage
    // when the rows make no tree; a part may be in then, and only a whole delta makes it good.
    void apply(Delta&& delta);

    // False while a part of a change from outside is in and the rest is not.
    bool isSound() const noexcept { return _isSound; }

    // The ids that the next key and the next value get.
    uint64_t nextNodeId() const noexcept { return _nextNodeId; }
    uint64_t nextValueId() const noexcept { return _nextValueId; }
    void setNextIds(uint64_t node, uint64_t value) noexcept;

    // A number greater than every stamp given so far.
    static uint64_t newStamp() noexcept;

    static constexpr uint64_t rootId = 1;

    mutable RwLock lock;

private:
    struct IdOf {
        uint64_t operator()(const Node& node) const noexcept { return node.id; }
    };

    void attach(Node& node);
    void detach(Node& node) noexcept;
    void detachWithAllBelow(Node& node);
    static void touch(Node& node) noexcept;
    Change& logChange(Change::Kind kind, Node& node);

    void addWhatIsGone(Delta& delta) const;
    void applyNode(const NodeRow& row);
    void applyValue(ValueRow& row);

    Node* _root;
    bool _isSound = true;
    PointerIndex<Node, IdOf> _nodes;  // of all nodes in the tree; each entry is a counted reference
    std::vector<Change> _log;
    uint64_t _nextNodeId = rootId + 1;
    uint64_t _nextValueId = 1;
};

}  // namespace zxreg

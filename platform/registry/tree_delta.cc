// Bringing changes from outside into a tree.
#include <algorithm>

#include "failure.h"
#include "tree.h"

namespace zxreg {
namespace {

template <class Row, class IdOf>
bool holdsId(const std::vector<Row>& rows, uint64_t id, IdOf idOf) {
    const auto at = std::lower_bound(rows.begin(), rows.end(), id,
                                     [&](const Row& row, uint64_t wanted) { return idOf(row) < wanted; });
    return at != rows.end() && idOf(*at) == id;
}

}  // namespace

void Tree::apply(Delta&& delta) {
    _isSound = false;
    if (delta.whole) addWhatIsGone(delta);
    _nodes.reserve(_nodes.size() + delta.nodes.size());
    for (const uint64_t id : delta.goneNodes) {
        if (Node* gone = node(id)) detachWithAllBelow(*gone);
    }
    for (const NodeRow& row : delta.nodes) {
        applyNode(row);
    }
    for (const auto& [nodeId, valueId] : delta.goneValues) {
        Node* owner = node(nodeId);
        if (owner == nullptr || owner->values.findId(valueId) == nullptr) continue;
        owner->values.remove(valueId);
        touch(*owner);
    }
    for (ValueRow& row : delta.values) {
        applyValue(row);
    }
    _isSound = true;
}

// Completes a whole delta: names what the tree holds and the delta does not.
void Tree::addWhatIsGone(Delta& delta) const {
    _nodes.forEach([&](const Node& node) {
        if (node.id != rootId && !holdsId(delta.nodes, node.id, [](const NodeRow& row) { return row.id; })) {
            delta.goneNodes.push_back(node.id);
        }
        for (size_t i = 0; i < node.values.size(); ++i) {
            const uint64_t id = node.values.at(i).id;
            if (!holdsId(delta.values, id, [](const ValueRow& row) { return row.value->id; })) {
                delta.goneValues.emplace_back(node.id, id);
            }
        }
    });
}

// A node never changes its name or parent, so one that is there already needs nothing.
void Tree::applyNode(const NodeRow& row) {
    const Node* held = node(row.id);
    if (held != nullptr) {
        if (held->name() != row.name || held->parent->id != row.parent) throw Damage("a key has changed its place");
        return;
    }
    Node* parent = node(row.parent);
    if (parent == nullptr) throw Damage("a key lies below a key that does not exist");
    if (parent->children.find(row.name) != nullptr) throw Damage("a key has two subkeys of one name");
    NodeRef made(new Node(row.id, parent, row.name));
    attach(*made);
}

void Tree::applyValue(ValueRow& row) {
    Node* owner = node(row.node);
    if (owner == nullptr) throw Damage("a value belongs to a key that does not exist");
    const Value* held = owner->values.find(row.value->name());
    if (held != nullptr && held->id != row.value->id) throw Damage("a key has two values of one name");
    if (held != nullptr && held->same(*row.value)) return;
    if (held != nullptr) {
        owner->values.replace(std::move(row.value));
    } else {
        if (owner->values.findId(row.value->id) != nullptr) throw Damage("a value has changed its name");
        owner->values.insert(std::move(row.value));
    }
    touch(*owner);
}

void Tree::detachWithAllBelow(Node& top) {
    std::vector<Node*> below{&top};
    for (size_t i = 0; i < below.size(); ++i) {
        const Items<Node*>& children = below[i]->children;
        for (size_t k = 0; k < children.size(); ++k) {
            below.push_back(&children.at(k));
        }
    }
    for (size_t i = below.size(); i-- > 0;) {
        const NodeRef guard(below[i]);
        detach(*below[i]);
    }
}

}  // namespace zxreg

// One open store: the tree, its engine, and who may use them when.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "engine.h"
#include "failure.h"
#include "update_lock.h"

namespace zxreg {

// Locks are taken in this order: the right to update, the engine's mutex, the tree's lock. Readers hold the tree's lock
// alone, and shared, unless another process has committed something. No lock is held while waiting for another process.
class Store {
public:
    // `makeEngine` is called, with the place, at the first opening.
    using EngineMaker = std::unique_ptr<Engine> (*)(const std::string& place);
    Store(std::string location, std::string place, EngineMaker makeEngine);

    const std::string& location() const noexcept { return _location; }

    // Makes and fills the store unless that is done. Any number of threads may call.
    void open();

    Node& root() noexcept { return _tree.root(); }

    // Runs `look(const Tree&)`, which returns a code, on an up-to-date tree that nobody changes meanwhile.
    template <class Look>
    int read(Look look) {
        std::shared_lock guard(_tree.lock);
        if (!_engine->isCurrent()) {
            guard.unlock();
            refresh();
            guard.lock();
        }
        if (!_tree.isSound()) throwUnsound();
        return look(static_cast<const Tree&>(_tree));
    }

    int createKey(Node& from, std::string_view path, NodeRef& made);
    int deleteKey(Node& from, std::string_view path);
    int setValue(Node& node, std::string_view name, uint32_t type, const void* data, uint32_t size);
    int deleteValue(Node& node, std::string_view name);

    // The node's stamp, which nobody else's is, and which stays so while nothing changes at or below it. As long as
    // another thread has changed something there in an update that is still open, a new number each time.
    uint64_t stampOf(const Node& node) const noexcept;

    // Opens a protected string into `plain`, which has room for it.
    int openSecret(const SecretPlace& place, std::string_view sealed, void* plain);

    int beginUpdate(const Node& node);
    int endUpdate();
    int cancelUpdate();

    // Counts the handles on the store.
    void retain() noexcept { _handles.fetch_add(1, std::memory_order_relaxed); }
    // Gives a handle back unless it is the last one.
    bool releaseUnlessLast() noexcept;
    // Gives a handle back; true when it was the last one.
    bool release() noexcept { return _handles.fetch_sub(1, std::memory_order_acq_rel) == 1; }

private:
    void refresh();
    void begin();
    void beginTransaction(Deadline deadline);
    void end();
    void cancel() noexcept;
    void leave() noexcept;
    void takeBackAll() noexcept;
    void takeBackLast() noexcept;
    void commit();
    void record(const Change& change);
    void recordOutstanding();
    bool isWrittenAgain(const Node& node, uint64_t value) const noexcept;
    void checkWritable() const;
    [[noreturn]] void throwUnsound() const;
    ValuePtr makeValue(const Node& node, std::string_view name, uint32_t type, const void* data, uint32_t size);

    template <class Write>
    int update(Write write);
    template <class Apply>
    int change(Apply apply);

    const std::string _location;
    const std::string _place;  // the file name, for messages too
    const EngineMaker _makeEngine;
    const std::chrono::milliseconds _busyLimit;
    std::atomic<uint32_t> _handles{0};

    std::mutex _opening;
    bool _isOpen = false;

    Tree _tree;
    std::mutex _engineMutex;
    std::unique_ptr<Engine> _engine;

    // Greater than the stamps of all that the open update has not changed; 0 when none is open.
    alignas(8) std::atomic<uint64_t> _openSince{0};

    // These belong to the holder of the update lock.
    UpdateLock _updates;
    std::vector<size_t> _marks;    // the size of the tree's log at the beginning of each open update
    size_t _recorded = 0;          // how many changes of the log the engine knows: all, or all but the last
    std::optional<Failure> _lost;  // why the open transaction can only be rolled back
};

}  // namespace zxreg

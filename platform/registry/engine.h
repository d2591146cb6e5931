// What makes the changes of one tree durable and brings in those of other processes.
#pragma once

#include "secret.h"
#include "tree.h"

namespace zxreg {

// The base does nothing but make a key up: it is the engine of a store that lives in memory only. Functions throw a
// Failure or std::bad_alloc. One thread calls at a time, but for isCurrent.
class Engine {
public:
    Engine() = default;
    virtual ~Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Whether the tree shows everything that others have committed. Called at every read, by any number of threads that
    // hold the tree's lock shared.
    virtual bool isCurrent() const noexcept { return true; }

    // Brings in what others have committed; the first call fills the tree. Takes the tree's lock where it changes it.
    // Does nothing while a transaction is open, because then others cannot commit.
    virtual void refresh(Tree&) {}

    // Opens a transaction and brings the tree up to date. False while another process has one open.
    virtual bool tryBegin(Tree&) { return true; }

    // Throws when the store may only be read: then an update is nothing but a name for the time that it takes.
    virtual void checkWritable() const {}

    // Takes a change that the tree has already made into the transaction. When it fails the transaction is lost.
    virtual void record(const Change&) {}

    // Makes the transaction durable. When it fails the transaction is still to be rolled back.
    virtual void commit(const Tree&) {}
    virtual void rollback() noexcept {}

    // The keys that protected strings are sealed with (inside a transaction) and opened with.
    virtual const SecretKey& sealingKey() { return ownKey(); }
    virtual const SecretKey& openingKey() { return ownKey(); }

private:
    const SecretKey& ownKey() {
        if (!_key) _key = SecretKey::random();
        return *_key;
    }

    std::optional<SecretKey> _key;
};

}  // namespace zxreg

// The updates of a store: opening, nesting, ending, and taking back.
#include <algorithm>

#include "store.h"

namespace zxreg {

int Store::beginUpdate(const Node& node) {
    const int code = read([&](const Tree&) { return node.deleted ? ZXREG_E_DELETED : ZXREG_S_OK; });
    if (code >= 0) begin();
    return code;
}

int Store::endUpdate() {
    if (_updates.depth() == 0) return ZXREG_E_NO_UPDATE;
    end();
    return ZXREG_S_OK;
}

int Store::cancelUpdate() {
    if (_updates.depth() == 0) return ZXREG_E_NO_UPDATE;
    cancel();
    return ZXREG_S_OK;
}

void Store::begin() {
    const Deadline deadline = std::chrono::steady_clock::now() + _busyLimit;
    if (!_updates.take(deadline)) throw Failure(ZXREG_E_BUSY, _place + ": another thread is writing for too long.");
    try {
        _marks.push_back(_tree.logSize());
        if (_marks.size() == 1) {
            beginTransaction(deadline);
            _openSince = Tree::newStamp();
        }
    } catch (...) {
        if (_marks.size() == _updates.depth()) _marks.pop_back();
        _updates.giveBack();
        throw;
    }
}

uint64_t Store::stampOf(const Node& node) const noexcept {
    const uint64_t since = _openSince;
    return since != 0 && node.stamp > since && _updates.depth() == 0 ? Tree::newStamp() : node.stamp;
}

// Another process's transaction is waited for without holding any lock, so that reading goes on. The pauses stay short:
// between two writes of a busy process there is little time to get in.
void Store::beginTransaction(Deadline deadline) {
    std::chrono::microseconds pause(100);
    for (;;) {
        {
            const std::lock_guard guard(_engineMutex);
            if (_engine->tryBegin(_tree)) return;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            throw Failure(ZXREG_E_BUSY, _place + ": another process is writing for too long.");
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds(1600));
    }
}

// Ends the innermost update. When it throws, the update has ended all the same, and nothing of it has been kept.
void Store::end() {
    try {
        if (_marks.size() == 1) commit();
    } catch (...) {
        leave();
        throw;
    }
    leave();
}

void Store::leave() noexcept {
    _marks.pop_back();
    if (_marks.empty()) _openSince = 0;
    _updates.giveBack();
}

void Store::commit() {
    try {
        if (_lost) throw Failure(*_lost);
        if (_tree.logSize() == 0) return takeBackAll();
        recordOutstanding();
        const std::lock_guard guard(_engineMutex);
        _engine->commit(_tree);
        _tree.clearLog();
        _recorded = 0;
    } catch (...) {
        takeBackAll();
        throw;
    }
}

// Ends the innermost update and takes everything since its beginning back.
void Store::cancel() noexcept {
    if (_marks.size() == 1) {
        takeBackAll();
    } else {
        while (_tree.logSize() > _marks.back()) {
            takeBackLast();
        }
    }
    leave();
}

// Takes the whole transaction back. The engine stays locked until the tree shows the old state again, so that nothing
// from outside is brought into a tree that holds changes of its own.
void Store::takeBackAll() noexcept {
    const std::lock_guard guard(_engineMutex);
    _engine->rollback();
    const std::unique_lock treeGuard(_tree.lock);
    while (_tree.logSize() > 0) {
        _tree.takeBackLast();
    }
    _recorded = 0;
    _lost.reset();
}

// Takes the last change back inside the transaction; what the engine knows of it is undone by a further record.
void Store::takeBackLast() noexcept {
    const Change undone = [this] {
        const std::unique_lock guard(_tree.lock);
        return _tree.takeBackLast();
    }();
    if (_recorded <= _tree.logSize()) return;
    _recorded = _tree.logSize();
    try {
        if (!_lost) record(undone);
    } catch (...) {  // the transaction is lost, which its end will say
    }
}

// Whether the last change wrote the value too, in the innermost update, and the engine has not been told yet. The next
// write becomes a part of that change then: of a value written again and again, only the last state is recorded.
bool Store::isWrittenAgain(const Node& node, uint64_t value) const noexcept {
    const size_t changes = _tree.logSize();
    return changes > _recorded && changes > _marks.back() && _tree.lastChange().isWriteOf(node, value);
}

// To be called before another change and before the commit: the engine takes a change as the tree shows it.
void Store::recordOutstanding() {
    checkWritable();
    if (_recorded == _tree.logSize()) return;
    record(_tree.lastChange());
    ++_recorded;
}

// Hands a change to the engine. A transaction that the engine could not follow is lost as a whole.
void Store::record(const Change& change) {
    const std::lock_guard guard(_engineMutex);
    try {
        _engine->record(change);
    } catch (const Failure& failure) {
        // That it is lost must be known even when there is no memory to say why.
        _lost = Failure(failure.code(), "");
        _lost = failure;
        throw;
    } catch (const std::bad_alloc&) {
        _lost = Failure(ZXREG_E_OUT_OF_MEMORY, "");
        throw;
    }
}

// The tree holds a part of what another process committed, and the rest could not be brought in.
void Store::throwUnsound() const {
    throw Failure(ZXREG_E_CORRUPT, _place + ": the changes of another process could not be brought in.");
}

// Throws when a change cannot be made, before the tree is touched.
void Store::checkWritable() const {
    if (_lost) throw Failure(*_lost);
    _engine->checkWritable();
}

}  // namespace zxreg

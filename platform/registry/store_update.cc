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
        if (_marks.size() == 1) beginTransaction(deadline);
    } catch (...) {
        if (_marks.size() == _updates.depth()) _marks.pop_back();
        _updates.giveBack();
        throw;
    }
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
    const bool isOutermost = _marks.size() == 1;
    std::optional<Failure> lost;
    if (isOutermost && _lost) {
        lost = std::move(_lost);
        takeBackAll();
    } else if (isOutermost) {
        try {
            commit();
        } catch (...) {
            _marks.pop_back();
            _updates.giveBack();
            throw;
        }
    }
    _marks.pop_back();
    _updates.giveBack();
    if (lost) throw Failure(*lost);
}

void Store::commit() {
    if (_tree.logSize() == 0) return takeBackAll();
    const std::lock_guard guard(_engineMutex);
    try {
        _engine->commit(_tree);
        _tree.clearLog();
    } catch (...) {
        _engine->rollback();
        takeBackTo(0);
        throw;
    }
}

// Ends the innermost update and takes everything since its beginning back.
void Store::cancel() noexcept {
    if (_marks.size() == 1) {
        takeBackAll();
    } else {
        while (_tree.logSize() > _marks.back()) {
            Change undone = [this] {
                const std::unique_lock guard(_tree.lock);
                return _tree.takeBackLast();
            }();
            try {
                if (!_lost) record(undone);
            } catch (...) {
            }
        }
    }
    _marks.pop_back();
    _updates.giveBack();
}

// Takes the whole transaction back. The engine stays locked until the tree shows the old state again, so that nothing
// from outside is brought into a tree that holds changes of its own.
void Store::takeBackAll() noexcept {
    const std::lock_guard guard(_engineMutex);
    _engine->rollback();
    takeBackTo(0);
    _lost.reset();
}

void Store::takeBackTo(size_t mark) noexcept {
    const std::unique_lock guard(_tree.lock);
    while (_tree.logSize() > mark) {
        _tree.takeBackLast();
    }
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

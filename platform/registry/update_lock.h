// The right to change a store: held by one thread at a time, for as long as its update is open.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace zxreg {

using Deadline = std::chrono::steady_clock::time_point;

// Nests: the thread that holds it may take it again, and gives it back as often. Only that thread finds its own id as
// the owner, so it needs no lock to know that it is the one.
class UpdateLock {
public:
    // False when another thread held it until the deadline.
    bool take(Deadline deadline) {
        if (!isMine()) {
            std::unique_lock guard(_mutex);
            if (!_free.wait_until(guard, deadline, [this] { return _owner.load() == std::thread::id(); })) return false;
            _owner = std::this_thread::get_id();
        }
        ++_depth;
        return true;
    }

    void giveBack() noexcept {
        if (--_depth != 0) return;
        const std::lock_guard guard(_mutex);
        _owner = std::thread::id();
        _free.notify_one();
    }

    // How often this thread holds it.
    size_t depth() const noexcept { return isMine() ? _depth : 0; }

private:
    bool isMine() const noexcept { return _owner.load(std::memory_order_relaxed) == std::this_thread::get_id(); }

    std::mutex _mutex;
    std::condition_variable _free;
    std::atomic<std::thread::id> _owner{};
    size_t _depth = 0;  // the owner's alone
};

}  // namespace zxreg

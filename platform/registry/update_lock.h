// The right to change a store: held by one thread at a time, for as long as its update is open.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace zxreg {

using Deadline = std::chrono::steady_clock::time_point;

// Nests: the thread that holds it may take it again, and gives it back as often.
class UpdateLock {
public:
    // False when another thread held it until the deadline.
    bool take(Deadline deadline) {
        std::unique_lock guard(_mutex);
        const auto me = std::this_thread::get_id();
        if (_depth == 0 || _owner != me) {
            if (!_free.wait_until(guard, deadline, [this] { return _depth == 0; })) return false;
            _owner = me;
        }
        ++_depth;
        return true;
    }

    void giveBack() noexcept {
        const std::lock_guard guard(_mutex);
        if (--_depth == 0) _free.notify_one();
    }

    // How often this thread holds it.
    size_t depth() const noexcept {
        const std::lock_guard guard(_mutex);
        return _owner == std::this_thread::get_id() ? _depth : 0;
    }

private:
    mutable std::mutex _mutex;
    std::condition_variable _free;
    std::thread::id _owner;
    size_t _depth = 0;
};

}  // namespace zxreg

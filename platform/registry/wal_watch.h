// Tells without a system call whether anyone has committed to a database.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace zxreg {

// In write-ahead mode every commit, of whatever process, changes the 48-byte header at the start of the index that all
// processes share in memory. Comparing it with the header seen before the last look at the database is enough: a header
// caught halfway through a change differs too, and only costs one more look.
class WalWatch {
public:
    using Header = std::array<uint32_t, 12>;

    // Finds the shared index; to be called after something has been read. May fail to, and be called again.
    void attach(sqlite3* database) noexcept;
    bool isAttached() const noexcept { return _shared != nullptr; }

    Header look() const noexcept;

    // What the tree shows; guarded by the tree's lock.
    void remember(const Header& header) noexcept {
        _seen = header;
        _hasSeen = true;
    }
    void forget() noexcept { _hasSeen = false; }
    bool isUnchanged() const noexcept;

private:
    const volatile uint32_t* _shared = nullptr;
    Header _seen{};
    bool _hasSeen = false;
};

}  // namespace zxreg

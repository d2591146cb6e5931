// ReaderGate: lets readers go without a lock, and keeps what they may still be looking at.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace zxpol {

// Something that readers reach through a published pointer. Once another pointer is published it is retired.
class Retirable {
public:
    Retirable() = default;
    virtual ~Retirable() = default;
    Retirable(const Retirable&) = delete;
    Retirable& operator=(const Retirable&) = delete;

private:
    friend class ReaderGate;
    Retirable* _next = nullptr;
};

/*
 * Readers hold a Pass while they use published pointers, and are counted. The writer, one at a time, first publishes
 * the new pointer (sequentially consistent) and then retires the old object. It is destroyed when each of the counters
 * was seen at zero since then: whoever was counted before has left, and whoever comes later finds the new pointer.
 * Nobody waits; the writer looks again whenever it has something to do.
 */
class ReaderGate {
public:
    class Pass {
    public:
        explicit Pass(const ReaderGate& gate) noexcept : _count(gate.countOfThisThread()) {
            _count.fetch_add(1, std::memory_order_seq_cst);
        }
        ~Pass() { _count.fetch_sub(1, std::memory_order_release); }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        std::atomic<uint32_t>& _count;
    };

    ReaderGate() = default;
    ~ReaderGate();
    ReaderGate(const ReaderGate&) = delete;
    ReaderGate& operator=(const ReaderGate&) = delete;

    // Takes `old` over, which no new reader can reach any more.
    void retire(Retirable* old) noexcept;

    // Destroys what was retired, if by now nobody can be looking at it.
    void tidy() noexcept {
        if (_retired != nullptr) lookAtCounters();
    }

private:
    // Threads are spread over several counters, each in a cache line of its own.
    struct alignas(64) Counter {
        std::atomic<uint32_t> readers{0};
    };
    static constexpr size_t counterCount = 8;

    std::atomic<uint32_t>& countOfThisThread() const noexcept;
    void lookAtCounters() noexcept;
    void destroyRetired() noexcept;

    mutable std::array<Counter, counterCount> _counters;
    std::array<bool, counterCount> _wasZero{};  // since the last retirement
    Retirable* _retired = nullptr;
};

// Each thread has a stack of its own, megabytes away from the others, so that an address on it tells threads apart.
inline std::atomic<uint32_t>& ReaderGate::countOfThisThread() const noexcept {
    const char here = 0;
    const auto place = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&here) >> 20);
    return _counters[(place * 0x9e3779b1u) >> 29].readers;
}

}  // namespace zxpol

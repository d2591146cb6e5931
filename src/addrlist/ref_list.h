// RefList: references in the order of adding, read without a lock.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "addrlist/ref_table.h"

namespace zxpol {

// One writer at a time; readers need a pass through the gate. Removing costs a search.
class RefList {
public:
    explicit RefList(ReaderGate& gate) : _gate(gate), _array(new Array(0)) {}
    ~RefList() { delete _array.load(std::memory_order_relaxed); }
    RefList(const RefList&) = delete;
    RefList& operator=(const RefList&) = delete;

    // Calls `visit` with each reference until it returns false.
    template <class Visit>
    void visit(Visit visit) const {
        const Array& array = *_array.load(std::memory_order_seq_cst);
        const size_t count = array.count.load(std::memory_order_acquire);
        for (size_t i = 0; i < count; ++i) {
            const uint32_t reference = array.refs[i].load(std::memory_order_acquire);
            if (reference != RefTable::none && !visit(reference)) return;
        }
    }

    // Makes room for one more reference, so that `append` cannot fail. What was removed goes on the way.
    void makeRoom() {
        Array* old = _array.load(std::memory_order_relaxed);
        if (old->count.load(std::memory_order_relaxed) < old->capacity) return;
        auto grown = std::make_unique<Array>(_live + _live / 2 + 8);
        visit([&grown](uint32_t reference) {
            grown->append(reference);
            return true;
        });
        _array.store(grown.release(), std::memory_order_seq_cst);
        _gate.retire(old);
    }

    // There must be room.
    void append(uint32_t reference) noexcept {
        _array.load(std::memory_order_relaxed)->append(reference);
        ++_live;
    }

    void remove(uint32_t reference) noexcept {
        Array& array = *_array.load(std::memory_order_relaxed);
        const size_t count = array.count.load(std::memory_order_relaxed);
        for (size_t i = 0; i < count; ++i) {
            if (array.refs[i].load(std::memory_order_relaxed) != reference) continue;
            array.refs[i].store(RefTable::none, std::memory_order_release);
            --_live;
            return;
        }
    }

private:
    struct Array : Retirable {
        explicit Array(size_t size) : capacity(size), refs(new std::atomic<uint32_t>[size]) {}

        void append(uint32_t reference) noexcept {
            const size_t end = count.load(std::memory_order_relaxed);
            refs[end].store(reference, std::memory_order_relaxed);
            count.store(end + 1, std::memory_order_release);
        }

        const size_t capacity;
        std::atomic<size_t> count{0};
        const std::unique_ptr<std::atomic<uint32_t>[]> refs;
    };

    ReaderGate& _gate;
    std::atomic<Array*> _array;
    size_t _live = 0;
};

}  // namespace zxpol

#include "addrlist/reader_gate.h"

#include <algorithm>
#include <thread>

namespace zxpol {

namespace {

// A reader is inside for a microsecond. When they never all leave, the next change tries again.
constexpr int attempts = 100;

}  // namespace

ReaderGate::~ReaderGate() {
    destroyRetired();
}

void ReaderGate::retire(Retirable* old) noexcept {
    old->_next = _retired;
    _retired = old;
    for (int i = 0; i < attempts; ++i) {
        if (isEmpty()) return destroyRetired();
        std::this_thread::yield();
    }
}

// Readers may come and go between the looks at the counters: each was out of its counter at some moment after the
// publication, and that is what counts.
bool ReaderGate::isEmpty() const noexcept {
    return std::all_of(_counters.begin(), _counters.end(),
                       [](const Counter& counter) { return counter.readers.load(std::memory_order_seq_cst) == 0; });
}

void ReaderGate::destroyRetired() noexcept {
    while (_retired != nullptr) {
        Retirable* next = _retired->_next;
        delete _retired;
        _retired = next;
    }
}

}  // namespace zxpol

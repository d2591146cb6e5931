#include "addrlist/reader_gate.h"

#include <algorithm>

namespace zxpol {

ReaderGate::~ReaderGate() {
    destroyRetired();
}

void ReaderGate::retire(Retirable* old) noexcept {
    old->_next = _retired;
    _retired = old;
    _wasZero.fill(false);
    lookAtCounters();
}

void ReaderGate::lookAtCounters() noexcept {
    for (size_t i = 0; i < counterCount; ++i)
        _wasZero[i] = _wasZero[i] || _counters[i].readers.load(std::memory_order_seq_cst) == 0;
    if (std::all_of(_wasZero.begin(), _wasZero.end(), [](bool wasZero) { return wasZero; })) destroyRetired();
}

void ReaderGate::destroyRetired() noexcept {
    while (_retired != nullptr) {
        Retirable* next = _retired->_next;
        delete _retired;
        _retired = next;
    }
}

}  // namespace zxpol

#include "addrlist/big_block.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace zxpol {

namespace {

constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kCacheLine = 64;

size_t roundUp(size_t size, size_t unit) {
    return (size + unit - 1) / unit * unit;
}

}  // namespace

BigBlock::BigBlock(size_t size) {
    const size_t unit = size >= kHugePage ? kHugePage : kCacheLine;
    const size_t whole = roundUp(size, unit);
    if (whole < size) throw std::bad_alloc();
    _memory = std::aligned_alloc(unit, whole);
    if (_memory == nullptr) throw std::bad_alloc();
    // Only advice: without it everything works as well.
    if (unit == kHugePage) madvise(_memory, whole, MADV_HUGEPAGE);
}

BigBlock BigBlock::zeroed(size_t size) {
    BigBlock block(size);
    std::memset(block._memory, 0, size);
    return block;
}

BigBlock::~BigBlock() {
    std::free(_memory);
}

}  // namespace zxpol

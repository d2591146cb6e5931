#include "support/fault_memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include "support/fault_store.h"

namespace {

thread_local int depth = 0;
thread_local uint64_t planned = 0;
thread_local uint64_t counted = 0;
thread_local bool happened = false;
thread_local bool withStore = false;

// Memory, or null when the planned moment has come.
void* take(std::size_t size, std::size_t alignment) noexcept {
    const bool counts = depth > 0 && !zxtest::insideStoreBooks() && (withStore || !zxtest::insideRealStore());
    if (counts && ++counted == planned) {
        happened = true;
        return nullptr;
    }
    if (size == 0) size = 1;
    if (alignment <= alignof(std::max_align_t)) return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* takeOrThrow(std::size_t size, std::size_t alignment) {
    void* memory = take(size, alignment);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

namespace zxtest {

CountedAllocations::CountedAllocations() {
    ++depth;
}

CountedAllocations::~CountedAllocations() {
    --depth;
}

void failAllocation(uint64_t call, bool inStore) {
    planned = call;
    withStore = inStore;
    counted = 0;
    happened = false;
}

bool allocationFailed() {
    return happened;
}

uint64_t countedAllocations() {
    return counted;
}

}  // namespace zxtest

void* operator new(std::size_t size) {
    return takeOrThrow(size, 1);
}
void* operator new[](std::size_t size) {
    return takeOrThrow(size, 1);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return take(size, 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return take(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return takeOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return takeOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return take(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return take(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(memory);
}

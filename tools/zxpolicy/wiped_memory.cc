// Memory that this program gives back is wiped first. A password goes through the parser, texts and containers that
// know nothing of secrets; so what any of them leaves behind is wiped, instead of some of it by name.
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>

void* operator new(std::size_t size) {
    for (;;) {
        void* memory = std::malloc(size != 0 ? size : 1);
        if (memory != nullptr) return memory;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) throw std::bad_alloc();
        handler();
    }
}

// Else the one of a sanitizer would be taken, whose memory must not come to the delete below.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    if (memory == nullptr) return;
    explicit_bzero(memory, malloc_usable_size(memory));
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

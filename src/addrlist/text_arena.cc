#include "addrlist/text_arena.h"

#include <cstring>
#include <new>

namespace zxpol {

uint32_t TextArena::add(std::string_view text, Mark marks) {
    const size_t size = sizeOf(text);
    uint64_t place = _end;
    unsigned chunk = chunkOf(_end);
    // A text does not reach from one chunk into the next; what is left of a chunk stays unused.
    while (chunk < chunkCount && place + size > uint64_t{beginOf(chunk)} + sizeOfChunk(chunk)) {
        ++chunk;
        if (chunk < chunkCount) place = beginOf(chunk);
    }
    if (chunk >= chunkCount) throw std::bad_alloc();
    if (_chunks[chunk].load(std::memory_order_relaxed) == nullptr) {
        _blocks[chunk] = BigBlock(sizeOfChunk(chunk));
        _chunks[chunk].store(_blocks[chunk].as<char>(), std::memory_order_relaxed);
    }
    char* to = _chunks[chunk].load(std::memory_order_relaxed) + (place - beginOf(chunk));
    // A longer text is measured when it is read.
    const size_t length = text.size() < lengthMask ? text.size() : lengthMask;
    to[0] = static_cast<char>(length & 0xff);
    to[1] = static_cast<char>((length | marks) >> 8);
    std::memcpy(to + headerSize, text.data(), text.size());
    to[headerSize + text.size()] = '\0';
    _end = static_cast<uint32_t>(place + size);
    return static_cast<uint32_t>(place);
}

std::string_view TextArena::text(uint32_t reference) const noexcept {
    const char* place = at(reference);
    const uint16_t length = header(place) & lengthMask;
    const char* text = place + headerSize;
    return {text, length < lengthMask ? length : std::strlen(text)};
}

}  // namespace zxpol

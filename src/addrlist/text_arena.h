// TextArena: the texts of a cache's addresses, one behind the other.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "addrlist/big_block.h"

namespace zxpol {

/*
 * Texts are added and never move or change, so that readers need no lock for a text whose reference was published to
 * them. References ascend in the order of adding. The arena is made of chunks, each twice as large as the one before: a
 * text costs its length and three bytes, and short arenas are small.
 */
class TextArena {
public:
    // What is known of a text besides its characters, for the caller's use.
    using Mark = uint16_t;
    static constexpr Mark markA = 0x8000;
    static constexpr Mark markB = 0x4000;

    TextArena() = default;
    TextArena(const TextArena&) = delete;
    TextArena& operator=(const TextArena&) = delete;

    // The reference of a copy of `text`. Throws std::bad_alloc, also beyond 4 GiB.
    uint32_t add(std::string_view text, Mark marks);

    // The text of a reference; a NUL follows it.
    std::string_view text(uint32_t reference) const noexcept;
    bool hasMark(uint32_t reference, Mark mark) const noexcept { return (header(at(reference)) & mark) != 0; }

    // Has the processor fetch a text that will soon be asked for.
    void prefetch(uint32_t reference) const noexcept { __builtin_prefetch(at(reference)); }

    // The bytes that a text takes, and those handed out.
    static size_t sizeOf(std::string_view text) noexcept { return headerSize + text.size() + 1; }
    uint32_t used() const noexcept { return _end; }

private:
    static constexpr unsigned firstBits = 10;
    static constexpr size_t chunkCount = 32 - firstBits;
    static constexpr size_t headerSize = sizeof(uint16_t);
    static constexpr uint16_t lengthMask = 0x3fff;

    static unsigned chunkOf(uint32_t offset) noexcept {
        return 31u - static_cast<unsigned>(__builtin_clz((offset >> firstBits) + 1));
    }
    static uint32_t beginOf(unsigned chunk) noexcept { return ((1u << chunk) - 1) << firstBits; }
    static uint32_t sizeOfChunk(unsigned chunk) noexcept { return 1u << (chunk + firstBits); }

    const char* at(uint32_t reference) const noexcept {
        const unsigned chunk = chunkOf(reference);
        return _chunks[chunk].load(std::memory_order_relaxed) + (reference - beginOf(chunk));
    }
    static uint16_t header(const char* place) noexcept {
        return static_cast<uint16_t>(static_cast<unsigned char>(place[0]) | static_cast<unsigned char>(place[1]) << 8);
    }

    std::array<std::atomic<char*>, chunkCount> _chunks{};
    std::array<BigBlock, chunkCount> _blocks;  // what the chunks are in
    uint32_t _end = 0;
};

}  // namespace zxpol

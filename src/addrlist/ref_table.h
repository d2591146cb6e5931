// RefTable: references to texts, found by hash.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "addrlist/big_block.h"
#include "addrlist/reader_gate.h"

namespace zxpol {

/*
 * An open-addressing table. Each slot has a tag of one byte, seven bits of the hash, and a reference. The tags lie
 * together in words, so that a lookup compares a word of them at once and mostly touches nothing else when the
 * reference is not there.
 *
 * One writer at a time; readers need no lock but a pass through the gate, for the writer retires the slots when it
 * grows. A reader sees each reference that was in before it began and was not removed meanwhile.
 */
class RefTable {
public:
    static constexpr uint32_t none = UINT32_MAX;

    explicit RefTable(ReaderGate& gate) : _gate(gate), _slots(new Slots(1)) {}
    ~RefTable() { delete _slots.load(std::memory_order_relaxed); }
    RefTable(const RefTable&) = delete;
    RefTable& operator=(const RefTable&) = delete;

    // The first reference under `hash` that `isWanted`, or `none`.
    template <class IsWanted>
    uint32_t find(uint64_t hash, IsWanted isWanted) const {
        const Slots& slots = *_slots.load(std::memory_order_seq_cst);
        size_t group = slots.firstGroup(hash);
        slots.prefetch(group);
        for (;; group = slots.nextGroup(group)) {
            const Word tags = slots.tags[group].load(std::memory_order_acquire);
            for (Word hits = zeroBytes(tags ^ (ones * tagOf(hash))); hits != 0; hits &= hits - 1) {
                const uint32_t reference = slots.refs[slotOf(group, hits)].load(std::memory_order_acquire);
                if (isWanted(reference)) return reference;
            }
            if (zeroBytes(tags) != 0) return none;
        }
    }

    // Has the processor fetch what a search for `hash` will look at.
    void prefetch(uint64_t hash) const noexcept {
        const Slots& slots = *_slots.load(std::memory_order_seq_cst);
        slots.prefetch(slots.firstGroup(hash));
    }

    // Makes room for one more reference, so that `insert` cannot fail. When that takes other slots, `forEach` calls its
    // argument with the hash and the reference of everything in the table.
    template <class ForEach>
    void makeRoom(ForEach forEach) {
        Slots* old = _slots.load(std::memory_order_relaxed);
        if (_used + 1 <= old->capacity()) return;
        auto grown = std::make_unique<Slots>(groupsFor(_live + 1));
        BatchWriter writer(*grown);
        forEach([&writer](uint64_t hash, uint32_t reference) { writer.put(hash, reference); });
        writer.finish();
        _used = _live;
        _slots.store(grown.release(), std::memory_order_seq_cst);
        _gate.retire(old);
    }

    // There must be room.
    void insert(uint64_t hash, uint32_t reference) noexcept {
        if (_slots.load(std::memory_order_relaxed)->put(hash, reference)) ++_used;
        ++_live;
    }

    // The reference must be in the table under `hash`.
    void remove(uint64_t hash, uint32_t reference) noexcept {
        Slots& slots = *_slots.load(std::memory_order_relaxed);
        for (size_t group = slots.firstGroup(hash);; group = slots.nextGroup(group)) {
            const Word tags = slots.tags[group].load(std::memory_order_relaxed);
            for (Word hits = zeroBytes(tags ^ (ones * tagOf(hash))); hits != 0; hits &= hits - 1) {
                const size_t slot = slotOf(group, hits);
                if (slots.refs[slot].load(std::memory_order_relaxed) != reference) continue;
                slots.setTag(slot, dead);
                --_live;
                return;
            }
        }
    }

    size_t size() const noexcept { return _live; }

private:
    using Word = uintptr_t;
    static constexpr size_t groupSize = sizeof(Word);
    static constexpr Word ones = ~Word{0} / 0xff;
    static constexpr Word highBits = ones * 0x80;
    static constexpr unsigned char empty = 0;
    static constexpr unsigned char dead = 1;

    // Marks the zero bytes of a word by their high bits. A byte of 1 behind a zero may be marked, too: tags that differ
    // in their last bit, for which a comparison of the texts decides.
    static constexpr Word zeroBytes(Word word) noexcept { return (word - ones) & ~word & highBits; }
    static constexpr unsigned char tagOf(uint64_t hash) noexcept {
        return static_cast<unsigned char>(0x80 | (hash & 0x7f));
    }
    static size_t slotOf(size_t group, Word marks) noexcept {
        return group * groupSize + static_cast<size_t>(__builtin_ctzll(marks)) / 8;
    }

    struct Slots : Retirable {
        explicit Slots(size_t groups)
            : mask(groups - 1),
              _tagBlock(BigBlock::zeroed(groups * sizeof(Word))),
              _refBlock(groups * groupSize * sizeof(uint32_t)),
              tags(_tagBlock.as<std::atomic<Word>>()),
              refs(_refBlock.as<std::atomic<uint32_t>>()) {}

        // One slot of eight stays empty, so that every search ends.
        size_t capacity() const noexcept { return (mask + 1) * groupSize * 7 / 8; }
        size_t firstGroup(uint64_t hash) const noexcept { return static_cast<size_t>(hash >> 7) & mask; }
        size_t nextGroup(size_t group) const noexcept { return (group + 1) & mask; }

        void setTag(size_t slot, unsigned char tag) noexcept {
            std::atomic<Word>& word = tags[slot / groupSize];
            const unsigned shift = static_cast<unsigned>(slot % groupSize * 8);
            const Word others = word.load(std::memory_order_relaxed) & ~(Word{0xff} << shift);
            word.store(others | (Word{tag} << shift), std::memory_order_release);
        }

        // Enters a reference into the first slot that is free; true when it had never been used.
        bool put(uint64_t hash, uint32_t reference) noexcept {
            size_t group = firstGroup(hash);
            Word free = 0;
            for (;; group = nextGroup(group)) {
                free = ~tags[group].load(std::memory_order_relaxed) & highBits;
                if (free != 0) break;
            }
            const size_t slot = slotOf(group, free);
            const Word tag = tags[group].load(std::memory_order_relaxed) >> (slot % groupSize * 8) & 0xff;
            refs[slot].store(reference, std::memory_order_release);
            setTag(slot, tagOf(hash));
            return tag == empty;
        }

        void prefetch(size_t group) const noexcept {
            __builtin_prefetch(tags + group);
            __builtin_prefetch(refs + group * groupSize);
        }

        const size_t mask;

    private:
        const BigBlock _tagBlock;
        const BigBlock _refBlock;

    public:
        std::atomic<Word>* const tags;
        std::atomic<uint32_t>* const refs;
    };

    // Enters many references into slots that lie far apart: several are on their way from memory at a time.
    class BatchWriter {
    public:
        explicit BatchWriter(Slots& slots) : _slots(slots) {}

        void put(uint64_t hash, uint32_t reference) noexcept {
            _slots.prefetch(_slots.firstGroup(hash));
            _waiting[_count++] = {hash, reference};
            if (_count == _waiting.size()) finish();
        }

        void finish() noexcept {
            for (size_t i = 0; i < _count; ++i)
                _slots.put(_waiting[i].hash, _waiting[i].reference);
            _count = 0;
        }

    private:
        struct Entry {
            uint64_t hash;
            uint32_t reference;
        };

        Slots& _slots;
        std::array<Entry, 32> _waiting;
        size_t _count = 0;
    };

    // Twice as many slots as references, so that growing is rare.
    static size_t groupsFor(size_t references) noexcept {
        size_t groups = 1;
        while (groups * groupSize * 7 / 8 < references + references / 2)
            groups *= 2;
        return groups;
    }

    ReaderGate& _gate;
    std::atomic<Slots*> _slots;
    size_t _live = 0;
    size_t _used = 0;  // slots that are not empty: live ones and dead ones
};

}  // namespace zxpol

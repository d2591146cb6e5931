// WildcardIndex: finds the wildcard entries of a list that match an address, however many there are.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>

#include "addrlist/pattern_form.h"
#include "addrlist/ref_list.h"
#include "addrlist/ref_table.h"
#include "addrlist/text_arena.h"
#include "pattern/wildcard_pattern.h"

namespace zxpol {

/*
 * Entries of the forms of PatternForm are found by lookups: the address's name and "any name" are looked up together
 * with its domain, each end of its domain behind a dot, and "any domain". All other entries are compared one by one.
 * Either way an entry matches exactly when ZxPolCondWildcardPattern says so.
 *
 * One writer at a time; readers need no lock but a pass through the gate.
 */
class WildcardIndex {
public:
    static constexpr uint32_t none = RefTable::none;

    // The texts of the entries are in `texts`.
    WildcardIndex(const TextArena& texts, ReaderGate& gate) : _texts(texts), _entries(gate), _unusual(gate) {}

    // Where an entry is filed, as its text says. Made first, as that may take memory.
    struct Place {
        explicit Place(const char* entry);

        bool isUnusual;
        uint64_t hash = 0;
        size_t form = 0;
        std::optional<size_t> suffixDots;  // the dots in the text of a suffix
    };

    // Makes room for one more entry, so that `insert` cannot fail. `forEach` calls its argument with the reference of
    // everything in the index.
    template <class ForEach>
    void makeRoom(ForEach forEach) {
        _unusual.makeRoom();
        _entries.makeRoom([&](auto put) {
            forEach([&](uint32_t reference) {
                const Place place(_texts.text(reference).data());
                if (!place.isUnusual) put(place.hash, reference);
            });
        });
    }

    void insert(uint32_t reference, const Place& place) noexcept;
    void remove(uint32_t reference, const Place& place) noexcept;

    // An entry that matches `address`, or `none`: the one of the largest weight, which goes to *weight, or when
    // `weight` is null any of them. Without any *weight stays as it is.
    uint32_t findMatch(const char* address, uint32_t* weight, ZxPolMatchWeightType kind) const;

private:
    class Search;

    void count(const Place& place, uint32_t by) noexcept;

    const TextArena& _texts;
    RefTable _entries;
    RefList _unusual;
    std::array<std::atomic<uint32_t>, PatternForm::count> _counts{};  // of entries by form
    // Of suffixes by the number of their dots: most ends of an address's domain need not be looked up.
    std::array<std::atomic<uint32_t>, ZxPolWildcardPattern::maxSegments> _suffixCounts{};
    std::atomic<uint32_t> _count{0};  // of all entries
};

}  // namespace zxpol

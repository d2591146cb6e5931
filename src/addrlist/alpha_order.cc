#include "addrlist/alpha_order.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "addrlist/folded_text.h"

namespace zxpol {

namespace {

// An item and eight characters of its key as a number that compares as they do.
struct Keyed {
    uint64_t part;
    uint32_t item;
};

uint64_t asNumber(uint64_t word) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return __builtin_bswap64(word);
#else
    return word;
#endif
}

// The characters of an item's key from `depth` on; zeros follow its end.
uint64_t partOfKey(const TextArena& texts, uint32_t item, size_t depth) {
    const std::string_view text = texts.text(item);
    char part[sizeof(uint64_t)] = {};
    if (text.find('"') == std::string_view::npos) {
        if (depth < text.size()) std::memcpy(part, text.data() + depth, std::min(sizeof part, text.size() - depth));
    } else {
        const FoldedKey key(text);
        if (depth < key.length()) std::memcpy(part, key.text() + depth, std::min(sizeof part, key.length() - depth));
    }
    return asNumber(foldWord(loadWord(part)));
}

// Sorts a run of items whose keys are the same up to `depth`: by the next eight characters, then run by run of those
// that are the same in these as well. Keys never hold a NUL, so that equal parts with zeros are the end of equal keys.
void sortRun(const TextArena& texts, Keyed* begin, Keyed* end, size_t depth) {
    for (Keyed* at = begin; at != end; ++at)
        at->part = partOfKey(texts, at->item, depth);
    std::sort(begin, end, [](const Keyed& a, const Keyed& b) { return a.part < b.part; });
    for (Keyed* run = begin; run != end;) {
        const Keyed* first = run;
        Keyed* next = std::find_if(run, end, [first](const Keyed& other) { return other.part != first->part; });
        if (next - run > 1 && (run->part & 0xff) != 0) sortRun(texts, run, next, depth + sizeof(uint64_t));
        run = next;
    }
}

}  // namespace

void sortByKey(const TextArena& texts, std::vector<uint32_t>& items) {
    std::vector<Keyed> keyed;
    keyed.reserve(items.size());
    for (const uint32_t item : items)
        keyed.push_back({0, item});
    sortRun(texts, keyed.data(), keyed.data() + keyed.size(), 0);
    std::transform(keyed.begin(), keyed.end(), items.begin(), [](const Keyed& each) { return each.item; });
}

}  // namespace zxpol

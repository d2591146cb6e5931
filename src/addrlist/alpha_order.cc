#include "addrlist/alpha_order.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "addrlist/folded_text.h"

namespace zxpol {

namespace {

constexpr size_t kPartSize = 16;

// An item and sixteen characters of its key as numbers that compare as they do.
struct Keyed {
    uint64_t high;
    uint64_t low;
    uint32_t item;

    bool operator<(const Keyed& other) const { return high != other.high ? high < other.high : low < other.low; }
    bool isSame(const Keyed& other) const { return high == other.high && low == other.low; }
};

uint64_t asNumber(uint64_t word) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return __builtin_bswap64(word);
#else
    return word;
#endif
}

// Takes the characters of a lower-cased text from `depth` on; zeros follow its end.
void takePart(const char* text, size_t length, size_t depth, Keyed& keyed) {
    char part[kPartSize] = {};
    if (depth < length) std::memcpy(part, text + depth, std::min(sizeof part, length - depth));
    keyed.high = asNumber(foldWord(loadWord(part)));
    keyed.low = asNumber(foldWord(loadWord(part + sizeof(uint64_t))));
}

void takePartOfKey(const TextArena& texts, size_t depth, Keyed& keyed) {
    const std::string_view text = texts.text(keyed.item);
    if (text.find('"') == std::string_view::npos) {
        takePart(text.data(), text.size(), depth, keyed);
    } else {
        const FoldedKey key(text);
        takePart(key.text(), key.length(), depth, keyed);
    }
}

// Texts of a list are far shorter; what is the same up to here is compared whole rather than with ever deeper calls.
constexpr size_t kDeepest = 2048;

bool isKeyBelow(const TextArena& texts, const Keyed& a, const Keyed& b) {
    return std::strcmp(FoldedKey(texts.text(a.item)).text(), FoldedKey(texts.text(b.item)).text()) < 0;
}

// Sorts a run of items whose keys are the same up to `depth`: by the next characters, then run by run of those that are
// the same in these as well. Keys never hold a NUL, so that equal parts with a zero are the end of equal keys.
void sortRun(const TextArena& texts, Keyed* begin, Keyed* end, size_t depth) {
    if (depth > kDeepest) {
        std::sort(begin, end, [&texts](const Keyed& a, const Keyed& b) { return isKeyBelow(texts, a, b); });
        return;
    }
    constexpr ptrdiff_t ahead = 8;
    for (Keyed* at = begin; at != end; ++at) {
        if (end - at > ahead) texts.prefetch(at[ahead].item);
        takePartOfKey(texts, depth, *at);
    }
    std::sort(begin, end);
    for (Keyed* run = begin; run != end;) {
        const Keyed& first = *run;
        Keyed* next = std::find_if(run, end, [&first](const Keyed& other) { return !other.isSame(first); });
        if (next - run > 1 && (first.low & 0xff) != 0) sortRun(texts, run, next, depth + kPartSize);
        run = next;
    }
}

}  // namespace

void sortByKey(const TextArena& texts, std::vector<uint32_t>& items) {
    std::vector<Keyed> keyed;
    keyed.reserve(items.size());
    for (const uint32_t item : items)
        keyed.push_back({0, 0, item});
    sortRun(texts, keyed.data(), keyed.data() + keyed.size(), 0);
    std::transform(keyed.begin(), keyed.end(), items.begin(), [](const Keyed& each) { return each.item; });
}

}  // namespace zxpol

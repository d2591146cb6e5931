#include "difference/sequence_diff.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tool {

namespace {

using Texts = std::vector<std::string>;

// All sequences of at most `most` letters of "abc".
std::vector<Texts> sequences(size_t most) {
    std::vector<Texts> all{{}};
    for (size_t begin = 0; most > 0; --most) {
        const size_t end = all.size();
        for (; begin < end; ++begin)
            for (const char* letter : {"a", "b", "c"}) {
                Texts longer = all[begin];
                longer.emplace_back(letter);
                all.push_back(longer);
            }
    }
    return all;
}

// The largest number of texts in common, by trying.
size_t mostInCommon(const Texts& a, const Texts& b, size_t i = 0, size_t j = 0) {
    if (i == a.size() || j == b.size()) return 0;
    if (a[i] == b[j]) return 1 + mostInCommon(a, b, i + 1, j + 1);
    return std::max(mostInCommon(a, b, i + 1, j), mostInCommon(a, b, i, j + 1));
}

Texts linesWithout(const std::vector<DiffLine>& diff, char sign) {
    Texts texts;
    for (const DiffLine& line : diff)
        if (line.sign != sign) texts.push_back(line.text);
    return texts;
}

}  // namespace

TEST(SequenceDiff, GivesBothSequencesBackWithTheMostInCommon) {
    const std::vector<Texts> all = sequences(4);
    ASSERT_EQ(all.size(), 121U);
    for (const Texts& before : all)
        for (const Texts& after : all) {
            const std::vector<DiffLine> diff = diffOf(before, after);
            ASSERT_EQ(linesWithout(diff, '+'), before);
            ASSERT_EQ(linesWithout(diff, '-'), after);
            ASSERT_EQ(linesOf(diff, ' ').size(), mostInCommon(before, after));
        }
}

}  // namespace tool

#include "difference/sequence_diff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tool {

std::vector<DiffLine> diffOf(const std::vector<std::string>& before, const std::vector<std::string>& after) {
    // common[i][j]: how many lines the rest of `before` from i on and of `after` from j on have in common.
    std::vector<std::vector<uint32_t>> common(before.size() + 1, std::vector<uint32_t>(after.size() + 1));
    for (size_t i = before.size(); i-- > 0;)
        for (size_t j = after.size(); j-- > 0;)
            common[i][j] =
                before[i] == after[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
    std::vector<DiffLine> lines;
    for (size_t i = 0, j = 0; i < before.size() || j < after.size();) {
        if (i < before.size() && j < after.size() && before[i] == after[j]) {
            lines.push_back({' ', before[i++]});
            ++j;
        } else if (j == after.size() || (i < before.size() && common[i + 1][j] >= common[i][j + 1])) {
            lines.push_back({'-', before[i++]});
        } else {
            lines.push_back({'+', after[j++]});
        }
    }
    return lines;
}

std::vector<std::string> linesOf(const std::vector<DiffLine>& diff, char sign) {
    std::vector<std::string> texts;
    for (const DiffLine& line : diff)
        if (line.sign == sign) texts.push_back(line.text);
    return texts;
}

}  // namespace tool

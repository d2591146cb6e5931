// Changes of a list and its answers beside the slow model. An input is a sequence of lines, each a step: a letter that
// says what is done, capital where the second object on the list does it, and its words, which blanks part.
//   i, r  insert, remove    m  only match the words    o  close and open    n  delete and create anew
// A word of the form N#text stands for the text made long by N times ten more letters.
#include <cctype>
#include <string>
#include <vector>

#include "bytes.h"
#include "model_run.h"

namespace {

constexpr size_t kMostSteps = 40, kMostWords = 24;

std::string lengthened(const std::string& word) {
    const size_t mark = word.find('#');
    if (mark == std::string::npos || mark > 2 || mark == 0) return word;
    size_t times = 0;
    for (size_t i = 0; i < mark; ++i) {
        if (std::isdigit(static_cast<unsigned char>(word[i])) == 0) return word;
        times = times * 10 + static_cast<size_t>(word[i] - '0');
    }
    return std::string(times * 10, 'l') + word.substr(mark + 1);
}

model::Addresses wordsOf(fuzz::Bytes line) {
    model::Addresses words;
    while (!line.isEmpty() && words.size() < kMostWords) {
        const std::string word = fuzz::upToNul(line.until(' '));
        if (!word.empty()) words.push_back(lengthened(word));
    }
    return words;
}

model::Step stepOf(const std::string& line, const model::Addresses& before) {
    using Kind = model::Step::Kind;
    fuzz::Bytes bytes(reinterpret_cast<const uint8_t*>(line.data()), line.size());
    const int letter = static_cast<int>(bytes.byte());
    model::Step step;
    step.isBySecondObject = std::isupper(letter) != 0;
    const model::Addresses words = wordsOf(bytes);
    switch (std::tolower(letter)) {
        case 'i':
        case 'r':
            step.kind = std::tolower(letter) == 'i' ? Kind::insert : Kind::remove;
            step.addresses = words;
            step.subjects = before;
            break;
        case 'n':
            step.kind = Kind::recreate;
            break;
        case 'o':
            step.kind = Kind::reopen;
            break;
        default:
            step.kind = Kind::reopen;
            step.subjects = words;
            break;
    }
    return step;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    model::Sequence sequence;
    // After each change the words of the one before are matched.
    model::Addresses before;
    for (const std::string& line : fuzz::Bytes(data, size).lines()) {
        if (sequence.size() == kMostSteps) break;
        sequence.push_back(stepOf(line, before));
        before = sequence.back().addresses;
    }
    fuzz::runBesideModel(sequence);
    return 0;
}

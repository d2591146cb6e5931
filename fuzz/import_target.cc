// Files of addresses, imported beside the slow model. An input is up to eight files, parted by 0xFF: each begins with a
// byte of options (1: directory format, 2: replace, 4: one of the two is a number that there is not), and another one
// that may have the file's text repeated, so that long files and lines need no long inputs.
#include <algorithm>
#include <string>

#include "bytes.h"
#include "import_pair.h"
#include "model_run.h"

namespace {

constexpr size_t kMostFiles = 8, kMostText = 60000;

std::string repeated(const std::string& text, size_t times) {
    std::string result = text;
    for (size_t i = 1; i < times && result.size() + text.size() <= kMostText; ++i)
        result += text;
    return result;
}

model::Step stepOf(const std::string& file) {
    fuzz::Bytes bytes(reinterpret_cast<const uint8_t*>(file.data()), file.size());
    const unsigned options = bytes.byte();
    const size_t times = bytes.byte();
    model::Step step;
    step.kind = model::Step::Kind::import;
    step.format = options % 2;
    step.replace = options / 2 % 2;
    if (options / 4 % 8 == 7) step.format = 2;
    if (options / 4 % 8 == 6) step.replace = 2;
    step.isBySecondObject = options / 32 % 2 == 1;
    step.text = repeated(bytes.rest(), times < 224 ? 1 : (times - 223) * 100);
    return step;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    model::Sequence sequence;
    while (!bytes.isEmpty() && sequence.size() < kMostFiles)
        sequence.push_back(stepOf(bytes.until('\xFF')));
    if (sequence.empty()) return 0;
    fuzz::checkNuls(sequence.back().text);
    // The model does not know what a NUL does.
    for (model::Step& step : sequence)
        std::replace(step.text.begin(), step.text.end(), '\0', '\1');
    sequence.back().subjects = {"a@b.c", "x@sub.example.com"};
    fuzz::runBesideModel(sequence);
    return 0;
}

#include "stored_images.h"

#include "model_run.h"

namespace fuzz {

namespace {

using model::Step;

constexpr size_t kMostSteps = 30, kMostImage = 2048;

// An image other than any before, so that the store notices each change.
Step unlikeOthers(unsigned number, size_t count) {
    Step step;
    step.kind = Step::Kind::overwrite;
    step.number = number;
    step.text = model::imageOf({"changed@x" + std::to_string(count)});
    return step;
}

Step ofKind(Step::Kind kind, const model::Addresses& addresses, unsigned options) {
    Step step;
    step.kind = kind;
    step.addresses = addresses;
    step.isBySecondObject = options / 128 == 1;
    return step;
}

// All that is in the images and the changes is looked up in the end.
model::Addresses wordsOf(const std::string& text) {
    model::Addresses words = model::addressesOf(text);
    if (words.size() > 6) words.resize(6);
    return words;
}

void addPart(model::Sequence& sequence, const std::string& part, model::Addresses& subjects) {
    Bytes bytes(reinterpret_cast<const uint8_t*>(part.data()), part.size());
    const unsigned options = bytes.byte();
    const std::string text = bytes.rest().substr(0, kMostImage);
    const model::Addresses words = wordsOf(text);
    subjects.insert(subjects.end(), words.begin(), words.end());
    switch (options % 8) {
        case 5:
            sequence.push_back(ofKind(Step::Kind::insert, words, options));
            break;
        case 6:
            sequence.push_back(ofKind(Step::Kind::remove, words, options));
            break;
        case 7:
            sequence.push_back(ofKind(Step::Kind::reopen, {}, options));
            break;
        default:
            sequence.push_back(unlikeOthers(1 + options % 8, sequence.size()));
            sequence.push_back(sequence.back());
            sequence.back().text = text;
            break;
    }
}

}  // namespace

void checkStoredImages(Bytes& bytes) {
    model::Sequence sequence;
    model::Addresses subjects;
    while (!bytes.isEmpty() && sequence.size() < kMostSteps)
        addPart(sequence, bytes.until('\xFF'), subjects);
    if (subjects.size() > 12) subjects.resize(12);
    sequence.push_back(ofKind(Step::Kind::reopen, {}, 0));
    sequence.back().subjects = subjects;
    runBesideModel(sequence);
}

}  // namespace fuzz

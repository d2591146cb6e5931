// Random sequences of what can be done with a list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/list_model.h"

namespace model {

// One step of a sequence.
struct Step {
    enum class Kind {
        insert,     // `addresses`; none: an empty array
        remove,     // the same
        import,     // `text` with `format` and `replace`
        overwrite,  // value `number` becomes the image `text`, behind the list's back; an empty one is no value
        reopen,     // both objects on the list are closed and opened
        recreate,   // the list is deleted and created again
    };
    Kind kind = Kind::insert;
    Addresses addresses;
    std::string text;
    uint32_t format = 0;
    uint32_t replace = 0;
    unsigned number = 0;
    bool isBySecondObject = false;
    // What is matched after the step, with everything else being compared; none: only the values are compared.
    Addresses subjects;
};
using Sequence = std::vector<Step>;

// Which addresses a sequence is about.
enum class Flavour {
    shortAddresses,  // few words, many duplicates
    longAddresses,   // values fill after few addresses
    wildcards,       // patterns of all accepted forms
    strangeValues,   // the store holds what no list would write
    imports,         // files of lines
};

// The same seed gives the same sequence.
Sequence sequenceOf(Flavour flavour, uint64_t seed);

// A sequence as a reader can do it again.
std::string traceOf(const Sequence& sequence);

}  // namespace model

// Images of a list's values.
#pragma once

#include "bytes.h"

namespace fuzz {

// Writes the parts of an input as images of values behind a list's back, changes the list in between, and compares it
// with the slow model.
void checkStoredImages(Bytes& bytes);

}  // namespace fuzz

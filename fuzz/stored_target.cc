// What stands in a store, whatever wrote it: the conditions of a rule and the images of a list. The first byte of an
// input says which; the rest is parted by 0xFF into values, and for a list also into changes.
#include <string>

#include "bytes.h"
#include "stored_conditions.h"
#include "stored_images.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    if (bytes.byte() % 2 == 0)
        fuzz::checkStoredConditions(bytes);
    else
        fuzz::checkStoredImages(bytes);
    return 0;
}

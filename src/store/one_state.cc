#include "store/one_state.h"

namespace zxpol {

StampPair stampsOf(_ZxPolComHandle* first, _ZxPolComHandle* second, int* error) {
    StampPair stamps;
    stamps.first = stampOf(first, error);
    if (second != nullptr && succeeded(*error)) stamps.second = stampOf(second, error);
    return stamps;
}

}  // namespace zxpol

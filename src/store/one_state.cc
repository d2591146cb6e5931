#include "store/one_state.h"

#include "zxregistry.h"

namespace zxpol {

const int kStateIsChanging = ZXREG_E_BUSY;

StampPair stampsOf(_ZxPolComHandle* first, _ZxPolComHandle* second, int* error) {
    StampPair stamps;
    stamps.first = stampOf(first, error);
    if (second != nullptr && succeeded(*error)) stamps.second = stampOf(second, error);
    return stamps;
}

}  // namespace zxpol

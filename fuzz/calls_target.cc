// Sequences of calls of the flat interface over a small policy, with books on every key of the store. An input begins
// with two bytes that may have one call of the store fail; then each call takes a byte that says which, and more for
// its arguments. When everything is closed no key may be open, and none may have been closed twice.
#include "bytes.h"
#include "caller.h"
#include "fail.h"
#include "support/fault_store.h"

namespace {

constexpr size_t kMostCalls = 120;

// The call of the store that fails, from 1, and with what; the first byte 0: none.
void planFailure(fuzz::Bytes& bytes) {
    static constexpr int kCodes[] = {ZXREG_E_NOT_FOUND, ZXREG_E_NO_MORE_ITEMS, ZXREG_E_BUFFER_TOO_SMALL,
                                     ZXREG_E_OUT_OF_MEMORY, ZXREG_E_IO};
    const unsigned call = bytes.byte();
    const unsigned code = bytes.byte();
    zxtest::resetFaultStore();
    if (call != 0) zxtest::failStoreCall(call, kCodes[code % 5]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    {
        fuzz::Caller caller;
        planFailure(bytes);
        const zxtest::CountedCalls counted;
        for (size_t calls = 0; calls < kMostCalls && !bytes.isEmpty(); ++calls)
            caller.call(bytes);
    }
    zxtest::failNoStoreCall();
    for (const std::string& violation : zxtest::storeViolations())
        fuzz::fail(violation);
    for (const std::string& key : zxtest::openStoreKeys())
        fuzz::fail("left open: " + key);
    fuzz::requireSame(0, zxtest::openStoreUpdates(), "an update is left open");
    return 0;
}

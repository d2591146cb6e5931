#include "failure.h"

#include <new>

namespace zxreg {
namespace {

struct LastFailure {
    int code = ZXREG_S_OK;
    std::string text;
};

thread_local LastFailure last;

const char* sentence(int code) {
    switch (code) {
        case ZXREG_E_OUT_OF_MEMORY:
            return "Out of memory.";
        case ZXREG_E_BUFFER_TOO_SMALL:
            return "The caller's buffer is too small.";
        case ZXREG_E_INVALID_ARG:
            return "An argument is null, too long or malformed.";
        case ZXREG_E_WRONG_HANDLE:
            return "The handle is not an open store key.";
        case ZXREG_E_NO_MORE_ITEMS:
            return "There are no more items.";
        case ZXREG_E_NOT_FOUND:
            return "There is no key or value of that name.";
        case ZXREG_E_NOT_EMPTY:
            return "The key still has subkeys.";
        case ZXREG_E_DELETED:
            return "The key of this handle has been deleted.";
        case ZXREG_E_BUSY:
            return "Another writer held the store for too long.";
        case ZXREG_E_LOCATION:
            return "The location names no known kind of store; use memory:, memory:NAME or sqlite:PATH.";
        case ZXREG_E_NO_UPDATE:
            return "This thread has no update open.";
        default:
            return "";
    }
}

}  // namespace

void noteFailure(int code) noexcept {
    last.code = code;
    last.text.clear();
}

void noteFailure(int code, const char* text) noexcept {
    noteFailure(code);
    try {
        last.text = text;
    } catch (const std::exception&) {
        last.text.clear();
    }
}

int noteException() noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        noteFailure(failure.code(), failure.what());
    } catch (const std::bad_alloc&) {
        noteFailure(ZXREG_E_OUT_OF_MEMORY);
    } catch (const std::exception& exception) {
        noteFailure(ZXREG_E_IO, exception.what());
    } catch (...) {
        noteFailure(ZXREG_E_IO, "Unexpected failure.");
    }
    return last.code;
}

const char* lastFailureText() noexcept {
    return last.text.empty() ? sentence(last.code) : last.text.c_str();
}

}  // namespace zxreg

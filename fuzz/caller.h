// A program that calls the flat interface as bytes tell it.
#pragma once

#include "arguments.h"

namespace fuzz {

class Caller {
public:
    // Opens a store in memory with a small policy.
    Caller();
    // Closes all that is open, the store last.
    ~Caller();
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    // Does one call.
    void call(Bytes& bytes);

private:
    OpenHandles _open;
};

}  // namespace fuzz

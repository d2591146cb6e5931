// Failures inside the store library, and the sentence that explains the last one to people.
#pragma once

#include <exception>
#include <string>

#include "zxregistry.h"

namespace zxreg {

// A failure of the engine or of the system under it. Expected answers ("no such key") are plain codes instead: they
// stand on the hot path, where throwing would cost more than the work.
class Failure : public std::exception {
public:
    Failure(int code, std::string text) : _code(code), _text(std::move(text)) {}

    int code() const noexcept { return _code; }
    const char* what() const noexcept override { return _text.c_str(); }

private:
    int _code;
    std::string _text;
};

// What was read makes no store; who knows the file turns it into a Failure (CORRUPT).
class Damage : public std::exception {
public:
    explicit Damage(const char* what) : _what(what) {}
    const char* what() const noexcept override { return _what; }

private:
    const char* _what;
};

// Remembers a failing code for this thread, with the code's own general sentence.
void noteFailure(int code) noexcept;

// Remembers a failing code with a sentence of its own.
void noteFailure(int code, const char* text) noexcept;

// Turns the exception being handled into its code and remembers it. Only inside a catch block.
int noteException() noexcept;

// The sentence on the last failure noted in this thread; never null.
const char* lastFailureText() noexcept;

}  // namespace zxreg

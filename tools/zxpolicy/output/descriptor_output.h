// Output to a file descriptor.
#pragma once

#include <array>
#include <ostream>
#include <streambuf>
#include <string>

namespace tool {

// Writes to a descriptor, which it leaves open, and remembers why that failed.
class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(int descriptor) : _descriptor(descriptor) { setp(_buffer.begin(), _buffer.end()); }

    // The error of the first write that failed; 0 without one.
    int failure() const { return _failure; }

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    int _descriptor;
    int _failure = 0;
    std::array<char, 8192> _buffer{};
};

// Why something could not be written, and what to do about it.
std::string writeFault(int error);

}  // namespace tool

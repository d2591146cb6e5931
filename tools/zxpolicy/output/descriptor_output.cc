#include "output/descriptor_output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tool {

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type c) {
    if (sync() != 0) return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    return sputc(traits_type::to_char_type(c));
}

int DescriptorBuffer::sync() {
    const char* begin = pbase();
    while (_failure == 0 && begin != pptr()) {
        const ssize_t count = write(_descriptor, begin, static_cast<size_t>(pptr() - begin));
        if (count >= 0)
            begin += count;
        else if (errno != EINTR)
            _failure = errno;
    }
    setp(_buffer.begin(), _buffer.end());
    return _failure == 0 ? 0 : -1;
}

std::string writeFault(int error) {
    std::string fault = std::strerror(error);
    if (error == ENOSPC || error == EDQUOT) fault += "; free some space, and try again";
    if (error == EBADF) fault += "; it is closed, redirect it to a file or a pipe";
    return fault;
}

}  // namespace tool

#include "pattern/address_split.h"

#include <cstring>

#include "pattern/rfc2822_checker.h"
#include "pattern/scratch_text.h"

namespace zxpol {

const char* findUnquotedAt(const char* address) {
    const char* at = address;
    while (*at != '@' && *at != '"' && *at != '\0')
        ++at;
    // A quoted section that matters begins before the first "@".
    if (*at != '"') return *at == '@' ? at : nullptr;
    ScratchText copy(address, std::strlen(address));
    unsigned int tokens = 0;
    ZxPolRfc2822Checker::getTokens(copy.data(), "@", tokens, '"');
    return tokens >= 2 ? address + std::strlen(copy.data()) : nullptr;
}

}  // namespace zxpol

// Where an address divides into local part and domain.
#pragma once

namespace zxpol {

// The first "@" of `address` outside quoted sections, or null when it has none. `address` is not null.
const char* findUnquotedAt(const char* address);

}  // namespace zxpol

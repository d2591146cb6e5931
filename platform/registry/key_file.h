// The file that holds the key of a database's protected strings.
#pragma once

#include <optional>
#include <string>

#include "secret.h"

namespace zxreg {

class KeyFile {
public:
    explicit KeyFile(std::string path) : _path(std::move(path)) {}

    // The key whose fingerprint is given. Kept once read. Throws a Failure: SECRET when the file is missing or holds
    // another key, UNSAFE when others may have seen or changed it.
    const SecretKey& keyOf(std::string_view fingerprint);

    // The same, and looks at the file again, so that nothing is sealed with a key that has been lost. An empty
    // fingerprint stands for any key; the file is made when it is missing then.
    const SecretKey& presentKeyOf(std::string_view fingerprint);

private:
    std::optional<SecretKey> read() const;
    void make() const;
    [[noreturn]] void fail(const char* why) const;

    const std::string _path;
    std::optional<SecretKey> _key;
};

}  // namespace zxreg

#include "key_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "failure.h"
#include "file_trust.h"
#include "files.h"

namespace zxreg {
namespace {

// Closes a file when left.
struct OpenFile {
    int file;
    explicit OpenFile(int opened) : file(opened) {}
    ~OpenFile() {
        if (file >= 0) close(file);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
};

}  // namespace

const SecretKey& KeyFile::keyOf(std::string_view fingerprint) {
    if (_key && _key->fingerprint() == fingerprint) return *_key;
    return presentKeyOf(fingerprint);
}

const SecretKey& KeyFile::presentKeyOf(std::string_view fingerprint) {
    _key = read();
    if (!_key && fingerprint.empty()) {
        make();
        _key = read();
    }
    if (!_key) fail("The key file is missing");
    if (!fingerprint.empty() && _key->fingerprint() != fingerprint) {
        _key.reset();
        fail("The key file holds the key of another store");
    }
    return *_key;
}

// Empty when there is no such file.
std::optional<SecretKey> KeyFile::read() const {
    const OpenFile opened(open(_path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (opened.file < 0 && errno == ENOENT) return std::nullopt;
    struct stat status {};
    if (opened.file < 0 && errno == ELOOP && lstat(_path.c_str(), &status) == 0) checkKeyFile(_path, status);
    if (opened.file < 0 || fstat(opened.file, &status) != 0) fail("The key file cannot be opened");
    checkKeyFile(_path, status);
    if (status.st_size != static_cast<off_t>(SecretKey::size)) fail("The key file has a wrong size");
    SecretKey key;
    if (::read(opened.file, key.data(), SecretKey::size) != static_cast<ssize_t>(SecretKey::size)) {
        fail("The key file cannot be read");
    }
    return key;
}

// Another process may make the file at the same time: whichever is first counts.
void KeyFile::make() const {
    const SecretKey key = SecretKey::random();
    NewFile file(_path);
    file.write(key.data(), SecretKey::size);
    file.publish();
}

void KeyFile::fail(const char* why) const {
    throw Failure(ZXREG_E_SECRET, _path + ": " + why + ".");
}

}  // namespace zxreg

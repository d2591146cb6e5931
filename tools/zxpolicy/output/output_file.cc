#include "output/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr std::array kEndingSignals{SIGHUP, SIGINT, SIGTERM, SIGPIPE, SIGXFSZ};

// The temporary file that is being written.
std::atomic<const char*> g_temporary{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler reads it");

// Installed for one signal: the one raised here ends the program.
void removeTemporary(int signal) {
    const char* temporary = g_temporary;
    if (temporary != nullptr) unlink(temporary);
    raise(signal);
}

// Signals that are ignored, or handled otherwise, stay so.
void watchSignals(void (*from)(int), void (*to)(int)) {
    for (const int signal : kEndingSignals) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != from) continue;
        action.sa_handler = to;
        action.sa_flags = to == SIG_DFL ? 0 : static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

// The output that is this file already: what others write there stays.
int standardStreamOf(const struct stat& file) {
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat open {};
        if (fstat(stream, &open) == 0 && open.st_dev == file.st_dev && open.st_ino == file.st_ino) return stream;
    }
    return -1;
}

// The mode of a file that is made anew.
mode_t newMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// The owner stays where this user may give files away.
bool takeOver(int descriptor, const struct stat& old) {
    [[maybe_unused]] const int ignored = fchown(descriptor, old.st_uid, old.st_gid);
    return fchmod(descriptor, old.st_mode & 07777) == 0;
}

// Whether two paths are of one file, also where there is none yet.
bool areSameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    if (std::filesystem::equivalent(a, b, error)) return true;
    const std::filesystem::path whole = std::filesystem::weakly_canonical(a, error);
    return !whole.empty() && whole == std::filesystem::weakly_canonical(b, error);
}

}  // namespace

OutputFile::OutputFile(const std::string& path, const std::vector<std::string>& kept)
    : _name(inQuotes(path, 4096)), _target(path) {
    if (path == "-") throw UsageError("cannot write " + _name + ": name a file, or /dev/stdout");
    for (const std::string& file : kept)
        if (areSameFile(path, file))
            throw UsageError("cannot write " + _name + ": the command needs the file " + inQuotes(file, 4096) +
                             " as it is; name another one");
    struct stat old {};
    const bool isThere = stat(path.c_str(), &old) == 0;
    const int standardStream = isThere ? standardStreamOf(old) : -1;
    if (standardStream >= 0) {
        _descriptor = fcntl(standardStream, F_DUPFD_CLOEXEC, 0);
    } else if (isThere && !S_ISREG(old.st_mode)) {
        _descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    } else if (!isThere || access(path.c_str(), W_OK) == 0) {
        if (isThere) _target = std::filesystem::canonical(path).string();
        openBeside();
    }
    const bool isOpen = _descriptor >= 0;
    const bool hasMode =
        isOpen && (_temporary.empty() || (isThere ? takeOver(_descriptor, old) : fchmod(_descriptor, newMode()) == 0));
    if (!hasMode) {
        const int error = errno;
        discard();
        throw UsageError("cannot write " + _name + ": " + std::strerror(error));
    }
    _stream.rdbuf(&_buffer.emplace(_descriptor));
}

OutputFile::~OutputFile() {
    discard();
}

void OutputFile::openBeside() {
    const size_t slash = _target.rfind('/') + 1;  // 0 without one
    if (slash == _target.size()) {
        errno = ENOENT;
        return;
    }
    _temporary = _target.substr(0, slash) + ".zxpolicy-XXXXXX";
    g_temporary = _temporary.c_str();
    watchSignals(SIG_DFL, removeTemporary);
    _descriptor = mkostemp(_temporary.data(), O_CLOEXEC);
}

void OutputFile::keep() {
    _stream.flush();
    if (!_stream) throw ToolError(kFailed, "cannot write " + _name + ": " + writeFault(_buffer->failure()));
    const int written = _descriptor;
    require(_temporary.empty() || fsync(written) == 0);
    _descriptor = -1;
    require(close(written) == 0);
    require(_temporary.empty() || std::rename(_temporary.c_str(), _target.c_str()) == 0);
    forgetTemporary();
}

void OutputFile::require(bool isDone) const {
    if (!isDone) throw ToolError(kFailed, "cannot write " + _name + ": " + writeFault(errno));
}

void OutputFile::forgetTemporary() {
    watchSignals(removeTemporary, SIG_DFL);
    g_temporary = nullptr;
    _temporary.clear();
}

void OutputFile::discard() {
    if (_descriptor >= 0) close(_descriptor);
    _descriptor = -1;
    if (_temporary.empty()) return;
    unlink(_temporary.c_str());
    forgetTemporary();
}

}  // namespace tool

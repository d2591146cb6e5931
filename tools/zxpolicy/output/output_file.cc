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

#include "output/file_path.h"
#include "output/text.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr std::array kEndingSignals{SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGPIPE, SIGALRM,
                                    SIGUSR1, SIGUSR2, SIGXFSZ, SIGXCPU, SIGABRT};

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

// The mode of a file that is made anew.
mode_t newMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// Owner and group stay where this user may give files away. Another group does not get what the old one may.
bool takeOver(int descriptor, const struct stat& old) {
    mode_t mode = old.st_mode & 0777;
    const bool hasGroup =
        fchown(descriptor, old.st_uid, old.st_gid) == 0 || fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) == 0;
    if (!hasGroup) mode &= ~static_cast<mode_t>(S_IRWXG);
    return fchmod(descriptor, mode) == 0;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, const std::vector<std::string>& kept) : _name(inQuotes(path, 4096)) {
    if (path == "-") throw UsageError("cannot write " + _name + ": name a file, or /dev/stdout");
    for (const std::string& file : kept)
        if (file == "-" ? isStandardInput(path) : areSameFile(path, file))
            throw UsageError("cannot write " + _name + ": the command needs " +
                             (file == "-" ? "standard input" : "the file " + inQuotes(file, 4096)) +
                             " as it is; name another one");
    struct stat old {};
    const bool isThere = stat(path.c_str(), &old) == 0;
    const int missing = isThere ? ENOENT : errno;
    const int writable = writableDescriptorOf(path);
    if (writable >= 0) {
        _descriptor = fcntl(writable, F_DUPFD_CLOEXEC, 0);
    } else if (isThere && !S_ISREG(old.st_mode)) {
        _descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    } else if (!isThere || access(path.c_str(), W_OK) == 0) {
        openBeside(withoutLinks(path));
        if (_target.empty()) errno = missing;
    }
    const bool isOpen = _descriptor >= 0;
    const bool hasMode =
        isOpen && (_temporary.empty() || (isThere ? takeOver(_descriptor, old) : fchmod(_descriptor, newMode()) == 0));
    if (!hasMode) {
        const int error = errno;
        const char* where = _target.empty() ? "" : "no file can be made in its folder: ";
        discard();
        throw UsageError("cannot write " + _name + ": " + where + std::strerror(error));
    }
    _stream.rdbuf(&_buffer.emplace(_descriptor));
}

OutputFile::~OutputFile() {
    discard();
}

void OutputFile::openBeside(const std::string& target) {
    if (target.empty()) return;
    _target = target;
    _temporary = _target.substr(0, _target.rfind('/') + 1) + ".zxpolicy-XXXXXX";
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

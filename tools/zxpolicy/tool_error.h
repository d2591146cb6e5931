// What goes wrong, as exceptions that carry the exit status and one line for the user.
#pragma once

#include <stdexcept>
#include <string>

namespace tool {

enum ExitStatus : int {
    kSuccess = 0,
    kAnswerIsNo = 1,  // the command ran, and its answer is "no"
    kUsage = 2,       // the command line, or a file named on it, cannot be used
    kFailed = 3,      // the store or the policy failed
};

// A failure with the status that the program exits with. The text is one line: what, where, and what to do.
class ToolError : public std::runtime_error {
public:
    ToolError(ExitStatus status, const std::string& text) : std::runtime_error(text), _status(status) {}
    ExitStatus status() const { return _status; }

private:
    ExitStatus _status;
};

// Wrong usage: status 2.
class UsageError : public ToolError {
public:
    explicit UsageError(const std::string& text) : ToolError(kUsage, text) {}
};

// A policy that cannot be read or kept: status 3.
class PolicyError : public ToolError {
public:
    explicit PolicyError(const std::string& text) : ToolError(kFailed, text) {}
};

// An operation of the library or the store failed: status 3. The text names the result code and what to do.
class StoreError : public ToolError {
public:
    // `what`: what was being done, such as "cannot create rule \Sales".
    StoreError(const std::string& what, int code);
    int code() const { return _code; }

private:
    int _code;
};

// Throws a StoreError when `code` is a failure.
void require(int code, const std::string& what);

}  // namespace tool

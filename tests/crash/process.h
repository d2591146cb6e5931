// A second process, of this build or of another one, whose output is read.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace crash {

// The program `name` beside this one; with `ofOtherBuild` that in the folder ZX_WORKERS, when there is one.
std::string programPath(const std::string& name, bool ofOtherBuild = false);

class Process {
public:
    // `settings` are added to the environment: "NAME=VALUE".
    explicit Process(const std::vector<std::string>& words, const std::vector<std::string>& settings = {});
    ~Process();  // kills it if it still runs
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The next line of its output, without the line feed; false at the end, where half a line is left out.
    bool readLine(std::string& line);
    // All that is still to be read.
    std::string readAll();
    void kill();
    // Waits for its end: the exit status, or minus the signal that killed it.
    int wait();

private:
    bool readMore();

    pid_t _process = -1;
    int _output = -1;
    std::string _read;
};

}  // namespace crash

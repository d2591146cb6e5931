// A store that one writer after the other edits and leaves in the middle, and the policy that must be in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "crash/policy_editor.h"
#include "crash/process.h"

namespace crash {

// A folder below the one for temporary files, removed with all that is in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::string& path() const { return _path; }

private:
    std::string _path;
};

// A writer, and what it has told.
class Writer {
public:
    Writer(const std::vector<std::string>& words, const std::vector<std::string>& settings)
        : _process(words, settings) {}

    // Waits until that many edits are done; then for some microseconds.
    void letWork(size_t edits, unsigned microseconds);
    void kill();

    // The codes of the edits that are done, and whether one was begun after them.
    const std::vector<int>& codes() const { return _codes; }
    bool isInFlight() const { return _begun > _codes.size(); }

private:
    bool listen();

    Process _process;
    std::vector<int> _codes;
    size_t _begun = 0;
};

class EditedStore {
public:
    explicit EditedStore(uint64_t seed);

    const std::string& folder() const { return _folder.path(); }
    std::string path() const { return _folder.path() + "/policy.db"; }
    std::string location() const { return "sqlite:" + path(); }

    std::vector<std::string> writerWords(bool ofOtherBuild) const;

    // What another process reads out of the store.
    std::string readByOther(bool ofOtherBuild) const;

    // Compares what was read from the store with the policy that the writers have made. The edit in flight has happened
    // if that is what is found.
    void compare(const Writer& writer, const std::string& found);

    uint64_t acknowledged() const { return _acknowledged; }
    uint64_t inFlight() const { return _inFlight; }
    uint64_t happened() const { return _happened; }  // of those in flight

private:
    const Folder _folder;
    const uint64_t _seed;
    PolicyEditor _model;  // in memory, edited the same way
    uint64_t _next = 0;
    uint64_t _acknowledged = 0;
    uint64_t _inFlight = 0;
    uint64_t _happened = 0;
};

}  // namespace crash

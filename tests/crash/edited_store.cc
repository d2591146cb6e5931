#include "crash/edited_store.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace crash {
namespace {

std::string firstDifference(const std::string& expected, const std::string& found) {
    std::istringstream wanted(expected);
    std::istringstream given(found);
    std::string wantedLine;
    std::string givenLine;
    for (;;) {
        const bool isMore = !std::getline(wanted, wantedLine).fail();
        const bool isGiven = !std::getline(given, givenLine).fail();
        if (!isMore && !isGiven) return "no difference";
        if (!isMore || !isGiven || wantedLine != givenLine)
            return "expected: " + (isMore ? wantedLine : "the end") +
                   "\n   found: " + (isGiven ? givenLine : "the end");
    }
}

}  // namespace

Folder::Folder() : _path(::testing::TempDir() + "zxpolicy-crash-XXXXXX") {
    if (mkdtemp(_path.data()) == nullptr) throw std::runtime_error(_path);
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

void Writer::letWork(size_t edits, unsigned microseconds) {
    while (_codes.size() < edits && listen()) {
    }
    if (microseconds != 0) usleep(microseconds);
}

void Writer::kill() {
    _process.kill();
    while (listen()) {
    }
    EXPECT_EQ(_process.wait(), -SIGKILL);
}

bool Writer::listen() {
    std::string line;
    if (!_process.readLine(line)) return false;
    std::istringstream words(line);
    std::string kind;
    uint64_t number = 0;
    int code = 0;
    words >> kind >> number >> code;
    if (kind == "begin") {
        ++_begun;
    } else if (kind == "done") {
        _codes.push_back(code);
    } else {
        ADD_FAILURE() << "the writer said " << line;
    }
    return true;
}

EditedStore::EditedStore(uint64_t seed) : _seed(seed), _model("memory:", _folder.path()) {
    writeAddressFiles(_folder.path());
    const PolicyEditor made(location(), _folder.path());
    EXPECT_GE(made.error(), 0) << zxreg_lastErrorText();
}

std::vector<std::string> EditedStore::writerWords(bool ofOtherBuild) const {
    return {programPath("crash_worker", ofOtherBuild),
            "write",
            location(),
            _folder.path(),
            std::to_string(_seed),
            std::to_string(_next)};
}

std::string EditedStore::readByOther(bool ofOtherBuild) const {
    Process reader({programPath("crash_worker", ofOtherBuild), "read", location(), _folder.path()});
    std::string text = reader.readAll();
    EXPECT_EQ(reader.wait(), 0) << text;
    return text;
}

void EditedStore::compare(const Writer& writer, const std::string& found) {
    for (const int code : writer.codes()) {
        ASSERT_EQ(zxtest::codeText(_model.edit(_seed, _next)), zxtest::codeText(code)) << "edit " << _next;
        ++_next;
    }
    _acknowledged += writer.codes().size();
    const std::string before = _model.text();
    if (writer.isInFlight()) ++_inFlight;
    if (found == before) return;
    ASSERT_TRUE(writer.isInFlight()) << "after edit " << _next << ", series " << _seed << "\n"
                                     << firstDifference(before, found);
    _model.edit(_seed, _next);
    const std::string after = _model.text();
    ASSERT_EQ(after == found, true) << "after edit " << _next << ", series " << _seed << ", or with the next\nwithout "
                                    << firstDifference(before, found) << "\nwith    " << firstDifference(after, found);
    ++_next;
    ++_happened;
}

}  // namespace crash

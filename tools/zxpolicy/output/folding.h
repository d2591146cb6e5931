// Lines of a report that are wider than the terminal.
#pragma once

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace tool {

// What stands before the parts that belong to a line and come below it: as many blanks as it begins with, and the lines
// of the tree that go on.
std::string leadBelow(std::string_view line);

// Passes lines on, those that are wider than `width` columns in several: broken at blanks, and indented by two columns
// more than they begin with. A word alone is never cut, and is indented less where that makes it fit.
class LineFolder : public std::streambuf {
public:
    LineFolder(std::ostream& out, size_t width) : _out(out), _width(width) {}
    // Passes on what is begun of a line.
    ~LineFolder() override;
    LineFolder(const LineFolder&) = delete;
    LineFolder& operator=(const LineFolder&) = delete;

    // Passes on what is begun of a line. What comes next is taken for the beginning of one.
    void finish();

protected:
    int_type overflow(int_type c) override;
    // A line goes on when it ends.
    int sync() override;

private:
    void printLine() const;
    void printParts() const;

    std::ostream& _out;
    size_t _width;
    std::string _line;
};

// What is printed here goes through a folder, by whole lines.
class FoldedOutput : public std::ostream {
public:
    FoldedOutput(std::ostream& sink, size_t width) : std::ostream(nullptr), _folder(sink, width) { rdbuf(&_folder); }

    // Prints what is begun of a line, as the end of the object does.
    void finish() { _folder.finish(); }

private:
    LineFolder _folder;
};

}  // namespace tool

// Reading the data that tests run on: files of lines, and tables of fields divided by one TAB.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace zxtest {

// The lines of a file without their line feeds. What stands behind the last line feed counts as a line too.
inline std::vector<std::string> linesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(std::move(line));
    return lines;
}

inline std::vector<std::string> splitAt(const std::string& text, char separator) {
    std::vector<std::string> fields;
    size_t begin = 0;
    for (size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1)
        fields.push_back(text.substr(begin, end - begin));
    fields.push_back(text.substr(begin));
    return fields;
}

// The rows of a table, comment lines left out. Each must have `columns` fields.
inline std::vector<std::vector<std::string>> tableOf(const std::string& path, size_t columns) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : linesOf(path)) {
        if (!line.empty() && line[0] == '#') continue;
        rows.push_back(splitAt(line, '\t'));
        EXPECT_EQ(columns, rows.back().size()) << path << ": " << line;
        rows.back().resize(columns);
    }
    return rows;
}

}  // namespace zxtest

// Suites of mail addresses from other programs, run through the rule for patterns. Their verdicts are their own; where
// ours differs, a reviewed table says so and why, and this test holds both the rule and the table to each other.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "pattern/cond_wildcard_pattern.h"
#include "support/data_file.h"

using zxtest::tableOf;

namespace {

// The suites and the number of their rows.
const std::map<std::string, size_t> suites = {{"isemail_tests.tsv", 163},
                                              {"egulias_emailvalidator.tsv", 167},
                                              {"python_email_validator.tsv", 296},
                                              {"commons_validator.tsv", 190}};

// One input of a suite, escaped as it stands there, with the suite's verdict.
struct Row {
    std::string suite;
    std::string input;
    std::string verdict;

    bool operator<(const Row& other) const {
        return std::tie(suite, input, verdict) < std::tie(other.suite, other.input, other.verdict);
    }
};

struct Difference {
    std::string reason;
    std::string ours;
};

struct Reason {
    std::string ours;
    size_t rows;
    std::string text;
};

std::string describe(const Row& row) {
    return row.suite + ": " + row.verdict + ": <" + row.input + ">";
}

// Appends a code point of at most 16 bits in UTF-8; a surrogate becomes three bytes like any other.
void appendUtf8(std::string& text, unsigned int point) {
    text += static_cast<char>(0xe0 | (point >> 12));
    text += static_cast<char>(0x80 | ((point >> 6) & 0x3f));
    text += static_cast<char>(0x80 | (point & 0x3f));
}

unsigned int hexAt(const std::string& text, size_t at, size_t digits) {
    const std::string number = text.substr(at, digits);
    EXPECT_EQ(digits, number.size()) << text;
    EXPECT_EQ(std::string::npos, number.find_first_not_of("0123456789abcdefABCDEF")) << text;
    return static_cast<unsigned int>(std::strtoul(number.c_str(), nullptr, 16));
}

// The bytes that an input stands for: \\ is a backslash, \xHH a byte, \uHHHH a character.
std::string decoded(const std::string& input) {
    std::string text;
    for (size_t at = 0; at < input.size(); ++at) {
        const char next = input[at] == '\\' && at + 1 < input.size() ? input[at + 1] : '\0';
        if (input[at] != '\\') {
            text += input[at];
        } else if (next == '\\') {
            text += '\\';
            at += 1;
        } else if (next == 'x') {
            text += static_cast<char>(hexAt(input, at + 2, 2));
            at += 3;
        } else if (next == 'u' && hexAt(input, at + 2, 4) >= 0x800) {
            appendUtf8(text, hexAt(input, at + 2, 4));
            at += 5;
        } else {
            ADD_FAILURE() << "unknown escape in <" << input << ">";
        }
    }
    return text;
}

std::string oursFor(const Row& row) {
    return ZxPolCondWildcardPattern::isPatternValid(decoded(row.input).c_str()) ? "valid" : "invalid";
}

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// A suite's verdict as plain yes or no. Warnings and "valid under the older grammar" are a yes; "invalid where only
// ASCII is allowed" is a no, as here only ASCII is.
std::string theirsFor(const Row& row) {
    const bool valid = startsWith(row.verdict, "valid") || startsWith(row.verdict, "syntax-valid");
    EXPECT_TRUE(valid || startsWith(row.verdict, "invalid")) << describe(row);
    return valid ? "valid" : "invalid";
}

std::vector<Row> rowsOf(const std::string& suite) {
    std::vector<Row> rows;
    for (const auto& fields : tableOf(std::string(ZX_SUITES "/") + suite, 4))
        rows.push_back({suite, fields[0], fields[1]});
    return rows;
}

// The rows of all suites, each input and verdict of a suite once.
const std::set<Row>& allRows() {
    static const std::set<Row> rows = [] {
        std::set<Row> all;
        for (const auto& suite : suites) {
            for (Row& row : rowsOf(suite.first))
                all.insert(std::move(row));
        }
        return all;
    }();
    return rows;
}

// Both halves of the reviewed table.
struct ReviewedTable {
    std::map<std::string, Reason> reasons;
    std::map<Row, Difference> differences;
};

ReviewedTable readTable() {
    ReviewedTable table;
    for (const auto& fields : tableOf(ZX_DIFFERENCES, 5)) {
        if (fields[0] == "reason") {
            const Reason reason{fields[2], std::strtoul(fields[3].c_str(), nullptr, 10), fields[4]};
            EXPECT_TRUE(table.reasons.emplace(fields[1], reason).second) << "twice: " << fields[1];
        } else {
            const Row row{fields[0], fields[4], fields[3]};
            EXPECT_TRUE(table.differences.emplace(row, Difference{fields[1], fields[2]}).second) << describe(row);
        }
    }
    return table;
}

const ReviewedTable& reviewed() {
    static const ReviewedTable table = readTable();
    return table;
}

TEST(PeerSuites, AreReadWhole) {
    for (const auto& [suite, count] : suites)
        EXPECT_EQ(count, rowsOf(suite).size()) << suite;
}

TEST(PeerSuites, DifferOnlyWhereTheTableSaysSo) {
    for (const Row& row : allRows()) {
        const auto known = reviewed().differences.find(row);
        const std::string expected = known != reviewed().differences.end() ? known->second.ours : theirsFor(row);
        EXPECT_EQ(expected, oursFor(row)) << describe(row);
    }
}

TEST(PeerSuites, DifferEverywhereWhereTheTableSaysSo) {
    EXPECT_FALSE(reviewed().differences.empty());
    for (const auto& [row, difference] : reviewed().differences) {
        EXPECT_EQ(1u, allRows().count(row)) << "in no suite: " << describe(row);
        EXPECT_NE(theirsFor(row), difference.ours) << "no difference: " << describe(row);
    }
}

TEST(PeerSuites, DifferForKnownReasonsThatAreCounted) {
    std::map<std::string, size_t> counts;
    for (const auto& [row, difference] : reviewed().differences) {
        const auto reason = reviewed().reasons.find(difference.reason);
        ASSERT_NE(reviewed().reasons.end(), reason) << "no such reason, " << difference.reason << ": " << describe(row);
        EXPECT_EQ(reason->second.ours, difference.ours) << describe(row);
        ++counts[difference.reason];
    }
    for (const auto& [name, reason] : reviewed().reasons) {
        EXPECT_EQ(reason.rows, counts[name]) << name;
        EXPECT_FALSE(reason.text.empty()) << name;
        std::cout << "  " << reason.rows << " rows that only we call " << reason.ours << ": " << name << "\n";
    }
    std::cout << "  " << allRows().size() - reviewed().differences.size() << " rows answered alike\n";
}

}  // namespace

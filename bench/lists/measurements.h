// The parts of the benchmark. Each adds rows to the table, and fails when an answer is wrong.
#pragma once

#include <vector>

#include "contestant.h"
#include "harness.h"
#include "table.h"

namespace bench {

// Import, first opening and memory, in processes of their own. Come first, while this process is small.
void measureImports(const Options& options, Table& table);

// Exact membership, and wildcard match.
void measureMembership(const Options& options, Table& table);
void measureWildcards(const Options& options, Table& table);

// One insert and one removal, and many in one call.
void measureChanges(const Options& options, Table& table);

// Walking all addresses, and opening a list whose cache exists.
void measureWalks(const Options& options, Table& table);

// A file of the first `size` addresses, one a line, to which an earlier address in capital letters is added every
// hundred lines. It is made when it is first asked for.
std::string addressFile(const Options& options, size_t size);

// A file of these lines.
std::string writeLines(const Options& options, const Entries& lines);

}  // namespace bench

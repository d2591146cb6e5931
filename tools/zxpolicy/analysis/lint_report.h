// How what lint found is shown.
#pragma once

#include <iosfwd>

#include "analysis/lint.h"
#include "output/json.h"

namespace tool {

// How many findings are of a severity.
size_t countOf(const LintResult& result, Severity severity);

Json lintJson(const LintResult& result);

// For a person: each finding with its place and what to do, then their numbers.
void printText(std::ostream& out, const LintResult& result);

}  // namespace tool

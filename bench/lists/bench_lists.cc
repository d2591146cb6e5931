// Address lists beside others that answer the same questions: one table of what, ours, theirs, ratio, target, met or
// missed. A target that is missed is no failure; a wrong answer is.
//
// Figures are medians; ours and the others' repetitions take turns. The entries and queries are those of addresses.h.
// The others are given what suits them best: lower-cased addresses where it says so, mapped files, tables in memory.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "harness.h"
#include "measurements.h"

namespace {

int run(bench::Options options) {
    unsetenv("order");  // which would change the order of walks
    const bench::Folder folder;
    options.folder = folder.path();
    bench::Table table;
    bench::measureImports(options, table);
    bench::measureMembership(options, table);
    bench::measureWildcards(options, table);
    bench::measureChanges(options, table);
    bench::measureWalks(options, table);
    table.close();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    bench::Options options;
    for (int i = 1; i < argc; ++i) {
        if (argv[i] != std::string("--quick")) {
            std::fprintf(stderr,
                         "usage: bench_lists [--quick]\n  --quick  small lists, once: only to see that all works\n");
            return 2;
        }
        options.quick = true;
        options.repetitions = 1;
    }
    try {
        return run(options);
    } catch (const std::exception& failure) {
        std::fflush(stdout);
        std::fprintf(stderr, "bench_lists: %s\n", failure.what());
        return 1;
    }
}

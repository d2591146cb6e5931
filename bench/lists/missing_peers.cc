// Stands in for the peers that were not found when the build was configured.
#include "contestant.h"

namespace bench {

namespace {

[[maybe_unused]] Peer missing(const char* name) {
    return noPeer(name, "not installed");
}

}  // namespace

#ifndef BENCH_HASH_SET
Peer loweringHashSet(const Entries&) {
    return missing("flat_hash_set, lower-casing");
}

Peer hashSet(const Entries&) {
    return missing("flat_hash_set, lower-cased");
}

double hashSetBytes(const Entries&) {
    return 0;
}
#endif

#ifndef BENCH_CDB
Peer cdbFile(const Entries&, const std::string&) {
    return missing("tinycdb, lower-cased");
}
#endif

#ifndef BENCH_HYPERSCAN
Peer hyperscan(const Entries&) {
    return missing("Hyperscan");
}
#endif

#ifndef BENCH_RE2
Peer re2Set(const Entries&) {
    return missing("RE2::Set");
}
#endif

}  // namespace bench

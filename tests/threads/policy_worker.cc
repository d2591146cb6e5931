// A second process that puts two policies one in the place of the other: policy_worker LOCATION ROUNDS
//
// Exit status 0 when nothing failed.
#include <cstdio>
#include <cstdlib>

#include "threads/policy_client.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    try {
        threads::PolicyClient client(argv[1]);
        for (int round = std::atoi(argv[2]); round > 0; --round)
            client.putInPlace(round % 2 == 0 ? threads::Policy::byName : threads::Policy::byList);
        return 0;
    } catch (const threads::Failure& failure) {
        std::fprintf(stderr, "policy_worker: %s: %08x\n", failure.what.c_str(), static_cast<unsigned>(failure.code));
        return 1;
    }
}

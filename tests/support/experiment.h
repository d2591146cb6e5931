// How long the experiments run, and the figures that the report of their long runs is made from.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zxtest {

// Whether the long form is asked for (ZX_EXPERIMENT=long); else each experiment runs in the form that fits ordinary
// tests.
inline bool isLong() {
    const char* form = std::getenv("ZX_EXPERIMENT");
    return form != nullptr && std::strcmp(form, "long") == 0;
}

template <class Count>
Count shortOrLong(Count shortForm, Count longForm) {
    return isLong() ? longForm : shortForm;
}

// Of a long row of cases that are alike, builds with sanitizers try each of this number; the others try all.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr uint32_t kStride = 4;
#else
inline constexpr uint32_t kStride = 1;
#endif

// Prints a figure that was measured, on a line of its own that scripts/reliability-figures collects.
inline void figure(const char* topic, const char* name, uint64_t value) {
    std::printf("figure\t%s\t%s\t%llu\n", topic, name, static_cast<unsigned long long>(value));
    std::fflush(stdout);
}

}  // namespace zxtest

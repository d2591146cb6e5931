// What one comparison of an address with a condition's pattern costs, and the work around it.
#include <benchmark/benchmark.h>

#include <string>

#include "pattern/cond_wildcard_pattern.h"
#include "pattern/priority.h"
#include "pattern/wildcard_pattern.h"

namespace {

// What the matcher does for one side of a condition: the pattern's text and the address's text to an answer.
void compareTexts(benchmark::State& state, const std::string& pattern, const std::string& address, bool expected) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(pattern.data());
        const ZxPolCondWildcardPattern parsed(pattern.c_str());
        const bool matches = parsed == address.c_str();
        if (matches != expected) state.SkipWithError("wrong answer");
        benchmark::DoNotOptimize(matches);
    }
}

// The same with a pattern that was parsed before.
void compareParsed(benchmark::State& state, const std::string& pattern, const std::string& address, bool expected) {
    const ZxPolCondWildcardPattern parsed(pattern.c_str());
    for (auto _ : state) {
        const bool matches = parsed == address.c_str();
        if (matches != expected) state.SkipWithError("wrong answer");
        benchmark::DoNotOptimize(matches);
    }
}

const std::string address = "john.smith@mail.example.com";
const std::string longAddress = std::string(200, 'n') + "." + std::string(50, 'm') + "@" + std::string(120, 'd') + "." +
                                std::string(120, 'e') + ".example.com";

BENCHMARK_CAPTURE(compareTexts, exact_address, "john.smith@mail.example.com", address, true);
BENCHMARK_CAPTURE(compareTexts, everything, "*", address, true);
BENCHMARK_CAPTURE(compareTexts, any_name_at_domain, "*@mail.example.com", address, true);
BENCHMARK_CAPTURE(compareTexts, any_name_below_domain, "*@*.example.com", address, true);
BENCHMARK_CAPTURE(compareTexts, name_at_any_domain, "john.smith@*", address, true);
BENCHMARK_CAPTURE(compareTexts, quoted_name, "\"john.smith\"@mail.example.com", address, true);
BENCHMARK_CAPTURE(compareTexts, any_domain_literal, "*@[*]", "john@[10.0.0.1]", true);
BENCHMARK_CAPTURE(compareTexts, long_texts, longAddress, longAddress, true);
BENCHMARK_CAPTURE(compareTexts, no_match_in_name, "jane.smith@mail.example.com", address, false);
BENCHMARK_CAPTURE(compareTexts, no_match_in_domain, "*@mail.example.org", address, false);
BENCHMARK_CAPTURE(compareParsed, exact_address, "john.smith@mail.example.com", address, true);
BENCHMARK_CAPTURE(compareParsed, any_name_below_domain, "*@*.example.com", address, true);
BENCHMARK_CAPTURE(compareParsed, no_match_in_domain, "*@mail.example.org", address, false);

// A receiver and a sender that match "*" and "*@*.domain" and then two conditions that do not: four comparisons.
void compareFourSides(benchmark::State& state) {
    const char* patterns[] = {"*@*.example.com", "john.smith@mail.example.com", "*@example.net", "jane@*.example.com"};
    for (auto _ : state) {
        int matches = 0;
        for (const char* pattern : patterns)
            matches += ZxPolCondWildcardPattern(pattern) == address.c_str() ? 1 : 0;
        if (matches != 2) state.SkipWithError("wrong answer");
        benchmark::DoNotOptimize(matches);
    }
}
BENCHMARK(compareFourSides);

void checkValidity(benchmark::State& state, const char* pattern) {
    for (auto _ : state)
        benchmark::DoNotOptimize(ZxPolCondWildcardPattern::isPatternValid(pattern));
}
BENCHMARK_CAPTURE(checkValidity, address, "john.smith@mail.example.com");
BENCHMARK_CAPTURE(checkValidity, any_name_below_domain, "*@*.example.com");
BENCHMARK_CAPTURE(checkValidity, quoted_name, "\"john smith\"@example.com");
BENCHMARK_CAPTURE(checkValidity, refused, "jo*@example.com");

void parseCondition(benchmark::State& state, const char* pattern) {
    for (auto _ : state) {
        const ZxPolCondWildcardPattern parsed(pattern);
        benchmark::DoNotOptimize(parsed.getName());
    }
}
BENCHMARK_CAPTURE(parseCondition, address, "john.smith@mail.example.com");
BENCHMARK_CAPTURE(parseCondition, quoted_name, "\"john.smith\"@mail.example.com");

void parseSegments(benchmark::State& state, const char* pattern) {
    for (auto _ : state) {
        const ZxPolWildcardPattern parsed(pattern, ".", '\0');
        benchmark::DoNotOptimize(parsed.segmentCount());
    }
}
BENCHMARK_CAPTURE(parseSegments, domain, "mail.example.com");

void calcWeight(benchmark::State& state, const char* pattern) {
    const ZxPolCondWildcardPattern parsed(pattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZxPolPriority::calcWeight(parsed, ZXPOL_WEIGHT_DOMAIN_FIRST));
}
BENCHMARK_CAPTURE(calcWeight, address, "john.smith@mail.example.com");
BENCHMARK_CAPTURE(calcWeight, any_name_below_domain, "*@*.example.com");

}  // namespace

BENCHMARK_MAIN();

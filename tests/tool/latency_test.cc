#include "decisions/latency.h"

#include <gtest/gtest.h>

namespace tool {

using std::chrono::nanoseconds;

TEST(Latency, QuantilesAreWithinOneClassOfTheTruth) {
    Latency latency;
    for (int i = 1; i <= 100000; ++i)
        latency.add(nanoseconds(i));
    for (const double share : {0.001, 0.25, 0.5, 0.9, 0.99, 1.0}) {
        const double truth = share * 100000;
        EXPECT_NEAR(static_cast<double>(latency.quantile(share).count()), truth, truth / 30 + 1) << share;
    }
    EXPECT_EQ(latency.count(), 100000u);
}

TEST(Latency, SmallDurationsAreExact) {
    Latency latency;
    for (int i = 0; i < 60; ++i)
        latency.add(nanoseconds(i));
    EXPECT_EQ(latency.quantile(0.5), nanoseconds(29));
    EXPECT_EQ(latency.quantile(1), nanoseconds(59));
}

TEST(Latency, NothingCountedAndTheExtremesAreSafe) {
    Latency latency;
    EXPECT_EQ(latency.quantile(0.5), nanoseconds(0));
    EXPECT_EQ(latency.perSecond(), 0);
    latency.add(nanoseconds(-5));
    latency.add(nanoseconds::max());
    EXPECT_EQ(latency.quantile(0.1), nanoseconds(0));
    EXPECT_GT(latency.quantile(1), nanoseconds::max() / 2);
}

TEST(Latency, PerSecondIsTheReciprocalOfTheMean) {
    Latency latency;
    latency.add(nanoseconds(1000));
    latency.add(nanoseconds(3000));
    EXPECT_DOUBLE_EQ(latency.perSecond(), 500000);
}

}  // namespace tool

// Points and frames of a trace, and where it has gaps.
#include "regions/trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kMs = 1'000'000;

// Frames with these numbers, 10 ms for each step of the number.
std::vector<TraceFrame> FramesOf(const std::vector<std::int64_t>& numbers)
{
    TraceClock clock;
    std::vector<TraceFrame> frames;
    for (const std::int64_t number : numbers) {
        frames.push_back(clock.Next({.number = number, .monotonicNs = 10 * kMs * number}));
    }
    return frames;
}

TEST(MeasureCounts, HasMeanDeviationAndExtremes)
{
    // Differences from the mean 5: -3 -1 -1 -1 0 0 2 4; their squares sum to 32.
    const std::vector<std::int16_t> counts = {2, 4, 4, 4, 5, 5, 7, 9};
    const TracePoint point = MeasureCounts(counts);
    EXPECT_EQ(point.mean, 5.0);
    EXPECT_DOUBLE_EQ(point.deviation, std::sqrt(32.0 / 7.0));
    EXPECT_EQ(point.minimum, 2);
    EXPECT_EQ(point.maximum, 9);
}

TEST(MeasureCounts, OfOnePixelHasNoDeviation)
{
    const std::vector<std::int16_t> counts = {-7};
    EXPECT_EQ(MeasureCounts(counts), (TracePoint{.mean = -7, .deviation = 0, .minimum = -7, .maximum = -7}));
}

TEST(MeasureCounts, StaysExactAtTheEndsOfTheRange)
{
    // A large frame, half at each end: mean -1/2, each pixel 32767.5 away.
    std::vector<std::int16_t> counts(640 * 512, -32768);
    std::fill(counts.begin() + std::ssize(counts) / 2, counts.end(), std::int16_t{32767});
    const TracePoint point = MeasureCounts(counts);
    const auto n = static_cast<double>(counts.size());
    EXPECT_EQ(point.mean, -0.5);
    EXPECT_DOUBLE_EQ(point.deviation, std::sqrt(n * 32767.5 * 32767.5 / (n - 1)));
    // A single count of difference far from 0 isn't lost in large squares.
    std::vector<std::int16_t> flat(640 * 512, 32766);
    flat[0] = 32767;
    EXPECT_DOUBLE_EQ(MeasureCounts(flat).deviation, std::sqrt(1.0 / n));
}

TEST(TraceClock, GivesTimesFromTheFirstFrameAndWhatIsMissing)
{
    const std::vector<TraceFrame> frames = FramesOf({11, 12, 15});
    EXPECT_EQ(frames[0], (TraceFrame{.number = 11}));
    EXPECT_EQ(frames[1], (TraceFrame{.number = 12, .clockNs = 10 * kMs}));
    EXPECT_EQ(frames[2], (TraceFrame{.number = 15, .clockNs = 40 * kMs, .missing = 2}));
    EXPECT_EQ(SecondsOf(frames[2]), 0.04);
}

TEST(TraceClock, BelievesWhatIsToldWhereTheBoardDoesNotCount)
{
    TraceClock clock;
    clock.Next({.number = -1, .monotonicNs = 0, .told = 5});
    EXPECT_EQ(clock.Next({.number = -1, .monotonicNs = 10, .told = 3}),
              (TraceFrame{.number = 2, .clockNs = 10, .missing = 3}));
    EXPECT_EQ(clock.Next({.number = -1, .monotonicNs = 20}), (TraceFrame{.number = 3, .clockNs = 20}));
}

TEST(TraceClock, TakesUtcWhereTheClockOfTheMachineBeganAgain)
{
    TraceClock clock;
    clock.Next({.number = 900, .monotonicNs = 5'000'000, .utcNs = 1000});
    clock.Next({.number = 901, .monotonicNs = 5'000'010, .utcNs = 1010});
    const TraceFrame later = clock.Next({.number = 1, .monotonicNs = 40, .utcNs = 1510});
    EXPECT_TRUE(later.startsAnew);
    EXPECT_EQ(later.clockNs, 510);
    EXPECT_EQ(later.missing, 0) << "nobody knows";
    EXPECT_EQ(clock.Next({.number = 2, .monotonicNs = 50, .utcNs = 1520}).clockNs, 520);
}

TEST(TraceGaps, StandWhereNumbersLeapAndWhereARunBegins)
{
    EXPECT_THAT(TraceGapsOf(FramesOf({1, 2, 3, 4, 7, 8, 3, 4})),
                ElementsAre(TraceGap{.before = 4, .missing = 2}, TraceGap{.before = 6, .missing = 0}));
    EXPECT_THAT(TraceGapsOf(FramesOf({1, 2, 3})), IsEmpty());
    EXPECT_THAT(TraceGapsOf({}), IsEmpty());
}

TEST(TraceGaps, AreNoneBetweenTheFramesOfAnInterval)
{
    // One frame each second at 100 Hz; the clock's tick falls now before, now behind a blank. One is missing.
    EXPECT_THAT(TraceGapsOf(FramesOf({1, 101, 200, 301, 501, 601, 701})),
                ElementsAre(TraceGap{.before = 4, .missing = 199}));
}

TEST(TraceRuns, LieBetweenTheGaps)
{
    const std::vector<TraceFrame> frames = FramesOf({1, 2, 3, 7, 8, 9, 20});
    EXPECT_THAT(TraceRunsOf(frames), ElementsAre(TraceRun{0, 3}, TraceRun{3, 3}, TraceRun{6, 1}));
    EXPECT_EQ(LongestRunOf(frames), (TraceRun{0, 3})) << "of equal ones the first";
    EXPECT_EQ(LongestRunOf({}), TraceRun{});
}

}  // namespace
}  // namespace kelvo

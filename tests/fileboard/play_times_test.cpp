#include "fileboard/play_times.h"

#include <gmock/gmock.h>

#include <limits>

namespace kelvo {
namespace {

using testing::ElementsAre;

constexpr std::int64_t kMs = 1'000'000;  // in ns

// Frames of a camera of 50 Hz, one of which is missing before the third: complete at 0, 20 and 60 ms of its clock.
std::vector<RecordedTime> OneMissing()
{
    return {{.monotonicNs = 500 * kMs}, {.monotonicNs = 520 * kMs}, {.missing = 1, .monotonicNs = 560 * kMs}};
}

TEST(PlayTimes, FramesComeAtTheirRecordedTimesAndNumbersJumpOverWhatIsMissing)
{
    const PlayTimes times = TimesOf(OneMissing(), 0, 0, true);
    EXPECT_THAT(times.frames, ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 20'000}, PlayedFrame{3, 60'000}));
    EXPECT_EQ(times.periodUs, 20'000);
    EXPECT_EQ(times.rateHz, 50);
    EXPECT_TRUE(times.rateIsKnown);

    // The first one is complete a period after the start.
    EXPECT_EQ(LastPlayed(times, 0), std::nullopt);
    EXPECT_EQ(LastPlayed(times, 19'999), std::nullopt);
    EXPECT_EQ(LastPlayed(times, 20'000), (PlayMoment{.which = 0, .number = 1, .us = 20'000}));
    EXPECT_EQ(LastPlayed(times, 79'999), (PlayMoment{.which = 1, .number = 2, .us = 40'000}));
    EXPECT_EQ(LastPlayed(times, 80'000), (PlayMoment{.which = 2, .number = 4, .us = 80'000}));
}

TEST(PlayTimes, ALoopGoesOnWithTheFirstFrameAPeriodLater)
{
    const PlayTimes times = TimesOf(OneMissing(), 0, 0, true);
    EXPECT_EQ(LastPlayed(times, 99'999).value_or(PlayMoment()).number, 4);
    EXPECT_EQ(LastPlayed(times, 100'000), (PlayMoment{.which = 0, .number = 5, .us = 100'000}));
    EXPECT_EQ(LastPlayed(times, 160'000), (PlayMoment{.which = 2, .number = 8, .us = 160'000}));

    EXPECT_EQ(NextPlayed(times, 0), (PlayMoment{.which = 0, .number = 1, .us = 20'000}));
    EXPECT_EQ(NextPlayed(times, 2), (PlayMoment{.which = 2, .number = 4, .us = 80'000}));
    EXPECT_EQ(NextPlayed(times, 3), NextPlayed(times, 2)) << "the missing one's number";
    EXPECT_EQ(NextPlayed(times, 4), (PlayMoment{.which = 0, .number = 5, .us = 100'000}));
    EXPECT_EQ(NextPlayed(times, 4000), (PlayMoment{.which = 0, .number = 4001, .us = 20'000 + 1000 * 80'000}));
}

TEST(PlayTimes, OnceEndsWithTheLastFrame)
{
    const PlayTimes times = TimesOf(OneMissing(), 0, 0, false);
    EXPECT_EQ(LastPlayed(times, 1'000'000'000), (PlayMoment{.which = 2, .number = 4, .us = 80'000}));
    EXPECT_EQ(NextPlayed(times, 3).value_or(PlayMoment()).number, 4);
    EXPECT_EQ(NextPlayed(times, 4), std::nullopt);
    EXPECT_EQ(NextPlayed(times, 400), std::nullopt);
}

TEST(PlayTimes, AGivenRateTakesThePlaceOfTheTimesAndLeavesTheGaps)
{
    const PlayTimes times = TimesOf(OneMissing(), 100, 25, true);
    EXPECT_THAT(times.frames, ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 10'000}, PlayedFrame{3, 30'000}));
    EXPECT_EQ(times.rateHz, 100);
}

TEST(PlayTimes, WithoutTimesTheHeadersRateHolds)
{
    const PlayTimes times = TimesOf({{}, {}, {}}, 0, 25, true);
    EXPECT_THAT(times.frames, ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 40'000}, PlayedFrame{2, 80'000}));
    EXPECT_TRUE(times.rateIsKnown);

    const PlayTimes unknown = TimesOf({{}, {}}, 0, 0, true);
    EXPECT_THAT(unknown.frames, ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 20'000}));
    EXPECT_FALSE(unknown.rateIsKnown);
}

TEST(PlayTimes, ARecordWithoutATimeLeavesTheRateOfTheOthers)
{
    std::vector<RecordedTime> times = OneMissing();
    times.push_back({.monotonicNs = 0});  // made again from the sequence
    times.push_back({.monotonicNs = 600 * kMs});
    EXPECT_THAT(TimesOf(times, 0, 0, true).frames,
                ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 20'000}, PlayedFrame{3, 60'000}, PlayedFrame{4, 80'000},
                            PlayedFrame{5, 100'000}));
}

TEST(PlayTimes, AnotherRunFollowsAPeriodLaterWhateverItsClockSays)
{
    const std::vector<RecordedTime> times{{.monotonicNs = 900 * kMs},
                                          {.monotonicNs = 920 * kMs},
                                          {.monotonicNs = 100 * kMs, .beginsAnew = true},
                                          {.monotonicNs = 120 * kMs}};
    EXPECT_THAT(TimesOf(times, 0, 0, true).frames,
                ElementsAre(PlayedFrame{0, 0}, PlayedFrame{1, 20'000}, PlayedFrame{2, 40'000}, PlayedFrame{3, 60'000}));
}

TEST(PlayTimes, ADamagedJournalMakesTimesThatGrow)
{
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    const std::vector<RecordedTime> wild{{.monotonicNs = 1},
                                         {.missing = 4'294'967'295, .monotonicNs = kMost},
                                         {.missing = -7, .monotonicNs = std::numeric_limits<std::int64_t>::min()},
                                         {.monotonicNs = 5, .beginsAnew = true},
                                         {.monotonicNs = kMost}};
    for (const double rateHz : {0.0, 0.01, 1e6}) {
        const PlayTimes times = TimesOf(wild, rateHz, 0, true);
        ASSERT_EQ(times.frames.size(), 5U);
        for (std::size_t i = 1; i < times.frames.size(); ++i) {
            EXPECT_GT(times.frames[i].us, times.frames[i - 1].us) << rateHz;
            EXPECT_GT(times.frames[i].number, times.frames[i - 1].number) << rateHz;
        }
        EXPECT_LE(LastPlayed(times, kMost / 4).value_or(PlayMoment{.us = kMost}).us, kMost / 4);
    }
}

TEST(PlayTimes, EachFrameIsTheNextOfTheOneBeforeAndTheLastAtItsTime)
{
    for (const bool loops : {true, false}) {
        const PlayTimes times = TimesOf(OneMissing(), 0, 0, loops);
        std::int64_t after = 0;
        for (int i = 0; i < (loops ? 20 : 3); ++i) {
            const auto next = NextPlayed(times, after);
            ASSERT_TRUE(next);
            EXPECT_EQ(LastPlayed(times, next->us), next);
            EXPECT_EQ(next->which, i % 3);
            after = next->number;
        }
    }
}

}  // namespace
}  // namespace kelvo

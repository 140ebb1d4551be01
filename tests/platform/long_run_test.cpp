#include "platform/long_run.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

std::string TextAfter(std::int64_t ms)
{
    return NoteOfRun(LongRun::kRecording, ms).value_or(DesktopNote{.summary = {}, .text = "none"}).text;
}

std::string SummaryOf(LongRun run)
{
    return NoteOfRun(run, kLongRunMs).value_or(DesktopNote{}).summary;
}

TEST(LongRun, IsToldFromAMinuteOn)
{
    EXPECT_EQ(TextAfter(0), "none");
    EXPECT_EQ(TextAfter(59'999), "none");
    EXPECT_EQ(TextAfter(60'000), "It took 1 min.");
    EXPECT_EQ(TextAfter(179'999), "It took 2 min.");
    EXPECT_EQ(TextAfter(3'599'999), "It took 59 min.");
    EXPECT_EQ(TextAfter(3'600'000), "It took 1 h 0 min.");
    EXPECT_EQ(TextAfter(7'500'000), "It took 2 h 5 min.");
    EXPECT_EQ(TextAfter(100 * 3'600'000LL), "It took 100 h 0 min.");
}

TEST(LongRun, SaysWhatHasEnded)
{
    EXPECT_EQ(SummaryOf(LongRun::kRecording), "Kelvo: a recording has ended");
    EXPECT_EQ(SummaryOf(LongRun::kTrace), "Kelvo: a trace has ended");
    EXPECT_EQ(SummaryOf(LongRun::kTriggeredSave), "Kelvo: a triggered save has ended");
}

}  // namespace
}  // namespace kelvo

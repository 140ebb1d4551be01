// Whether a recording will do, said beforehand: figures worked by hand, 10 MB/s needed at 100 Hz.
#include "record/recorder_outlook.h"

#include "record/recorder.h"
#include "record/recorder_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace kelvo {
namespace {

using testing::HasSubstr;

RecorderOutlook Good()
{
    return {.directoryIsThere = true,
            .neededBytesPerSecond = 10e6,
            .writesBytesPerSecond = 50e6,
            .freeBytes = 6e9,  // 10 minutes
            .frameRateHz = 100,
            .ringFrames = 500,
            .longestPreTrigger = 375};
}

TEST(RecorderOutlook, SaysNothingWhereAllWillDo)
{
    EXPECT_EQ(OutlookWarning(Good(), {}), "");
    RecorderOutlook unmeasured = Good();
    unmeasured.writesBytesPerSecond.reset();
    EXPECT_EQ(OutlookWarning(unmeasured, {}), "");
}

TEST(RecorderOutlook, SaysHowLongTheRingBridgesASlowDisk)
{
    RecorderOutlook slow = Good();
    slow.writesBytesPerSecond = 8e6;
    // 500 frames are 5 s; a fifth of the frames stays in the ring: it is full after 25 s.
    EXPECT_EQ(OutlookWarning(slow, {}),
              "The disk is too slow: it takes 8.0 MB/s of 10.0 MB/s. The ring bridges 25.0 s.");
    slow.writesBytesPerSecond = 10e6;
    EXPECT_EQ(OutlookWarning(slow, {}), "");
}

TEST(RecorderOutlook, SaysWhereTheRoomEnds)
{
    RecorderOutlook little = Good();
    little.freeBytes = 590e6;
    EXPECT_EQ(OutlookWarning(little, {}), "The disk has room for 59 s only.");
    little.freeBytes = 600e6;
    EXPECT_EQ(OutlookWarning(little, {}), "");
    RecorderSettings settings;
    settings.length = RecordLength::kFrames;
    settings.frames = 12'000;  // 2 minutes
    EXPECT_EQ(OutlookWarning(little, settings), "The disk has room for 1.0 min only. The recording takes 2.0 min.");
    settings.frames = 6'000;
    EXPECT_EQ(OutlookWarning(little, settings), "");
    settings.length = RecordLength::kSeconds;
    settings.seconds = 61;
    EXPECT_THAT(OutlookWarning(little, settings), HasSubstr("takes 1.0 min."));
    little.freeBytes.reset();
    EXPECT_EQ(OutlookWarning(little, settings), "") << "it can't be told";
}

TEST(RecorderOutlook, CountsFramesAtAnIntervalByTheInterval)
{
    RecorderOutlook outlook = Good();
    outlook.neededBytesPerSecond = 1e6;  // ten a second
    outlook.freeBytes = 100e6;
    RecorderSettings settings;
    settings.length = RecordLength::kFrames;
    settings.intervalSeconds = 0.1;
    settings.frames = 1000;
    EXPECT_EQ(OutlookWarning(outlook, settings), "");
    settings.frames = 1001;
    EXPECT_NE(OutlookWarning(outlook, settings), "");
}

TEST(RecorderOutlook, KnowsNothingWithoutACamera)
{
    RecorderOutlook none;
    none.directoryIsThere = true;
    none.freeBytes = 1;
    EXPECT_EQ(OutlookWarning(none, {}), "");
    EXPECT_EQ(RoomSeconds(none), std::nullopt);
    none.directoryIsThere = false;
    EXPECT_EQ(OutlookWarning(none, {}), "The directory of the recordings isn't there.");
}

TEST(RecorderOutlook, WritesFiguresAsTheyAreRead)
{
    EXPECT_EQ(RateText(std::nullopt), "-");
    EXPECT_EQ(RateText(0), "-");
    EXPECT_EQ(RateText(16'398'400.0), "16.4 MB/s");
    EXPECT_EQ(RoomText(std::nullopt), "-");
    EXPECT_EQ(RoomText(59.9), "59 s");
    EXPECT_EQ(RoomText(90), "1.5 min");
    EXPECT_EQ(RoomText(51'000), "850 min");
}

TEST(RecorderOutlook, MeansARectangleOfThePicture)
{
    const std::array<std::int16_t, 6> picture = {1, 2, 3,  //
                                                 4, 5, -60};
    RecorderSettings settings;
    settings.meanLeft = 1;
    settings.meanRight = 2;
    settings.meanBottom = 1;
    EXPECT_EQ(TriggerMeanOf(picture, 3, settings), (2 + 3 + 5 - 60) / 4.0);
    settings.meanTop = 1;
    settings.meanLeft = 0;
    settings.meanRight = 0;
    EXPECT_EQ(TriggerMeanOf(picture, 3, settings), 4);
    settings.meanBottom = 2;
    EXPECT_EQ(TriggerMeanOf(picture, 3, settings), std::nullopt) << "below";
    settings.meanBottom = 0;
    EXPECT_EQ(TriggerMeanOf(picture, 3, settings), std::nullopt) << "upside down";
    settings.meanTop = 0;
    settings.meanRight = 3;
    EXPECT_EQ(TriggerMeanOf(picture, 3, settings), std::nullopt) << "beside";
    EXPECT_EQ(TriggerMeanOf({}, 0, settings), std::nullopt);
}

class RecorderOutlookOf : public RecorderTest {};

TEST_F(RecorderOutlookOf, TheMachineAsItIs)
{
    RecorderSettings settings = Settings();
    const RecorderOutlook outlook = TakeOutlook(settings, 1e6);
    EXPECT_TRUE(outlook.directoryIsThere);
    EXPECT_DOUBLE_EQ(outlook.neededBytesPerSecond, 100.0 * (2 * 320 * 256 + 80 + 64));
    EXPECT_EQ(outlook.writesBytesPerSecond, 1e6);
    EXPECT_GT(outlook.freeBytes.value_or(0), 0);
    EXPECT_EQ(outlook.frameRateHz, 100);
    EXPECT_EQ(outlook.longestPreTrigger, outlook.ringFrames / 4 * 3);
    settings.directory = Out("none");
    EXPECT_FALSE(TakeOutlook(settings, {}).directoryIsThere);
    EXPECT_EQ(TakeOutlook(settings, {}).freeBytes, std::nullopt);
}

TEST_F(RecorderOutlookOf, ThePreTriggerAndTheRing)
{
    WriteRingMegabytes(16);  // 102 frames and 4: 3 quarters of 98 may stand before the trigger
    RecorderSettings settings = Settings();
    settings.trigger = RecordTrigger::kButton;
    settings.preTriggerFrames = 72;
    EXPECT_EQ(OutlookWarning(TakeOutlook(settings, 50e6), settings), "");
    settings.preTriggerFrames = 73;
    EXPECT_EQ(OutlookWarning(TakeOutlook(settings, 50e6), settings),
              "The pre-trigger is too long. The ring holds at most 0.7 s (72 frames) before the trigger.");
    settings.trigger = RecordTrigger::kNone;
    EXPECT_EQ(OutlookWarning(TakeOutlook(settings, 50e6), settings), "");
}

TEST_F(RecorderOutlookOf, TheRingIsKept)
{
    // Frames of 2000 bytes, and what is kept about each of them.
    const auto fitsInto16Megabytes = testing::AllOf(testing::Gt(7900U), testing::Lt(16U * 1024 * 1024 / 2000));
    EXPECT_EQ(ReadRingMegabytes(), 0);
    WriteRingMegabytes(16);
    EXPECT_THAT(RingFrames(1000), fitsInto16Megabytes);
    ResetCapture();
    EXPECT_GT(RingFrames(1000), std::size_t{100'000}) << "by the memory again";
    EXPECT_EQ(ReadRingMegabytes(), 16);
    EXPECT_THAT(RingFrames(1000), fitsInto16Megabytes);
    WriteRingMegabytes(0);
    EXPECT_GT(RingFrames(1000), std::size_t{100'000});
}

}  // namespace
}  // namespace kelvo

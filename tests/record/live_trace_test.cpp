// Traces of live video on the simulated camera, in virtual time: 320 x 256 at 100 Hz.
#include "record/live_trace.h"

#include "grabber/recording.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "record/recorder_fixture.h"
#include "record/what_records.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/frame_state_write.h"

#include <gmock/gmock.h>

#include <cmath>

namespace kelvo {
namespace {

class LiveTraceTest : public RecorderTest {
  protected:
    static std::vector<Region> OneRegion()
    {
        return {
            {.number = 1, .name = "R1", .shape = RegionShape::kRectangle, .place = {30, 10, 50, 20}, .reflectedC = {}}};
    }
    void GoBehind(std::int64_t number) const { AdvanceVirtualClock(grabUs + number * 10'000 + 5'000 - TickUs()); }
    void RecordFive()
    {
        RecorderSettings settings = Settings();
        settings.length = RecordLength::kFrames;
        settings.frames = 5;
        Start(settings);
    }
    // The counts of the region: image pixel i is detector 81919 - i by the table.
    std::vector<double> CountsOf(std::int64_t number) const
    {
        const std::vector<std::int16_t> frame = Expected(number - 1, grabUs + number * 10'000);
        std::vector<double> counts;
        for (std::size_t row = 10; row <= 20; ++row) {
            for (std::size_t column = 30; column <= 50; ++column) {
                counts.push_back(frame[kPixels - 1 - (row * 320 + column)]);
            }
        }
        return counts;
    }
};

TEST_F(LiveTraceTest, HasAPointOfEachFrame)
{
    std::string why;
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why)) << why;
    GoBehind(12);
    EXPECT_EQ(LiveTrace().frames.size(), 12U) << "it grows while it runs";
    GoBehind(30);
    StopLiveTrace();
    GoBehind(40);
    const Trace& trace = LiveTrace();
    ASSERT_EQ(trace.frames.size(), 30U);
    ASSERT_EQ(trace.lines.size(), 1U);
    EXPECT_EQ(trace.lines[0].pixels, 21U * 11U);
    ASSERT_EQ(trace.lines[0].points.size(), 30U);
    for (std::int64_t number = 1; number <= 30; ++number) {
        const auto i = static_cast<std::size_t>(number - 1);
        const std::vector<double> counts = CountsOf(number);
        double sum = 0;
        for (const double count : counts) sum += count;
        const double mean = sum / static_cast<double>(counts.size());
        double squares = 0;
        for (const double count : counts) squares += (count - mean) * (count - mean);
        const TracePoint& point = trace.lines[0].points[i];
        EXPECT_DOUBLE_EQ(point.mean, mean);
        EXPECT_NEAR(point.deviation, std::sqrt(squares / static_cast<double>(counts.size() - 1)), 1e-9);
        EXPECT_EQ(point.minimum, *std::ranges::min_element(counts));
        EXPECT_EQ(point.maximum, *std::ranges::max_element(counts));
        EXPECT_EQ(trace.frames[i].number, number);
        EXPECT_EQ(trace.frames[i].clockNs, (number - 1) * 10'000'000);
        EXPECT_NE(trace.frames[i].utcNs, 0);
    }
    EXPECT_THAT(TraceGapsOf(trace.frames), testing::IsEmpty());
    EXPECT_THAT(trace.origin, testing::Contains(testing::Pair("camera", "InSb 320 x 256")));
    EXPECT_THAT(trace.origin, testing::Contains(testing::Pair("head settings", "100 Hz, 2.5 ms")));
}

TEST_F(LiveTraceTest, CorrectsAsTheLivePictureDoes)
{
    write::cal.CalType = 1;
    write::cal.OffsetList.assign(kPixels, 0);
    for (std::size_t i = 0; i < kPixels; ++i) write::cal.OffsetList[i] = static_cast<std::int16_t>(i % 7);
    CalibrationListsChanged();
    std::string why;
    const std::vector<Region> point = {
        {.number = 4, .name = "spot", .shape = RegionShape::kPoint, .place = {5, 3, 5, 3}, .reflectedC = {}}};
    ASSERT_TRUE(StartLiveTrace(point, why)) << why;
    GoBehind(3);
    StopLiveTrace();
    ASSERT_EQ(LiveTrace().frames.size(), 3U);
    for (std::int64_t number = 1; number <= 3; ++number) {
        const std::size_t detector = kPixels - 1 - (3 * 320 + 5);
        const int raw = Expected(number - 1, grabUs + number * 10'000)[detector];
        EXPECT_EQ(LiveTrace().lines[0].points[static_cast<std::size_t>(number - 1)].mean,
                  raw - static_cast<int>(detector % 7));
    }
}

TEST_F(LiveTraceTest, LeavesOutWhatTheCameraKnowsToBe)
{
    write::calSet.CalSettings.BadDetFile = directory / "run.bad";
    ASSERT_TRUE(ReplaceFile(CalSettings.BadDetFile, "10,30\n20,50\n0,0\n"));  // the last one isn't in the region
    std::string why;
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why, BadPixels::kLeftOut)) << why;
    GoBehind(3);
    StopLiveTrace();
    const TraceLine& line = LiveTrace().lines[0];
    EXPECT_EQ(line.leftOut, 2U);
    EXPECT_EQ(line.pixels, 21U * 11U - 2U);
    EXPECT_THAT(LiveTrace().origin,
                testing::Contains(testing::Pair("bad pixels", "left out: those that the camera knows")));
    std::vector<double> counts = CountsOf(2);
    double sum = -counts.front() - counts.back();  // the region's first and last pixel
    for (const double count : counts) sum += count;
    EXPECT_DOUBLE_EQ(line.points[1].mean, sum / (21 * 11 - 2));
}

TEST_F(LiveTraceTest, TakesNoBadPixelForAGoodOneWhereTheListIsGone)
{
    write::calSet.CalSettings.BadDetFile = directory / "gone.bad";
    std::string why;
    EXPECT_FALSE(StartLiveTrace(OneRegion(), why, BadPixels::kLeftOut));
    EXPECT_EQ(why, "The list of bad detectors isn't there.");
    EXPECT_FALSE(LiveTraceRuns());
    EXPECT_TRUE(StartLiveTrace(OneRegion(), why)) << why;
    StopLiveTrace();
}

TEST_F(LiveTraceTest, GoesOnThroughARecording)
{
    std::string why;
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why)) << why;
    RecordFive();
    GoBehind(20);
    TendRecorder();
    EXPECT_FALSE(RecorderRuns());
    GoBehind(25);
    EndWhatRecords();
    EXPECT_FALSE(LiveTraceRuns());
    EXPECT_FALSE(CaptureIsUsed());
    EXPECT_EQ(LiveTrace().frames.size(), 25U);
    EXPECT_THAT(TraceGapsOf(LiveTrace().frames), testing::IsEmpty());
}

TEST_F(LiveTraceTest, SaysSoWhereItCannotGoOnBehindARecording)
{
    std::string why;
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why)) << why;
    RecordFive();
    GoBehind(20);
    FailAllocation(1);  // the capture for the trace alone
    TendRecorder();
    FailAllocation(0);
    EXPECT_FALSE(RecorderRuns());
    EXPECT_FALSE(CaptureIsUsed());
    GoBehind(25);
    EXPECT_EQ(LiveTrace().frames.size(), 20U) << "what was traced stands";
    EXPECT_FALSE(LiveTraceRuns());
    EXPECT_EQ(LiveTraceMessage(),
              "The trace was ended: there was no memory to go on with it after a recording. What was traced stands.");
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why)) << why;
    EXPECT_EQ(LiveTraceMessage(), "");
    StopLiveTrace();
}

TEST_F(LiveTraceTest, SaysWhyItDoesNotStart)
{
    std::string why;
    EXPECT_FALSE(StartLiveTrace({}, why));
    EXPECT_EQ(why, "There is no region to trace.");
    std::vector<Region> outside = OneRegion();
    outside[0].place = {320, 0, 330, 5};
    EXPECT_FALSE(StartLiveTrace(outside, why));
    EXPECT_EQ(why, "R1 lies outside of the picture.");
    for (const int refused : {1, 2}) {
        FailAllocation(refused);
        EXPECT_FALSE(StartLiveTrace(OneRegion(), why)) << refused;
        EXPECT_EQ(why, "There is not enough memory to trace the regions.") << refused;
        EXPECT_FALSE(CaptureIsUsed());
    }
    FailAllocation(0);
    EXPECT_TRUE(StartLiveTrace(OneRegion(), why));
    EXPECT_FALSE(StartLiveTrace(OneRegion(), why));
    EXPECT_EQ(why, "Live video is traced already.");
    StopLiveTrace();
    write::frames.CameraOn = 0;
    EXPECT_FALSE(StartLiveTrace(OneRegion(), why));
    EXPECT_EQ(why, "No camera is on.");
    EXPECT_THAT(op.Boxes(), testing::SizeIs(1));
}

TEST_F(LiveTraceTest, ANewOneBeginsAnew)
{
    std::string why;
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why));
    GoBehind(5);
    StopLiveTrace();
    ASSERT_TRUE(StartLiveTrace(OneRegion(), why));
    GoBehind(8);
    StopLiveTrace();
    ASSERT_EQ(LiveTrace().frames.size(), 3U);
    EXPECT_EQ(LiveTrace().frames[0].number, 6);
    EXPECT_EQ(LiveTrace().frames[0].clockNs, 0);
}

}  // namespace
}  // namespace kelvo

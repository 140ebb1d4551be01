// Observers and recordings that come and go beside each other, in real time, while the main thread works on.
#include "grabber/capture.h"
#include "grabber/recording.h"
#include "platform/clock.h"
#include "regions/region_counts.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "threads/paced_board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

class ObservedRecordingThreads : public PacedBoardTest {
  protected:
    ObservedRecordingThreads()
    {
        write::camera.ActiveConfig.Hroi = kPacedColumns;
        write::camera.ActiveConfig.Vroi = kPacedRows;
        write::frames.CameraOn = 1;
        write::frames.LiveVideo = 1;
        write::cal.DecomList.resize(kPacedValues);
        std::iota(write::cal.DecomList.rbegin(), write::cal.DecomList.rend(), 0);
    }
    ~ObservedRecordingThreads() override
    {
        ResetRecording();
        ResetFrameState();
        ResetCameraState();
        ResetCalState();
    }

    // A recording of some milliseconds; the numbers that it got, its own thread's until EndRecording.
    std::vector<std::int64_t> RecordFor(std::int64_t ms)
    {
        std::vector<std::int64_t> numbers;
        EXPECT_TRUE(BeginRecording(64, [&numbers] {
            numbers.push_back(WaitingFrame(0).stamp.number);
            DropFrames(1, FrameFate::kRecorded);
        }));
        for (std::int64_t i = 0; i < ms; ++i) {
            DelayMs(1);
            const CaptureCounts counts = CurrentCaptureCounts();
            EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByBoard.value_or(0) +
                                            counts.lostByRing + counts.waiting);
        }
        EndRecording();
        return numbers;
    }
};

struct Seen {
    std::mutex mutex;
    std::vector<std::int64_t> numbers;
    std::int64_t missed = 0;

    void Note(const ObservedFrame& frame)
    {
        const std::scoped_lock lock(mutex);
        numbers.push_back(frame.stamp.number);
        missed += frame.missed;
    }
    std::size_t Count()
    {
        const std::scoped_lock lock(mutex);
        return numbers.size();
    }
};

TEST_F(ObservedRecordingThreads, OneObserverSeesWhatEachOfThemGets)
{
    Seen seen;
    ASSERT_TRUE(BeginObserving([&seen](const ObservedFrame& frame) { seen.Note(frame); }));
    std::vector<std::int64_t> recorded;
    for (int i = 0; i < 12; ++i) {
        const std::vector<std::int64_t> numbers = RecordFor(15);
        recorded.insert(recorded.end(), numbers.begin(), numbers.end());
        EXPECT_TRUE(ObservingRuns());
        EXPECT_FALSE(RecordingRuns());
        const std::size_t before = seen.Count();
        for (int ms = 0; ms < 2000 && seen.Count() == before; ++ms) DelayMs(1);
        EXPECT_GT(seen.Count(), before) << "also between them";
    }
    EndObserving();
    EXPECT_FALSE(CaptureIsUsed());
    ASSERT_FALSE(recorded.empty());
    EXPECT_TRUE(std::ranges::is_sorted(seen.numbers));
    EXPECT_EQ(std::ranges::adjacent_find(seen.numbers), seen.numbers.end()) << "none twice";
    const auto unseen = std::ranges::count_if(
        recorded, [&](std::int64_t number) { return !std::ranges::binary_search(seen.numbers, number); });
    EXPECT_LE(unseen, seen.missed + 64) << "some may have been missed behind its last, as many as its ring has";
}

TEST_F(ObservedRecordingThreads, ObserversComeAndGoBesideThem)
{
    std::vector<std::int64_t> numbers;
    ASSERT_TRUE(BeginRecording(2000, [&numbers] {
        numbers.push_back(WaitingFrame(0).stamp.number);
        DropFrames(1, FrameFate::kRecorded);
    }));
    for (int i = 0; i < 20; ++i) {
        std::atomic<bool> isHere = true;
        std::atomic<bool> cameLate = false;
        std::atomic<int> frames = 0;
        ASSERT_TRUE(BeginObserving([&](const ObservedFrame&) {
            if (!isHere) cameLate = true;
            ++frames;
        }));
        while (frames < 3) DelayMs(1);
        EndObserving();
        isHere = false;
        DelayMs(2);
        EXPECT_FALSE(cameLate);
        EXPECT_TRUE(RecordingRuns());
    }
    EndRecording();
    const CaptureCounts counts = CurrentCaptureCounts();
    EXPECT_EQ(counts.recorded, std::ssize(numbers));
    EXPECT_EQ(counts.delivered, counts.recorded + counts.lostByBoard.value_or(0) + counts.lostByRing);
}

// As a live trace does it: the lists may change meanwhile, the figures are those of the start.
TEST_F(ObservedRecordingThreads, MeasuresRegionsWhileTheListsChange)
{
    write::cal.CalType = 1;
    write::cal.OffsetList.assign(kPacedValues, 3);
    CalibrationListsChanged();
    std::string why;
    const std::vector<Region> regions = {{.number = 1, .name = "R1", .place = {1, 1, 4, 2}, .reflectedC = {}}};
    std::optional<RegionCounts> made = RegionCounts::Make(regions, kPacedColumns, kPacedRows, why);
    if (!made) FAIL() << why;
    RegionCounts counts = *std::move(made);
    ASSERT_TRUE(counts.PrepareCorrection());
    Seen seen;
    std::atomic<int> wrong = 0;
    ASSERT_TRUE(BeginObserving([&](const ObservedFrame& frame) {
        counts.FromRaw(frame.values);
        const TracePoint point = counts.Measure(0);
        if (point.mean != static_cast<double>(frame.stamp.number - 3) || point.deviation != 0) ++wrong;
        seen.Note(frame);
    }));
    for (int i = 0; i < 20; ++i) {
        write::cal.OffsetList.assign(kPacedValues, static_cast<std::int16_t>(i));
        std::ranges::reverse(write::cal.DecomList);
        CalibrationListsChanged();
        RecordFor(5);
    }
    EndObserving();
    EXPECT_GT(seen.Count(), 20U);
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace kelvo

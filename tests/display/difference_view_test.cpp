#include "display/difference_view.h"

#include "display/units.h"
#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::Each;
using testing::ElementsAre;

using Frame = std::vector<std::int16_t>;

class DifferenceView : public ::testing::Test {
  protected:
    void SetUp() override
    {
        write::camera.ActiveCamera = 2;
        write::camera.ActiveConfig.Hroi = 3;
        write::camera.ActiveConfig.Vroi = 2;
        write::frames.CameraOn = 1;
    }
    Frame Shown(const Frame& frame)
    {
        const auto shown = CountsToShow(frame);
        return {shown.begin(), shown.end()};
    }
    const Frame reference_ = {10, 20, 30, 40, 50, 60};
};

TEST_F(DifferenceView, ShowsTheFrameWhereThereIsNone)
{
    EXPECT_FALSE(DifferenceOnView());
    EXPECT_EQ(Shown(reference_), reference_);
    EXPECT_EQ(EndUnfitDifference(), "");
}

TEST_F(DifferenceView, OfAPictureToItselfIsZeroEverywhere)
{
    ASSERT_TRUE(BeginDifference(reference_, "itself", 8000));
    EXPECT_TRUE(DifferenceOnView());
    EXPECT_EQ(DifferenceSource(), "itself");
    EXPECT_THAT(Shown(reference_), Each(8000));
}

TEST_F(DifferenceView, LiesAboveAndBelowZero)
{
    ASSERT_TRUE(BeginDifference(reference_, "", 100));
    EXPECT_THAT(Shown({11, 19, 30, 0, 150, -40}), ElementsAre(101, 99, 100, 60, 200, 0));
    EXPECT_EQ(ReferenceCount(4), 50);
    EXPECT_EQ(ReferenceCount(6), 0);
}

TEST_F(DifferenceView, HoldsWhatLeavesSixteenBits)
{
    const Frame frame = {32767, -32768, 32767, -32768, 0};
    const Frame reference = {-32768, 32767, 32767, -32768, -32768};
    Frame out(frame.size());
    FillDifference(frame, reference, 8000, out);
    EXPECT_THAT(out, ElementsAre(32767, -32768, 8000, 8000, 32767));
}

TEST_F(DifferenceView, IsThatOfEachPixelInFramesOfAnyLength)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> counts(-32768, 32767);
    for (std::size_t size = 0; size < 70; ++size) {
        Frame frame(size);
        Frame reference(size);
        for (auto& count : frame) count = static_cast<std::int16_t>(counts(random));
        for (auto& count : reference) count = static_cast<std::int16_t>(counts(random));
        Frame out(size);
        FillDifference(frame, reference, 321, out);
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_EQ(out[i], std::clamp(321 + frame[i] - reference[i], -32768, 32767)) << size << ' ' << i;
        }
    }
}

TEST_F(DifferenceView, LeavesAFileOnViewAsItIs)
{
    ASSERT_TRUE(BeginDifference(reference_, "", 100));
    write::frames.ViewingFile = 1;
    EXPECT_FALSE(DifferenceOnView());
    EXPECT_EQ(Shown(reference_), reference_);
    EXPECT_EQ(EndUnfitDifference(), "");
    write::frames.ViewingFile = 0;
    EXPECT_THAT(Shown(reference_), Each(100));
}

TEST_F(DifferenceView, LeavesAFrameOfAnotherSizeAsItIs)
{
    ASSERT_TRUE(BeginDifference(reference_, "", 100));
    EXPECT_EQ(Shown({1, 2}), (Frame{1, 2}));
}

TEST_F(DifferenceView, EndsWithAReasonWhereThePictureIsAnotherOne)
{
    struct Change {
        std::int32_t& value;
        const char* reason;
    };
    const Change changes[] = {
        {write::camera.ActiveCamera, "The difference is off: the camera is another one now."},
        {write::camera.ActiveConfig.Hroi, "The difference is off: the frames have another size now."},
        {write::display.MirrorVert, "The difference is off: the picture lies another way now."},
        {write::display.RotateCCW, "The difference is off: the picture lies another way now."},
        {write::cal.CalType, "The difference is off: the correction is another one now."},
        {write::cal.IntensityCold, "The difference is off: the correction is another one now."},
    };
    for (const Change& change : changes) {
        write::cal.CalType = 2;
        ASSERT_TRUE(BeginDifference(reference_, "", 100));
        const std::int32_t before = change.value;
        change.value = before + 1;
        EXPECT_FALSE(DifferenceOnView());
        EXPECT_EQ(Shown(reference_), reference_);
        change.value = before;  // a dialog that is cancelled
        EXPECT_EQ(EndUnfitDifference(), "");
        EXPECT_TRUE(DifferenceOnView());
        change.value = before + 1;
        EXPECT_EQ(EndUnfitDifference(), change.reason);
        EXPECT_FALSE(DifferenceIsOn());
        change.value = before;
    }
    ASSERT_TRUE(BeginDifference(reference_, "", 100));
    write::frames.CameraOn = 0;
    EXPECT_EQ(EndUnfitDifference(), "The difference is off: the camera is off.");
}

TEST_F(DifferenceView, EndsWithANewRunOfTheSameSources)
{
    write::cal.CalType = 2;
    write::cal.OffsetList = {1, 2, 3, 4, 5, 6};
    write::cal.GainList = {1, 1, 1, 1, 1, 1};
    CalibrationListsChanged();
    ASSERT_TRUE(BeginDifference(reference_, "", 100));
    write::cal.DecomList = {0, 0, 2, 3, 4, 5};  // a bad pixel is replaced
    CalibrationListsChanged();
    EXPECT_EQ(EndUnfitDifference(), "");
    EXPECT_TRUE(DifferenceOnView());
    write::cal.GainList[4] = 1.25F;
    CalibrationListsChanged();
    EXPECT_FALSE(DifferenceOnView());
    EXPECT_EQ(EndUnfitDifference(), "The difference is off: the correction is another one now.");
    ASSERT_TRUE(BeginDifference(reference_, "", 100));
    write::cal.OffsetList[0] = 0;
    CalibrationListsChanged();
    EXPECT_EQ(EndUnfitDifference(), "The difference is off: the correction is another one now.");
}

TEST_F(DifferenceView, KeepsTheFormerOneWhereItCantBegin)
{
    ASSERT_TRUE(BeginDifference(reference_, "former", 100));
    EXPECT_FALSE(BeginDifference(Frame{1, 2, 3}, "of another size", 100));
    for (const int refused : {1, 2}) {
        FailAllocation(refused);
        EXPECT_FALSE(BeginDifference(reference_, "new", 100)) << refused;
    }
    FailAllocation(0);
    EXPECT_EQ(DifferenceSource(), "former");
    EXPECT_THAT(Shown(reference_), Each(100));
    EndDifference();
    EXPECT_FALSE(DifferenceIsOn());
    EXPECT_EQ(DifferenceSource(), "");
}

TEST_F(DifferenceView, ReadsInTheUnitOnView)
{
    write::cal.CalType = 2;
    write::cal.IntensityCold = 7000;
    write::cal.IntensityHot = 7400;
    write::cal.TemperatureCold = 20;
    write::cal.TemperatureHot = 25;
    EXPECT_EQ(DifferenceText(7080, 7000, kUnitCounts), "80");
    EXPECT_EQ(DifferenceText(6900, 7000, kUnitCounts), "-100");
    EXPECT_EQ(DifferenceText(7080, 7000, kUnitCelsius), "1.000");  // 80 counts a degree
    EXPECT_EQ(DifferenceText(7000, 7040, kUnitKelvin), "-0.500");
    EXPECT_EQ(DifferenceText(7080, 7000, kUnitFahrenheit), "1.800");
    EXPECT_EQ(DifferenceText(7123, 7123, kUnitCelsius), "0.000");
}

}  // namespace
}  // namespace kelvo

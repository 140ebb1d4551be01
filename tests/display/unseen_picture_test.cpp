// A picture that nobody would see is shown by levels of its own, which aren't the operator's.
#include "display/display_pipeline.h"
#include "display/fit_contrast.h"
#include "display/lookup_table.h"
#include "imagefile/header_write.h"
#include "state/contrast_fit.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace kelvo {
namespace {

constexpr CountRange kRange{0, 16383};

std::vector<std::uint8_t> Table(std::int32_t contrast, std::int32_t brightness)
{
    std::vector<std::uint8_t> table(kLutEntries);
    FillLut(table, WindowOf(kRange.Span(), contrast, brightness), kRange);
    return table;
}

// 100 pixels, so many of them below the table's window and the others in the middle of it.
std::vector<std::int16_t> Dark(std::size_t count)
{
    const LutWindow window = WindowOf(kRange.Span(), 16, 580);
    std::vector<std::int16_t> frame(100, static_cast<std::int16_t>((window.start + window.end) / 2));
    std::fill_n(frame.begin(), count, std::int16_t{0});
    return frame;
}

TEST(UnseenPicture, IsOneOfWhichMoreThan95PercentAreAtAnEnd)
{
    const auto table = Table(16, 580);
    EXPECT_FALSE(HardlySeen(Dark(95), table));
    EXPECT_TRUE(HardlySeen(Dark(96), table));
    EXPECT_TRUE(HardlySeen(std::vector<std::int16_t>{16383, 16383, 0, -5}, table)) << "both ends count";
}

class UnseenPictureOnView : public testing::Test {
  protected:
    void View(const std::vector<std::int16_t>& counts)
    {
        write::display.DisplayHigh = kRange.high;
        write::frames.ViewingFile = 1;
        write::file.ImageHeader = {};
        write::file.ImageHeader.HeaderVersion = 8;
        write::file.ImageHeader.DisplayHigh = kRange.high;
        write::file.ImageHeader.ImageWidth = static_cast<std::int16_t>(counts.size());
        write::file.ImageHeader.ImageHeight = 1;
        write::file.ImageHeader.SampleBytes = 2;
        write::frames.ImageBuffer.resize(2 * counts.size());
        if (!counts.empty()) std::memcpy(write::frames.ImageBuffer.data(), counts.data(), 2 * counts.size());
        BuildDisplayLut(16, 580);
    }
    // Counts far below what contrast 16 at 580 shows.
    static std::vector<std::int16_t> Ramp()
    {
        std::vector<std::int16_t> counts;
        for (std::int16_t i = 0; i < 1000; ++i) counts.push_back(static_cast<std::int16_t>(100 + i));
        return counts;
    }
};

TEST_F(UnseenPictureOnView, IsFittedAndWhatTheOperatorChoseIsStored)
{
    View(Ramp());
    EXPECT_FALSE(OwnFitInForce());
    EXPECT_EQ(FitUnseenPicture({}), 1);
    EXPECT_TRUE(OwnFitInForce());
    EXPECT_FALSE(HardlySeen(Ramp(), DisplayLut));
    EXPECT_EQ(ContrastToStore(), (ContrastPair{16, 580}));

    View(Ramp());  // a second file, before which the first one's levels are in force
    BuildDisplayLut(LastOwnFit->found.contrast, LastOwnFit->found.brightness);
    EXPECT_EQ(FitUnseenPicture({}), 0) << "it is seen already";
    EXPECT_EQ(ContrastToStore(), (ContrastPair{16, 580}));
}

TEST_F(UnseenPictureOnView, WhereTheOperatorTakesOneLevelInHandBothAreHis)
{
    View(Ramp());
    ASSERT_EQ(FitUnseenPicture({}), 1);
    const ContrastPair found = LastOwnFit->found;
    BuildDisplayLut(found.contrast - 1, found.brightness);
    EXPECT_FALSE(OwnFitInForce());
    EXPECT_EQ(ContrastToStore(), (ContrastPair{found.contrast - 1, found.brightness}));
}

TEST_F(UnseenPictureOnView, StaysAsItIsWhereNothingIsGained)
{
    View(std::vector<std::int16_t>(100, 0));  // no window begins below the first count
    EXPECT_EQ(FitUnseenPicture({}), 0);
    EXPECT_EQ(Contrast, 16);
    EXPECT_EQ(Brightness, 580);
    View({});
    EXPECT_EQ(FitUnseenPicture({}), 0);
    write::frames.ViewingFile = 0;  // live video is the operator's own
    EXPECT_EQ(FitUnseenPicture({}), 0);
    EXPECT_FALSE(LastOwnFit);
}

}  // namespace
}  // namespace kelvo

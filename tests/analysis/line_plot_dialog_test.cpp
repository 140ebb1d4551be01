// The line plot on the screen: what is drawn, when, and what it leaves alone.
#include "analysis/line_plot_dialog.h"

#include "analysis/line_plot_view.h"
#include "analysis/line_settings.h"
#include "analysis/line_settings_write.h"
#include "analysis/measured_frame.h"
#include "pixel/region_marks.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "support/picture_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <vector>

namespace kelvo {

namespace {

using testing::IsEmpty;

constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint32_t kWhite = 0xFFFFFF;

class LinePlotShown : public PictureTest {
  protected:
    LinePlotShown()
    {
        std::vector<std::int16_t> counts(kColumns * kRows);
        for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<std::int16_t>(100 + i % kColumns);
        View(kColumns, kRows, counts);
    }
    static constexpr std::size_t kColumns = 12;
    static constexpr std::size_t kRows = 10;

    static DeviceBitmap Plot()
    {
        DeviceBitmap picture;
        EXPECT_TRUE(CaptureWindowPixels(DlgItemWindow(DialogInFront(), kLinePlotControl), true, picture));
        return picture;
    }
    // The first and the last column that has a pixel of the colour; {-1, -1} for none.
    static Point Span(const DeviceBitmap& picture, std::uint32_t color)
    {
        Point span{-1, -1};
        for (int x = 0; x < picture.width; ++x) {
            for (int y = 0; y < picture.height; ++y) {
                const auto at =
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) + static_cast<std::size_t>(x);
                if ((picture.pixels[at] & 0xFFFFFF) != color) continue;
                if (span.x < 0) span.x = x;
                span.y = x;
            }
        }
        return span;
    }
    // In the open dialog, after its first tick; what one step has asked to be painted is painted before the next.
    void InPlot(std::initializer_list<std::function<void()>> steps)
    {
        op->Do([] { DelayMs(600); });
        for (const std::function<void()>& step : steps) op->Do(step);
        op->Do([] { OperateKey("Esc"); });
        EXPECT_EQ(LinePlotDialog(hWndMain), 1);
        EXPECT_THAT(op->Boxes(), IsEmpty());
    }
};

TEST_F(LinePlotShown, StandsOnWhiteAndGrowsWithItsWindow)
{
    DeviceBitmap before;
    const auto widen = [&] {
        before = Plot();
        EXPECT_EQ(before.pixels.front() & 0xFFFFFF, kWhite);
        const Rect place = GetWindowRect(DialogInFront());
        MoveWindow(DialogInFront(), {place.left - 200, place.top, place.right, place.bottom + 100});
    };
    const auto look = [&] {
        const DeviceBitmap after = Plot();
        EXPECT_EQ(after.width, before.width + 200);
        EXPECT_EQ(after.height, before.height + 100);
        const Point narrow = Span(before, kRed);
        const Point wide = Span(after, kRed);
        EXPECT_GT(narrow.y - narrow.x, before.width / 2);
        EXPECT_EQ(wide.x, narrow.x) << "the box begins where it began";
        EXPECT_NEAR(wide.y, narrow.y + 200 * 11 / 12, 1) << "and its twelve points share the room";
    };
    InPlot({widen, look});
}

TEST_F(LinePlotShown, IsNotDrawnAgainWhileNothingHasChanged)
{
    InPlot({[] {
        const std::int64_t before = MemoryRequests();
        DrawLinePlot(DialogInFront());
        EXPECT_EQ(MemoryRequests(), before) << "nothing is sampled";
        write::line.LineSettings.Xend = 3;
        DrawLinePlot(DialogInFront());
        EXPECT_GT(MemoryRequests(), before);
    }});
}

TEST_F(LinePlotShown, MarksACopyAndFreesIt)
{
    const std::vector<std::uint8_t> frame = ImageBuffer;
    InPlot({[&] {
        std::vector<std::int16_t> marked(FrameToMeasure().begin(), FrameToMeasure().end());
        ASSERT_EQ(MarkLine(marked, 0, 0, kColumns - 1, kRows - 1), 1);
        EXPECT_EQ(LineScratchFrame, marked);
        EXPECT_EQ(ImageBuffer, frame);
        ShowLineMark(0);
        EXPECT_EQ(ImageBuffer, frame);
    }});
    EXPECT_THAT(LineScratchFrame, IsEmpty());
    EXPECT_EQ(ImageBuffer, frame);
}

}  // namespace

}  // namespace kelvo

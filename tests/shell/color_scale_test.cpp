// The colour scale: which counts it spans, where its ticks stand, and that it follows the display.
#include "shell/color_scale.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/scale_line.h"
#include "display/scale_ticks.h"
#include "display/units.h"
#include "imagefile/header_write.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/window.h"
#include "resources/ids.h"
#include "resources/menu.h"
#include "state/cal_state.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "ui/docking.h"
#include "ui/window_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// --- The counts -----------------------------------------------------------------------------------------------------

TEST(SpreadCountsOf, AreWhereTheTableRisesFromBlackToWhite)
{
    for (const CountRange live : {CountRange{0, 16383}, {0, 4000}, {500, 9000}}) {
        for (const int contrast : {1, 16, 50, 76, 100}) {
            for (const int brightness : {1, 300, 580, 837, 1000}) {
                const LutWindow window = WindowOf(live.Span(), contrast, brightness);
                std::vector<std::uint8_t> table(kLutEntries);
                FillLut(table, window, live);
                const CountRange counts = SpreadCounts(window, live);
                SCOPED_TRACE(testing::Message() << live.low << " " << contrast << " " << brightness);
                for (std::int32_t count = 0; count <= counts.low; ++count) {
                    ASSERT_EQ(table[static_cast<std::size_t>(count)], 0) << count;
                }
                const double length = counts.high - counts.low;
                for (std::int32_t count = counts.low; count < counts.high; ++count) {
                    const double gray = 255.0 * (count - counts.low) / length;
                    ASSERT_NEAR(table[static_cast<std::size_t>(count)], std::floor(gray), 1) << count;
                }
                EXPECT_EQ(table[static_cast<std::size_t>(counts.high)], 255);
            }
        }
    }
}

// --- The ticks ------------------------------------------------------------------------------------------------------

// Multiples of 1, 2 or 5 times a power of ten, apart by two label heights, each label its value.
void ExpectRoundTicks(const std::vector<ScaleTick>& ticks, int top, int bottom, int labelHeight)
{
    ASSERT_GE(ticks.size(), 2U);
    const double step = std::fabs(ticks[1].value - ticks[0].value);
    const double lead = step / std::pow(10.0, std::floor(std::log10(step) + 1e-6));
    EXPECT_TRUE(std::fabs(lead - 1) < 1e-6 || std::fabs(lead - 2) < 1e-6 || std::fabs(lead - 5) < 1e-6) << step;
    std::set<std::string> labels;
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        EXPECT_GE(ticks[i].y, top);
        EXPECT_LT(ticks[i].y, bottom);
        const double multiple = ticks[i].value / step;
        EXPECT_NEAR(multiple, std::round(multiple), 1e-6);
        EXPECT_NEAR(std::strtod(ticks[i].label.c_str(), nullptr), ticks[i].value, step * 1e-6);
        labels.insert(ticks[i].label);
        if (i > 0) {
            EXPECT_GE(std::abs(ticks[i].y - ticks[i - 1].y), 2 * labelHeight - 1);
        }
    }
    EXPECT_EQ(labels.size(), ticks.size());
}

TEST(ScaleTicks, StandAtRoundNumbers)
{
    // 0 to 1000 over 500 pixels, labels of 15: at least 30 pixels or 60 counts apart, so each 100.
    const auto ticks = PlaceScaleTicks({{0, 1000}, 0, 1000, true}, 100, 600, 15);
    ASSERT_THAT(ticks, SizeIs(11));
    EXPECT_EQ(ticks[0].label, "0");
    EXPECT_EQ(ticks[0].y, 599);  // the last row of the bar
    EXPECT_EQ(ticks[1].label, "100");
    EXPECT_EQ(ticks[1].y, 550);
    EXPECT_EQ(ticks[10].label, "1000");
    EXPECT_EQ(ticks[10].y, 100);
}

TEST(ScaleTicks, BeginInsideTheRange)
{
    const auto ticks = PlaceScaleTicks({{0, 100}, 19.97, 20.44, false}, 0, 300, 15);
    ASSERT_THAT(ticks, SizeIs(9));  // 20.00, 20.05 to 20.40
    EXPECT_EQ(ticks.front().label, "20.00");
    EXPECT_EQ(ticks.back().label, "20.40");
    ExpectRoundTicks(ticks, 0, 300, 15);
}

TEST(ScaleTicks, ValuesMayFallAsCountsRise)
{
    const auto ticks = PlaceScaleTicks({{0, 16383}, 3.0, -1.0, false}, 0, 400, 15);
    ExpectRoundTicks(ticks, 0, 400, 15);
    EXPECT_EQ(ticks.front().label, "-1.0");
    EXPECT_EQ(ticks.front().y, 0);
    EXPECT_EQ(ticks.back().label, "3.0");
    for (const ScaleTick& tick : ticks) {
        if (std::fabs(tick.value) < 1e-9) {
            EXPECT_EQ(tick.label, "0.0");  // never "-0.0"
        }
    }
}

TEST(ScaleTicks, OfCountsAreWhole)
{
    const auto ticks = PlaceScaleTicks({{8000, 8003}, 8000, 8003, true}, 0, 900, 15);
    std::vector<std::string> labels;
    for (const ScaleTick& tick : ticks) labels.push_back(tick.label);
    EXPECT_THAT(labels, ElementsAre("8000", "8001", "8002", "8003"));
}

TEST(ScaleTicks, NeverOverlapAtAnyHeightOrRange)
{
    for (const int height : {40, 97, 300, 851, 2000}) {
        for (const int labelHeight : {9, 15, 31}) {
            for (const double span : {0.013, 0.9, 7.0, 250.0, 16383.0}) {
                for (const double low : {-500.0, 0.0, 19.37}) {
                    const auto ticks =
                        PlaceScaleTicks({{0, 1000}, low, low + span, false}, 10, 10 + height, labelHeight);
                    for (std::size_t i = 1; i < ticks.size(); ++i) {
                        EXPECT_GE(ticks[i - 1].y - ticks[i].y, std::min(2 * labelHeight - 1, height - 1));
                    }
                    EXPECT_FALSE(ticks.empty() && height > 4 * labelHeight);
                }
            }
        }
    }
}

TEST(ScaleTicks, ALineWithoutLengthHasNone)
{
    const double nan = std::nan("");
    for (const ScaleLine& line : {ScaleLine{{5, 5}, 5, 5, true},
                                  {{0, 100}, 7, 7, false},
                                  {{0, 100}, nan, 1, false},
                                  {{0, 100}, 0, INFINITY, false},
                                  {{0, 100}, -1e300, 1e300, false},
                                  {{0, 100}, 0, 1e-30, false},
                                  {{0, 100}, 1e11, 1e11 + 1e-5, false}}) {
        EXPECT_THAT(PlaceScaleTicks(line, 0, 500, 15), IsEmpty());
    }
    EXPECT_THAT(PlaceScaleTicks({{0, 100}, 0, 100, true}, 500, 500, 15), IsEmpty());
    EXPECT_THAT(PlaceScaleTicks({{0, 100}, 0, 100, true}, 0, 500, 0), IsEmpty());
}

// --- On the screen --------------------------------------------------------------------------------------------------

class ColorScale : public PictureTest {
  protected:
    void SetUp() override
    {
        DockPanel();
        SetMenu(hWndMain, MainMenu());
        View(4, 3, std::vector<std::int16_t>(12, 8000));
        write::file.ImageHeader.IntensityCold = 7000;
        write::file.ImageHeader.IntensityHot = 12000;
        write::file.ImageHeader.TemperatureCold = 20;
        write::file.ImageHeader.TemperatureHot = 40;
        write::head.VoltsLow = 3.0F;
        write::head.VoltsHigh = -1.0F;
        write::display.ImageColor = kNormalGray;
        SetColorMap(ImageColor);
        BuildDisplayLut(40, 500);
    }
    void TearDown() override
    {
        if (GetMenuItem(hWndMain, kCmdViewColorScale)->checked) ToggleColorScale();
    }

    struct Column {
        int x = 0;
        int top = 0;
        int bottom = 0;
        std::vector<std::uint32_t> colors;
    };
    // The bar, found below the title by its colours, which differ from the scale's ground.
    static Column Bar()
    {
        DeviceBitmap screen = Screen();
        const int x = screen.width - 116 + 20;
        Column bar{x, 0, 0, {}};
        for (int y = PanelHeight() + 2 * TextLineHeight(hWndMain); y < screen.height - TextHeight; ++y) {
            const std::uint32_t color = At(screen, x, y);
            if (color == kGround && bar.colors.empty()) continue;
            if (bar.colors.empty()) bar.top = y;
            bar.colors.push_back(color);
            bar.bottom = y + 1;
        }
        // What follows below the bar is ground.
        while (!bar.colors.empty() && bar.colors.back() == kGround) {
            bar.colors.pop_back();
            --bar.bottom;
        }
        return bar;
    }
    static DeviceBitmap Screen()
    {
        MessageBox(hWndMain, "turn of the loop", "test");
        UpdateWindow(hWndMain);
        DeviceBitmap screen;
        EXPECT_TRUE(CaptureWindowPixels(hWndMain, true, screen));
        return screen;
    }
    static std::uint32_t At(const DeviceBitmap& screen, int x, int y)
    {
        return screen.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(screen.width) +
                             static_cast<std::size_t>(x)] &
               0xFFFFFF;
    }
    static constexpr std::uint32_t kGround = 0x262626;
};

TEST_F(ColorScale, TicksAgreeWithTheConversionsOfEachUnit)
{
    for (const int unit : {kUnitCounts, kUnitVolts, kUnitCelsius, kUnitKelvin, kUnitFahrenheit}) {
        ASSERT_TRUE(IsUnitAvailable(unit));
        for (const int contrast : {1, 40, 76, 95}) {
            BuildDisplayLut(contrast, 500);
            const CountRange counts = SpreadCountsOnView();
            const ScaleLine line = ScaleLineOf(counts, unit);
            const auto ticks = PlaceScaleTicks(line, 100, 900, 15);
            SCOPED_TRACE(testing::Message() << "unit " << unit << ", contrast " << contrast);
            ExpectRoundTicks(ticks, 100, 900, 15);
            for (const ScaleTick& tick : ticks) {
                // The count at the tick's height, then its value: within the counts that a pixel row spans.
                const double along = (900.0 - tick.y) / 800.0;
                const double row = static_cast<double>(counts.high - counts.low) / 800.0;
                const auto below = static_cast<std::int32_t>(std::floor(counts.low + (along * 800 - 1.01) * row));
                const auto above = static_cast<std::int32_t>(std::ceil(counts.low + (along * 800 + 1.01) * row));
                const double a = static_cast<double>(CountsToUnit(below, unit, nullptr));
                const double b = static_cast<double>(CountsToUnit(above, unit, nullptr));
                EXPECT_GE(tick.value, std::min(a, b));
                EXPECT_LE(tick.value, std::max(a, b));
            }
        }
    }
}

TEST_F(ColorScale, ShowsTheColorsOfTheMapFromBottomToTop)
{
    ToggleColorScale();
    const Column bar = Bar();
    ASSERT_GT(bar.colors.size(), 256U);
    EXPECT_EQ(bar.colors.front(), 0xFFFFFFU);
    EXPECT_EQ(bar.colors.back(), 0x000000U);
    const std::set<std::uint32_t> colors(bar.colors.begin(), bar.colors.end());
    EXPECT_EQ(colors.size(), 256U);
    for (std::size_t i = 1; i < bar.colors.size(); ++i) EXPECT_LE(bar.colors[i], bar.colors[i - 1]);
}

TEST_F(ColorScale, FollowsTheMap)
{
    ToggleColorScale();
    Bar();
    write::display.ImageColor = kInvertedGray;
    SetColorMap(ImageColor);
    RedrawPicture();
    const Column bar = Bar();
    EXPECT_EQ(bar.colors.front(), 0x000000U);
    EXPECT_EQ(bar.colors.back(), 0xFFFFFFU);
}

TEST_F(ColorScale, FollowsContrastUnitAndCalibration)
{
    ToggleColorScale();
    std::vector<std::vector<std::uint32_t>> seen;
    const auto expectOther = [&](const char* what) {
        std::vector<std::uint32_t> pixels = Screen().pixels;
        for (const auto& before : seen) EXPECT_NE(pixels, before) << what;
        seen.push_back(std::move(pixels));
    };
    expectOther("at first");
    BuildDisplayLut(60, 500);
    expectOther("contrast");
    write::display.DisplayUnit = kUnitCelsius;
    FollowDisplay();
    expectOther("unit");
    write::file.ImageHeader.TemperatureHot = 60;
    DelayMs(300);  // the timer alone
    expectOther("calibration");
}

TEST_F(ColorScale, StandsAtTheRightEdgeAtAnyWindowSize)
{
    ToggleColorScale();
    for (const Rect place : {Rect{0, 0, 900, 700}, Rect{0, 0, 1200, 900}}) {
        MoveWindow(hWndMain, place);
        const Rect client = GetClientRect(hWndMain);
        write::windows.ClientWidth = static_cast<std::int16_t>(client.Width());
        write::windows.ClientHeight = static_cast<std::int16_t>(client.Height());
        PlaceColorScale();
        const DeviceBitmap screen = Screen();
        const int middle = (PanelHeight() + ClientHeight) / 2;
        EXPECT_EQ(At(screen, client.right - 2, middle), kGround);
        EXPECT_EQ(At(screen, client.right - 115, middle), kGround);
        EXPECT_NE(At(screen, client.right - 118, middle), kGround);
        EXPECT_NE(At(screen, client.right - 2, PanelHeight() - 3), kGround) << "the panel stays clear";
    }
}

TEST_F(ColorScale, APictureWiderThanTheWindowScrollsClearOfIt)
{
    const int width = ClientWidth;
    View(width, 8, std::vector<std::int16_t>(static_cast<std::size_t>(width) * 8, 8000));
    write::camera.ActiveConfig.Xzoom = write::camera.ActiveConfig.Yzoom = 1;
    RedrawPicture();
    EXPECT_EQ(GetPictureArea(hWndMain).bottom, ClientHeight - TextHeight) << "it fits: no bar";
    ToggleColorScale();
    EXPECT_LT(GetPictureArea(hWndMain).bottom, ClientHeight - TextHeight);
    ToggleColorScale();
    EXPECT_EQ(GetPictureArea(hWndMain).bottom, ClientHeight - TextHeight);
}

TEST_F(ColorScale, TheSwitchIsKeptAndThePictureComesBack)
{
    RedrawPicture();
    const std::vector<std::uint32_t> before = Screen().pixels;
    ToggleColorScale();
    EXPECT_TRUE(GetMenuItem(hWndMain, kCmdViewColorScale)->checked);
    EXPECT_EQ(WindowFileText("View", "ColorScale"), "1");
    EXPECT_NE(Screen().pixels, before);
    ToggleColorScale();
    EXPECT_FALSE(GetMenuItem(hWndMain, kCmdViewColorScale)->checked);
    EXPECT_EQ(WindowFileText("View", "ColorScale"), "0");
    EXPECT_EQ(Screen().pixels, before);
}

}  // namespace
}  // namespace kelvo

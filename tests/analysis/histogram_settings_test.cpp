#include "analysis/histogram_settings_write.h"
#include "imagefile/header_write.h"
#include "platform/profile.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {

namespace {

// A stored frame of 160 x 120 on view.
class HistogramSettings : public PictureTest {
  protected:
    HistogramSettings() { ViewEmpty(160, 120); }
    static void ViewEmpty(int width, int height)
    {
        View(width, height,
             std::vector<std::int16_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)));
    }
    static void Key(const char* key, const char* value)
    {
        WritePrivateProfileString("Histogram", key, value, IniFilePath);
    }
};

TEST_F(HistogramSettings, AreAQuarterOfTheFrameInItsMiddleWithoutKeys)
{
    write::file.ImageHeader.DisplayLow = 100;
    write::file.ImageHeader.DisplayHigh = 5000;
    ReadHistSettings();
    const HistSettingsRecord expected{.Xsize = 40,
                                      .Ysize = 30,
                                      .Xposition = 80,
                                      .Yposition = 60,
                                      .XplotMin = 100,
                                      .YplotMin = 0,
                                      .XplotMax = 5000,
                                      .YplotMax = 300,  // 40 x 30 / 4
                                      .Xautoscale = 1,
                                      .Yautoscale = 1,
                                      .Xgridlines = 0,
                                      .Ygridlines = 0,
                                      .Yscaling = 0};
    EXPECT_EQ(HistSettings, expected);
}

TEST_F(HistogramSettings, HaveTheirKeysValues)
{
    for (const auto& [key, value] : {std::pair{"Xsize", "10"},
                                     {"Ysize", "20"},
                                     {"Xposition", "30"},
                                     {"Yposition", "40"},
                                     {"YplotMax", "500"},
                                     {"Xautoscale", "0"},
                                     {"Yautoscale", "0"},
                                     {"Xgridlines", "1"},
                                     {"Ygridlines", "1"},
                                     {"Yscaling", "1"}}) {
        Key(key, value);
    }
    ReadHistSettings();
    const HistSettingsRecord expected{.Xsize = 10,
                                      .Ysize = 20,
                                      .Xposition = 30,
                                      .Yposition = 40,
                                      .XplotMin = 0,
                                      .YplotMin = 0,
                                      .XplotMax = 16383,
                                      .YplotMax = 500,
                                      .Xautoscale = 0,
                                      .Yautoscale = 0,
                                      .Xgridlines = 1,
                                      .Ygridlines = 1,
                                      .Yscaling = 1};
    EXPECT_EQ(HistSettings, expected);
}

TEST_F(HistogramSettings, NeverReadTheEndsThatEachOpeningSetsAnew)
{
    Key("XplotMin", "7");
    Key("XplotMax", "8");
    Key("YplotMin", "9");
    ReadHistSettings();
    EXPECT_EQ(HistSettings.XplotMin, 0);
    EXPECT_EQ(HistSettings.XplotMax, 16383);
    EXPECT_EQ(HistSettings.YplotMin, 0);
}

TEST_F(HistogramSettings, TakeTheNumberAxisFromTheRectangleThatTheKeysName)
{
    Key("Xsize", "1000");
    Key("Ysize", "2000");
    ReadHistSettings();
    EXPECT_EQ(HistSettings.YplotMax, 500000);  // before the reset
    EXPECT_EQ(HistSettings.Xsize, 40);
    EXPECT_EQ(HistSettings.Xposition, 79);  // (160 - 1) / 2
    EXPECT_EQ(HistSettings.Ysize, 30);
    EXPECT_EQ(HistSettings.Yposition, 59);
}

TEST_F(HistogramSettings, HaveANumberAxisOfTwoAtLeast)
{
    Key("Xsize", "1");
    Key("Ysize", "1");
    ReadHistSettings();
    EXPECT_EQ(HistSettings.YplotMax, 2);
    Key("YplotMax", "-5");
    ReadHistSettings();
    EXPECT_EQ(HistSettings.YplotMax, 2);
}

TEST_F(HistogramSettings, SurviveAnyKeys)
{
    for (const char* value : {"2147483647", "-2147483648", "99999999999999999999", "-1", "", "wide", "0x7fffffff"}) {
        for (const char* key : {"Xsize", "Ysize", "Xposition", "Yposition", "YplotMax", "Xautoscale", "Yautoscale",
                                "Xgridlines", "Ygridlines", "Yscaling"}) {
            Key(key, value);
        }
        ReadHistSettings();
        EXPECT_TRUE(RectangleFits(HistSettings, {160, 120})) << value;
        EXPECT_GE(HistSettings.YplotMax, 2) << value;
        for (const std::int32_t box : {HistSettings.Xautoscale, HistSettings.Yautoscale, HistSettings.Xgridlines,
                                       HistSettings.Ygridlines, HistSettings.Yscaling}) {
            EXPECT_TRUE(box == 0 || box == 1) << value;
        }
    }
}

TEST_F(HistogramSettings, HoldTheValueAxisToWhatASampleCanBe)
{
    write::frames.ViewingFile = 0;  // the camera's range is of 32 bits
    write::display.DisplayLow = -2147483647;
    write::display.DisplayHigh = 2147483647;
    ReadHistSettings();
    EXPECT_EQ(HistSettings.XplotMin, -32768);
    EXPECT_EQ(HistSettings.XplotMax, 32767);
    write::display.DisplayLow = 2147483647;
    write::display.DisplayHigh = -2147483647;
    ReadHistSettings();
    EXPECT_EQ(HistSettings.XplotMin, 32766);
    EXPECT_EQ(HistSettings.XplotMax, 32767);
}

TEST_F(HistogramSettings, KeepARectangleThatLiesInTheNextFrameToo)
{
    for (const char* key : {"Xposition", "Yposition"}) Key(key, "30");
    for (const char* key : {"Xsize", "Ysize"}) Key(key, "10");
    ReadHistSettings();
    ViewEmpty(80, 36);  // rows 25 to 35
    SuitHistSettingsToView();
    EXPECT_EQ(HistSettings.Yposition, 30);
    ViewEmpty(80, 35);
    SuitHistSettingsToView();
    EXPECT_EQ(HistSettings.Yposition, 17);
    EXPECT_EQ(HistSettings.Xsize, 20);
}

TEST_F(HistogramSettings, WriteTheRectangleAndTheAxesApart)
{
    ReadHistSettings();
    WriteHistRectangle();
    EXPECT_EQ(IniKey("Histogram", "Xsize"), "40");
    EXPECT_EQ(IniKey("Histogram", "Ysize"), "30");
    EXPECT_EQ(IniKey("Histogram", "Xposition"), "80");
    EXPECT_EQ(IniKey("Histogram", "Yposition"), "60");
    for (const char* key : {"XplotMax", "YplotMax", "XplotMin", "YplotMin", "Xautoscale", "Yautoscale", "Xgridlines",
                            "Ygridlines", "Yscaling"}) {
        EXPECT_EQ(IniKey("Histogram", key), "missing") << key;
    }
    write::histogram.HistSettings.Ygridlines = 1;
    WriteHistAxes();
    EXPECT_EQ(IniKey("Histogram", "XplotMax"), "16383");
    EXPECT_EQ(IniKey("Histogram", "YplotMax"), "300");
    EXPECT_EQ(IniKey("Histogram", "XplotMin"), "0");
    EXPECT_EQ(IniKey("Histogram", "YplotMin"), "0");
    EXPECT_EQ(IniKey("Histogram", "Xautoscale"), "1");
    EXPECT_EQ(IniKey("Histogram", "Yautoscale"), "1");
    EXPECT_EQ(IniKey("Histogram", "Xgridlines"), "0");
    EXPECT_EQ(IniKey("Histogram", "Ygridlines"), "1");
    EXPECT_EQ(IniKey("Histogram", "Yscaling"), "0");
}

}  // namespace

}  // namespace kelvo

// The line plot's settings: keys, defaults, and lines that don't lie in the image.
#include "analysis/line_settings.h"

#include "analysis/line_settings_write.h"
#include "platform/profile.h"
#include "state/state_registry.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kelvo {

namespace {

using testing::ElementsAre;

class LineKeys : public testing::Test {
  protected:
    std::string Ini() const { return directory.Path() + "/kelvo.ini"; }
    void Write(const char* key, const char* value) const { WritePrivateProfileString("LinePlot", key, value, Ini()); }
    void Read(Point size) const { ReadLineSettings(Ini(), size, {.low = 100, .high = 900}); }
    static std::vector<int> Ends()
    {
        return {LineSettings.Xstart, LineSettings.Ystart, LineSettings.Xend, LineSettings.Yend};
    }

    TempDirectory directory;
};

TEST_F(LineKeys, DefaultToTheDiagonalWithAllGrids)
{
    Read({320, 256});
    EXPECT_THAT(Ends(), ElementsAre(0, 0, 319, 255));
    EXPECT_EQ(LineSettings.YplotMin, 100);
    EXPECT_EQ(LineSettings.YplotMax, 900);
    EXPECT_EQ(LineSettings.Yautoscale, 1);
    EXPECT_EQ(LineSettings.Xgridlines, 1);
    EXPECT_EQ(LineSettings.Ygridlines, 1);
}

TEST_F(LineKeys, AreReadAsTheyWereWritten)
{
    write::line.LineSettings = {.Xstart = 1,
                                .Ystart = 2,
                                .Xend = 3,
                                .Yend = 4,
                                .YplotMin = 5,
                                .YplotMax = 6,
                                .Yautoscale = 0,
                                .Xgridlines = 0,
                                .Ygridlines = 1};
    WriteLineSettings(Ini());
    EXPECT_EQ(GetPrivateProfileString("LinePlot", "Xstart", "", Ini()), "1");
    EXPECT_EQ(GetPrivateProfileString("LinePlot", "Yend", "", Ini()), "4");
    EXPECT_EQ(GetPrivateProfileString("LinePlot", "Yautoscale", "", Ini()), "0");
    EXPECT_FALSE(HasProfileKey("LinePlot", "YplotMin", Ini()));
    EXPECT_FALSE(HasProfileKey("LinePlot", "YplotMax", Ini()));
    ResetLineSettings();
    Read({320, 256});
    EXPECT_THAT(Ends(), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(LineSettings.YplotMin, 100) << "the range's on every opening";
    EXPECT_EQ(LineSettings.Xgridlines, 0);
    EXPECT_EQ(LineSettings.Ygridlines, 1);
    EXPECT_EQ(LineSettings.Yautoscale, 0);
}

TEST_F(LineKeys, OfALineOutsideTheImageGiveWayAllFour)
{
    for (const auto& [key, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"Xstart", "-1"}, {"Ystart", "-2147483648"}, {"Xend", "320"}, {"Yend", "4294967295"}, {"Yend", "256"}}) {
        for (const char* all : {"Xstart", "Ystart", "Xend", "Yend"}) Write(all, "10");
        Write(key, value);
        Read({320, 256});
        // (320 - 1) / 2, (256 - 1) / 2, (320 - 1) / 8, (256 - 1) / 8
        EXPECT_THAT(Ends(), ElementsAre(159, 127, 39, 31)) << key << " " << value;
    }
}

TEST_F(LineKeys, ThatAreNoNumbersCountAsZero)
{
    for (const char* key : {"Xstart", "Ystart", "Xend", "Yend"}) Write(key, "what?");
    Read({1, 1});
    EXPECT_THAT(Ends(), ElementsAre(0, 0, 0, 0));
}

TEST_F(LineKeys, FitASmallerImage)
{
    Read({320, 256});
    FitLineSettings({9, 17}, {.low = 1, .high = 2});
    EXPECT_THAT(Ends(), ElementsAre(4, 8, 1, 2));
    EXPECT_EQ(LineSettings.YplotMax, 2);
    FitLineSettings({9, 17}, {.low = 3, .high = 4});
    EXPECT_THAT(Ends(), ElementsAre(4, 8, 1, 2)) << "a line inside stays";
}

TEST_F(LineKeys, AreReadByScriptsInTheirOrder)
{
    write::line.LineSettings = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const std::optional<StateValue> value = ReadState("LineSettings");
    ASSERT_TRUE(value && std::holds_alternative<std::vector<double>>(*value));
    EXPECT_THAT(std::get<std::vector<double>>(*value), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
}

}  // namespace

}  // namespace kelvo

// The Units lists of panel and dialogs.
#include "display/unit_list.h"

#include "display/units.h"
#include "imagefile/header_write.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "resources/ids.h"
#include "state/cal_state.h"
#include "state/display_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {
namespace {

using testing::ElementsAre;

class UnitLists : public PictureTest {
  protected:
    // As the screen shows them: UTF-8.
    static std::vector<std::string> PanelTexts()
    {
        std::vector<std::string> texts;
        for (int i = 0; i < ListCount(hDlgPanel, kUnitList); ++i)
            texts.push_back(ToUtf8(ListItemText(hDlgPanel, kUnitList, i)));
        return texts;
    }
    static std::int32_t PanelUnit()
    {
        return static_cast<std::int32_t>(ListItemData(hDlgPanel, kUnitList, ListSelection(hDlgPanel, kUnitList)));
    }
    static void Calibrate()
    {
        write::file.ImageHeader.TemperatureCold = 10.0F;
        write::file.ImageHeader.TemperatureHot = 20.0F;
    }
};

TEST_F(UnitLists, HoldTheUnitsThatAreOffered)
{
    DockPanel();
    View(1, 1, {0});
    Calibrate();
    EXPECT_EQ(FillUnitCombo(hDlgPanel, 3), 3);
    EXPECT_THAT(PanelTexts(), ElementsAre("Signal (Counts)", "Signal (V)", "Temperature (°C)", "Temperature (°K)",
                                          "Temperature (°F)"));
    EXPECT_EQ(ListSelection(hDlgPanel, kUnitList), 3);
    EXPECT_EQ(PanelUnit(), 3);
}

TEST_F(UnitLists, AUnitThatIsntOfferedFallsBackToTheFirst)
{
    DockPanel();
    View(1, 1, {0});
    EXPECT_EQ(FillUnitCombo(hDlgPanel, 3), 0);
    EXPECT_EQ(ListSelection(hDlgPanel, kUnitList), 0);
    EXPECT_EQ(PanelUnit(), 0);
}

TEST_F(UnitLists, GainStandsAloneWithoutBrackets)
{
    DockPanel();
    View(1, 1, {0});
    write::windows.ViewFilePath = "detector.gai";
    EXPECT_EQ(FillUnitCombo(hDlgPanel, 0), 18);
    EXPECT_THAT(PanelTexts(), ElementsAre("Gain"));
    EXPECT_EQ(PanelUnit(), 18);
}

TEST_F(UnitLists, WithNoUnitTheListIsEmpty)
{
    DockPanel();
    View(1, 1, {0});
    write::windows.ViewFilePath = "deviation.sdv";
    EXPECT_EQ(FillUnitCombo(hDlgPanel, 0), -1);
    EXPECT_EQ(ListCount(hDlgPanel, kUnitList), 0);
    EXPECT_EQ(PickAvailableUnit(0), -1);
}

TEST_F(UnitLists, PickingKeepsAnOfferedUnitAndElseTakesTheLowest)
{
    View(1, 1, {0});
    Calibrate();
    EXPECT_EQ(PickAvailableUnit(4), 4);
    EXPECT_EQ(PickAvailableUnit(9), 0);
    write::windows.ViewFilePath = "list.noi";
    EXPECT_EQ(PickAvailableUnit(4), 9);
}

TEST_F(UnitLists, PickingRefillsThePanelAroundTheUnitInForce)
{
    DockPanel();
    View(1, 1, {0});
    Calibrate();
    write::display.DisplayUnit = 2;
    EXPECT_EQ(PickAvailableUnit(4), 4);
    EXPECT_EQ(PanelUnit(), 2);
}

TEST_F(UnitLists, WithoutAPanelNothingIsFilled)
{
    View(1, 1, {0});
    EXPECT_EQ(FillUnitCombo(nullptr, 1), 1);
    EXPECT_EQ(hDlgPanel, nullptr);
}

TEST_F(UnitLists, AUnitThatIsSetIsSelectedInThePanel)
{
    DockPanel();
    View(1, 1, {0});
    Calibrate();
    SetDisplayUnit(4);
    EXPECT_EQ(DisplayUnit, 4);
    EXPECT_EQ(PanelUnit(), 4);
    SetDisplayUnit(2);
    EXPECT_EQ(PanelUnit(), 2);
}

TEST_F(UnitLists, ASelectionInThePanelSetsTheUnit)
{
    DockPanel();
    View(1, 1, {0});
    Calibrate();
    FillUnitCombo(hDlgPanel, 0);
    ASSERT_TRUE(OperatePick(hDlgPanel, kUnitList, 4));
    EXPECT_EQ(DisplayUnit, 4);
    EXPECT_EQ(PanelUnit(), 4);
}

}  // namespace
}  // namespace kelvo

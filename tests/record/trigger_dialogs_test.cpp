// The dialogs that set the triggers, worked as an operator works them.
#include "record/trigger_dialogs.h"

#include "display/display_pipeline.h"
#include "grabber/board_state_write.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "platform/timers.h"
#include "record/triggered_save_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr int kEnterKeyBox = 100;
constexpr int kLeft = 20820;
constexpr int kTop = 20821;
constexpr int kRight = 20822;
constexpr int kBottom = 20823;
constexpr int kLow = 20824;
constexpr int kHigh = 20825;
constexpr int kMean = 20826;
constexpr int kRange = 20827;

std::string Key(const char* key)
{
    return GetPrivateProfileString("Trigger", key, "-", IniFilePath);
}

// Live video of 4 columns and 3 rows: the pixels are 1000 + 100 row + column.
class TriggerDialogs : public BoardTest {
  protected:
    TriggerDialogs()
    {
        PutFile(IniFilePath, "[Camera.2]\nMaxNumFramesToAllocate=3\n");
        write::camera.numBufFrames = 8;
        GoLive(4, 3);
        write::cal.CalType = 0;
        write::board.DataOffset = 0;
        write::cal.DecomList = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
        write::camera.ActiveConfig.Hactive = 6;
        write::camera.ActiveConfig.Vactive = 5;
        write::display.DisplayLow = 0;
        write::display.DisplayHigh = 16383;
    }
    void Type(std::vector<std::pair<int, std::string>> fields)
    {
        op.Do([fields = std::move(fields)] {
            for (const auto& [id, text] : fields) OperateText(DialogInFront(), id, text);
        });
    }
    void Press(int id)
    {
        op.Do([id] { OperatePress(DialogInFront(), id); });
    }
    // The text of a control at that moment.
    void See(int id, const std::string& text)
    {
        op.Do([id, text] { EXPECT_EQ(GetDlgItemText(DialogInFront(), id), text) << id; });
    }
    std::vector<std::string> BoxTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& box : op.Boxes()) texts.push_back(box.text);
        return texts;
    }
};

TEST_F(TriggerDialogs, TheSoftwareTriggersBoxIsStoredWithOk)
{
    op.Do([] {
        EXPECT_EQ(DialogName(DialogInFront()), "TRIGSOFT");
        EXPECT_FALSE(IsDlgButtonChecked(DialogInFront(), kEnterKeyBox));
        OperateCheck(DialogInFront(), kEnterKeyBox, true);
    });
    Press(kIdOk);
    EXPECT_EQ(TriggerSoftwareDialog(nullptr), 1);
    EXPECT_EQ(Key("SoftwareAll"), "1");
    EXPECT_EQ(triggerSettings.SoftwareAll, 1);

    op.Do([] {
        EXPECT_TRUE(IsDlgButtonChecked(DialogInFront(), kEnterKeyBox));
        OperateCheck(DialogInFront(), kEnterKeyBox, false);
    });
    Press(kIdCancel);
    EXPECT_EQ(TriggerSoftwareDialog(nullptr), 0);
    EXPECT_EQ(Key("SoftwareAll"), "1");
    EXPECT_EQ(triggerSettings.SoftwareAll, 1);
}

TEST_F(TriggerDialogs, OneThatCannotBeMadeIsTold)
{
    SetFault("load dialog TRIGSOFT", true);
    SetFault("load dialog TRIGVALU", true);
    EXPECT_EQ(TriggerSoftwareDialog(nullptr), 0);
    EXPECT_EQ(TriggerValueDialog(nullptr), 0);
    ASSERT_THAT(op.Boxes(), SizeIs(2));
    EXPECT_EQ(op.Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op.Boxes()[0].caption, "System Error");
}

TEST_F(TriggerDialogs, TheKeysAreHeldToTheCameraAndTheRange)
{
    PutFile(IniFilePath, "[Trigger]\nLeft=-4\nTop=2\nRight=128\nBottom=1\nIntensityLo1=-7\nIntensityHi1=70000\n");
    See(kLeft, "0");
    See(kTop, "2");
    See(kRight, "5");
    See(kBottom, "2");
    See(kLow, "0");
    See(kHigh, "16383");
    Press(kIdCancel);
    EXPECT_EQ(TriggerValueDialog(nullptr), 0);
    EXPECT_EQ(Key("Left"), "-4") << "Cancel stores nothing";
}

TEST_F(TriggerDialogs, OkStoresAllSixAndTheyTakeEffect)
{
    Type({{kLeft, "1"}, {kTop, "0"}, {kRight, " 2 "}, {kBottom, "1"}, {kLow, "100"}, {kHigh, "9000"}});
    Press(kIdOk);
    EXPECT_EQ(TriggerValueDialog(nullptr), 1);
    EXPECT_EQ(Key("Left") + Key("Top") + Key("Right") + Key("Bottom"), "1021");
    EXPECT_EQ(Key("IntensityLo1"), "100");
    EXPECT_EQ(Key("IntensityHi1"), "9000");
    EXPECT_EQ(triggerSettings.Right, 2);
    EXPECT_EQ(triggerSettings.IntensityHi1, 9000);
    EXPECT_THAT(op.Boxes(), IsEmpty());
}

TEST_F(TriggerDialogs, EachFieldIsRefusedByItsName)
{
    struct Refused {
        int id;
        const char* what;
        std::string none;
        std::string beyond;
    };
    const Refused fields[] = {{kLeft, "left side of rectangle", "x", "6"},
                              {kTop, "top side of rectangle", "", "-1"},
                              {kRight, "right side of rectangle", "2.5", "0"},    // left of 1
                              {kBottom, "bottom side of rectangle", "1 2", "0"},  // above 1
                              {kLow, "lower trigger intensity value", "low", "16384"},
                              {kHigh, "upper trigger intensity value", "0x10", "99"}};  // below 100
    const std::vector<std::pair<int, std::string>> good = {{kLeft, "1"},   {kTop, "1"},   {kRight, "2"},
                                                           {kBottom, "2"}, {kLow, "100"}, {kHigh, "200"}};
    std::vector<std::string> expected;
    for (const Refused& field : fields) {
        for (const std::string& bad : {field.none, field.beyond}) {
            Type(good);
            Type({{field.id, bad}});
            Press(kIdOk);
            op.Do([id = field.id] { EXPECT_EQ(FocusedDlgItem(DialogInFront()), id); });
            const bool number = &bad != &field.none && bad == field.beyond;
            expected.push_back((number ? "Invalid number for " : "Unable to convert number for ") +
                               std::string(field.what) + ".");
        }
    }
    Press(kIdCancel);
    EXPECT_EQ(TriggerValueDialog(nullptr), 0);
    EXPECT_EQ(BoxTexts(), expected);
    EXPECT_EQ(Key("Left"), "-");
}

TEST_F(TriggerDialogs, ThePresentMeanAndRangeAreShownEach200Ms)
{
    PutFile(IniFilePath, "[Trigger]\nLeft=1\nTop=0\nRight=2\nBottom=1\n");
    See(kMean, "Average= 1051.5");  // 1001 1002 1101 1102
    See(kRange, "Min= 1001   Max= 1102");
    op.Do([] {
        recordingBoard.picture = 2000;
        EXPECT_EQ(NextTimerDueUs().value_or(0) - TickUs(), 200'000);
        AdvanceVirtualClock(200'000);
    });
    See(kMean, "Average= 2051.5");
    Type({{kRight, "1"}, {kBottom, "0"}});
    op.Do([] { AdvanceVirtualClock(200'000); });
    See(kMean, "Average= 2001");
    See(kRange, "Min= 2001   Max= 2001");
    Press(kIdCancel);
    EXPECT_EQ(TriggerValueDialog(nullptr), 0);
}

TEST_F(TriggerDialogs, TheRectangleIsOneOfTheImage)
{
    PutFile(IniFilePath, "[Trigger]\nLeft=0\nTop=0\nRight=0\nBottom=0\n");
    std::ranges::reverse(write::cal.DecomList);
    See(kMean, "Average= 1203");  // the last one read out
    Press(kIdCancel);
    EXPECT_EQ(TriggerValueDialog(nullptr), 0);
}

TEST_F(TriggerDialogs, WithoutLiveVideoThereIsNothingToTell)
{
    write::frames.LiveVideo = 0;
    See(kMean, "-");
    See(kRange, "-");
    Press(kIdCancel);
    EXPECT_EQ(TriggerValueDialog(nullptr), 0);
}

// A stored picture of 20 x 16 pixels, with the rectangle's outline one pixel outside it.
class TriggerRectangle : public PictureTest {
  protected:
    TriggerRectangle()
    {
        PutFile(IniFilePath, "[Trigger]\nLeft=5\nTop=4\nRight=9\nBottom=7\n");
        write::camera.ActiveConfig.Hactive = 20;
        write::camera.ActiveConfig.Vactive = 16;
        View(20, 16, std::vector<std::int16_t>(std::size_t{20} * 16, 8000));
        RedrawPicture();
    }
    static bool IsMarked(int x, int y)
    {
        constexpr std::uint32_t kMark = 0x00FFFF00;
        const Point place = PlaceOver({x, y});
        return Shown(place.x, place.y) == kMark;
    }
    // Columns 4 to 10 and rows 3 to 8 are its rim.
    static bool IsRim(int x, int y)
    {
        const bool within = x >= 4 && x <= 10 && y >= 3 && y <= 8;
        return within && (x == 4 || x == 10 || y == 3 || y == 8);
    }
};

TEST_F(TriggerRectangle, StandsInThePictureWhileTheDialogIsOpen)
{
    op->Do([] {
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 20; ++x) EXPECT_EQ(IsMarked(x, y), IsRim(x, y)) << x << ',' << y;
        }
        EndDialog(DialogInFront(), 0);
    });
    EXPECT_EQ(TriggerValueDialog(hWndMain), 0);
    for (int x = 0; x < 20; ++x) EXPECT_FALSE(IsMarked(x, 3));
}

}  // namespace
}  // namespace kelvo

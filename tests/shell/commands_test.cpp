// Commands by their numbers: who runs them, how they end, and what the status line shows then.
#include "shell/commands.h"

#include "platform/application.h"
#include "platform/front.h"
#include "platform/help.h"
#include "platform/menu.h"
#include "platform/window.h"
#include "resources/command_list.h"
#include "resources/menu.h"
#include "state/cal_state_write.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "support/picture_fixture.h"
#include "support/temp_directory.h"
#include "ui/status_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kIdleText = " Use Alt + underlined menu item or trackball to select menu item";

class CommandTable : public PictureTest {
  protected:
    void SetUp() override
    {
        SetMenu(hWndMain, MainMenu());
        write::frames.CameraOn = 0;
        write::frames.ViewingFile = 0;
        write::cal.CalType = 0;
        write::windows.HelpMode = 0;
        write::status.StatusText = "as before";
    }
    std::vector<std::string> StatusTexts() const { return op->Texts("status", "text"); }
    std::vector<std::string> BoxTexts() const
    {
        std::vector<std::string> texts;
        for (const TestOperator::Box& box : op->Boxes()) texts.push_back(box.text);
        return texts;
    }
};

TEST_F(CommandTable, ResetsTheStatusLineAfterACommand)
{
    EXPECT_EQ(RunCommand(hWndMain, kCmdInvertedGray), 0);
    EXPECT_EQ(ImageColor, kInvertedGray);
    EXPECT_THAT(StatusTexts(), ElementsAre(kIdleText));
    EXPECT_EQ(StatusAlign, 0);
}

TEST_F(CommandTable, LeavesTheStatusLineOfACommandThatIsCancelled)
{
    op->Do([] { CancelFileDialog(); });
    EXPECT_EQ(RunCommand(hWndMain, kCmdLoadImage), 1);
    EXPECT_EQ(StatusText, "as before");
}

TEST_F(CommandTable, HelpOfADialogHasItsPageAndLeavesTheDialogsHint)
{
    EXPECT_EQ(RunCommand(hWndMain, kCmdDialogHelp), 1);
    EXPECT_EQ(CurrentHelpContext(), 1048);
    EXPECT_NE(ResourceText("help/1048.html"), "");
    EXPECT_NE(ResourceText("help/324.html"), "");
    EXPECT_EQ(StatusText, "as before");
}

TEST_F(CommandTable, HandsAnUnknownNumberOn)
{
    for (const int id : {0, 99, 146, 218, 899, 2099, 2110}) {
        EXPECT_EQ(RunCommand(hWndMain, id), 0) << id;
    }
    EXPECT_THAT(StatusTexts(), IsEmpty());
    EXPECT_THAT(BoxTexts(), IsEmpty());
}

// Programs of these names first on PATH, and no others: each notes what it was given.
class PrinterSettings : public CommandTable {
  protected:
    PrinterSettings() : pathBefore(getenv("PATH")) { setenv("PATH", bin.Path().c_str(), 1); }
    ~PrinterSettings() override { setenv("PATH", pathBefore.c_str(), 1); }
    void Provide(const std::string& name) const
    {
        PutFile(bin / name, "#!/bin/sh\necho \"" + name + " $*\" > " + (bin / "part") + "\n/bin/mv " + (bin / "part") +
                                " " + Opened() + "\n");
        chmod((bin / name).c_str(), 0755);
    }
    std::string Opened() const { return bin / "opened"; }
    std::string WhatOpened() const
    {
        for (int i = 0; i < 500 && !std::filesystem::exists(Opened()); ++i) usleep(10'000);
        return FileContents(Opened());
    }
    TempDirectory bin;
    std::string pathBefore;
};

TEST_F(PrinterSettings, OpenTheDesktopsOwn)
{
    Provide("gnome-control-center");
    EXPECT_EQ(RunCommand(hWndMain, kCmdPrinterSetup), 0);
    EXPECT_EQ(WhatOpened(), "gnome-control-center printers\n");
    EXPECT_THAT(BoxTexts(), IsEmpty());
}

TEST_F(PrinterSettings, TakeTheFirstThatThereIs)
{
    Provide("systemsettings");
    Provide("system-config-printer");
    RunCommand(hWndMain, kCmdPrinterSetup);
    EXPECT_EQ(WhatOpened(), "system-config-printer \n");
}

TEST_F(PrinterSettings, ThatAreNotThereAreTold)
{
    EXPECT_EQ(RunCommand(hWndMain, kCmdPrinterSetup), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("This desktop has no printer settings that Kelvo knows."));
    EXPECT_THAT(StatusTexts(), ElementsAre(kIdleText));
}

TEST_F(CommandTable, ExitAsksAndGoesOnAfterNo)
{
    op->Answer({Button::kNo});
    EXPECT_EQ(RunCommand(hWndMain, kCmdExit), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("\nDo you wish to exit?"));
    EXPECT_EQ(op->Boxes().front().caption, "QVF Vantir");
    EXPECT_THAT(StatusTexts(), ElementsAre(" This will end your Kelvo session (the IR camera is now off)", kIdleText));
}

TEST_F(CommandTable, ExitTellsThatTheCameraStaysOn)
{
    write::frames.CameraOn = 1;
    op->Answer({Button::kNo});
    RunCommand(hWndMain, kCmdExit);
    write::frames.CameraOn = 0;
    EXPECT_EQ(StatusTexts().front(), " This will end your Kelvo session (the IR camera will remain on)");
}

TEST_F(CommandTable, ACalibrationIsLoadedOnlyWithACameraThatIsOn)
{
    EXPECT_EQ(RunCommand(hWndMain, kCmdLoadCalibration), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("Camera must be on in order\nto load a calibration"));
}

TEST_F(CommandTable, ThereIsNothingToSaveWithoutACalibration)
{
    EXPECT_EQ(RunCommand(hWndMain, kCmdSaveCalibration), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre("A calibration must be loaded\nin order to save it."));
}

TEST_F(CommandTable, TheNextFrameOfNoSequenceAsksForOne)
{
    write::frames.LoadName.clear();
    const std::size_t before = Commands().size();
    EXPECT_EQ(RunCommand(hWndMain, kCmdLoadNext), 1);
    ASSERT_EQ(Commands().size(), before + 1);
    EXPECT_EQ(Commands().back(), kCmdNameSequenceToLoad);
    EXPECT_EQ(StatusText, "as before");
}

TEST_F(CommandTable, AMovementLeavesTheReadOutOfTheImageCursor)
{
    View(32, 24, std::vector<std::int16_t>(768, 100));
    write::frames.ImageCursorOn = 1;
    EXPECT_EQ(RunCommand(hWndMain, kCmdPanRight), 1);
    write::frames.ImageCursorOn = 0;
    EXPECT_EQ(RunCommand(hWndMain, kCmdPanLeft), 0);
}

TEST_F(CommandTable, HelpModeShowsThePageInsteadAndEnds)
{
    write::windows.HelpMode = 1;
    EXPECT_EQ(ShowCommandHelp(hWndMain, kCmdTurnOn), 0);
    EXPECT_EQ(CurrentHelpContext(), 41);
    EXPECT_EQ(HelpMode, 0);
    ShowCommandHelp(hWndMain, kCmdViewCopyPicture);
    EXPECT_THAT(BoxTexts(), ElementsAre("Help not available for this Menu item."));
    QuitHelp();
}

}  // namespace
}  // namespace kelvo

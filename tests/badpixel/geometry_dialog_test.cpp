// The image set-up dialog: flags, the list of bad detectors, its scratch file and the mark on the picture.
#include "badpixel/geometry_dialog.h"

#include "badpixel/geometry_dialog_list.h"
#include "badpixel/geometry_dialog_mark.h"
#include "calib/orientation.h"
#include "calib/report_file.h"
#include "pixel/decommutation.h"
#include "pixel/unsaved_set.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/full_disk.h"
#include "support/picture_fixture.h"
#include "ui/status.h"
#include "video/video.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Pairs = std::vector<PixelPair>;

constexpr const char* kHint = " Adjust image readout sequence &/or change bad pixel list";
constexpr const char* kAsk = "Settings were changed\nDo you want to SET changes?";
constexpr const char* kStored = "   0,   1\n   2,   3\n   2,   9\n   5,   0\n";

class GeometryDialogTest : public PictureTest {
  protected:
    GeometryDialogTest()
    {
        std::filesystem::current_path(directory.Path());
        write::camera.ActiveConfig.Description = "Test array";
        write::camera.ActiveConfig.DecomScheme = 2;
        write::camera.ActiveConfig.Hroi = 32;
        write::camera.ActiveConfig.Vroi = 24;
        write::camera.ActiveConfig.Hactive = 32;
        write::camera.ActiveConfig.Vactive = 24;
        write::calSet.CalSettings.PRSfile = directory / "right.prs";
        write::calSet.CalSettings.CalFile = directory / "run.cal";
        PutFile(CalSettings.PRSfile, "header\n0,1\n0,-1\n");
        PutFile(CalSettings.CalFile, "[Calibration]\n");
        write::display.MirrorHoriz = write::display.MirrorVert = write::display.RotateCCW = 0;
        write::display.SubstBadPixels = 1;
    }
    ~GeometryDialogTest() override { std::filesystem::current_path("/"); }

    // A calibration with a list of four detectors; the camera is on.
    void Calibrate(const std::string& list = kStored)
    {
        write::frames.CameraOn = 1;
        write::cal.CalType = 2;
        write::calSet.CalSettings.BadDetFile = directory / "run.bad";
        PutFile(CalSettings.BadDetFile, list);
    }
    // Opens the dialog, works it, and leaves by Ok where the work left it open.
    int Run(const std::function<void(HWND)>& work)
    {
        op->Do([work] { work(DialogInFront()); });
        op->Do([] {
            if (DialogInFront()) OperatePress(DialogInFront(), kIdOk);
        });
        return GeometryDialog(hWndMain);
    }
    static std::vector<std::string> Lines(HWND dialog)
    {
        std::vector<std::string> lines;
        for (int i = 0; i < ListCount(dialog, 1308); ++i) lines.push_back(ListItemText(dialog, 1308, i));
        return lines;
    }
    std::vector<std::string> BoxTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& box : op->Boxes()) texts.push_back(box.text);
        return texts;
    }
    DecomTable Temp() const
    {
        const std::string bytes = FileContents(directory / "DECOM.TMP");
        DecomTable table(bytes.size() / 4);
        std::memcpy(table.data(), bytes.data(), table.size() * 4);
        return table;
    }
    std::string BadList() const { return FileContents(directory / "run.bad"); }
    std::string Scratch() const { return FileContents(directory / "BADDET.TMP"); }
    bool ScratchStands() const { return std::filesystem::exists(directory / "BADDET.TMP"); }
    std::vector<std::string> FlagsIn(const std::string& file) const
    {
        std::vector<std::string> values;
        for (const char* key : {"MirrorVert", "MirrorHoriz", "RotateCCW", "SubstBadPixels"}) {
            values.push_back(GetPrivateProfileString("Display", key, "-", file));
        }
        return values;
    }
};

TEST_F(GeometryDialogTest, OpensWithoutACalibrationWithTheListDisabled)
{
    write::display.MirrorVert = 1;
    write::display.SubstBadPixels = 0;
    write::calSet.CalSettings.BadDetFile = "not looked at.bad";
    EXPECT_EQ(Run([](HWND dialog) {
                  EXPECT_EQ(DialogName(dialog), "GEOMETRY");
                  EXPECT_EQ(GetWindowText(dialog), "Image setup");
                  EXPECT_EQ(StatusText, kHint);
                  EXPECT_TRUE(IsDlgButtonChecked(dialog, 1300));
                  EXPECT_FALSE(IsDlgButtonChecked(dialog, 1302));
                  EXPECT_FALSE(IsDlgButtonChecked(dialog, 1304));
                  EXPECT_FALSE(IsDlgButtonChecked(dialog, 1306));
                  for (const int id : {20210, 1308, 1310, 1312, 1314}) EXPECT_FALSE(DlgItemEnabled(dialog, id)) << id;
                  EXPECT_EQ(GetDlgItemText(dialog, 1608), "Test array");
                  EXPECT_TRUE(IsDlgButtonChecked(dialog, 1600));
                  EXPECT_FALSE(DlgItemEnabled(dialog, 1602));
                  EXPECT_EQ(FocusedDlgItem(dialog), 1302);
              }),
              1);
    EXPECT_EQ(StatusText, " Use Alt + underlined menu item or trackball to select menu item");
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_FALSE(ScratchStands());
}

TEST_F(GeometryDialogTest, ItsControlsBearTheirTexts)
{
    struct Row {
        int id;
        const char* text;
    };
    constexpr Row kRows[] = {{1300, "Flip &horizontal"},
                             {1302, "Flip &vertical"},
                             {1304, "Rotate &left"},
                             {1306, "&Replace bad pixels"},
                             {1310, "R&emove from list"},
                             {1314, "&Add to list"},
                             {1460, "Bad det file:"},
                             {1600, "Camera &1"},
                             {1602, "Camera &2"},
                             {1604, "&Set"},
                             {1, "Ok"},
                             {9, "&Help"}};
    Run([&](HWND dialog) {
        for (const Row& row : kRows) EXPECT_EQ(GetDlgItemText(dialog, row.id), row.text);
    });
}

TEST_F(GeometryDialogTest, TwoCamerasOfferTheSecondButton)
{
    write::camera.ActiveConfig.DualCamera = 1;
    Run([](HWND dialog) { EXPECT_TRUE(DlgItemEnabled(dialog, 1602)); });
}

TEST_F(GeometryDialogTest, OpensWithTheListOfTheCalibrationAndAScratchCopy)
{
    // Row 24 lies outside; column 32 is just accepted, 33 not.
    Calibrate("0,1\nnothing\n  23,  32\n 23,33\n24,0\n-1,0\n7\n");
    Run([&](HWND dialog) {
        EXPECT_THAT(Lines(dialog), ElementsAre("   0,   1", "  23,  32"));
        EXPECT_EQ(GetDlgItemText(dialog, 1460), "Bad det file: " + CalSettings.BadDetFile);
        for (const int id : {1308, 1310, 1312, 1314}) EXPECT_TRUE(DlgItemEnabled(dialog, id)) << id;
        EXPECT_EQ(FocusedDlgItem(dialog), 1306);
        EXPECT_EQ(Scratch(), BadList());
    });
    EXPECT_FALSE(ScratchStands());
    EXPECT_THAT(op->Boxes(), IsEmpty());  // nothing was changed: nothing is asked
}

// The file that is named stands, and belongs to another calibration.
TEST_F(GeometryDialogTest, OfACalibrationThatCouldNotBeSavedTheListIsClosedAndNoFileOfItsNameChanges)
{
    Calibrate();
    BadDetMap marks(std::size_t{24} * 32);
    marks[5] = 1;
    KeepUnsavedSet({.gains = {}, .offsets = {}, .noise = {}, .badDetectors = marks});
    const std::string formerCal = FileContents(CalSettings.CalFile);
    op->Answer({Button::kYes});
    Run([this](HWND dialog) {
        EXPECT_EQ(GetDlgItemText(dialog, 1460), "Bad det file:");
        EXPECT_THAT(Lines(dialog), IsEmpty());
        for (const int id : {1308, 1310, 1312, 1314}) EXPECT_FALSE(DlgItemEnabled(dialog, id)) << id;
        EXPECT_FALSE(ScratchStands());
        OperateCheck(dialog, 1300, true);
    });
    EXPECT_THAT(BoxTexts(), ElementsAre(kAsk)) << "nothing else is told";
    EXPECT_EQ(MirrorVert, 1);
    FlushProfiles();
    EXPECT_THAT(FlagsIn(IniFilePath), ElementsAre("1", "0", "0", "1"));
    EXPECT_EQ(FileContents(CalSettings.CalFile), formerCal);
    EXPECT_EQ(BadList(), kStored);
    // Its own pixel 5 is replaced by the one to the right, and none of those that the file names.
    DecomTable plain = *BuildDecomList(ActiveConfig, 0);
    plain[5] = plain[6];
    ReorderDecomList(plain, ActiveConfig, 0, 1, 0);
    EXPECT_EQ(Temp(), plain);
    ForgetUnsavedSet();
}

TEST_F(GeometryDialogTest, AListAboveATenthOfThePixelsIsCutAndDisabled)
{
    std::string list;
    for (int i = 0; i < 77; ++i) list += std::to_string(i / 32) + ',' + std::to_string(i % 32) + '\n';
    Calibrate(list);  // 24 x 32 / 10 is 76
    Run([&](HWND dialog) {
        EXPECT_EQ(ListCount(dialog, 1308), 76);
        EXPECT_FALSE(DlgItemEnabled(dialog, 1308));
        EXPECT_FALSE(DlgItemEnabled(dialog, 1314));
        EXPECT_FALSE(ScratchStands());
    });
    EXPECT_EQ(BadList(), list);
    PutFile(CalSettings.BadDetFile, list.substr(0, list.rfind("2,12\n")));
    Run([&](HWND dialog) { EXPECT_TRUE(DlgItemEnabled(dialog, 1308)); });
}

TEST_F(GeometryDialogTest, AListThatCantBeOpenedIsGivenUpOnOk)
{
    Calibrate();
    const std::string missing = directory / "missing.bad";
    write::calSet.CalSettings.BadDetFile = missing;
    op->Answer({Button::kOk});
    EXPECT_EQ(Run([](HWND dialog) { EXPECT_FALSE(DlgItemEnabled(dialog, 1308)); }), 1);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text,
              "Unable to open Bad detector file:\n" + missing + "\nSetting Bad detector filename to NULL");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_EQ(CalSettings.BadDetFile, "");
}

TEST_F(GeometryDialogTest, AListThatCantBeOpenedEndsTheDialogOnCancel)
{
    Calibrate();
    write::calSet.CalSettings.BadDetFile = directory / "missing.bad";
    op->Answer({Button::kCancel});
    EXPECT_EQ(GeometryDialog(hWndMain), 0);
    EXPECT_THAT(BoxTexts(), ElementsAre(testing::StartsWith("Unable to open"),
                                        "Can not continue with invalid\nbad detector filename"));
    EXPECT_EQ(CalSettings.BadDetFile, directory / "missing.bad");
}

TEST_F(GeometryDialogTest, SetCommitsTheFlagsAndRebuildsTheTable)
{
    Calibrate("0,0\n");
    Run([&](HWND dialog) {
        OperateCheck(dialog, 1300, true);
        EXPECT_EQ(MirrorVert, 0);  // a copy until it is set
        OperatePress(dialog, 1604);
        EXPECT_EQ(MirrorVert, 1);
        EXPECT_EQ(StatusText, kHint);
        ASSERT_THAT(DecomList, SizeIs(768));
        EXPECT_EQ(DecomList[0], 31U);
        EXPECT_EQ(DecomList[30], 1U);
        EXPECT_EQ(DecomList[31], 1U);  // pixel 0, replaced by its neighbour and mirrored to the end of the row
        EXPECT_EQ(Temp(), DecomList);
    });
    EXPECT_THAT(FlagsIn(IniFilePath), ElementsAre("1", "0", "0", "1"));
    EXPECT_THAT(FlagsIn(CalSettings.CalFile), ElementsAre("1", "0", "0", "1"));
    EXPECT_THAT(op->Boxes(), IsEmpty());  // set already: nothing is asked
}

TEST_F(GeometryDialogTest, OkAsksAndYesSets)
{
    Calibrate();
    op->Answer({Button::kYes});
    Run([](HWND dialog) { OperateCheck(dialog, 1302, true); });
    ASSERT_THAT(BoxTexts(), ElementsAre(kAsk));
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("yes", "no"));
    EXPECT_EQ(MirrorHoriz, 1);
    ASSERT_THAT(DecomList, SizeIs(768));
    EXPECT_EQ(DecomList[0], 736U);  // the last row first
}

TEST_F(GeometryDialogTest, OkAndNoStoresTheFlagsAndLeavesTheTable)
{
    Calibrate();
    op->Answer({Button::kNo});
    Run([](HWND dialog) { OperateCheck(dialog, 1304, true); });
    EXPECT_THAT(BoxTexts(), ElementsAre(kAsk));
    EXPECT_EQ(RotateCCW, 1);
    EXPECT_THAT(FlagsIn(IniFilePath), ElementsAre("0", "0", "1", "1"));
    EXPECT_THAT(DecomList, IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(directory / "DECOM.TMP"));
    // What isn't set yet is asked for at the next opening too.
    op->Answer({Button::kYes});
    Run([](HWND) {});
    EXPECT_THAT(BoxTexts(), ElementsAre(kAsk, kAsk));
    EXPECT_THAT(DecomList, SizeIs(768));
}

TEST_F(GeometryDialogTest, ClosingItsWindowAsksAsOkDoes)
{
    Calibrate();
    op->Answer({Button::kNo});
    Run([](HWND dialog) {
        OperateCheck(dialog, 1304, true);
        SendMessage(dialog, WM_CLOSE, 0, 0);
    });
    EXPECT_THAT(BoxTexts(), ElementsAre(kAsk));
    EXPECT_EQ(RotateCCW, 1);
}

TEST(FindPair, TakesTheFirstLineThatBeginsAsTyped)
{
    const Pairs lines = {{0, 1}, {2, 3}, {2, 39}, {12, 3}};
    EXPECT_EQ(FindPair(lines, "2"), 1U);
    EXPECT_EQ(FindPair(lines, "2,39"), 2U);
    EXPECT_EQ(FindPair(lines, " 12 , 3 "), 3U);
    EXPECT_EQ(FindPair(lines, "12,30"), std::nullopt);
    EXPECT_EQ(FindPair(lines, "x"), std::nullopt);
    EXPECT_EQ(FindPair(lines, " "), std::nullopt);
    EXPECT_EQ(FindPair({}, "1"), std::nullopt);
}

TEST_F(GeometryDialogTest, FindChoosesALineAndTellsWhatIsNotInTheList)
{
    Calibrate();
    Run([](HWND dialog) {
        EXPECT_EQ(ListSelection(dialog, 1308), 0);
        SetDlgItemText(dialog, 20210, "2,9");
        EXPECT_EQ(ListSelection(dialog, 1308), 2);
        SetDlgItemText(dialog, 20210, "7");
        EXPECT_EQ(ListSelection(dialog, 1308), 2);
        EXPECT_EQ(GetDlgItemText(dialog, 20211), "7 isn't in the list");
        EXPECT_TRUE(DlgItemWarns(dialog, 20211));
        SetDlgItemText(dialog, 20210, "5");
        EXPECT_EQ(ListSelection(dialog, 1308), 3);
        EXPECT_FALSE(DlgItemWarns(dialog, 20211));
        OperatePress(dialog, 1310);  // the one that was found
        EXPECT_THAT(Lines(dialog), ElementsAre("   0,   1", "   2,   3", "   2,   9"));
    });
}

TEST_F(GeometryDialogTest, TellsWhetherTheCalibrationHasAGainForTheChosenDetector)
{
    Calibrate();
    RebuildTable(ActiveConfig);
    const std::optional<DecomTable> plain = BuildDecomList(ActiveConfig, 0);
    ASSERT_TRUE(plain);
    std::vector<float> gains(plain->size(), 1.0F);
    gains[plain->at(2 * 32 + 3)] = 0.0F;  // row 2, column 3
    write::calSet.CalSettings.GainFile = directory / "run.gai";
    PutFile(CalSettings.GainFile, {reinterpret_cast<const char*>(gains.data()), gains.size() * sizeof(float)});
    Run([](HWND dialog) {
        EXPECT_EQ(GetDlgItemText(dialog, 20211), "0,1: bad by the list alone: it has a gain");
        OperatePick(dialog, 1308, 1);
        EXPECT_EQ(GetDlgItemText(dialog, 20211), "2,3: the calibration has no gain for it");
    });
    // Without the file of gains nothing is known.
    write::calSet.CalSettings.GainFile = directory / "no such.gai";
    Run([](HWND dialog) { EXPECT_EQ(GetDlgItemText(dialog, 20211), ""); });
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

// The report was made while the picture was turned; the list has a detector that it doesn't know.
TEST_F(GeometryDialogTest, TellsTheClassThatTheReportOfTheSetHas)
{
    Calibrate("2,3\n2,9\n5,0\n");
    CalibrationReport report;
    report.title = "2 Point Calibration";
    report.calPath = CalSettings.CalFile;
    report.columns = 32;
    report.rows = 24;
    report.classes = {{.name = "Noisy", .count = 1, .color = 0xFF0000}, {.name = "Dead", .count = 1, .color = 0xFF}};
    report.map.resize(std::size_t{24} * 32);
    report.map[2 * 32 + 3] = 2;
    report.map[2 * 32 + 9] = 1;
    write::display.MirrorHoriz = write::display.MirrorVert = 1;
    OrientMap(report);
    EXPECT_EQ(report.map[21 * 32 + 28], 2) << "2,3 counted from the other corner";
    ASSERT_EQ(SaveReport(report), 1);
    write::display.MirrorVert = 0;  // turned otherwise since
    const auto classes = [this] {
        std::vector<std::string> texts;
        Run([&texts](HWND dialog) {
            for (int line = 0; line < 3; ++line) {
                OperatePick(dialog, 1308, line);
                texts.push_back(GetDlgItemText(dialog, 20211));
            }
        });
        return texts;
    };
    EXPECT_THAT(classes(), ElementsAre("2,3: Dead", "2,9: Noisy", ""));
    write::camera.ActiveConfig.Hroi = 30;  // the report is of another region
    EXPECT_THAT(classes(), ElementsAre("", "", ""));
}

TEST_F(GeometryDialogTest, CancelPutsAllBackAlsoWhatWasSet)
{
    Calibrate();
    RebuildTable(ActiveConfig);
    PutFile(IniFilePath, "[Display]\nMirrorVert= '0' \nother=1\n");
    PutFile(CalSettings.CalFile, "[Display]\nRotateCCW=\n");
    const DecomTable table(DecomList);
    const std::int32_t replaced = BadDetCount;
    EXPECT_EQ(Run([](HWND dialog) {
                  OperateCheck(dialog, 1300, true);
                  OperateCheck(dialog, 1306, false);
                  SetDlgItemText(dialog, 1312, "3,4");
                  OperatePress(dialog, 1314);
                  OperatePress(dialog, 1604);  // Set
                  EXPECT_EQ(MirrorVert, 1);
                  OperateCheck(dialog, 1304, true);
                  OperatePress(dialog, kIdCancel);
              }),
              0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(StatusText, ResourceString(kIdleHint));
    EXPECT_THAT((std::vector<std::int32_t>{MirrorVert, MirrorHoriz, RotateCCW, SubstBadPixels}),
                ElementsAre(0, 0, 0, 1));
    EXPECT_EQ(DecomList, table);
    EXPECT_EQ(Temp(), table);
    EXPECT_EQ(BadDetCount, replaced);
    EXPECT_EQ(BadList(), kStored);
    EXPECT_FALSE(ScratchStands());
    FlushProfiles();
    EXPECT_EQ(FileContents(IniFilePath), "[Display]\nMirrorVert= '0' \nother=1\n");
    EXPECT_EQ(FileContents(CalSettings.CalFile), "[Display]\nRotateCCW=\n");
    // Nothing is left to be set: the next opening and Ok ask nothing.
    Run([](HWND) {});
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(GeometryDialogTest, ACancelThatCannotPutTheListBackLeavesAllAsItIs)
{
    Calibrate();
    RebuildTable(ActiveConfig);
    op->Answer({Button::kOk});
    Run([this](HWND dialog) {
        SetDlgItemText(dialog, 1312, "3,4");
        OperatePress(dialog, 1314);
        OperatePress(dialog, 1604);  // Set
        const DecomTable edited(DecomList);
        {
            const FullDisk disk(0);
            OperatePress(dialog, kIdCancel);
        }
        EXPECT_EQ(DialogInFront(), dialog);
        EXPECT_EQ(DecomList, edited);
        EXPECT_NE(BadList(), kStored);
    });
    EXPECT_THAT(BoxTexts(), ElementsAre("Could not save file: " + (directory / "run.bad")));
}

TEST_F(GeometryDialogTest, WithoutTheCameraNothingIsAsked)
{
    Run([](HWND dialog) {
        OperateCheck(dialog, 1300, true);
        OperateCheck(dialog, 1306, false);
    });
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(MirrorVert, 1);
    EXPECT_EQ(SubstBadPixels, 0);
    EXPECT_THAT(FlagsIn(IniFilePath), ElementsAre("1", "0", "0", "0"));
    EXPECT_THAT(FlagsIn(CalSettings.CalFile), ElementsAre("-", "-", "-", "-"));  // none is loaded
}

TEST_F(GeometryDialogTest, ReplacingIsAChangeOnlyWithACalibration)
{
    write::frames.CameraOn = 1;
    Run([](HWND dialog) { OperateCheck(dialog, 1306, false); });
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_EQ(SubstBadPixels, 0);
}

TEST_F(GeometryDialogTest, RemovingTakesTheSelectedLineOutOfTheScratchFile)
{
    Calibrate();
    op->Answer({Button::kNo});
    Run([&](HWND dialog) {
        OperatePick(dialog, 1308, 2);
        OperatePress(dialog, 1310);
        EXPECT_THAT(Lines(dialog), ElementsAre("   0,   1", "   2,   3", "   5,   0"));
        EXPECT_EQ(ListSelection(dialog, 1308), 1);  // one up
        EXPECT_EQ(Scratch(), "   0,   1\n   2,   3\n   5,   0\n");
        EXPECT_EQ(BadList(), kStored);
        OperatePick(dialog, 1308, 0);
        OperatePress(dialog, 1310);
        EXPECT_EQ(ListSelection(dialog, 1308), 0);
        EXPECT_EQ(Scratch(), "   2,   3\n   5,   0\n");
    });
    EXPECT_EQ(BadList(), "   2,   3\n   5,   0\n");
    EXPECT_FALSE(ScratchStands());
}

TEST_F(GeometryDialogTest, RemovingTheLastLinesLeavesAnEmptyList)
{
    Calibrate("3,3\n");
    op->Answer({Button::kNo});
    Run([&](HWND dialog) {
        OperatePress(dialog, 1310);
        EXPECT_THAT(Lines(dialog), IsEmpty());
        OperatePress(dialog, 1310);
        EXPECT_EQ(Scratch(), "");
    });
    EXPECT_EQ(BadList(), "");
}

TEST_F(GeometryDialogTest, AddingKeepsTheOrderInTheListAndThePairBeforeItsLineInTheFile)
{
    Calibrate();
    op->Answer({Button::kNo});
    Run([&](HWND dialog) {
        OperateText(dialog, 1312, "2,5");
        OperatePress(dialog, 1314);
        EXPECT_THAT(Lines(dialog), ElementsAre("   0,   1", "   2,   3", "   2,   5", "   2,   9", "   5,   0"));
        EXPECT_EQ(ListSelection(dialog, 1308), 2);
        EXPECT_EQ(Scratch(), "   0,   1\n   2,   5\n   2,   3\n   2,   9\n   5,   0\n");
    });
    EXPECT_EQ(BadList(), "   0,   1\n   2,   5\n   2,   3\n   2,   9\n   5,   0\n");
    EXPECT_THAT(BoxTexts(), ElementsAre(kAsk));
}

TEST_F(GeometryDialogTest, APairOutsideTheArrayIsToldAndNotAdded)
{
    Calibrate();
    op->Answer({Button::kOk, Button::kNo});
    Run([&](HWND dialog) {
        OperateText(dialog, 1312, "24,0");
        OperatePress(dialog, 1314);
    });
    ASSERT_THAT(BoxTexts(), ElementsAre("Valid input range\n0 >= Row >=  23", kAsk));
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_EQ(BadList(), kStored);
}

TEST_F(GeometryDialogTest, AColumnOutsideTheArrayIsTold)
{
    Calibrate();
    op->Answer({Button::kOk, Button::kNo});
    Run([&](HWND dialog) {
        OperateText(dialog, 1312, "23,32");
        OperatePress(dialog, 1314);
    });
    EXPECT_THAT(BoxTexts(), ElementsAre("Valid input range\n0 >= Column >=  31", kAsk));
    EXPECT_EQ(BadList(), kStored);
}

TEST_F(GeometryDialogTest, ATextWithoutAPairIsToldAndNotAdded)
{
    Calibrate();
    op->Answer({Button::kOk, Button::kOk, Button::kNo});
    Run([&](HWND dialog) {
        OperateText(dialog, 1312, "here");
        OperatePress(dialog, 1314);
    });
    EXPECT_THAT(BoxTexts(),
                ElementsAre("Valid input range\n0 >= Row >=  23", "Valid input range\n0 >= Column >=  31", kAsk));
    EXPECT_EQ(BadList(), kStored);
}

TEST_F(GeometryDialogTest, AnArrayWithoutSidesTakesNoPair)
{
    Calibrate("");
    write::camera.ActiveConfig.Hactive = write::camera.ActiveConfig.Vactive = std::numeric_limits<std::int32_t>::min();
    op->Answer({Button::kOk, Button::kOk, Button::kNo});
    Run([](HWND dialog) {
        OperateText(dialog, 1312, "0,0");
        OperatePress(dialog, 1314);
    });
    EXPECT_THAT(BoxTexts(), ElementsAre("Valid input range\n0 >= Row >= -2147483649",
                                        "Valid input range\n0 >= Column >= -2147483649", kAsk));
}

TEST_F(GeometryDialogTest, AnEmptyListTakesNoPair)
{
    Calibrate("");
    op->Answer({Button::kNo});
    Run([&](HWND dialog) {
        OperateText(dialog, 1312, "1,1");
        OperatePress(dialog, 1314);
        EXPECT_THAT(Lines(dialog), IsEmpty());
    });
    EXPECT_EQ(BadList(), "");
}

TEST_F(GeometryDialogTest, EditingGoesOnBehindSet)
{
    Calibrate();
    op->Answer({Button::kNo});
    Run([&](HWND dialog) {
        OperatePick(dialog, 1308, 0);
        OperatePress(dialog, 1310);
        OperatePress(dialog, 1604);
        EXPECT_EQ(BadList(), "   2,   3\n   2,   9\n   5,   0\n");
        EXPECT_FALSE(ScratchStands());
        OperatePick(dialog, 1308, 2);
        OperatePress(dialog, 1310);
        EXPECT_EQ(Scratch(), "   2,   3\n   2,   9\n");
    });
    EXPECT_EQ(BadList(), "   2,   3\n   2,   9\n");
}

TEST_F(GeometryDialogTest, AListThatCantBePutInItsPlaceIsToldAndItsScratchFileStays)
{
    Calibrate();
    op->Answer({Button::kNo});
    Run([&](HWND dialog) {
        OperatePress(dialog, 1310);
        write::calSet.CalSettings.BadDetFile = directory / "none/run.bad";
    });
    EXPECT_THAT(BoxTexts(), ElementsAre(kAsk, "Could not save file: " + (directory / "none/run.bad")));
    EXPECT_EQ(Scratch(), "   2,   3\n   2,   9\n   5,   0\n");
}

// A scratch file that is older than the edit must not take the list's place.
TEST_F(GeometryDialogTest, AnEditThatTheScratchFileDidntTakeIsWrittenWhenItIsCommitted)
{
    Calibrate();
    op->Answer({Button::kOk, Button::kNo});
    Run([](HWND dialog) {
        const FullDisk disk(0);
        OperatePress(dialog, 1310);
    });
    EXPECT_THAT(BoxTexts(), ElementsAre("Could not save file: BADDET.TMP", kAsk));
    EXPECT_EQ(BadList(), "   2,   3\n   2,   9\n   5,   0\n");
    EXPECT_FALSE(ScratchStands());
}

TEST_F(GeometryDialogTest, TheSelectedLineIsRememberedBetweenOpenings)
{
    Calibrate();
    Run([](HWND dialog) { OperatePick(dialog, 1308, 3); });
    Run([](HWND dialog) { EXPECT_EQ(ListSelection(dialog, 1308), 3); });
    PutFile(CalSettings.BadDetFile, "1,1\n");
    Run([](HWND dialog) { EXPECT_EQ(ListSelection(dialog, 1308), 0); });
}

TEST_F(GeometryDialogTest, ThatCantBeMadeIsTold)
{
    SetFault("load dialog GEOMETRY", true);
    EXPECT_EQ(GeometryDialog(hWndMain), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
}

TEST_F(GeometryDialogTest, MarksTheFirstLineThenTheSelectedOneAndTakesTheMarkOff)
{
    Calibrate("5,5\n10,20\n");
    std::vector<std::int16_t> bright(32 * 24, 16383);
    View(32, 24, bright);
    GetVideoData(write::frames.LiveFrame);
    const auto isMarked = [](int row, int column) { return Shown(column * 3 + 1, row * 3 + 1) == 0; };
    EXPECT_FALSE(isMarked(4, 5));
    Run([&](HWND dialog) {
        for (const auto& [row, column] : {std::pair{4, 5}, {6, 5}, {5, 4}, {5, 6}, {4, 4}, {6, 6}}) {
            EXPECT_TRUE(isMarked(row, column)) << row << ' ' << column;
        }
        EXPECT_FALSE(isMarked(5, 5));
        OperatePick(dialog, 1308, 1);
        EXPECT_FALSE(isMarked(4, 5));
        EXPECT_TRUE(isMarked(9, 20));
        EXPECT_FALSE(isMarked(10, 20));
    });
    EXPECT_FALSE(isMarked(9, 20));
    EXPECT_EQ(LiveFrame, bright);  // the frame stays clean
}

TEST(DisplayedPlaces, FollowTheOrientationWithTheSidesThemselves)
{
    CameraConfig config;
    config.Hactive = 32;
    config.Vactive = 24;
    const PixelPair detector{.row = 3, .column = 5};
    EXPECT_EQ(DisplayedPlace(detector, {}, config), (PixelPair{3, 5}));
    EXPECT_EQ(DisplayedPlace(detector, {.mirrorHoriz = 1}, config), (PixelPair{21, 5}));
    EXPECT_EQ(DisplayedPlace(detector, {.mirrorVert = 1}, config), (PixelPair{3, 27}));
    EXPECT_EQ(DisplayedPlace(detector, {.rotateCcw = 1}, config), (PixelPair{27, 3}));
    EXPECT_EQ(DisplayedPlace(detector, {.mirrorHoriz = 1, .mirrorVert = 1, .rotateCcw = 1}, config),
              (PixelPair{-3, 29}));
}

TEST(Outlines, LieOnePixelOutsideAndNotInTheFirstRowAndColumn)
{
    const Point size{.x = 8, .y = 6};
    const auto cells = [&](const PixelPair& pixel) {
        std::set<std::pair<int, int>> seen;
        for (const PixelPair& each : OutlineOf(pixel, size)) seen.emplace(each.row, each.column);
        return seen;
    };
    using Cells = std::set<std::pair<int, int>>;
    EXPECT_EQ(cells({3, 3}), (Cells{{2, 2}, {2, 3}, {2, 4}, {3, 2}, {3, 4}, {4, 2}, {4, 3}, {4, 4}}));
    // Row 0 and column 0 would hold the top and left edges: only the others are drawn.
    EXPECT_EQ(cells({1, 1}), (Cells{{2, 0}, {2, 1}, {2, 2}, {0, 2}, {1, 2}}));
    // In the last corner right and bottom edges end on the pixel's own column and row.
    EXPECT_EQ(cells({5, 7}), (Cells{{4, 6}, {4, 7}, {5, 6}, {5, 7}}));
    EXPECT_EQ(cells({-3, 99}), Cells{});
    // As far out as the section of a camera may say.
    constexpr std::int32_t kFar = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(cells({kFar, kFar}), Cells{});
    EXPECT_EQ(cells({-kFar - 1, -kFar - 1}), Cells{});
}

TEST(ListEditing, InsertsByRowThenColumn)
{
    const Pairs lines = {{0, 1}, {2, 3}, {2, 9}, {5, 0}};
    EXPECT_EQ(InsertPair(lines, {1, 7})->lines, (Pairs{{0, 1}, {1, 7}, {2, 3}, {2, 9}, {5, 0}}));
    EXPECT_EQ(InsertPair(lines, {1, 7})->fileLines, (Pairs{{1, 7}, {0, 1}, {2, 3}, {2, 9}, {5, 0}}));
    EXPECT_EQ(InsertPair(lines, {2, 5})->place, 2U);
    EXPECT_EQ(InsertPair(lines, {9, 9})->lines.back(), (PixelPair{9, 9}));
    EXPECT_EQ(InsertPair(lines, {9, 9})->fileLines, (Pairs{{0, 1}, {2, 3}, {2, 9}, {9, 9}, {5, 0}}));
    // Nothing is put before the first line.
    EXPECT_EQ(InsertPair(lines, {0, 0})->lines, (Pairs{{0, 1}, {0, 0}, {2, 3}, {2, 9}, {5, 0}}));
    // A pair before the first column of its row finds its place behind that row.
    EXPECT_EQ(InsertPair(lines, {2, 1})->place, 3U);
    EXPECT_EQ(InsertPair(Pairs{{4, 4}}, {1, 1})->lines, (Pairs{{4, 4}, {1, 1}}));
    EXPECT_FALSE(InsertPair({}, {1, 1}));
}

}  // namespace
}  // namespace kelvo

#include "analysis/histogram_dialog.h"

#include "analysis/histogram_drawing.h"
#include "analysis/histogram_settings_write.h"
#include "display/display_pipeline.h"
#include "display/units.h"
#include "imagefile/header_write.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "ui/status.h"
#include "video/held_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kXCentre = 309;
constexpr int kYCentre = 311;
constexpr int kWidth = 314;
constexpr int kHeight = 316;
constexpr int kSetup = 301;
constexpr int kExit = 338;

// A stored frame of 20 x 16, whose pixel of column c and row r is 100 + c + 20 r: counts 100 to 419.
class Histogram : public PictureTest {
  protected:
    Histogram()
    {
        for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<std::int16_t>(100 + i);
        View(20, 16, counts);
    }

    // The dialog opened, drawn and worked, then left by Exit.
    void Work(const std::function<void(HWND)>& work)
    {
        op->Do([] { DrawHistogram(DialogInFront()); });
        op->Do([work] { work(DialogInFront()); });
        op->Do([] { OperatePress(DialogInFront(), kExit); });
        HistogramDialog(hWndMain);
        EXPECT_TRUE(op->AllDone());
    }
    // A rectangle about a pixel.
    static void Choose(HWND dialog, int x, int y, int columns, int rows)
    {
        SetDlgItemInt(dialog, kXCentre, x);
        SetDlgItemInt(dialog, kYCentre, y);
        SetDlgItemInt(dialog, kWidth, columns);
        SetDlgItemInt(dialog, kHeight, rows);
    }
    // Mean, deviation, minimum with its place, maximum with its place.
    static std::vector<std::string> Report(HWND dialog)
    {
        std::vector<std::string> report;
        for (const int id : {321, 322, 325, 324, 328, 327}) report.push_back(GetDlgItemText(dialog, id));
        return report;
    }

    std::vector<std::int16_t> counts = std::vector<std::int16_t>(20 * 16);
};

// --- Opening and leaving ---------------------------------------------------------------------------------------------

TEST_F(Histogram, DoesntOpenWithoutFileAndCamera)
{
    write::frames.ViewingFile = 0;
    EXPECT_EQ(HistogramDialog(hWndMain), 0);
    EXPECT_THAT(op->Texts("dialog", "name"), IsEmpty());
    EXPECT_EQ(StatusText, "There is nothing to measure: open an image or turn the camera on");
    EXPECT_EQ(ShowHistogram(), CommandEnd::kLeaveStatus);
}

TEST_F(Histogram, BearsTheNameOfTheFileAndTellsWhatItShows)
{
    Work([](HWND dialog) {
        EXPECT_EQ(GetWindowText(dialog), "Histogram: picture.img");
        EXPECT_EQ(StatusText, "Viewing Histogram data");
        EXPECT_EQ(StatusAlign, kCentred);
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 318));
        EXPECT_TRUE(PictureIsHeld());
    });
    EXPECT_FALSE(PictureIsHeld());
}

TEST_F(Histogram, SetsItsBarsToTheFrame)
{
    Work([](HWND dialog) {
        struct Bar {
            int id, least, most, position;
        };
        for (const Bar& bar : {Bar{308, 0, 19, 10}, {310, 0, 15, 8}, {313, 1, 20, 5}, {315, 1, 16, 13}}) {
            EXPECT_EQ(GetScrollMin(dialog, bar.id), bar.least) << bar.id;
            EXPECT_EQ(GetScrollMax(dialog, bar.id), bar.most) << bar.id;
            EXPECT_EQ(GetScrollPos(dialog, bar.id), bar.position) << bar.id;  // the height's: 16 + 1 - 4
        }
        EXPECT_EQ(GetDlgItemText(dialog, kHeight), "4");
    });
}

TEST_F(Histogram, KeepsItsRectangleWhenItIsLeftByAnyWay)
{
    for (const int way : {kExit, kIdCancel}) {
        op->Do([=] { SetDlgItemInt(DialogInFront(), kXCentre, way == kExit ? 7 : 8); });
        op->Do([=] { SendMessage(DialogInFront(), WM_COMMAND, static_cast<WPARAM>(way), 0); });
        EXPECT_EQ(HistogramDialog(hWndMain), 1);
        EXPECT_EQ(IniKey("Histogram", "Xposition"), way == kExit ? "7" : "8");
    }
}

TEST_F(Histogram, LeavesTheFrameAndThePictureAsTheyWere)
{
    DrawFrame(counts);
    const std::vector<std::uint8_t> frame = ImageBuffer;
    const std::uint32_t edge = Shown(3 * 8, 3 * 4);
    Work([&](HWND dialog) {
        Choose(dialog, 10, 8, 4, 6);  // columns 9 to 12, rows 6 to 10: the outline is at 8 and 13, 5 and 11
        EXPECT_EQ(HistScratchFrame[5 * 20 + 9], 0);
        EXPECT_EQ(HistScratchFrame[5 * 20 + 14], counts[5 * 20 + 14]);
        EXPECT_EQ(ImageBuffer, frame);
    });
    EXPECT_EQ(ImageBuffer, frame);
    EXPECT_THAT(HistScratchFrame, IsEmpty());
    EXPECT_EQ(Shown(3 * 8, 3 * 4), edge);
}

TEST_F(Histogram, EndsWhereThereIsNoMemoryForItsFrame)
{
    // Opening asks for memory several times; one of them is the frame's.
    for (int n = 1; op->Boxes().empty() && n < 20; ++n) {
        FailAllocation(n);
        op->Do([] {
            FailAllocation(0);
            if (DialogInFront()) OperatePress(DialogInFront(), kExit);
        });
        const int result = HistogramDialog(hWndMain);
        EXPECT_EQ(result, op->Boxes().empty() ? 1 : 0);
    }
    FailAllocation(0);
    ASSERT_THAT(op->Boxes(), testing::SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate video memory!");
    EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    EXPECT_THAT(HistScratchFrame, IsEmpty());
}

// --- What it tells ---------------------------------------------------------------------------------------------------

TEST_F(Histogram, ReportsMeanDeviationAndExtremesWithTheirPlaces)
{
    Work([](HWND dialog) {
        // Columns 10 and 11 of rows 8 and 9: 270, 271, 290, 291.
        Choose(dialog, 10, 8, 2, 2);
        EXPECT_THAT(Report(dialog), ElementsAre("280.500",
                                                "\xC2\xB1"
                                                "10.012",
                                                "270", "(10,8)", "291", "(11,9)"));
    });
}

TEST_F(Histogram, OfOnePixelHasNoDeviation)
{
    Work([](HWND dialog) {
        Choose(dialog, 10, 8, 1, 1);
        EXPECT_THAT(Report(dialog), ElementsAre("270.000", "", "270", "(10,8)", "270", "(10,8)"));
    });
}

TEST_F(Histogram, OfEqualSamplesHasADeviationOfNoughtAndAnAxisOfOneCount)
{
    View(20, 16, std::vector<std::int16_t>(20 * 16, 300));
    Work([](HWND dialog) {
        EXPECT_THAT(Report(dialog), ElementsAre("300.000", "0", "300", "(8,7)", "300", "(8,7)"));
        EXPECT_EQ(HistSettings.XplotMin, 300);
        EXPECT_EQ(HistSettings.XplotMax, 301);
        EXPECT_EQ(HistSettings.YplotMax, 20);  // 5 x 4 samples of one count
    });
}

TEST_F(Histogram, ExchangesTheExtremesInAUnitThatFalls)
{
    write::head.VoltsLow = 5;
    write::head.VoltsHigh = -5;
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 1000;
    write::display.DisplayUnit = kUnitVolts;
    Work([](HWND dialog) {
        // 270 counts are 5 - 10 x 0.27 volts, 291 are 5 - 10 x 0.291.
        Choose(dialog, 10, 8, 2, 2);
        EXPECT_THAT(Report(dialog), ElementsAre("2.195",
                                                "\xC2\xB1"
                                                "0.100",
                                                "2.090", "(11,9)", "2.300", "(10,8)"));
        EXPECT_EQ(HistSettings.XplotMin, 270);  // the axis stays as it is
        EXPECT_EQ(HistSettings.XplotMax, 291);
    });
}

TEST_F(Histogram, MeasuresSamplesOutsideItsAxisToo)
{
    Work([](HWND dialog) {
        write::histogram.HistSettings.Xautoscale = 0;
        write::histogram.HistSettings.XplotMin = 271;
        write::histogram.HistSettings.XplotMax = 280;
        Choose(dialog, 10, 8, 2, 2);
        EXPECT_EQ(Report(dialog).front(), "280.500");
        EXPECT_EQ(HistSettings.XplotMin, 271);
        EXPECT_EQ(HistSettings.XplotMax, 280);
        EXPECT_EQ(HistSettings.YplotMin, 0);
        EXPECT_EQ(HistSettings.YplotMax, 2);  // 271 once; 270, 290 and 291 set no axis
        EXPECT_THAT(HistogramCsv(), testing::HasSubstr("# samples below: 1\n# samples above: 2\ncounts,value,samples\n"
                                                       "271,271,1\n272,272,0\n"));
    });
}

TEST_F(Histogram, ReportsNothingWithoutSamples)
{
    Work([](HWND dialog) {
        write::frames.ImageBuffer.resize(4);
        ForgetDrawnHistogram();
        DrawHistogram(dialog);
        EXPECT_THAT(Report(dialog), ElementsAre("", "", "", "", "", ""));
    });
}

// --- When it draws ---------------------------------------------------------------------------------------------------

TEST_F(Histogram, DrawsNothingWhereNothingHasChanged)
{
    Work([](HWND dialog) {
        const std::int64_t before = MemoryRequests();
        DrawHistogram(dialog);  // though autoscaling has changed the settings since they were compared
        EXPECT_EQ(MemoryRequests(), before);
        SetDlgItemInt(dialog, kXCentre, 10);  // as it stands
        EXPECT_EQ(MemoryRequests(), before);
        SetDlgItemInt(dialog, kXCentre, 11);
        EXPECT_GT(MemoryRequests(), before);
    });
}

TEST_F(Histogram, ReportsWhereTheUnitIsAnother)
{
    write::head.VoltsHigh = 16383;
    Work([](HWND dialog) {
        Choose(dialog, 10, 8, 2, 2);
        write::display.DisplayUnit = kUnitVolts;
        DrawHistogram(dialog);
        EXPECT_EQ(Report(dialog)[2], "270.000");
    });
}

TEST_F(Histogram, HasNoPlotWhereThereIsNoMemoryForItsBins)
{
    Work([this](HWND dialog) {
        const std::vector<std::uint8_t> frame = ImageBuffer;
        write::histogram.HistSettings.Xautoscale = 0;
        write::histogram.HistSettings.XplotMin = 100;
        write::histogram.HistSettings.XplotMax = 200;
        FailAllocation(1);
        DrawHistogram(dialog);
        ASSERT_THAT(op->Boxes(), testing::SizeIs(1));
        EXPECT_EQ(op->Boxes()[0].text, "Failed to allocate memory for 103 histogram bins.");
        EXPECT_EQ(op->Boxes()[0].caption, "Memory Allocation Error");
        EXPECT_EQ(ImageBuffer, frame);
        EXPECT_THAT(HistogramCsv(), testing::Not(testing::HasSubstr("counts,value,samples")));
        DrawHistogram(dialog);  // there is some again
        EXPECT_EQ(op->Boxes().size(), 1U);
        EXPECT_THAT(HistogramCsv(), testing::HasSubstr("counts,value,samples"));
    });
}

TEST_F(Histogram, ShowsTheCleanFrameWhereThereIsNoMemoryForItsMarks)
{
    Work([this](HWND /*dialog*/) {
        write::histogram.HistScratchFrame.clear();
        FailAllocation(1);
        const FrameRect rectangle{.left = 2, .top = 2, .right = 5, .bottom = 5};
        ShowHistogramRegion(&rectangle);
        ASSERT_THAT(op->Boxes(), testing::SizeIs(1));
        EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate video memory!");
        EXPECT_EQ(op->Boxes()[0].caption, "Kelvo message");
    });
}

// --- The rectangle ---------------------------------------------------------------------------------------------------

TEST_F(Histogram, MovesItsRectangleByBarsAndByNumbersAlike)
{
    Work([](HWND dialog) {
        EXPECT_TRUE(OperateScroll(dialog, 308, 3));
        EXPECT_TRUE(OperateScroll(dialog, 310, 4));
        EXPECT_TRUE(OperateScroll(dialog, 313, 6));
        EXPECT_TRUE(OperateScroll(dialog, 315, 10));
        EXPECT_EQ(HistSettings.Xposition, 3);
        EXPECT_EQ(HistSettings.Yposition, 4);
        EXPECT_EQ(HistSettings.Xsize, 6);
        EXPECT_EQ(HistSettings.Ysize, 7);  // the bar runs from the bottom: 16 + 1 - 10
        EXPECT_EQ(GetDlgItemText(dialog, kXCentre), "3");
        EXPECT_EQ(GetDlgItemText(dialog, kYCentre), "4");
        EXPECT_EQ(GetDlgItemText(dialog, kWidth), "6");
        EXPECT_EQ(GetDlgItemText(dialog, kHeight), "7");
        Choose(dialog, 19, 15, 20, 16);
        EXPECT_EQ(GetScrollPos(dialog, 308), 19);
        EXPECT_EQ(GetScrollPos(dialog, 310), 15);
        EXPECT_EQ(GetScrollPos(dialog, 313), 20);
        EXPECT_EQ(GetScrollPos(dialog, 315), 1);
    });
}

TEST_F(Histogram, KeepsItsRectangleWhereATextIsNoNumberOrOutside)
{
    Work([](HWND dialog) {
        const HistSettingsRecord before = HistSettings;
        const std::vector<std::string> report = Report(dialog);
        for (const int edit : {kXCentre, kYCentre, kWidth, kHeight}) {
            for (const char* text : {"", "x", "-", "-1", "21", "2147483648", "999999999999"}) {
                SetDlgItemText(dialog, edit, text);
                EXPECT_EQ(HistSettings, before) << edit << " " << text;
            }
        }
        SetDlgItemInt(dialog, kWidth, 0);
        SetDlgItemInt(dialog, kXCentre, 20);
        SetDlgItemInt(dialog, kYCentre, 16);
        SetDlgItemInt(dialog, kHeight, 17);
        EXPECT_EQ(HistSettings, before);
        EXPECT_EQ(Report(dialog), report);
    });
}

TEST_F(Histogram, TellsTheRangeOfANumberWhileItIsTyped)
{
    Work([](HWND dialog) {
        struct Told {
            int edit;
            const char* text;
        };
        for (const Told& told : {Told{kXCentre, "X position range: 0 to 19"},
                                 {kYCentre, "Y position range: 0 to 15"},
                                 {kWidth, "X rectangle range: 1 to 20"},
                                 {kHeight, "Y rectangle range: 1 to 16"}}) {
            FocusDlgItem(dialog, told.edit);
            EXPECT_EQ(StatusText, told.text);
        }
        SetDlgItemText(dialog, kHeight, "400");
        FocusDlgItem(dialog, kExit);
        EXPECT_EQ(StatusText, "Viewing Histogram data");
        EXPECT_EQ(GetDlgItemText(dialog, kHeight), "4");  // what holds
    });
}

TEST_F(Histogram, PutsARectangleThatIsOutsideIntoTheMiddle)
{
    WritePrivateProfileString("Histogram", "Xposition", "19", IniFilePath);  // 19 + 1 is no pixel
    WritePrivateProfileString("Histogram", "Xsize", "1", IniFilePath);
    Work([](HWND dialog) {
        EXPECT_EQ(GetDlgItemText(dialog, kXCentre), "9");
        EXPECT_EQ(GetDlgItemText(dialog, kWidth), "5");
        EXPECT_EQ(GetDlgItemText(dialog, kYCentre), "7");
        EXPECT_EQ(GetDlgItemText(dialog, kHeight), "4");
    });
}

// --- The setup -------------------------------------------------------------------------------------------------------

// The setup opened over the histogram, worked, and left by a button.
class HistogramSetup : public Histogram {
  protected:
    void WorkSetup(const std::function<void(HWND)>& work, int button = kIdOk)
    {
        op->Do([] { DrawHistogram(DialogInFront()); });
        op->Do([] { OperatePress(DialogInFront(), kSetup); });
        op->Do([work] {
            ASSERT_EQ(DialogName(DialogInFront()), "HISTAXIS");
            work(DialogInFront());
        });
        op->Do([button] { OperatePress(DialogInFront(), button); });
        op->Do([] { OperatePress(DialogInFront(), kExit); });
        HistogramDialog(hWndMain);
        EXPECT_TRUE(op->AllDone());
    }
    static std::vector<bool> Enabled(HWND dialog)
    {
        std::vector<bool> enabled;
        for (const int id : {340, 342, 343, 348, 349}) enabled.push_back(DlgItemEnabled(dialog, id));
        return enabled;
    }
};

TEST_F(HistogramSetup, ShowsTheAxesAsTheyAre)
{
    WorkSetup([](HWND dialog) {
        EXPECT_EQ(GetWindowText(dialog), "Histogram Plot Setup");
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 340));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 341));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 344));
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 346));
        EXPECT_FALSE(IsDlgButtonChecked(dialog, 347));
        EXPECT_THAT(Enabled(dialog), ElementsAre(true, false, false, false, false));
        // Columns 8 to 12, rows 7 to 10: each count once.
        EXPECT_EQ(GetDlgItemText(dialog, 342), "2");
        EXPECT_EQ(GetDlgItemText(dialog, 343), "0");
        EXPECT_EQ(GetDlgItemText(dialog, 348), "312");
        EXPECT_EQ(GetDlgItemText(dialog, 349), "248");
    });
}

TEST_F(HistogramSetup, DrawsEachChangeAtOnce)
{
    WorkSetup([](HWND dialog) {
        for (const int id : {341, 347}) OperateCheck(dialog, id, true);
        EXPECT_EQ(HistSettings.Ygridlines, 1);
        EXPECT_EQ(HistSettings.Xgridlines, 1);
        for (const int id : {340, 346}) OperateCheck(dialog, id, false);
        EXPECT_EQ(HistSettings.Yautoscale, 0);
        EXPECT_EQ(HistSettings.Xautoscale, 0);
        EXPECT_THAT(Enabled(dialog), ElementsAre(true, true, true, true, true));
        const std::int64_t before = MemoryRequests();
        SetDlgItemText(dialog, 348, "400");
        EXPECT_EQ(HistSettings.XplotMax, 400);
        EXPECT_GT(MemoryRequests(), before);
        SetDlgItemText(dialog, 349, "250");
        EXPECT_EQ(HistSettings.XplotMin, 250);
        SetDlgItemText(dialog, 342, "65530");
        SetDlgItemText(dialog, 343, "100");
        EXPECT_EQ(HistSettings.YplotMax, 65530);
        EXPECT_EQ(HistSettings.YplotMin, 100);
    });
    EXPECT_EQ(IniKey("Histogram", "YplotMax"), "65530");
    EXPECT_EQ(IniKey("Histogram", "XplotMax"), "400");
}

TEST_F(HistogramSetup, TakesTheDataAgainWhereAnAxisIsToFollowIt)
{
    WorkSetup([](HWND dialog) {
        OperateCheck(dialog, 346, false);
        SetDlgItemText(dialog, 348, "4000");
        OperateCheck(dialog, 346, true);
        EXPECT_EQ(HistSettings.XplotMax, 312);
        EXPECT_EQ(GetDlgItemText(dialog, 348), "312");
        EXPECT_FALSE(DlgItemEnabled(dialog, 348));
    });
}

TEST_F(HistogramSetup, KeepsWhatHoldsWhereATextDoesntSuit)
{
    WorkSetup([](HWND dialog) {
        for (const int id : {340, 346}) OperateCheck(dialog, id, false);
        SetDlgItemText(dialog, 343, "1");
        const HistSettingsRecord before = HistSettings;
        for (const char* text : {"", "many", "65531", "1", "0", "-7", "99999999999"}) SetDlgItemText(dialog, 342, text);
        for (const char* text : {"", "-", "2", "70000"}) SetDlgItemText(dialog, 343, text);
        for (const char* text : {"", "hot", "248", "-5", "nan"}) SetDlgItemText(dialog, 348, text);
        for (const char* text : {"", "hot", "312", "16383", "1e30"}) SetDlgItemText(dialog, 349, text);
        EXPECT_EQ(HistSettings, before);
    });
}

TEST_F(HistogramSetup, ALogarithmicAxisFollowsTheData)
{
    WorkSetup([](HWND dialog) {
        OperateCheck(dialog, 340, false);
        OperatePress(dialog, 345);
        EXPECT_EQ(HistSettings.Yscaling, 1);
        EXPECT_EQ(HistSettings.Yautoscale, 1);
        EXPECT_TRUE(IsDlgButtonChecked(dialog, 340));
        EXPECT_THAT(Enabled(dialog), ElementsAre(false, false, false, false, false));
        OperatePress(dialog, 344);
        EXPECT_EQ(HistSettings.Yscaling, 0);
        EXPECT_THAT(Enabled(dialog), ElementsAre(true, false, false, false, false));
    });
}

TEST_F(HistogramSetup, TellsTheRangeOfWhatIsTyped)
{
    WorkSetup([](HWND dialog) {
        for (const int id : {340, 346}) OperateCheck(dialog, id, false);
        for (const int id : {342, 343}) {
            FocusDlgItem(dialog, id);
            EXPECT_EQ(StatusText, "Number of elements range: 0 to 65530");
        }
        for (const int id : {348, 349}) {
            FocusDlgItem(dialog, id);
            EXPECT_EQ(StatusText, "Intensity range: 0 to 16383");
        }
    });
}

// A value is shown rounded: read back, it would be another count.
TEST_F(HistogramSetup, LeavesAnEndThatNobodyTypedAsItIs)
{
    write::head.VoltsLow = -1.2345F;
    write::head.VoltsHigh = 3.21F;
    WorkSetup([](HWND dialog) {
        OperateCheck(dialog, 346, false);
        const HistSettingsRecord before = HistSettings;
        ASSERT_TRUE(OperatePick(dialog, 1256, 1));
        EXPECT_EQ(DisplayUnit, kUnitVolts);
        FocusDlgItem(dialog, 348);
        FocusDlgItem(dialog, 349);
        FocusDlgItem(dialog, kIdOk);
        EXPECT_EQ(HistSettings, before);
    });
}

TEST_F(HistogramSetup, CancelBringsAxesAndUnitBack)
{
    HistSettingsRecord before;
    WorkSetup(
        [&](HWND dialog) {
            before = HistSettings;
            for (const int id : {341, 347}) OperateCheck(dialog, id, true);
            for (const int id : {340, 346}) OperateCheck(dialog, id, false);
            SetDlgItemText(dialog, 348, "400");
            SetDlgItemText(dialog, 342, "50");
            OperatePress(dialog, 345);
            OperatePick(dialog, 1256, 1);
        },
        kIdCancel);
    EXPECT_EQ(HistSettings, before);
    EXPECT_EQ(DisplayUnit, kUnitCounts);
    // Written all the same, as they were.
    EXPECT_EQ(IniKey("Histogram", "XplotMax"), "312");
    EXPECT_EQ(IniKey("Histogram", "Yscaling"), "0");
}

}  // namespace

}  // namespace kelvo

#include "output/print_image.h"

#include "dibapi32/dibapi32.h"
#include "display/color_map.h"
#include "output/print_page.h"
#include "output/printed_page.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "ui/status.h"
#include "video/held_picture.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Not;

constexpr int kWidth = 40;
constexpr int kHeight = 16;

// Counts 0 to 639: with the table of these tests the gray value is a third of it, so that none is white.
std::vector<std::int16_t> Counts()
{
    std::vector<std::int16_t> counts;
    for (int i = 0; i < kWidth * kHeight; ++i) counts.push_back(static_cast<std::int16_t>(i));
    return counts;
}

std::vector<std::uint32_t> Grays()
{
    std::vector<std::uint32_t> grays;
    for (std::uint32_t i = 0; i < kWidth * kHeight; ++i) grays.push_back(i / 3 * 0x010101);
    return grays;
}

class PrintImageTest : public PictureTest {
  protected:
    PrintImageTest()
    {
        UseFile();
        write::display.DisplayLut.resize(65535);
        for (std::size_t i = 0; i < DisplayLut.size(); ++i) {
            write::display.DisplayLut[i] = static_cast<std::uint8_t>(i / 3);
        }
        View(kWidth, kHeight, Counts());
    }
    void UseFile() { WritePrivateProfileString("Printer", "File", pdf, DefaultDir + "/platform.ini"); }
    static void UseNoPrinter() { WritePrivateProfileString("Printer", "File", "", DefaultDir + "/platform.ini"); }

    // Each step works on the dialog in front.
    int Run(std::vector<std::function<void(HWND)>> steps, HWND window = hWndMain)
    {
        for (auto& step : steps) op->Do([step = std::move(step)] { step(DialogInFront()); });
        const int result = PrintImage(window);
        EXPECT_TRUE(op->AllDone());
        EXPECT_FALSE(ModalIsOpen());
        EXPECT_FALSE(PrintDib);
        EXPECT_FALSE(PictureIsHeld());
        return result;
    }
    static std::function<void(HWND)> Press(int id)
    {
        return [id](HWND dialog) { EXPECT_TRUE(OperatePress(dialog, id)) << id; };
    }
    static std::function<void(HWND)> Type(int id, std::string text)
    {
        return [id, text](HWND dialog) { EXPECT_TRUE(OperateText(dialog, id, text)) << id; };
    }
    static std::vector<int> Enabled(HWND dialog, int first, int last)
    {
        std::vector<int> ids;
        for (int id = first; id <= last; ++id) {
            if (DlgItemEnabled(dialog, id)) ids.push_back(id);
        }
        return ids;
    }
    Dots Inked() const { return kelvo::Inked(DotsOfPage(pdf, 150)); }

    std::string pdf = directory / "page.pdf";
};

TEST_F(PrintImageTest, OpensWithBestFitACaptionBelowAndNoAxes)
{
    EXPECT_EQ(Run({[](HWND dialog) {
                       EXPECT_EQ(DialogName(dialog), "DIBPRINT");
                       EXPECT_EQ(GetWindowText(dialog), "Print Bitmap Image");
                       EXPECT_TRUE(IsDlgButtonChecked(dialog, 101));
                       EXPECT_TRUE(IsDlgButtonChecked(dialog, 110));
                       EXPECT_THAT(Enabled(dialog, 101, 110), ElementsAre(101, 102, 103, 108, 109, 110));
                       EXPECT_EQ(FocusedDlgItem(dialog), 108);
                       EXPECT_EQ(StatusText, "Select bitmap printing options");
                       EXPECT_TRUE(PrintDib);
                       EXPECT_TRUE(PictureIsHeld());
                   },
                   Press(2)}),
              0);
}

TEST_F(PrintImageTest, ScaleAloneHasAxes)
{
    Run({Press(103), [](HWND dialog) { EXPECT_THAT(Enabled(dialog, 104, 107), ElementsAre(104, 105, 106, 107)); },
         Press(102), [](HWND dialog) { EXPECT_THAT(Enabled(dialog, 104, 107), IsEmpty()); }, Press(103), Press(101),
         [](HWND dialog) { EXPECT_THAT(Enabled(dialog, 104, 107), IsEmpty()); }, Press(2)});
}

TEST_F(PrintImageTest, PrintsTheFrameOnViewAsItIsShown)
{
    EXPECT_EQ(Run({Press(1)}), 1);
    EXPECT_EQ(Blocks(Inked(), kWidth, kHeight), Grays());
    EXPECT_EQ(StatusText, " Printed into " + pdf);
    EXPECT_THAT(op->Texts("print", "text"), ElementsAre("Kelvo bitmap"));
}

TEST_F(PrintImageTest, AnEmptyCaptionPrintsTheImageAsItIs)
{
    EXPECT_EQ(Run({Type(108, ""), Press(109), Press(1)}), 1);
    EXPECT_EQ(Blocks(Inked(), kWidth, kHeight), Grays());
}

TEST_F(PrintImageTest, ACaptionBelowGrowsTheImage)
{
    EXPECT_EQ(Run({Type(108, "."), Press(1)}), 1);
    const Dots inked = Inked();
    const int block = inked.width / kWidth;
    EXPECT_GT(inked.height, kHeight * block + 2 * block);
    // The first kHeight rows are the image.
    Dots image = inked;
    image.height = static_cast<int>(inked.width * kHeight / kWidth);
    image.pixels.resize(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
    EXPECT_EQ(Blocks(image, kWidth, kHeight), Grays());
}

TEST_F(PrintImageTest, ACaptionAtTheBottomIsInTheImage)
{
    EXPECT_EQ(Run({Type(108, "."), Press(109), Press(1)}), 1);
    const Dots inked = Inked();
    EXPECT_NEAR(inked.height, inked.width * kHeight / kWidth, 3);
    EXPECT_THAT(Blocks(inked, kWidth, kHeight), Contains(0xFFFFFF)) << "the white behind its letters";
}

TEST_F(PrintImageTest, WithScaleAnEmptyFieldAndOneBelowOneAreOne)
{
    EXPECT_EQ(Run({Press(103), Type(104, ""), Type(106, "-3"), Press(1)}), 1);
    // 20 x 16 of 1200 dots an inch, behind a margin of 472.
    const Dots dots = kelvo::Inked(DotsOfPage(pdf, 1200, 600));
    EXPECT_NEAR(dots.width, kWidth, 1);
    EXPECT_NEAR(dots.height, kHeight, 1);
}

TEST_F(PrintImageTest, ScalesAreReadFromTheFields)
{
    EXPECT_EQ(Run({Press(103), Type(104, "80"), Type(106, "40"), Press(1)}), 1);
    const Dots dots = Inked();
    EXPECT_NEAR(dots.width, kWidth * 80 / 8, 1);
    EXPECT_NEAR(dots.height, kHeight * 40 / 8, 1);
}

TEST_F(PrintImageTest, ACaptionHasAtMostAHundredAndNineteenCharacters)
{
    Run({[](HWND dialog) {
             EXPECT_TRUE(OperateText(dialog, 108, std::string(119, 'i')));
             EXPECT_FALSE(OperateText(dialog, 108, std::string(120, 'j'))) << "the field doesn't take it whole";
         },
         Press(2)});
}

TEST_F(PrintImageTest, CancelPrintsNothing)
{
    EXPECT_EQ(Run({Press(2)}), 0);
    EXPECT_EQ(Run({[](HWND dialog) { OperateClose(dialog); }}), 0);
    EXPECT_FALSE(FileExists(pdf));
    EXPECT_THAT(StatusText, testing::HasSubstr("Viewing Image"));
}

TEST_F(PrintImageTest, WithoutFileAndCameraNothingOpensAndTheStatusLineSaysWhy)
{
    write::frames.ViewingFile = 0;
    EXPECT_EQ(Run({}), 0);
    EXPECT_EQ(StatusText, "There is nothing to print: open an image or turn the camera on");
    EXPECT_THAT(op->Texts("dialog", "name"), IsEmpty());
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(PrintImageTest, WithoutItsDialogIsTold)
{
    SetFault("load dialog DIBPRINT", true);
    EXPECT_EQ(Run({}), 0);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_EQ(op->Boxes()[0].text, "Unable to display dialog");
    EXPECT_EQ(op->Boxes()[0].caption, "System Error");
}

TEST_F(PrintImageTest, WithoutAPictureNothingOpens)
{
    FailAllocation(1);
    EXPECT_EQ(Run({}), 0);
    ASSERT_EQ(op->Boxes().size(), 1U);
    EXPECT_EQ(op->Boxes()[0].text, "Failure to allocate video memory!");
    EXPECT_THAT(op->Texts("dialog", "name"), IsEmpty());
}

TEST_F(PrintImageTest, AFailedPrintIsToldOnTheStatusLine)
{
    SetFault("start printing", true);
    EXPECT_EQ(Run({Press(1)}), 1);
    EXPECT_EQ(StatusText, "Printer: StartDoc failed!");
    EXPECT_THAT(op->Boxes(), IsEmpty());
    SetFault("start printing", false);
    SetFault("end printing", true);
    EXPECT_EQ(Run({Press(1)}), 1);
    EXPECT_EQ(StatusText, "Printer: EndDoc failed!");
}

TEST_F(PrintImageTest, AStoppedPrintIsToldOnTheStatusLine)
{
    SetFault("printer busy", true);
    EXPECT_EQ(Run({Press(1),
                   [](HWND dialog) {
                       EXPECT_EQ(DialogName(dialog), "PRINTING");
                       EXPECT_TRUE(OperatePress(dialog, 2));
                   }}),
              1);
    EXPECT_EQ(StatusText, " Printing was stopped: nothing is printed");
    EXPECT_FALSE(FileExists(pdf));
}

TEST_F(PrintImageTest, ThePointerIsTheHourglassWhileItPrints)
{
    SetFault("printer busy", true);
    Run({Press(1), [](HWND) {
             EXPECT_EQ(CurrentPointer(), Pointer::kHourglass);
             SetFault("printer busy", false);
         }});
    EXPECT_EQ(CurrentPointer(), Pointer::kArrow);
}

TEST_F(PrintImageTest, APageTooLongForThePaperIsAskedAbout)
{
    View(2, 8, std::vector<std::int16_t>(16, 9));
    op->Answer({Button::kCancel, Button::kOk});
    EXPECT_EQ(Run({Press(1),
                   [this](HWND dialog) {
                       EXPECT_EQ(DialogName(dialog), "DIBPRINT") << "back in the dialog";
                       EXPECT_FALSE(FileExists(pdf));
                   },
                   Press(1)}),
              1);
    ASSERT_EQ(op->Boxes().size(), 2U);
    EXPECT_EQ(op->Boxes()[0].text, "The picture is larger than the paper: what lies beyond it isn't printed.");
    EXPECT_THAT(op->Boxes()[0].buttons, ElementsAre("ok", "cancel"));
    EXPECT_TRUE(FileExists(pdf));
}

TEST_F(PrintImageTest, AScaleThatReachesBeyondThePageIsAskedAbout)
{
    op->Answer({Button::kCancel});
    EXPECT_EQ(Run({Press(103), Type(104, "2000000000"), Press(1), Press(2)}), 0);
    EXPECT_EQ(op->Boxes().size(), 1U);
}

TEST_F(PrintImageTest, WithoutAPrinterThePageBecomesAPdfFile)
{
    UseNoPrinter();
    const std::string chosen = directory / "chosen.pdf";
    EXPECT_EQ(Run({[](HWND dialog) {
                       EXPECT_EQ(GetDlgItemText(dialog, kPrintDevice), "There is no printer.");
                       EXPECT_TRUE(IsDlgButtonChecked(dialog, kPrintToFile));
                       EXPECT_FALSE(DlgItemEnabled(dialog, kPrintToFile));
                   },
                   Press(1), [](HWND) { EXPECT_TRUE(CancelFileDialog()); },
                   [](HWND dialog) { EXPECT_EQ(DialogName(dialog), "DIBPRINT") << "back in the dialog"; }, Press(1),
                   [&](HWND) { EXPECT_TRUE(ChooseFiles({directory / "chosen"})); }}),
              1);
    EXPECT_EQ(Blocks(kelvo::Inked(DotsOfPage(chosen, 150)), kWidth, kHeight), Grays());
    EXPECT_EQ(StatusText, " Printed into " + chosen);
}

TEST_F(PrintImageTest, APdfFileCanBeChosenInPlaceOfThePrinter)
{
    const std::string chosen = directory / "chosen.pdf";
    EXPECT_EQ(Run({[this](HWND dialog) {
                       EXPECT_EQ(GetDlgItemText(dialog, kPrintDevice), "PDF on " + pdf);
                       EXPECT_FALSE(IsDlgButtonChecked(dialog, kPrintToFile));
                       EXPECT_TRUE(OperateCheck(dialog, kPrintToFile, true));
                   },
                   Press(1), [&](HWND) { EXPECT_TRUE(ChooseFiles({chosen})); }}),
              1);
    EXPECT_TRUE(FileExists(chosen));
    EXPECT_FALSE(FileExists(pdf));
}

TEST_F(PrintImageTest, APrintoutFromAnotherWindowIsAsItIsSeenAndHasNoCaption)
{
    RegisterWindowClass({.name = "PLOT", .procedure = nullptr, .icon = {}});
    const HWND plot = CreateChildWindow("PLOT", hWndMain, {0, 0, 40, 30});
    FillSurface(plot, {0, 0, 40, 30}, 0x000000FF);
    FillSurface(plot, {10, 0, 20, 15}, 0x00FF0000);
    EXPECT_EQ(Run({[](HWND dialog) {
                       EXPECT_THAT(Enabled(dialog, 101, 110), ElementsAre(101, 102, 103));
                       EXPECT_EQ(FocusedDlgItem(dialog), 101);
                       SetDlgItemText(dialog, 108, "not to be seen");
                   },
                   Press(1)},
                  plot),
              1);
    const std::vector<std::uint32_t> blocks = Blocks(Inked(), 4, 2);
    EXPECT_THAT(blocks, ElementsAre(0xFF0000, 0x0000FF, 0xFF0000, 0xFF0000, 0xFF0000, 0xFF0000, 0xFF0000, 0xFF0000));
}

TEST_F(PrintImageTest, TheMainWindowShowsWhatWillBePrinted)
{
    Run({[](HWND) {
             // Pixel 5 of row 8 at a zoom of 3, from the top, as there is no panel: count 325, gray 108.
             EXPECT_EQ(ScreenColor({5 * 3 + 1, 8 * 3 + 1}), 108U * 0x010101);
         },
         Press(2)});
}

TEST_F(PrintImageTest, TheSettingsAndTheFrameStayAsTheyWere)
{
    const std::vector<std::uint8_t> frame = ImageBuffer;
    const std::string ini = ReadWholeFile(IniFilePath, 100000).value_or("");
    Run({Press(103), Type(104, "2"), Type(108, "x"), Press(2)});
    Run({Press(102), Type(108, "x"), Press(1)});
    EXPECT_EQ(ImageBuffer, frame);
    EXPECT_EQ(ReadWholeFile(IniFilePath, 100000).value_or(""), ini);
}

}  // namespace
}  // namespace kelvo

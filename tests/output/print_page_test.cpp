// A page is read back by other tools (printed_page.h): each pixel of the picture has its block of dots.
#include "output/print_page.h"

#include "dibapi32/dibapi32.h"
#include "output/page_layout.h"
#include "output/printed_page.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "state/windows.h"
#include "support/full_disk.h"
#include "support/picture_fixture.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>

#include <gmock/gmock.h>

#include <filesystem>
#include <random>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr int kWidth = 40;
constexpr int kHeight = 30;

// Colours at random, none of them white: the edges of the picture are seen on the page.
DeviceBitmap Picture(int width = kWidth, int height = kHeight)
{
    std::mt19937 random(3);
    DeviceBitmap picture{.width = width, .height = height, .pixels = {}};
    for (int i = 0; i < width * height; ++i) {
        picture.pixels.push_back(static_cast<std::uint32_t>(random() % 0xFFFFFF));
    }
    return picture;
}

class PrintPage : public PictureTest {
  protected:
    PrintPage() { WritePrivateProfileString("Printer", "File", pdf, DefaultDir + "/platform.ini"); }

    int Print(int option = kPrintBestFit, int xScale = 1, int yScale = 1) const
    {
        return PrintDibPage(picture, option, xScale, yScale, "Kelvo bitmap");
    }
    std::string Pdf() const { return ReadWholeFile(pdf, std::size_t{1} << 26).value_or(std::string()); }
    Dots Page(int dotsPerInch = 150) const { return DotsOfPage(pdf, dotsPerInch); }
    // A document that isn't whole leaves nothing, be it under another name.
    std::vector<std::string> FilesLeft() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            const std::string name = entry.path().filename();
            if (name.find("page") != std::string::npos) names.push_back(name);
        }
        return names;
    }

    std::string pdf = directory / "page.pdf";
    Dib picture = DibFromBitmap(Picture());
};

TEST_F(PrintPage, EachPixelHasItsBlockInItsColour)
{
    ASSERT_EQ(Print(), 0);
    const Dots dots = Inked(Page());
    // As wide as what can be printed on, here at 150 dots an inch.
    const PrinterPage page = PrinterDevice()->Page();
    EXPECT_NEAR(dots.width, 150.0 * page.width / page.xPerInch, 2);
    EXPECT_NEAR(dots.height, dots.width * kHeight / kWidth, 2);
    EXPECT_EQ(Blocks(dots, kWidth, kHeight), Picture().pixels);
}

TEST_F(PrintPage, GrayIsExactToo)
{
    DeviceBitmap grays{.width = 16, .height = 16, .pixels = {}};
    for (std::uint32_t i = 0; i < 256; ++i) grays.pixels.push_back((i < 255 ? i : 254) * 0x010101);
    picture = DibFromBitmap(grays);
    ASSERT_EQ(Print(), 0);
    EXPECT_EQ(Blocks(Inked(Page()), 16, 16), grays.pixels);
}

TEST_F(PrintPage, StretchedFillsThePage)
{
    ASSERT_EQ(Print(kPrintStretch), 0);
    const Dots dots = Inked(Page());
    const PrinterPage page = PrinterDevice()->Page();
    EXPECT_NEAR(dots.width, 150.0 * page.width / page.xPerInch, 2);
    EXPECT_NEAR(dots.height, 150.0 * page.height / page.yPerInch, 2);
    EXPECT_EQ(Blocks(dots, kWidth, kHeight), Picture().pixels);
}

TEST_F(PrintPage, ScaledGivesEachPixelSoManyOfThePrinters)
{
    ASSERT_EQ(Print(kPrintScale, 80, 160), 0);  // 1200 an inch
    const Dots dots = Inked(Page());
    EXPECT_NEAR(dots.width, kWidth * 80 * 150 / 1200, 2);
    EXPECT_NEAR(dots.height, kHeight * 160 * 150 / 1200, 2);
    EXPECT_EQ(Blocks(dots, kWidth, kHeight), Picture().pixels);
}

TEST_F(PrintPage, APageHasMarginsThatPrintersCantReach)
{
    ASSERT_EQ(Print(kPrintStretch), 0);
    const Dots page = Page();
    const int marginDots = static_cast<int>(10 / 25.4 * 150);  // 10 mm
    const Dots inked = Inked(page);
    EXPECT_NEAR(page.width - inked.width, 2 * marginDots, 3);
    EXPECT_NEAR(page.height - inked.height, 2 * marginDots, 3);
    // A4, or Letter where the locale measures in inches.
    EXPECT_NEAR(page.width, page.height > 1700 ? 1240 : 1275, 2);
}

TEST_F(PrintPage, WhatReachesBeyondThePageIsLeftOut)
{
    const DeviceBitmap tall = Picture(4, 12);
    picture = DibFromBitmap(tall);
    const PrinterPage page = PrinterDevice()->Page();
    ASSERT_EQ(Print(), 0);
    // Each pixel is a quarter of the page's width, down too: as many rows as fit, to the nearest whole one.
    const int rows = static_cast<int>(page.height / (page.width / 4.0) + 0.5);
    ASSERT_LT(rows, 12);
    const std::vector<std::uint32_t> shown(tall.pixels.begin(), tall.pixels.begin() + std::ptrdiff_t{4} * rows);
    EXPECT_EQ(Blocks(Inked(Page()), 4, rows), shown);
}

TEST_F(PrintPage, NothingInTheFileIsLossy)
{
    ASSERT_EQ(Print(), 0);
    const std::string bytes = Pdf();
    EXPECT_THAT(bytes, StartsWith("%PDF-"));
    EXPECT_THAT(bytes, HasSubstr("/Subtype /Image"));
    EXPECT_THAT(bytes, HasSubstr("/FlateDecode"));
    EXPECT_THAT(bytes, Not(HasSubstr("DCTDecode")));
    EXPECT_THAT(bytes, Not(HasSubstr("JPXDecode")));
    EXPECT_THAT(bytes, Not(HasSubstr("/Interpolate true")));
}

TEST_F(PrintPage, ThePictureIsKeptAsSmallAsItsPixels)
{
    DeviceBitmap even{
        .width = 640, .height = 512, .pixels = std::vector<std::uint32_t>(std::size_t{640} * 512, 0x102030)};
    picture = DibFromBitmap(even);
    ASSERT_EQ(Print(), 0);
    EXPECT_LT(Pdf().size(), 20000U);  // and not one of the printer's 1200 dots an inch
}

TEST_F(PrintPage, ADeviceWithoutBandingGetsTheOnePassPrintAndANewFrame)
{
    SetFault("printer busy", true);
    op->Do([] {
        HWND const dialog = DialogInFront();
        EXPECT_EQ(GetDlgItemText(dialog, 403), "Sending bitmap to printer...");
        SetFault("printer busy", false);
    });
    SetFaultOnce("print page", 2);  // it is asked once
    ASSERT_EQ(Print(), 0);
    EXPECT_EQ(QuestionsUntilFault("print page"), 1);
    EXPECT_TRUE(op->AllDone());
}

TEST_F(PrintPage, TheDialogSaysWhatIsPrintedWhere)
{
    SetFault("printer busy", true);
    op->Do([this] {
        HWND const dialog = DialogInFront();
        EXPECT_EQ(DialogName(dialog), "PRINTING");
        EXPECT_EQ(GetDlgItemText(dialog, 401), "Printing 'A name of thirty-one characters'");
        EXPECT_EQ(GetDlgItemText(dialog, 402), "on PDF on " + pdf);
        SetFault("printer busy", false);
    });
    EXPECT_EQ(PrintDibPage(picture, kPrintBestFit, 1, 1, "A name of thirty-one characters and more"), 0);
    EXPECT_TRUE(op->AllDone());
    EXPECT_THAT(op->Texts("dialog", "text"), ElementsAre("Printing"));
    EXPECT_THAT(op->Texts("print", "text"), ElementsAre("A name of thirty-one characters and more"));
}

TEST_F(PrintPage, ANullBitmapIsAnInvalidHandle)
{
    EXPECT_EQ(PrintDibPage(nullptr, kPrintBestFit, 1, 1, "x"), 20);
    EXPECT_THAT(FilesLeft(), IsEmpty());
}

TEST_F(PrintPage, ABitmapThatCantBeReadIsAFailedLock)
{
    FailAllocation(1);
    EXPECT_EQ(Print(), 3);
    EXPECT_THAT(FilesLeft(), IsEmpty());
}

TEST_F(PrintPage, WithoutAPrinterThereIsNoDevice)
{
    WritePrivateProfileString("Printer", "File", "", DefaultDir + "/platform.ini");
    EXPECT_FALSE(PrinterDevice());
    EXPECT_EQ(Print(), 6);
}

TEST_F(PrintPage, EachStepOfThePrintHasItsNumber)
{
    struct Step {
        const char* fault;
        int error;
    };
    constexpr Step steps[] = {{"printer", 6},    {"abort procedure", 13}, {"start printing", 11},
                              {"print bits", 9}, {"print page", 15},      {"end printing", 17}};
    for (const Step& step : steps) {
        SetFault(step.fault, true);
        EXPECT_EQ(Print(), step.error) << step.fault;
        SetFault(step.fault, false);
        EXPECT_THAT(FilesLeft(), IsEmpty()) << step.fault;
    }
    EXPECT_THAT(op->Texts("print", "text"), IsEmpty());
    const std::size_t steps4 = op->Texts("dialog", "name").size();
    EXPECT_EQ(op->Texts("close", "name").size(), steps4) << "the dialog is closed each time";
}

TEST_F(PrintPage, AFileThatCantBeMadeCantBeStarted)
{
    WritePrivateProfileString("Printer", "File", directory / "no/such/page.pdf", DefaultDir + "/platform.ini");
    EXPECT_EQ(Print(), 11);
}

TEST_F(PrintPage, WithoutMemoryForThePageTheBitsFail)
{
    int failed = 0;
    for (int n = 2; n < 10; ++n) {
        FailAllocation(n);
        const int error = Print();
        FailAllocation(0);
        if (error == 0) break;
        EXPECT_EQ(error, 9);
        ++failed;
    }
    EXPECT_EQ(failed, 1);
}

TEST_F(PrintPage, AFullDiskLeavesTheFormerPage)
{
    PutFile(pdf, "before");
    const FullDisk disk(500);
    EXPECT_EQ(Print(), 17);
    EXPECT_EQ(Pdf(), "before");
    EXPECT_THAT(FilesLeft(), ElementsAre("page.pdf"));
}

TEST_F(PrintPage, ThePdfFileOfTheOperatorsChoiceIsThePrinter)
{
    const std::string chosen = directory / "chosen.pdf";
    EXPECT_EQ(PrintDibPage(picture, kPrintBestFit, 1, 1, "x", chosen), 0);
    EXPECT_THAT(FilesLeft(), IsEmpty());
    EXPECT_EQ(Blocks(Inked(DotsOfPage(chosen, 150)), kWidth, kHeight), Picture().pixels);
}

TEST_F(PrintPage, AnyCommandOfTheDialogStopsIt)
{
    PutFile(pdf, "before");
    for (const int command : {2, 1, 9}) {
        SetFault("printer busy", true);
        op->Do([command] { SendMessage(DialogInFront(), WM_COMMAND, MakeLong(command, 0), 1); });
        EXPECT_EQ(Print(), 0);
        EXPECT_EQ(PrintAborted, 1);
        EXPECT_EQ(Pdf(), "before");
        EXPECT_THAT(FilesLeft(), ElementsAre("page.pdf"));
    }
    EXPECT_THAT(op->Texts("print", "text"), IsEmpty());
    SetFault("printer busy", false);
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(PrintAborted, 0) << "of the next print none is left";
    EXPECT_THAT(Pdf(), StartsWith("%PDF-"));
}

// Whatever widget shows the dialog's button, as soon as it is there.
void ClickTheButtonOfPrinting(QTimer& timer)
{
    QObject::connect(&timer, &QTimer::timeout, &timer, [&timer] {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            auto* const button = window->objectName() == QLatin1String("PRINTING") && window->isVisible()
                                     ? window->findChild<QPushButton*>()
                                     : nullptr;
            if (button == nullptr) continue;
            const QPointF middle = button->rect().center();
            for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
                const auto pressed = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
                QApplication::postEvent(button, new QMouseEvent(type, middle, button->mapToGlobal(middle),
                                                                Qt::LeftButton, pressed, Qt::NoModifier));
            }
            timer.stop();
        }
    });
    timer.start(0);
}

TEST_F(PrintPage, APressOfTheButtonReachesItWhileThePrintGoesOn)
{
    QTimer timer;
    ClickTheButtonOfPrinting(timer);
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(PrintAborted, 1);
    EXPECT_THAT(FilesLeft(), IsEmpty());
}

TEST_F(PrintPage, NoOtherInputIsHandledMeanwhile)
{
    int commands = 0;
    QPushButton other;
    QObject::connect(&other, &QPushButton::clicked, [&commands] { ++commands; });
    other.show();
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const auto pressed = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
        QApplication::postEvent(
            &other, new QMouseEvent(type, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, pressed, Qt::NoModifier));
    }
    EXPECT_EQ(Print(), 0);
    EXPECT_EQ(commands, 0);
    EXPECT_THAT(FilesLeft(), ElementsAre("page.pdf"));
}

TEST_F(PrintPage, WithoutItsDialogThePrintGoesOn)
{
    SetFault("load dialog PRINTING", true);
    EXPECT_EQ(Print(), 0);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    EXPECT_THAT(FilesLeft(), ElementsAre("page.pdf"));
}

}  // namespace
}  // namespace kelvo

// The dialogs BUF_GRAF and GRAPH, worked as an operator works them, over host frames that a test has made.
#include "analysis/frame_graph_dialog.h"

#include "analysis/frame_graph_settings_write.h"
#include "analysis/frame_graph_window.h"
#include "display/display_pipeline.h"
#include "display/units.h"
#include "grabber/host_frames_write.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/front.h"
#include "platform/help.h"
#include "platform/memory.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "support/picture_fixture.h"
#include "support/stored_files.h"
#include "ui/status.h"
#include "video/held_picture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kColumns = 32;
constexpr int kRows = 24;
constexpr int kRow = 1382;
constexpr int kColumn = 1383;
constexpr int kLow = 1384;
constexpr int kHigh = 1385;
constexpr int kFirst = 1386;
constexpr int kLast = 1387;
constexpr int kAutoscale = 1389;
constexpr int kExit = 1620;
constexpr int kGraph = 1622;

class FrameGraphDialog : public PictureTest {
  protected:
    FrameGraphDialog()
    {
        PutFile(directory / "kelvo.ini", "[Graphics]\nPixelRow=10\nPixelCol=20\n");
        Store(5);
    }
    // The pixel at row 10, column 20 has the counts 1000, 1007, 1014, ...; all others 5.
    static void Store(int frames)
    {
        write::hostFrames.HostFrames.clear();
        for (int frame = 0; frame < frames; ++frame) {
            std::vector<std::int16_t> counts(kColumns * kRows, 5);
            counts[10 * kColumns + 20] = static_cast<std::int16_t>(1000 + 7 * frame);
            write::hostFrames.HostFrames.push_back(std::move(counts));
        }
        write::buffer.FramesInBuffer = frames;
    }
    // Opens the dialog and works it step by step; its window is closed in the end.
    int Run(std::initializer_list<std::function<void(HWND)>> steps)
    {
        for (const auto& step : steps) {
            op->Do([step] { step(DialogInFront()); });
        }
        op->Do([] {
            if (DialogName(DialogInFront()) == "BUF_GRAF") OperateClose(DialogInFront());
        });
        return BufferGraphDialog(hWndMain);
    }
    // What the operator is told when he asks for the graph, after such a step.
    std::string Refusal(const std::function<void(HWND)>& step)
    {
        const std::size_t before = op->Boxes().size();
        Run({step, [](HWND dialog) { OperatePress(dialog, kGraph); },
             [](HWND dialog) { EXPECT_EQ(DialogName(dialog), "BUF_GRAF"); }});
        const std::vector<TestOperator::Box> boxes = op->Boxes();
        EXPECT_THAT(boxes, SizeIs(before + 1));
        return boxes.empty() ? std::string() : boxes.back().caption + ": " + boxes.back().text;
    }
    static void ChooseStore(HWND dialog) { OperatePress(dialog, kGraphHostFrames); }
    static void Leave(HWND dialog) { OperatePress(dialog, kExit); }
    static std::string Text(int id) { return GetDlgItemText(DialogInFront(), id); }
    std::string PutFrames(int columns, int rows, int frames) const
    {
        std::vector<std::vector<std::int16_t>> all;
        for (int frame = 0; frame < frames; ++frame) {
            all.emplace_back(static_cast<std::size_t>(columns * rows), static_cast<std::int16_t>(100 + frame * frame));
        }
        const std::string path = directory / "other.buf";
        ImageHeaderRecord header = PlainHeader(columns, rows);
        header.DisplayLow = 50;
        header.DisplayHigh = 4000;
        WriteImageFile(path, header, all);
        return path;
    }
    // Chooses the file of source 1381.
    static void ChooseFile(HWND dialog) { OperatePress(dialog, kGraphFile); }
};

TEST_F(FrameGraphDialog, OpensWithTheSettingsAndTheHostFrames)
{
    EXPECT_EQ(Run({[](HWND dialog) {
                  EXPECT_EQ(DialogName(dialog), "BUF_GRAF");
                  EXPECT_EQ(GetWindowText(dialog), "Graph selected buffer board data");
                  const std::pair<int, const char*> kTexts[] = {{kRow, "10"},     {kColumn, "20"}, {kLow, "0"},
                                                                {kHigh, "16383"}, {kFirst, "0"},   {kLast, "4"}};
                  for (const auto& [id, text] : kTexts) EXPECT_EQ(GetDlgItemText(dialog, id), text) << id;
                  EXPECT_FALSE(DlgItemEnabled(dialog, kLow));
                  EXPECT_FALSE(DlgItemEnabled(dialog, kHigh));
                  EXPECT_TRUE(IsDlgButtonChecked(dialog, kAutoscale));
                  EXPECT_FALSE(IsDlgButtonChecked(dialog, kGraphHostFrames));
                  EXPECT_FALSE(IsDlgButtonChecked(dialog, kGraphFile));
                  EXPECT_EQ(StatusText, *ResourceString(31));
                  EXPECT_TRUE(PictureIsHeld());
              }}),
              0);
    EXPECT_EQ(StatusText, *ResourceString(1));
    EXPECT_FALSE(PictureIsHeld());
}

TEST_F(FrameGraphDialog, LeavesEverythingAsItWasWhereNothingIsGraphed)
{
    ReadGraphSettings();
    EXPECT_EQ(Run({[](HWND dialog) { OperateText(dialog, kRow, "3"); },
                   [](HWND dialog) { OperateCheck(dialog, kAutoscale, false); }, ChooseStore, Leave}),
              1);
    EXPECT_EQ(PixelRow, 10);
    EXPECT_EQ(Autoscale, 1);
    EXPECT_EQ(GraphSource, 0);
    EXPECT_EQ(IniKey("Graphics", "Autoscale"), "missing");
}

// ---- The checks, in their order: each case fails at its own and would fail at those behind it

TEST_F(FrameGraphDialog, AsksForAStartFrameOfTheSource)
{
    Store(0);
    EXPECT_EQ(Refusal([](HWND) {}), "Kelvo message: Min Frame range: 0 to 0");
}

TEST_F(FrameGraphDialog, AsksForAnEndFrameBehindTheStart)
{
    EXPECT_EQ(Refusal([](HWND dialog) {
                  OperateCheck(dialog, kAutoscale, false);
                  OperateText(dialog, kLow, "16383");
                  OperateText(dialog, kFirst, "3");
                  OperateText(dialog, kLast, "3");
              }),
              "Kelvo message: Max Frame must be in range: 0 to 4");
}

TEST_F(FrameGraphDialog, RefusesTheFrameBehindTheLast)
{
    EXPECT_EQ(Refusal([](HWND dialog) { OperateText(dialog, kLast, "5"); }),
              "Kelvo message: Max Frame must be in range: 0 to 4");
}

TEST_F(FrameGraphDialog, RefusesARangeOfTwoCountsWithoutAutoscale)
{
    const auto limits = [](const char* high) {
        return [high](HWND dialog) {
            OperateCheck(dialog, kAutoscale, false);
            OperateText(dialog, kLow, "1000");
            OperateText(dialog, kHigh, high);
            OperateText(dialog, kLast, "1");
        };
    };
    EXPECT_EQ(Refusal(limits("1001")), "QVF Vantir: Max & min intensity must differ by at least 3.");
    EXPECT_EQ(Refusal(limits("1002")), "Kelvo message: There must be at least 3 frames to graph.");
    // The limits stand in the file by now, and are at it again; with autoscale they don't count.
    EXPECT_EQ(Refusal([](HWND dialog) {
                  OperateText(dialog, kHigh, "999");
                  OperateCheck(dialog, kAutoscale, true);
                  OperateText(dialog, kLast, "1");
              }),
              "Kelvo message: There must be at least 3 frames to graph.");
}

TEST_F(FrameGraphDialog, RefusesTwoFrames)
{
    Store(2);
    EXPECT_EQ(Refusal([](HWND) {}), "Kelvo message: There must be at least 3 frames to graph.");
}

TEST_F(FrameGraphDialog, AsksForASource)
{
    EXPECT_EQ(Refusal([](HWND) {}), "Kelvo message: A Source for data must be chosen.");
    EXPECT_EQ(IniKey("Graphics", "Autoscale"), "1") << "the settings are kept first";
}

TEST_F(FrameGraphDialog, AsksForDataInTheStore)
{
    const std::string path = PutFrames(8, 6, 4);
    Store(0);
    op->Do([] { ChooseFile(DialogInFront()); });
    op->Do([path] { ChooseFiles({path}); });
    op->Do([] { OperateText(DialogInFront(), kLast, "3"); });
    EXPECT_EQ(Refusal(ChooseStore), "Kelvo message: No BufferBoard data loaded.");
}

// ---- Fields

TEST_F(FrameGraphDialog, ShowsTheRangeOfAFieldAndRefusesWhatLiesOutside)
{
    struct Case {
        int id;
        const char* typed;
        const char* hint;
        const char* box;
        const char* before;
    };
    const Case kCases[] = {
        {kRow, "24", "Pixel Row range: 0 to 23", "Pixel Row must be in range: 0 to 23", "10"},
        {kColumn, "-1", "Pixel Column range: 0 to 31", "Pixel Column must be in range: 0 to 31", "20"},
        {kFirst, "5", "Min Frame range: 0 to 4", "Min Frame range: 0 to 4", "0"},
        {kLast, "many", "Max Frame range: 0 to 4", "Max Frame must be in range: 0 to 4", "4"},
        {kLow, "16384", "Min intensity range: 0 to 16383", "Min intensity range: 0 to 16383", "0"},
        {kHigh, "", "Max intensity range: 0 to 16383", "Max intensity range: 0 to 16383", "16383"},
    };
    op->Do([] { OperateCheck(DialogInFront(), kAutoscale, false); });
    for (const Case& each : kCases) {
        op->Do([each] {
            FocusDlgItem(DialogInFront(), each.id);
            EXPECT_EQ(StatusText, each.hint);
            OperateText(DialogInFront(), each.id, each.typed);
            FocusDlgItem(DialogInFront(), kExit);
        });
        op->Do([each] { EXPECT_EQ(Text(each.id), each.before) << each.id; });
    }
    Run({});
    std::vector<std::string> boxes;
    for (const TestOperator::Box& box : op->Boxes()) {
        EXPECT_EQ(box.caption, "Kelvo message");
        boxes.push_back(box.text);
    }
    std::vector<std::string> expected;
    for (const Case& each : kCases) expected.emplace_back(each.box);
    EXPECT_EQ(boxes, expected);
}

TEST_F(FrameGraphDialog, ReadsLimitsInTheUnitOnView)
{
    write::cal.CalType = 2;
    write::cal.IntensityCold = 1000;
    write::cal.IntensityHot = 11000;
    write::cal.TemperatureCold = 20.0F;
    write::cal.TemperatureHot = 30.0F;
    write::display.DisplayUnit = kUnitCelsius;
    Run({[](HWND dialog) {
             OperateCheck(dialog, kAutoscale, false);
             EXPECT_EQ(Text(kLow), "19.000");
             EXPECT_EQ(Text(kHigh), "35.383");
             EXPECT_EQ(Text(21503), "19.000 to 35.383");
             OperateText(dialog, kLow, "25.5");
             OperateText(dialog, kHigh, "26");
             OperatePress(dialog, kGraph);  // no source
         },
         [](HWND) {
             EXPECT_EQ(yClipMin, 6500);
             EXPECT_EQ(yClipMax, 7000);
             EXPECT_EQ(Text(kLow), "25.500");
         },
         [](HWND dialog) {
             OperatePick(dialog, 1256, 0);
             EXPECT_EQ(Text(kLow), "6500");
             EXPECT_EQ(Text(21503), "0 to 16383");
         }});
    EXPECT_EQ(DisplayUnit, kUnitCounts);
    EXPECT_EQ(IniKey("Graphics", "yClipMin"), "6500");
}

TEST_F(FrameGraphDialog, MarksThePixelInThePicture)
{
    View(kColumns, kRows, std::vector<std::int16_t>(kColumns * kRows, 0));
    RedrawPicture();
    const auto whiteAt = [](int column, int row) {
        const Point at = PlaceOver({column, row});
        return Shown(at.x, at.y) == 0xFFFFFF;
    };
    EXPECT_FALSE(whiteAt(22, 10));
    Run({[&](HWND) { EXPECT_TRUE(whiteAt(22, 10)); },
         [&](HWND dialog) {
             OperateText(dialog, kRow, "3");
             FocusDlgItem(dialog, kExit);
             EXPECT_TRUE(whiteAt(22, 3));
             EXPECT_FALSE(whiteAt(22, 10));
         }});
    EXPECT_FALSE(whiteAt(22, 3));
    EXPECT_FALSE(whiteAt(22, 10));
    EXPECT_EQ(ImageCursorOn, 0);
}

// ---- A file as source

TEST_F(FrameGraphDialog, ASmallerImageTakesThePixelToItsMiddleAndLimitsInside)
{
    const std::string path = PutFrames(16, 12, 4);
    Run({ChooseFile, [path](HWND) { ChooseFiles({path}); },
         [path](HWND dialog) {
             EXPECT_TRUE(IsDlgButtonChecked(dialog, kGraphFile));
             EXPECT_EQ(Text(21502), path);
             EXPECT_EQ(Text(kRow), "6");
             EXPECT_EQ(Text(kColumn), "8");
             EXPECT_EQ(Text(kLow), "50");
             EXPECT_EQ(Text(kHigh), "4000");
             EXPECT_EQ(Text(kLast), "3");
         }});
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(FrameGraphDialog, AFileThatIsNotChosenOrNotReadLeavesTheSource)
{
    PutFile(directory / "broken.buf", "short");
    Run({ChooseStore, ChooseFile, [](HWND) { CancelFileDialog(); },
         [](HWND dialog) {
             EXPECT_TRUE(IsDlgButtonChecked(dialog, kGraphHostFrames));
             EXPECT_FALSE(IsDlgButtonChecked(dialog, kGraphFile));
             OperatePress(dialog, kGraphFile);
         },
         [this](HWND) { ChooseFiles({directory / "broken.buf"}); },
         [](HWND dialog) {
             EXPECT_TRUE(IsDlgButtonChecked(dialog, kGraphHostFrames));
             EXPECT_EQ(GraphSource, kGraphHostFrames);
         }});
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Error reading Image File Header\n" + directory / "broken.buf");
}

TEST_F(FrameGraphDialog, AStartBeyondTheFileIsRefused)
{
    const std::string path = PutFrames(32, 24, 3);
    op->Do([] { OperateText(DialogInFront(), kFirst, "4"); });
    op->Do([] { ChooseFile(DialogInFront()); });
    op->Do([path] { ChooseFiles({path}); });
    EXPECT_EQ(Refusal([](HWND) { EXPECT_EQ(Text(kLast), "2"); }), "Kelvo message: Min Frame range: 0 to 2");
}

// ---- The graph

TEST_F(FrameGraphDialog, ShowsTheGraphOfTheHostFrames)
{
    Run({ChooseStore,
         [](HWND dialog) {
             OperateText(dialog, kFirst, "1");
             OperatePress(dialog, kGraph);
         },
         [](HWND window) {
             EXPECT_EQ(DialogName(window), "GRAPH");
             EXPECT_EQ(GetWindowText(window), "Signal (Counts) vs Frame Number: 4 Frames, Pixel=(10,20)");
             EXPECT_EQ(StatusText, "Frame orTime Vs Intensity Graph");
             EXPECT_EQ(Text(321), "") << "nothing before the first tick";
             DrawFrameGraph(window);
             // 1007, 1014, 1021, 1028: squares 10.5, 3.5, 3.5, 10.5 over three
             EXPECT_EQ(Text(321), "1017.500");
             EXPECT_EQ(Text(322),
                       "\xC2\xB1"
                       "9.037");
             EXPECT_EQ(Text(325), "1007");
             EXPECT_EQ(Text(324), "1");
             EXPECT_EQ(Text(328), "1028");
             EXPECT_EQ(Text(327), "4");
             OperatePress(window, kExit);
         },
         [](HWND dialog) {
             EXPECT_EQ(DialogName(dialog), "BUF_GRAF");
             EXPECT_EQ(StatusText, *ResourceString(1));
         }});
    EXPECT_EQ(GraphFrames, 4);
    EXPECT_EQ(GraphSource, kGraphHostFrames);
    EXPECT_THAT(op->Boxes(), IsEmpty());
}

TEST_F(FrameGraphDialog, DrawsAConstantPixelWithItsDeviationAs0)
{
    Run({ChooseStore,
         [](HWND dialog) {
             OperateText(dialog, kColumn, "0");
             OperatePress(dialog, kGraph);
         },
         [](HWND window) {
             DrawFrameGraph(window);
             EXPECT_EQ(Text(321), "5.000");
             EXPECT_EQ(Text(322), "0");
             OperatePress(window, kExit);
         }});
}

TEST_F(FrameGraphDialog, ConvertsAFileByItsOwnCalibration)
{
    ImageHeaderRecord header = PlainHeader(32, 24);
    header.IntensityCold = 1000;
    header.IntensityHot = 2000;
    header.TemperatureCold = 10.0F;
    header.TemperatureHot = 20.0F;
    std::vector<std::vector<std::int16_t>> frames;
    for (const int count : {1000, 1500, 1800}) frames.emplace_back(32 * 24, static_cast<std::int16_t>(count));
    const std::string path = directory / "warm.buf";
    WriteImageFile(path, header, frames);
    View(1, 1, {0});  // something else is on view, uncalibrated
    Run({ChooseFile, [path](HWND) { ChooseFiles({path}); },
         [](HWND dialog) {
             ASSERT_EQ(ListCount(dialog, 1256), 5);
             OperatePick(dialog, 1256, 2);
             EXPECT_EQ(DisplayUnit, kUnitCelsius);
             OperatePress(dialog, kGraph);
         },
         [](HWND window) {
             EXPECT_EQ(GetWindowText(window),
                       "Temperature (\xC2\xB0"
                       "C) vs Frame Number: 3 Frames, Pixel=(10,20)");
             DrawFrameGraph(window);
             EXPECT_EQ(Text(325), "10.000");
             EXPECT_EQ(Text(328), "18.000");
             EXPECT_EQ(Text(321), "14.333");
             OperatePress(window, kExit);
         }});
    EXPECT_EQ(DisplayUnit, kUnitCounts) << "what is on view has no degrees";
}

TEST_F(FrameGraphDialog, TellsWhereTheGraphCannotBeRead)
{
    const std::string path = PutFrames(32, 24, 4);
    Run({ChooseFile, [path](HWND) { ChooseFiles({path}); }, [](HWND dialog) { OperatePress(dialog, kGraph); },
         [](HWND window) {
             FailAllocation(1);
             DrawFrameGraph(window);
         },
         [](HWND window) {
             EXPECT_EQ(Text(321), "");
             std::filesystem::resize_file(GraphedFile->path, 512 + 2 * 32 * 24 * 2);
             DrawFrameGraph(window);
         },
         [](HWND window) {
             std::filesystem::remove(GraphedFile->path);
             DrawFrameGraph(window);
         },
         [](HWND window) { OperatePress(window, kExit); }});
    const std::vector<TestOperator::Box> boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(3));
    EXPECT_EQ(boxes[0].text, "Failure to allocate global intensity memory!");
    EXPECT_EQ(boxes[1].text, "Failed to read entire file\n" + path);
    EXPECT_EQ(boxes[2].text, "The file is gone, or another one than was chosen. Please choose it again.\n" + path);
    for (const TestOperator::Box& box : boxes) EXPECT_EQ(box.caption, "Kelvo message");
}

TEST_F(FrameGraphDialog, IsToldWhereItCannotBeMade)
{
    for (const char* name : {"BUF_GRAF", "GRAPH"}) {
        SetFault(std::string("load dialog ") + name, true);
        EXPECT_EQ(std::string(name) == "GRAPH" ? FrameGraphWindow(hWndMain) : BufferGraphDialog(hWndMain), 0);
    }
    const std::vector<TestOperator::Box> boxes = op->Boxes();
    ASSERT_THAT(boxes, SizeIs(2));
    for (const TestOperator::Box& box : boxes) {
        EXPECT_EQ(box.text, "Unable to display dialog");
        EXPECT_EQ(box.caption, "System Error");
    }
}

TEST_F(FrameGraphDialog, HasItsHelpPage)
{
    Run({[](HWND dialog) {
        OperatePress(dialog, kIdHelp);
        EXPECT_EQ(CurrentHelpContext(), kHelpFrameGraph);
    }});
}

}  // namespace

}  // namespace kelvo

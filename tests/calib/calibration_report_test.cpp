// What the report tells, on numbers worked by hand, and what its dialog shows.
#include "calib/calibration_report.h"

#include "calib/report_dialog.h"
#include "calib/report_file.h"
#include "grabber/copm2.h"
#include "head/camera_report.h"
#include "platform/dialog.h"
#include "platform/help.h"
#include "platform/paint.h"
#include "platform/profile.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "support/calibration_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Bytes = std::vector<std::uint8_t>;

TEST(NonUniformity, IsTheSampleDeviationOverTheMeanInPercent)
{
    // 98, 100, 102: deviation sqrt(8 / 2) = 2, 2 % of 100. The fourth isn't used.
    const std::vector<std::int16_t> values = {98, 100, 102, 9000};
    const auto found = NonUniformityOf(values, Bytes{1, 1, 1, 0}, "a source").value_or(NonUniformity{});
    EXPECT_EQ(found.source, "a source");
    EXPECT_DOUBLE_EQ(found.mean, 100);
    EXPECT_DOUBLE_EQ(found.percent, 2);
    const std::vector<std::int32_t> below = {-98, -100, -102};
    EXPECT_DOUBLE_EQ(NonUniformityOf(below, {}, "").value_or(NonUniformity{}).percent, 2);
    const std::vector<float> even = {50.5F, 50.5F};
    const auto none = NonUniformityOf(even, {}, "");
    ASSERT_TRUE(none);
    EXPECT_DOUBLE_EQ(none.value_or(NonUniformity{}).percent, 0);
}

TEST(NonUniformity, OfOneValueOrAMeanOfZeroIsNone)
{
    const std::vector<std::int16_t> values = {98, 100};
    EXPECT_FALSE(NonUniformityOf(values, Bytes{0, 1}, ""));
    const std::vector<std::int16_t> opposed = {-5, 5};
    EXPECT_FALSE(NonUniformityOf(opposed, {}, ""));
    EXPECT_FALSE(NonUniformityOf(std::span<const std::int16_t>(), {}, ""));
}

TEST(ReportText, NamesASourceWithItsTemperatureWhereItIsGiven)
{
    EXPECT_EQ(SourceName("low source", 20.0F),
              "low source, 20.000 \xB0"
              "C");
    EXPECT_EQ(SourceName("low source", -999.0F), "low source");
    EXPECT_EQ(SourceName("low source", -274.0F), "low source");
}

TEST(ReportText, TellsThatNoFreshFramesCame)
{
    CalibrationReport report;
    report.title = "1 Point Update";
    report.calPath = "/somewhere/warm.cal";
    report.frameCount = 30;
    report.before = {{.source = "low source", .mean = 7500.04, .percent = 1.16}};
    report.classes = {{.name = "Noisy", .count = 12, .color = 0}};
    EXPECT_EQ(ReportText(report),
              "1 Point Update\n/somewhere/warm.cal\n\nResidual non-uniformity\n"
              "before  low source                          7500.0 counts    1.1600 %  30 frames\n"
              "after   not measured: no fresh frames came\n"
              "\nBad detectors\n     12  Noisy\n");
}

TEST(ReportFacts, NoiseOverResponseIsTheNoiseEquivalentTemperature)
{
    // 5 counts at 250 counts a kelvin are 20 mK, whichever way the signal goes.
    EXPECT_EQ(NoiseFact(5, 250).second, "5.00 counts, 20.0 mK at 250.0 counts/K");
    EXPECT_EQ(NoiseFact(5, -250).second, "5.00 counts, 20.0 mK at 250.0 counts/K");
    EXPECT_EQ(NoiseFact(5.25, 0).second, "5.25 counts");
}

TEST(ReportFacts, StandBehindTheTitle)
{
    CalibrationReport report;
    report.title = "1 Point Update";
    report.calPath = "/somewhere/warm.cal";
    report.facts = {{"Date", "2024-01-01 12:00:00"}, {"Integration time", "19.4000 ms"}};
    EXPECT_THAT(ReportText(report), testing::StartsWith("1 Point Update\n/somewhere/warm.cal\n"
                                                        "Date                  2024-01-01 12:00:00\n"
                                                        "Integration time      19.4000 ms\n\nResidual"));
}

CameraReport ShiftedCounts(BoardModule /*module*/)
{
    CameraReport report;
    report.counts = "shifted right by 1";
    return report;
}

class ReportOfCamera : public CalibrationTest {
  protected:
    void SetUp() override
    {
        CalibrationTest::SetUp();
        static constexpr BoardTable kTelling{.name = "telling", .report = ShiftedCounts};
        WritePrivateProfileString("Board", "Board", "telling", DefaultDir + "/platform.ini");
        RegisterBoard(kTelling);
    }
};

TEST_F(ReportOfCamera, TellsWhatWasDoneToTheCounts)
{
    const auto counts = [] {
        const auto facts = FactsOfRun(30);
        const auto found = std::ranges::find(facts, "Counts", &std::pair<std::string, std::string>::first);
        return found == facts.end() ? std::string() : found->second;
    };
    EXPECT_EQ(counts(), "") << "nothing is told yet";
    AskCamera();
    EXPECT_EQ(counts(), "shifted right by 1");
    ForgetCameraReport();
    EXPECT_EQ(counts(), "");
}

// --- The map --------------------------------------------------------------------------------------------------------

class ReportMap : public CalibrationTest {
  protected:
    // 2 x 4 pixels read out backwards; detectors 0 and 5 are of the first class, 3 is of the second.
    CalibrationReport Report() const
    {
        CalibrationReport report;
        report.columns = 4;
        report.rows = 2;
        report.classes = {{.name = "first", .count = 2, .color = 0xFF0000},
                          {.name = "second", .count = 1, .color = 0x00FF00}};
        const Bytes classes = {1, 0, 0, 2, 0, 1, 0, 0};
        const std::vector<std::uint32_t> backwards = {7, 6, 5, 4, 3, 2, 1, 0};
        MapClasses(report, classes, backwards);
        return report;
    }
    // Looks at the report's dialog, opened from the result box, and closes it.
    void Open(const CalibrationReport& report, std::function<void(HWND)> look)
    {
        op->Answer({Button::kReport});
        op->Do([look = std::move(look)] {
            const HWND dialog = DialogInFront();
            ASSERT_TRUE(dialog);
            look(dialog);
            OperatePress(dialog, kIdOk);
        });
        ShowResult(hWndMain, "figures", "Calibration results", report);
    }
};

TEST_F(ReportMap, ShowsEachDetectorsClassAtItsPixel)
{
    EXPECT_THAT(Report().map, ElementsAre(0, 0, 1, 0, 2, 0, 0, 1));
}

TEST_F(ReportMap, AddsListedPixelsThatTheRunFoundGood)
{
    CalibrationReport report = Report();
    MapListed(report, Bytes{1, 0, 1, 0, 0, 0, 0, 0});
    EXPECT_THAT(report.map, ElementsAre(3, 0, 1, 0, 2, 0, 0, 1));
    ASSERT_THAT(report.classes, SizeIs(3));
    EXPECT_EQ(report.classes[2].name, "Listed before");
    EXPECT_EQ(report.classes[2].count, 1);
    MapListed(report, Bytes(8));
    EXPECT_THAT(report.classes, SizeIs(3)) << "nothing to add";
}

TEST_F(ReportMap, IsTurnedAsThePictureIs)
{
    CalibrationReport report = Report();
    write::display.MirrorVert = 1;  // columns
    OrientMap(report);
    EXPECT_THAT(report.map, ElementsAre(0, 1, 0, 0, 1, 0, 0, 2));
    write::display.MirrorVert = 0;
    write::display.MirrorHoriz = 1;  // rows
    OrientMap(report);
    EXPECT_THAT(report.map, ElementsAre(1, 0, 0, 2, 0, 1, 0, 0));
    write::display.MirrorHoriz = 0;
}

// Pixel 2, whose detector is 5, shows detector 4 of pixel 3; pixel 4 keeps its own.
TEST_F(ReportMap, NamesWhoAnswersAndTurnsThatToo)
{
    CalibrationReport report = Report();
    const std::vector<std::uint32_t> before = {7, 6, 5, 4, 3, 2, 1, 0};
    const std::vector<std::uint32_t> after = {7, 6, 4, 4, 3, 2, 1, 1};
    MapAnswers(report, before, after);
    constexpr std::uint32_t kNobody = kNobodyAnswers;
    EXPECT_THAT(report.answers, ElementsAre(kNobody, kNobody, 3, kNobody, kNobody, kNobody, kNobody, 6));
    write::display.MirrorVert = 1;  // columns: 0 1 2 3 becomes 3 2 1 0
    OrientMap(report);
    write::display.MirrorVert = 0;
    EXPECT_THAT(report.answers, ElementsAre(kNobody, 0, kNobody, kNobody, 5, kNobody, kNobody, kNobody));
}

std::size_t PixelsOf(const DeviceBitmap& picture, std::uint32_t color)
{
    return static_cast<std::size_t>(
        std::ranges::count(picture.pixels, color, [](std::uint32_t pixel) { return pixel & 0xFFFFFFU; }));
}

TEST_F(ReportMap, IsPaintedAsTheDialogOpens)
{
    DeviceBitmap shown;
    Open(Report(), [&](HWND dialog) { CaptureWindowPixels(DlgItemWindow(dialog, 1002), true, shown); });
    const std::size_t second = PixelsOf(shown, 0x00FF00);
    EXPECT_GT(second, 1000U);
    EXPECT_EQ(PixelsOf(shown, 0xFF0000), 2 * second) << "two detectors of the first class, one of the second";
}

TEST_F(ReportMap, OfALargeFrameLosesNoBadDetector)
{
    CalibrationReport report;
    report.columns = 4096;
    report.rows = 2048;
    report.classes = {{.name = "first", .count = 1, .color = 0xFF0000}};
    report.map.resize(std::size_t{4096} * 2048);
    report.map[std::size_t{777} * 4096 + 1235] = 1;
    DeviceBitmap shown;
    Open(report, [&](HWND dialog) { CaptureWindowPixels(DlgItemWindow(dialog, 1002), true, shown); });
    EXPECT_GE(PixelsOf(shown, 0xFF0000), 1U);
}

TEST_F(ReportMap, WithoutOneTheFiguresStand)
{
    CalibrationReport report = Report();
    report.map.clear();
    std::string text;
    Open(report, [&](HWND dialog) { text = GetDlgItemText(dialog, 1001); });
    EXPECT_THAT(text, HasSubstr("      2  first\n"));
}

TEST_F(ReportMap, HelpOpensThePageOfTheReport)
{
    Open(Report(), [](HWND dialog) { OperatePress(dialog, kIdHelp); });
    EXPECT_EQ(CurrentHelpContext(), kHelpCalibrationReport);
}

TEST_F(ReportMap, AReportThatCantBeSavedIsTold)
{
    CalibrationReport report = Report();
    report.calPath = InDirectory("warm.cal");
    EXPECT_EQ(SaveReport(report), 1);
    EXPECT_THAT(op->Boxes(), IsEmpty());
    std::filesystem::remove(InDirectory("warm.report.txt"));
    std::filesystem::create_directories(InDirectory("warm.report.txt/inside"));
    EXPECT_EQ(SaveReport(report), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failed to save file: " + InDirectory("warm.report.txt"));
}

}  // namespace
}  // namespace kelvo

// The report as a file of its set.
#include "calib/report_file.h"

#include "calib/calibration_set.h"
#include "calib/report_dialog.h"
#include "platform/dialog.h"
#include "platform/window.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "support/calibration_fixture.h"
#include "support/stored_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class ReportFile : public CalibrationTest {
  protected:
    CalibrationReport Report() const
    {
        CalibrationReport report;
        report.title = "2 Point Calibration";
        report.calPath = InDirectory("warm.cal");
        report.facts = {{"Date", "2024-01-01 12:00:00"}};
        report.columns = 4;
        report.rows = 2;
        report.classes = {{.name = "Noisy", .count = 2, .color = 0xFFFFFF},
                          {.name = "Low response pixels (I<mean)", .count = 1, .color = 0x0AF123}};
        report.map = {0, 1, 0, 2, 0, 0, 0, 1};
        report.answers = {kNobodyAnswers, 2, kNobodyAnswers, 6, kNobodyAnswers, kNobodyAnswers, kNobodyAnswers,
                          kNobodyAnswers};
        return report;
    }
};

TEST_F(ReportFile, HoldsTheTextAndTheMapAsAnyEditorShowsThem)
{
    ASSERT_EQ(SaveReport(Report()), 1);
    const std::string file = FileContents(InDirectory("warm.report.txt"));
    EXPECT_THAT(file, StartsWith("2 Point Calibration\n" + InDirectory("warm.cal") +
                                 "\nDate                  2024-01-01 12:00:00\n"));
    EXPECT_THAT(file,
                HasSubstr("\nMap of the detectors, as the picture was turned\n4 columns, 2 rows; . is a good detector\n"
                          "1 FFFFFF 2 Noisy\n2 0AF123 1 Low response pixels (I<mean)\n\n"
                          ".1.2\n...1\n\n1,0 by 2,0\n3,0 by 2,1\n"));
}

TEST_F(ReportFile, ComesBackAsItWasSaved)
{
    PutSet(InDirectory("warm.cal"));
    ASSERT_EQ(SaveReport(Report()), 1);
    const std::optional<StoredReport> stored = ReadReport(InDirectory("warm.cal"));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->map.title, "2 Point Calibration");
    EXPECT_EQ(stored->map.columns, 4);
    EXPECT_EQ(stored->map.rows, 2);
    EXPECT_THAT(stored->map.map, ElementsAre(0, 1, 0, 2, 0, 0, 0, 1));
    EXPECT_EQ(stored->map.answers, Report().answers);
    ASSERT_THAT(stored->map.classes, SizeIs(2));
    EXPECT_EQ(stored->map.classes[1].name, "Low response pixels (I<mean)");
    EXPECT_EQ(stored->map.classes[1].count, 1);
    EXPECT_EQ(stored->map.classes[1].color, 0x0AF123U);
    EXPECT_THAT(stored->text, testing::EndsWith("      1  Low response pixels (I<mean)\n"));
    EXPECT_EQ(stored->digest, ListsDigest(InDirectory("warm.cal")));
}

// sha256sum of the bytes "abc" and of none, as FIPS 180-4 gives them.
TEST_F(ReportFile, TheDigestIsThatOfTheThreeFilesOneBehindTheOther)
{
    PutFile(InDirectory("warm.gai"), "a");
    PutFile(InDirectory("warm.off"), "bc");
    EXPECT_EQ(ListsDigest(InDirectory("warm.cal")), "") << "without a table";
    PutFile(InDirectory("warm.dcm"), "");
    EXPECT_EQ(ListsDigest(InDirectory("warm.cal")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST_F(ReportFile, AMapThatIsDamagedIsLeftOutAndTheTextStands)
{
    const std::string text = "1 Point Update\n/x.cal\n";
    const std::string heading = "\nMap of the detectors, as the picture was turned\n";
    for (const char* map : {"", "4 columns", "0 columns, 2 rows;\n", "-4 columns, 2 rows;\n\n....\n....\n",
                            "99999 columns, 99999 rows;\n\n.\n", "4 columns, 2 rows;\n1 FFFFFF 2 Noisy\n\n.1.2\n....\n",
                            "4 columns, 2 rows;\n\n....\n", "4 columns, 2 rows;\n\n...\n....\n",
                            "4 columns, 2 rows;\nnothing\n\n....\n....\n"}) {
        PutFile(InDirectory("warm.report.txt"), text + heading + map);
        const std::optional<StoredReport> stored = ReadReport(InDirectory("warm.cal"));
        ASSERT_TRUE(stored) << map;
        EXPECT_EQ(stored->text, text) << map;
        EXPECT_THAT(stored->map.map, IsEmpty()) << map;
    }
    PutFile(
        InDirectory("warm.report.txt"),
        text + heading + "2 columns, 1 rows;\n1 FFFFFF 1 Noisy\n\n1.\n\n0,0 by 7,7\n9,9 by 0,0\nrubbish\n0,0 by 1,0\n");
    EXPECT_THAT(ReadReport(InDirectory("warm.cal"))->map.answers, ElementsAre(1U, kNobodyAnswers));
}

TEST_F(ReportFile, OneThatCantBeSavedLeavesNoFormerOne)
{
    PutFile(InDirectory("warm.report.txt"), "of other lists");
    std::filesystem::permissions(InDirectory("warm.report.txt"), std::filesystem::perms::none);
    CalibrationReport report = Report();
    report.calPath = InDirectory("nowhere/warm.cal");
    EXPECT_EQ(SaveReport(report), 0);
    ASSERT_THAT(op->Boxes(), SizeIs(1));
    EXPECT_EQ(op->Boxes()[0].text, "Failed to save file: " + InDirectory("nowhere/warm.report.txt"));
}

// --- The command ----------------------------------------------------------------------------------------------------

class ReportCommand : public ReportFile {
  protected:
    void SetUp() override
    {
        ReportFile::SetUp();
        PutSet(InDirectory("warm.cal"));
        write::calSet.CalSettings.CalFile = InDirectory("warm.cal");
        write::cal.CalType = 2;
    }
    void Open(std::function<void(HWND)> look)
    {
        Work([] { OpenCalibrationReport(); },
             [look = std::move(look)](HWND dialog) {
                 look(dialog);
                 OperatePress(dialog, kIdOk);
             });
    }
};

TEST_F(ReportCommand, WithoutACalibrationOrAReportTellsSo)
{
    OpenCalibrationReport();
    write::cal.CalType = 0;
    OpenCalibrationReport();
    ASSERT_THAT(op->Boxes(), SizeIs(2));
    EXPECT_EQ(op->Boxes()[0].text,
              "The calibration in force has no report:\n" + InDirectory("warm.cal") +
                  "\nA set that was made without one, or whose files couldn't be saved, has none.");
    EXPECT_EQ(op->Boxes()[1].text, "No calibration is in force.");
}

TEST_F(ReportCommand, ShowsTheReportAndWhetherTheListsAreItsOwn)
{
    SaveReport(Report());
    Open([this](HWND dialog) {
        EXPECT_EQ(DialogName(dialog), "CALREPORT");
        EXPECT_THAT(GetDlgItemText(dialog, kReportText),
                    StartsWith("Set: " + InDirectory("warm.cal") +
                               "\nThe lists of the set are those of this report.\n\n2 Point Calibration\n"));
    });
    PutGains(InDirectory("warm.gai"), {2, 2, 2, 2, 2, 2, 2, 2});
    Open([](HWND dialog) {
        EXPECT_THAT(GetDlgItemText(dialog, kReportText),
                    HasSubstr("\nThe lists of the set have changed since this report.\n"));
    });
}

TEST_F(ReportCommand, ThePointerNamesTheDetectorAndTheWheelZooms)
{
    SaveReport(Report());
    Open([](HWND dialog) {
        const Rect client = GetClientRect(DlgItemWindow(dialog, kReportMap));
        const auto pointer = [&](std::uint32_t message, int x, int y, int steps = 0) {
            SendMessage(dialog, message, MakeLong(kReportMap, steps), static_cast<LPARAM>(MakeLong(x, y)));
        };
        // 64 points a detector, in the middle: column 1, row 0 lies left of the centre and above it.
        pointer(WM_MOUSEMOVE, client.Width() / 2 - 8, client.Height() / 2 - 8);
        EXPECT_EQ(GetDlgItemText(dialog, kReportDetector), "Column 1, row 0: Noisy. Column 2, row 0 answers for it.");
        pointer(WM_MOUSEMOVE, client.Width() / 2 + 80, client.Height() / 2 + 8);
        EXPECT_EQ(GetDlgItemText(dialog, kReportDetector), "Column 3, row 1: Noisy. Nobody answers for it.");
        pointer(WM_MOUSEMOVE, 0, 0);
        EXPECT_EQ(GetDlgItemText(dialog, kReportDetector),
                  "Point at a detector to name it. The wheel zooms, a click centres.");
    });
}

TEST_F(ReportCommand, TheWheelGoesBothWays)
{
    CalibrationReport report = Report();
    report.columns = 320;
    report.rows = 256;
    report.map.assign(std::size_t{320} * 256, 0);
    report.answers.clear();
    SaveReport(report);
    Open([](HWND dialog) {
        const Rect client = GetClientRect(DlgItemWindow(dialog, kReportMap));
        const auto named = [&] {
            SendMessage(dialog, WM_MOUSEMOVE, MakeLong(kReportMap, 0), static_cast<LPARAM>(MakeLong(2, 2)));
            return GetDlgItemText(dialog, kReportDetector);
        };
        const auto wheel = [&](int steps) {
            const auto middle = static_cast<LPARAM>(MakeLong(client.Width() / 2, client.Height() / 2));
            SendMessage(dialog, WM_MOUSEWHEEL, MakeLong(kReportMap, steps), middle);
        };
        const std::string whole = named();
        EXPECT_THAT(whole, StartsWith("Point at a detector")) << "beside the map";
        wheel(1);
        wheel(1);
        EXPECT_THAT(named(), testing::EndsWith(": good"));
        wheel(-1);
        wheel(-1);
        EXPECT_EQ(named(), whole);
        OperatePress(dialog, kReportNearer);
        EXPECT_THAT(named(), testing::EndsWith(": good"));
        OperatePress(dialog, kReportFarther);
        EXPECT_EQ(named(), whole);
    });
}

TEST_F(ReportCommand, ASetTakesItsReportToItsNewName)
{
    SaveReport(Report());
    write::calSet.CalSettings.GainFile = InDirectory("warm.gai");
    write::calSet.CalSettings.OffsetFile = InDirectory("warm.off");
    write::calSet.CalSettings.DecomFile = InDirectory("warm.dcm");
    ASSERT_EQ(SaveCalibrationAs(InDirectory("other.cal")), 1);
    EXPECT_EQ(FileContents(InDirectory("other.report.txt")), FileContents(InDirectory("warm.report.txt")));
    EXPECT_EQ(ReadReport(InDirectory("other.cal"))->digest, ListsDigest(InDirectory("other.cal")));
}

// The name had a report of another set.
TEST_F(ReportCommand, ASetWithoutAReportLeavesNoneOfAnotherUnderItsNewName)
{
    PutFile(InDirectory("other.report.txt"), "of another set");
    write::calSet.CalSettings.GainFile = InDirectory("warm.gai");
    write::calSet.CalSettings.OffsetFile = InDirectory("warm.off");
    write::calSet.CalSettings.DecomFile = InDirectory("warm.dcm");
    ASSERT_EQ(SaveCalibrationAs(InDirectory("other.cal")), 1);
    EXPECT_FALSE(std::filesystem::exists(InDirectory("other.report.txt")));
}

}  // namespace
}  // namespace kelvo

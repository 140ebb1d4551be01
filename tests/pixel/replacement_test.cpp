// Which detectors are bad by their gain, and which neighbour answers for each.
#include "pixel/bad_pixels.h"
#include "pixel/decommutation.h"
#include "pixel/search_pattern.h"
#include "platform/faults.h"
#include "platform/memory.h"
#include "state/cal_settings_write.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/windows_write.h"
#include "support/shipped_file.h"
#include "support/shown.h"
#include "support/state_value.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <numeric>
#include <random>
#include <set>
#include <string>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kMemoryTitle = "Memory Allocation Error";

CameraConfig Region(std::int32_t rows, std::int32_t columns)
{
    CameraConfig config;
    config.DecomScheme = 2;
    config.Vroi = rows;
    config.Hroi = columns;
    return config;
}

DecomTable PlainTable(std::size_t count)
{
    DecomTable table(count);
    std::iota(table.begin(), table.end(), 0U);
    return table;
}

class Replacement : public testing::Test {
  protected:
    Replacement() { write::calSet.CalSettings.PRSfile = pattern; }
    void PutPattern(const std::string& steps) const { PutFile(pattern, "row,column\n" + steps); }

    TempDirectory directory;
    std::string pattern = directory / "nearest.prs";
};

TEST_F(Replacement, TakesTheFirstUsableNeighbourInTheOrderOfTheFile)
{
    PutPattern("0,1\n-1,0\n0,-1\n1,0\n");
    DecomTable decom = PlainTable(9);
    const BadDetMap bad = {1, 0, 0, 0, 1, 1, 0, 0, 1};
    EXPECT_EQ(ReplaceBadDet(decom, bad, Region(3, 3)), 1);
    // Pixel 4: its right is bad, above it 1. Pixel 5: nothing to the right, above it 2. Pixel 8: 5 is bad, left of
    // it 7.
    EXPECT_THAT(decom, ElementsAre(1, 1, 2, 3, 1, 2, 6, 7, 7));
    EXPECT_EQ(BadDetCount, 4);
    EXPECT_THAT(StateList("ReplacedPixels"), ElementsAre(0, 4, 5, 8));
}

TEST_F(Replacement, TwoAdjacentBadPixelsTakeOneSourceNeverEachOther)
{
    PutPattern("0,1\n0,-1\n0,2\n0,-2\n");
    DecomTable decom = PlainTable(4);
    EXPECT_EQ(ReplaceBadDet(decom, {0, 1, 1, 0}, Region(1, 4)), 1);
    EXPECT_THAT(decom, ElementsAre(0, 0, 3, 3));
    decom = PlainTable(3);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 1, 0}, Region(1, 3)), 1);
    EXPECT_THAT(decom, ElementsAre(2, 2, 2));
}

TEST_F(Replacement, APixelWithoutAGoodNeighbourStaysAndIsntCounted)
{
    PutPattern("0,1\n");
    DecomTable decom = PlainTable(4);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 1, 0, 1}, Region(1, 4)), 1);
    EXPECT_THAT(decom, ElementsAre(0, 2, 2, 3));
    EXPECT_EQ(BadDetCount, 1);
    EXPECT_THAT(StateList("ReplacedPixels"), ElementsAre(1));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(Replacement, OfAnArrayThatIsAllBadRepairsNothing)
{
    PutPattern("0,1\n0,-1\n");
    DecomTable decom = PlainTable(4);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 1, 1, 1}, Region(2, 2)), 1);
    EXPECT_EQ(decom, PlainTable(4));
    EXPECT_EQ(BadDetCount, 0);
}

TEST_F(Replacement, CopiesTheEntryThatTheNeighbourHas)
{
    PutPattern("0,1\n");
    DecomTable decom = {7, 5, 3};
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0, 0}, Region(1, 3)), 1);
    EXPECT_THAT(decom, ElementsAre(5, 5, 3));
}

TEST_F(Replacement, GoesByImageIndexWhateverTheImageDelay)
{
    PutPattern("0,1\n");
    CameraConfig config = Region(1, 3);
    config.Idelay = 1;
    DecomTable decom = {7, 5, 3};
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0, 0}, config), 1);
    EXPECT_THAT(decom, ElementsAre(5, 5, 3));
}

TEST_F(Replacement, AnEmptyPatternLeavesTheTableAndSucceeds)
{
    write::calSet.BadDetCount = 17;
    DecomTable decom = PlainTable(2);
    for (const char* text : {"", "header only", "header\n", "0,1\n", "header\nno step\n\n5\n1;2\n"}) {
        PutFile(pattern, text);
        EXPECT_EQ(ReplaceBadDet(decom, {1, 0}, Region(1, 2)), 1) << text;
    }
    EXPECT_EQ(decom, PlainTable(2));
    EXPECT_EQ(BadDetCount, 17);
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(Replacement, LinesThatHoldNoStepArePassedOver)
{
    PutPattern("nothing\n  0 , 1\n   0,  -1 then this\r\n7\n0,1");
    const auto steps = ReadSearchPattern(pattern);
    ASSERT_TRUE(steps);
    EXPECT_THAT(steps->rows, ElementsAre(0, 0));
    EXPECT_THAT(steps->columns, ElementsAre(-1, 1));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(Replacement, StepsFarOutsideAreHarmless)
{
    PutPattern("2147483647,2147483647\n-2147483648,-2147483648\n0,2147483647\n5,0\n-1,-1\n");
    DecomTable decom = PlainTable(4);
    EXPECT_EQ(ReplaceBadDet(decom, {0, 0, 0, 1}, Region(2, 2)), 1);
    EXPECT_THAT(decom, ElementsAre(0, 1, 2, 0));
}

TEST_F(Replacement, AListOrMapThatIsTooShortChangesNothing)
{
    PutPattern("0,1\n");
    DecomTable decom = PlainTable(3);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0, 0, 0}, Region(2, 2)), 1);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0}, Region(1, 3)), 1);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0, 0}, Region(0, -3)), 1);
    EXPECT_EQ(decom, PlainTable(3));
}

// Row by row and step by step, as the rule is told.
TEST_F(Replacement, HoldsForRandomMapsAndPatterns)
{
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        const int rows = 1 + static_cast<int>(random() % 12);
        const int columns = 1 + static_cast<int>(random() % (round < 10 ? 12 : 200));
        const int farthest = round < 10 ? 3 : 130;
        const auto count = static_cast<std::size_t>(rows * columns);
        std::vector<std::pair<int, int>> steps;
        std::string text;
        for (int i = 0; i < 12; ++i) {
            const int across = static_cast<int>(random() % static_cast<unsigned>(2 * farthest + 1)) - farthest;
            steps.emplace_back(static_cast<int>(random() % 7) - 3, across);
            text += std::to_string(steps.back().first) + ',' + std::to_string(steps.back().second) + '\n';
        }
        PutPattern(text);
        BadDetMap bad(count);
        for (auto& mark : bad) mark = random() % 3 == 0 ? 1 : 0;
        const DecomTable before = PlainTable(count);
        DecomTable expected = before;
        int replaced = 0;
        for (int i = 0; i < rows * columns; ++i) {
            if (!bad[static_cast<std::size_t>(i)]) continue;
            for (const auto& [down, right] : steps) {
                const int r = i / columns + down;
                const int c = i % columns + right;
                if (r < 0 || c < 0 || r >= rows || c >= columns) continue;
                const auto source = static_cast<std::size_t>(r * columns + c);
                if (bad[source]) continue;
                expected[static_cast<std::size_t>(i)] = before[source];
                ++replaced;
                break;
            }
        }
        DecomTable decom = before;
        EXPECT_EQ(ReplaceBadDet(decom, bad, Region(rows, columns)), 1);
        EXPECT_EQ(decom, expected);
        EXPECT_EQ(BadDetCount, replaced);
    }
}

// Every step, near and far, leads to the one good pixel once: some ten thousand million trials one by one.
TEST_F(Replacement, OneGoodPixelAnswersForAllThatALongPatternReaches)
{
    constexpr std::size_t kRows = 400;
    constexpr std::size_t kColumns = 300;
    constexpr std::size_t kReached = 290;  // rows
    std::string steps;
    for (std::size_t down = 0; down < kReached; ++down) {
        for (std::size_t right = 0; right < kColumns; ++right)
            steps += std::to_string(down) + ',' + std::to_string(right) + '\n';
    }
    PutPattern(steps);
    BadDetMap bad(kRows * kColumns, 1);
    bad.back() = 0;
    DecomTable decom = PlainTable(bad.size());
    EXPECT_EQ(ReplaceBadDet(decom, bad, Region(kRows, kColumns)), 1);
    EXPECT_EQ(BadDetCount, kReached * kColumns - 1);
    const auto first = static_cast<std::ptrdiff_t>((kRows - kReached) * kColumns);
    EXPECT_EQ(decom[(kRows - kReached) * kColumns - 1], (kRows - kReached) * kColumns - 1);
    EXPECT_EQ(std::count(decom.begin() + first, decom.end(), bad.size() - 1), kReached * kColumns);
}

TEST_F(Replacement, WithoutItsPatternFileIsTold)
{
    write::calSet.CalSettings.PRSfile = directory / "missing.prs";
    DecomTable decom = PlainTable(2);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0}, Region(1, 2)), 0);
    EXPECT_EQ(decom, PlainTable(2));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "File Error",
                                     .text = "ReplaceBadDet(): Unable to open pixel replacement (.prs) file."}));
}

TEST_F(Replacement, WithoutMemoryForTheSearchColumnIsTold)
{
    PutPattern("0,1\n");
    DecomTable decom = PlainTable(2);
    FailAllocation(1);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0}, Region(1, 2)), 0);
    EXPECT_EQ(decom, PlainTable(2));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = kMemoryTitle,
                                     .text = "ReplaceBadDet(): Unable to allocate global memory for search column."}));
}

TEST_F(Replacement, WithoutMemoryForTheSearchRowIsTold)
{
    PutPattern("0,1\n");
    DecomTable decom = PlainTable(2);
    FailAllocation(2);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0}, Region(1, 2)), 0);
    EXPECT_EQ(decom, PlainTable(2));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = kMemoryTitle,
                                     .text = "ReplaceBadDet(): Unable to allocate global memory for search row."}));
}

TEST_F(Replacement, APatternFileThatGoesBetweenItsReadingsIsTold)
{
    PutPattern("0,1\n");
    DecomTable decom = PlainTable(2);
    SetFault("pattern file gone", true);
    EXPECT_EQ(ReplaceBadDet(decom, {1, 0}, Region(1, 2)), 0);
    EXPECT_EQ(decom, PlainTable(2));
    EXPECT_THAT(BoxesShown(),
                ElementsAre(ShownBox{.caption = "Kelvo message", .text = "Unable to open DetectorReplacementFile."}));
}

TEST_F(Replacement, APlainPatternNameIsLookedForBesideTheSettingsToo)
{
    TempDirectory elsewhere;
    SetDefaultDir(directory.Path());
    std::filesystem::current_path(elsewhere.Path());
    write::calSet.CalSettings.PRSfile = "nearest.prs";
    PutPattern("0,1\n");
    EXPECT_THAT(ReadSearchPattern("nearest.prs")->columns, ElementsAre(1));
    PutFile(elsewhere / "nearest.prs", "header\n0,-1\n");  // the current directory comes first
    EXPECT_THAT(ReadSearchPattern("nearest.prs")->columns, ElementsAre(-1));
    std::filesystem::current_path(directory.Path());
}

TEST(ShippedPattern, GoesThroughRingsByDistanceCounterClockwise)
{
    const auto steps = ReadSearchPattern(ShippedFile("nearccw.prs"));
    ASSERT_TRUE(steps);
    ASSERT_GE(steps->rows.size(), 24U);
    const std::vector<int> firstRows(steps->rows.begin(), steps->rows.begin() + 8);
    const std::vector<int> firstColumns(steps->columns.begin(), steps->columns.begin() + 8);
    EXPECT_THAT(firstRows, ElementsAre(0, -1, 0, 1, -1, -1, 1, 1));
    EXPECT_THAT(firstColumns, ElementsAre(1, 0, -1, 0, 1, -1, -1, 1));
    std::set<std::pair<int, int>> seen;
    double turned = -1;
    for (std::size_t i = 0; i < steps->rows.size(); ++i) {
        const int row = steps->rows[i];
        const int column = steps->columns[i];
        EXPECT_TRUE(seen.emplace(row, column).second) << row << ',' << column;
        const int far = row * row + column * column;
        const double angle = std::fmod(std::atan2(-row, column) + 8 * std::atan(1.0), 8 * std::atan(1.0));
        if (i > 0) {
            const int before = steps->rows[i - 1] * steps->rows[i - 1] + steps->columns[i - 1] * steps->columns[i - 1];
            EXPECT_TRUE(far > before || (far == before && angle > turned)) << row << ',' << column;
        }
        turned = angle;
    }
}

TEST(NullGains, AThousandthOnEitherSideIsBad)
{
    const std::vector<float> gains = {0.001F,
                                      -0.001F,
                                      0.0011F,
                                      -0.0011F,
                                      0.0F,
                                      1.0F,
                                      std::nextafter(0.001F, 1.0F),
                                      std::numeric_limits<float>::quiet_NaN()};
    BadDetMap map(8, 0);
    EXPECT_EQ(IdentifyBadDet(map, gains, PlainTable(8), Region(2, 4)), 3);
    EXPECT_THAT(map, ElementsAre(1, 1, 0, 0, 1, 0, 0, 0));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST(NullGains, AreFoundThroughTheTableAndMarkedInImageOrder)
{
    const std::vector<float> gains = {1, 0, 1, 1};
    BadDetMap map = {1, 0, 0, 0};  // marks that stand are kept
    EXPECT_EQ(IdentifyBadDet(map, gains, DecomTable{0, 2, 3, 1}, Region(1, 4)), 1);
    EXPECT_THAT(map, ElementsAre(1, 0, 0, 1));
    CameraConfig delayed = Region(1, 4);
    delayed.Idelay = 1;  // image pixel c stands at position c + 1
    map.assign(4, 0);
    EXPECT_EQ(IdentifyBadDet(map, gains, DecomTable{0, 2, 3, 1}, delayed), 1);
    EXPECT_THAT(map, ElementsAre(0, 0, 1, 0));
}

TEST(NullGains, AddressesBeyondTheFrameTakeEntryZeroAndAreTold)
{
    const std::vector<float> gains = {0, 1, 1, 1};
    BadDetMap map(4, 0);
    // 4 is one past the frame: it takes entry 0 too, and isn't counted.
    EXPECT_EQ(IdentifyBadDet(map, gains, DecomTable{1, 4, 5, 0xFFFFFFFF}, Region(1, 4)), 3);
    EXPECT_THAT(map, ElementsAre(0, 1, 1, 1));
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "IdentifyBadDet() Error",
                                                   .text = "2 invalid decommutation addresses."}));
    EXPECT_EQ(BeepsHeard().size(), 2U);
}

TEST(NullGains, PixelsWithoutAPlaceTakeEntryZeroAndAreTold)
{
    CameraConfig config = Region(1, 4);
    config.Idelay = -6;  // pixels 0 and 1 stay below the table
    const std::vector<float> gains = {0, 1, 1, 1};
    BadDetMap map(4, 0);
    EXPECT_EQ(IdentifyBadDet(map, gains, DecomTable{9, 1, 1, 1}, config), 3);  // and pixel 2 stands at 0, address 9
    EXPECT_THAT(map, ElementsAre(1, 1, 1, 0));
    EXPECT_THAT(
        BoxesShown(),
        ElementsAre(ShownBox{.caption = "IdentifyBadDet() Error", .text = "2 invalid decommutation index errors!"},
                    ShownBox{.caption = "IdentifyBadDet() Error", .text = "1 invalid decommutation addresses."}));
}

TEST(NullGains, ShortListsAreNeverReadBeyondTheirEnd)
{
    BadDetMap map(4, 0);
    EXPECT_EQ(IdentifyBadDet(map, std::vector<float>{1, 0}, PlainTable(4), Region(1, 4)), 1);
    EXPECT_THAT(map, ElementsAre(0, 1, 0, 0));
    EXPECT_EQ(IdentifyBadDet(map, {}, PlainTable(4), Region(1, 4)), 0);
    EXPECT_EQ(IdentifyBadDet(map, std::vector<float>{1}, {}, Region(1, 4)), 0);
    EXPECT_THAT(BoxesShown(), SizeIs(1));
}

class Substitution : public Replacement {
  protected:
    Substitution()
    {
        write::camera.ActiveConfig = Region(1, 4);
        write::display.SubstBadPixels = 1;
        write::calSet.CalSettings.CalFile = directory / "Run7.cal";
        write::calSet.CalSettings.BadDetFile.clear();
        PutPattern("0,1\n0,-1\n");
    }
    const std::vector<float> gains = {1, 0, 1, 1};
    DecomTable decom = PlainTable(4);
};

TEST_F(Substitution, JoinsTheListWithWhatTheGainsShow)
{
    write::calSet.CalSettings.BadDetFile = directory / "start.bad";
    PutFile(CalSettings.BadDetFile, "0,3\n");
    EXPECT_EQ(SubstituteBadPixels(gains, decom), 1);
    EXPECT_THAT(decom, ElementsAre(0, 2, 2, 2));
    EXPECT_THAT(BadDetList, ElementsAre(0, 1, 0, 1));
    EXPECT_EQ(BadDetCount, 2);
    EXPECT_EQ(CalSettings.BadDetFile, directory / "Run7.bad");
    EXPECT_EQ(FileContents(directory / "Run7.bad"), "   0,   1\n   0,   3\n");
    EXPECT_EQ(FileContents(directory / "start.bad"), "0,3\n");
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(Substitution, TellsItsStepsInTheStatusLine)
{
    write::calSet.CalSettings.BadDetFile = directory / "start.bad";
    PutFile(CalSettings.BadDetFile, "0,3\n");
    SubstituteBadPixels(gains, decom);
    std::vector<std::string> texts;
    for (const TranscriptLine& line : TranscriptLines()) {
        if (line.kind == "status") texts.push_back(FieldOf(line, "text"));
    }
    EXPECT_THAT(texts, ElementsAre("Performing bad pixel substitution...", "Loading pixel substitution file...",
                                   "Calculating pixel substitution...", "Saving pixel substitution file..."));
}

TEST_F(Substitution, SwitchedOffEmptiesTheNameAndReplacesNothing)
{
    write::display.SubstBadPixels = 0;
    write::calSet.CalSettings.BadDetFile = "somewhere.bad";
    write::calSet.CalSettings.PRSfile = directory / "missing.prs";  // would be told
    EXPECT_EQ(SubstituteBadPixels(gains, decom), 1);
    EXPECT_EQ(CalSettings.BadDetFile, "");
    EXPECT_EQ(decom, PlainTable(4));
    EXPECT_FALSE(std::filesystem::exists(directory / "Run7.bad"));
    EXPECT_THAT(BoxesShown(), IsEmpty());
}

TEST_F(Substitution, WithoutMemoryForTheMapIsTold)
{
    FailAllocation(1);
    EXPECT_EQ(SubstituteBadPixels(gains, decom), 0);
    EXPECT_EQ(decom, PlainTable(4));
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Kelvo message",
                                                   .text = "Failure to allocate memory for bad detector list"}));
}

TEST_F(Substitution, WithoutTheListThatItStartsFromFails)
{
    write::calSet.CalSettings.BadDetFile = directory / "missing.bad";
    EXPECT_EQ(SubstituteBadPixels(gains, decom), 0);
    EXPECT_THAT(BadDetList, IsEmpty());
    EXPECT_EQ(CalSettings.BadDetFile, directory / "missing.bad");
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Kelvo message",
                                                   .text = "Could not open file " + (directory / "missing.bad")}));
}

TEST_F(Substitution, WithoutAPatternFailsAndDropsTheMap)
{
    write::calSet.CalSettings.PRSfile = directory / "missing.prs";
    EXPECT_EQ(SubstituteBadPixels(gains, decom), 0);
    EXPECT_THAT(BadDetList, IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(directory / "Run7.bad"));
    EXPECT_THAT(BoxesShown(), SizeIs(1));
}

TEST_F(Substitution, AListThatCantBeWrittenIsOnlyTold)
{
    write::calSet.CalSettings.CalFile = directory / "none/Run7.cal";
    bool isSaved = true;
    EXPECT_EQ(SubstituteBadPixels(gains, decom, &isSaved), 1);
    EXPECT_FALSE(isSaved);
    EXPECT_THAT(decom, ElementsAre(0, 2, 2, 3));
    EXPECT_THAT(BoxesShown(), ElementsAre(ShownBox{.caption = "Kelvo message",
                                                   .text = "Could not save file: " + (directory / "none/Run7.bad")}));
}

}  // namespace
}  // namespace kelvo

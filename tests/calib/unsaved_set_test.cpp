// A calibration in force whose files couldn't be written: what goes on from it, and what becomes of the former files.
#include "pixel/unsaved_set.h"

#include "calib/calibration_commands.h"
#include "calib/calibration_set.h"
#include "calib/last_set.h"
#include "calib/one_point_run.h"
#include "calib/orientation.h"
#include "calib/run_fixture.h"
#include "platform/faults.h"
#include "support/rounds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// A directory stands where the offsets are to go; the former set's other files are whole.
class SetInMemory : public CalibrationRun {
  protected:
    void SetUp() override
    {
        CalibrationRun::SetUp();
        write::camera.ActiveConfig.BufferCapture = 1;
        PutSet(InDirectory("Last.cal"));
        PutFile(InDirectory("Last.bad"), "   0,   0\n");
        std::filesystem::remove(InDirectory("Last.off"));
        std::filesystem::create_directories(InDirectory("Last.off/inside"));
        former = FilesOfLast();
        AtLow({kLow}, "20");
        AtHigh({kHigh}, "25");
        ASSERT_EQ(TwoPoint(), 1);
        ASSERT_THAT(op->Boxes().back().text, HasSubstr("its files couldn't be saved"));
        ASSERT_EQ(FilesOfLast(), former);
        boxes = op->Boxes().size();
    }
    std::vector<std::string> FilesOfLast() const
    {
        std::vector<std::string> files;
        for (const std::string_view extension : kSetExtensions) {
            const std::string path = LastSetFile(extension);
            files.push_back(FileExists(path) ? FileContents(path) : "none");
        }
        return files;
    }
    void ClearTheWay() const { std::filesystem::remove_all(InDirectory("Last.off")); }
    void ExpectLists(const std::string& name, const std::vector<std::uint32_t>& table = {0, 1, 2, 3, 4, 1, 2, 3})
    {
        EXPECT_THAT(ListOf<float>(name + ".gai"),
                    ElementsAre(0.875F, 0.875F, 0.875F, 0.875F, 0.875F, 0.0F, 0.0F, 0.0F));
        EXPECT_EQ(FileContents(InDirectory(name + ".bad")), "   1,   1\n   1,   2\n   1,   3\n");
        EXPECT_EQ(ListOf<std::uint32_t>(name + ".dcm"), table);
        for (const auto& [key, extension] :
             {std::pair{"GainFile", ".gai"}, {"OffsetFile", ".off"}, {"DecomFile", ".dcm"}, {"BadDetFile", ".bad"}}) {
            EXPECT_EQ(KeyOf(InDirectory(name + ".cal"), "Calibration", key), name + extension);
        }
        EXPECT_EQ(KeyOf(InDirectory(name + ".cal"), "Calibration", "CalType"), "2");
    }
    std::size_t NewBoxes() const { return op->Boxes().size() - boxes; }

    std::vector<std::string> former;
    std::size_t boxes = 0;
};

TEST_F(SetInMemory, KeepsItsPathsInTheRecord)
{
    EXPECT_EQ(CalSettings.CalFile, InDirectory("Last.cal"));
    EXPECT_EQ(CalSettings.GainFile, InDirectory("Last.gai"));
    EXPECT_EQ(CalSettings.OffsetFile, InDirectory("Last.off"));
    EXPECT_EQ(CalSettings.DecomFile, InDirectory("Last.dcm"));
    EXPECT_EQ(CalSettings.BadDetFile, InDirectory("Last.bad"));
}

TEST_F(SetInMemory, IsSavedUnderAnotherName)
{
    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.cal")), 1);
    ExpectLists("kept");
    EXPECT_THAT(ListOf<std::int16_t>("kept.off"), ElementsAre(62, 72, 52, 62, 62, 0, 0, 0));
    EXPECT_EQ(KeyOf(InDirectory("kept.cal"), "Calibration", "CalFile"), InDirectory("kept.cal"));
    EXPECT_EQ(KeyOf(InDirectory("kept.cal"), "Calibration", "TemperatureHot"), "25.000000");
    EXPECT_EQ(FilesOfLast(), former);
    EXPECT_FALSE(SetWithoutFiles());
    const std::vector<std::uint32_t> table = DecomList;
    const std::vector<float> gains = GainList;
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("kept.cal")), 1);
    EXPECT_EQ(DecomList, table);
    EXPECT_EQ(GainList, gains);
    EXPECT_EQ(TemperatureHot, 25.0F);
    EXPECT_EQ(NewBoxes(), 0U);
}

TEST_F(SetInMemory, IsSavedUnderItsOwnNameOnceThereIsRoom)
{
    EXPECT_EQ(SaveCalibrationAs(InDirectory("Last.cal")), 0) << "not yet";
    EXPECT_EQ(FilesOfLast(), former);
    ClearTheWay();
    EXPECT_EQ(SaveCalibrationAs(InDirectory("Last.cal")), 1);
    ExpectLists("Last");
    EXPECT_FALSE(SetWithoutFiles());
}

// 100 counts more at the source: each offset grows by 100 less the mean's share, and the former set's gains have no
// part.
TEST_F(SetInMemory, AnUpdateGoesOnFromItAndWritesAllOfIt)
{
    ClearTheWay();
    Frame source = kLow;
    for (std::int16_t& count : source) count = static_cast<std::int16_t>(count + 100);
    AtLow({source}, "21");
    EXPECT_EQ(OnePointCalibrate(hWndMain), 1);
    EXPECT_EQ(CalType, 2);
    ExpectLists("Last", {0, 1, 2, 3, 4, 5, 6, 7});  // as a one-point run writes it: before replacement
    // All but the last lie in the window about the mean: 7705 / 7 = 1100.714, and 1100 - 0.875 x 1100.714 = 136.875.
    EXPECT_THAT(ListOf<std::int16_t>("Last.off"), ElementsAre(137, 147, 127, 137, 137, 0, 0, 0));
    EXPECT_EQ(KeyOf(InDirectory("Last.cal"), "Calibration", "TemperatureCold"), "21.000000");
    EXPECT_FALSE(SetWithoutFiles());
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("Last.cal")), 1);
    EXPECT_EQ(NewBoxes(), 1U) << "the result alone";
}

TEST_F(SetInMemory, AnUpdateThatCantBeWrittenEitherStaysInMemory)
{
    AtLow({kLow});
    EXPECT_EQ(OnePointCalibrate(hWndMain), 1);
    EXPECT_THAT(op->Boxes().back().text, HasSubstr("its files couldn't be saved"));
    EXPECT_EQ(FilesOfLast(), former);
    ClearTheWay();
    EXPECT_EQ(SaveCalibrationAs(InDirectory("Last.cal")), 1);
    ExpectLists("Last");
    EXPECT_THAT(ListOf<std::int16_t>("Last.off"),
                ElementsAre(124, 134, 114, 124, 124, 0, 0, 0));  // 1000 - 0.875 x 1000.714
}

TEST_F(SetInMemory, ANewOnePointRunThatDoesNotCompleteGoesBackToIt)
{
    const auto choose = [this](const char* window) {
        op->Do([window] {
            OperateCheck(DialogInFront(), 1214, true);
            OperateText(DialogInFront(), 1205, window);
            OperateText(DialogInFront(), 1206, window);
            OperatePress(DialogInFront(), kIdOk);
        });
    };
    choose("400");
    Press(kIdCancel);
    NewCalibration();
    EXPECT_EQ(CalType, 2);
    EXPECT_THAT(op->Texts("status", "text"), Not(Contains("Loading gain list...")));
    choose("0");
    AtLow({kLow});
    NewCalibration();
    EXPECT_EQ(op->Boxes().back().text, "Failure to find good pixels!");
    EXPECT_EQ(CalType, 2);
    EXPECT_THAT(GainList, ElementsAre(0.875F, 0.875F, 0.875F, 0.875F, 0.875F, 0.1F, 0.1F, 0.1F));
    EXPECT_THAT(OffsetList, ElementsAre(62, 72, 52, 62, 62, 0, 0, 0));
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 1, 2, 3));
    EXPECT_EQ(CalSettings.CalFile, InDirectory("Last.cal"));
    EXPECT_EQ(TemperatureHot, 25.0F);
    EXPECT_TRUE(SetWithoutFiles());
    EXPECT_EQ(FilesOfLast(), former);
}

TEST_F(SetInMemory, ReplacementSwitchedOffAndOnTakesItsOwnListAndTouchesNoFile)
{
    ToggleBadPixelReplacement(hWndMain);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
    ToggleBadPixelReplacement(hWndMain);
    EXPECT_THAT(DecomList, ElementsAre(0, 1, 2, 3, 4, 1, 2, 3));
    FlushProfiles();
    EXPECT_EQ(FilesOfLast(), former);
    EXPECT_EQ(NewBoxes(), 0U);
}

TEST_F(SetInMemory, AnotherCalibrationTakesItsPlace)
{
    PutSet(InDirectory("warm.cal"));
    EXPECT_EQ(LoadCalibration(hWndMain, InDirectory("warm.cal")), 1);
    EXPECT_FALSE(SetWithoutFiles());
    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.cal")), 1);
    EXPECT_THAT(ListOf<float>("kept.gai"), ElementsAre(1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.25F, 2.5F, 2.75F));
}

TEST_F(SetInMemory, AnUpdateThatFailsAtTheReplacementNamesItsListAsBefore)
{
    write::calSet.CalSettings.PRSfile = InDirectory("missing.prs");
    AtLow({kLow});
    EXPECT_EQ(OnePointCalibrate(hWndMain), 0);
    EXPECT_THAT(op->Boxes().back().text, HasSubstr("Unable to open pixel replacement (.prs) file."));
    EXPECT_EQ(CalSettings.BadDetFile, InDirectory("Last.bad"));
    EXPECT_EQ(CalSettings.DecomFile, InDirectory("Last.dcm"));
    EXPECT_EQ(CalSettings.CalFile, InDirectory("Last.cal"));
    EXPECT_TRUE(SetWithoutFiles());
    EXPECT_EQ(FilesOfLast(), former);
}

TEST_F(SetInMemory, AnUpdateThatFailsBeforeTheReplacementNamesItsListAsBefore)
{
    write::calSet.CalSettings.MinOffset = write::calSet.CalSettings.MaxOffset = 0;
    AtLow({kLow});
    EXPECT_EQ(OnePointCalibrate(hWndMain), 0);
    EXPECT_EQ(op->Boxes().back().text, "Failure to find good pixels!");
    EXPECT_EQ(CalSettings.BadDetFile, InDirectory("Last.bad"));
    EXPECT_EQ(FilesOfLast(), former);
}

// --- A disk that fails once, at each step of a run ------------------------------------------------------------------

// A set of another list of bad detectors stands, and the disk fails at the n-th write of a run.
class FailingDisk : public CalibrationRun {
  protected:
    void PutFormer(const std::string& name)
    {
        PutSet(InDirectory(name + ".cal"));
        PutFile(InDirectory(name + ".bad"), "   0,   0\n");
        FlushProfiles();
        write::calSet.CalSettings.BadDetFile.clear();
    }
    std::string FilesOf(const std::string& name) const
    {
        std::string files;
        for (const std::string_view extension : {".gai", ".off", ".dcm", ".bad"}) {
            const std::string path = InDirectory(name + std::string(extension));
            files += std::string(extension) + (FileExists(path) ? FileContents(path) : "none");
        }
        return files;
    }
    // Runs until the fault doesn't come any more. Each run that gives a calibration has the table that belongs to it,
    // and the set is either the run's or, where that was told, the former one, whole.
    void FailAtEachStep(const std::string& name, const std::function<int()>& run,
                        const std::vector<std::uint32_t>& table, const std::string& list)
    {
        PutFormer(name);
        ASSERT_EQ(run(), 1);
        const std::string whole = FilesOf(name);
        bool listTold = false;
        const int stride = AllRounds() ? 1 : 3;  // a file that is replaced takes four steps
        for (int n = 1;; n += stride) {
            SCOPED_TRACE(n);
            ASSERT_LT(n, 300);
            PutFormer(name);
            const std::string former = FilesOf(name);
            const std::size_t before = op->Boxes().size();
            SetFaultOnce("disk", n);
            const int done = run();
            const bool came = QuestionsUntilFault("disk") == 0;
            SetFaultOnce("disk", 0);
            bool unsaved = false;
            for (std::size_t i = before; i < op->Boxes().size(); ++i) {
                unsaved = unsaved || op->Boxes()[i].text.find("its files couldn't be saved") != std::string::npos;
                listTold = listTold || op->Boxes()[i].text == "Could not save file: " + InDirectory(name + ".bad");
            }
            if (done) {
                EXPECT_EQ(DecomList, table);
                EXPECT_EQ(FilesOf(name), unsaved ? former : whole);
                EXPECT_EQ(SetWithoutFiles() != nullptr, unsaved);
                EXPECT_EQ(CalSettings.BadDetFile, InDirectory(name + ".bad"));
                if (unsaved) {
                    EXPECT_EQ(SaveCalibrationAs(InDirectory("kept.cal")), 1);
                    EXPECT_EQ(FileContents(InDirectory("kept.bad")), list);
                }
            }
            if (!came) break;
        }
        EXPECT_TRUE(listTold) << "one of the steps is the list of bad detectors";
    }
};

TEST_F(FailingDisk, LeavesNoTwoPointSetWithAFormerList)
{
    FailAtEachStep(
        "Last", [this] { return TwoPointOf(kLow, kHigh); }, {0, 1, 2, 3, 4, 1, 2, 3},
        "   1,   1\n   1,   2\n   1,   3\n");
}

// The last detector lies outside the window about the mean.
const Frame kOneOff = {1000, 1010, 990, 1000, 1000, 1005, 1000, 3000};

TEST_F(FailingDisk, LeavesNoOnePointSetWithAFormerList)
{
    FailAtEachStep(
        "last",
        [this] {
            write::cal.CalType = 0;
            AtLow({kOneOff});
            return OnePointCalibrate(hWndMain);
        },
        {0, 1, 2, 3, 4, 5, 6, 3}, "   1,   3\n");
}

TEST_F(FailingDisk, LeavesNoUpdatedSetWithAFormerList)
{
    FailAtEachStep(
        "warm",
        [this] {
            write::cal.CalType = 2;
            write::calSet.CalSettings.CalFile = InDirectory("warm.cal");
            write::calSet.CalSettings.GainFile = InDirectory("warm.gai");
            write::calSet.CalSettings.OffsetFile = InDirectory("warm.off");
            write::calSet.CalSettings.DecomFile = InDirectory("warm.dcm");
            AtLow({kOneOff});
            return OnePointCalibrate(hWndMain);
        },
        {0, 1, 2, 3, 4, 5, 6, 3}, "   1,   3\n");
}

}  // namespace
}  // namespace kelvo

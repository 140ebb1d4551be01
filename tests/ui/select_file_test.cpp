#include "platform/faults.h"
#include "platform/files.h"
#include "platform/front.h"
#include "state/windows_write.h"
#include "support/operator.h"
#include "support/state_value.h"
#include "support/stored_files.h"
#include "ui/select_file_write.h"
#include "ui/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace kelvo {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> Texts(std::string_view pattern)
{
    std::vector<std::string> texts;
    for (const FileFilter& filter : FiltersFor(pattern).filters) texts.emplace_back(filter.text);
    return texts;
}

TEST(FileFilters, StandInTheOrderOfThePatternAskedFor)
{
    const std::string image = "Image Files (*.img)";
    const std::string sequence = "Sequence Files (*.seq)";
    const std::string buffer = "BufferBoard Files (*.buf)";
    const std::string deviation = "StdDev Files (*.sdv)";
    const std::string all = "All Files (*.*)";
    EXPECT_THAT(Texts("*.img"), ElementsAre(image, sequence, buffer, deviation, all));
    EXPECT_THAT(Texts("*.SEQ"), ElementsAre(sequence, image, buffer, deviation, all));
    EXPECT_THAT(Texts("*.buf"), ElementsAre(buffer, image, sequence, deviation, all));
    EXPECT_THAT(Texts("*.sdv"), ElementsAre(deviation, image, sequence, buffer, all));
    EXPECT_THAT(Texts("*.bmp"), ElementsAre("Bitmap Files (*.bmp)", all));
    EXPECT_THAT(Texts("*.tif"), ElementsAre(all, image, sequence, buffer));
}

TEST(FileFilters, RealTimeDiskListsBufferFilesUnderItsText)
{
    const FilterList list = FiltersFor("*.rtd");
    EXPECT_EQ(list.filters.at(0).text, "RealTimeDisk Files (*.buf)");
    EXPECT_EQ(list.filters.at(0).pattern, "*.buf");
    EXPECT_EQ(list.defaultExtension, "buf");
}

TEST(FileFilters, DefaultExtensions)
{
    const std::pair<const char*, const char*> rows[] = {{"*.img", "img"}, {"*.seq", "seq"}, {"*.buf", "buf"},
                                                        {"*.sdv", "sdv"}, {"*.bmp", "bmp"}, {"*.tif", "img"}};
    for (const auto& [pattern, extension] : rows) EXPECT_EQ(FiltersFor(pattern).defaultExtension, extension) << pattern;
}

class SelectFileDialog : public ::testing::Test {
  protected:
    SelectFileDialog()
    {
        SetDefaultDir(directory_.Path());
        write::fileChoice.LastFileDirectory.clear();
        PutFile(directory_ / "a.img", "a");
        PutFile(directory_ / "two words.img", "b");
        StatusMessage("before", 6);
    }

    TestOperator operator_;
    TempDirectory directory_;
};

TEST_F(SelectFileDialog, TheFirstDialogOpensInTheProgramsDirectory)
{
    operator_.Do([&] { ChooseFiles({directory_ / "a.img"}); });
    std::string path = "*.img";
    EXPECT_EQ(SelectFile(nullptr, path, kSelectToOpen), 1);
    EXPECT_EQ(path, directory_ / "a.img");
    EXPECT_EQ(operator_.Texts("file", "directory").at(0), directory_.Path());
    EXPECT_EQ(operator_.Texts("file", "title").at(0), "Open File");
    EXPECT_EQ(LastFileDirectory, directory_.Path() + "/");
}

TEST_F(SelectFileDialog, WhatIsSavedGetsAFolderThatIsMadeAndKeptOnlyIfItIsUsed)
{
    const std::string folder = directory_ / "Documents/Kelvo";
    write::fileChoice.FirstFileDirectory = folder;
    std::string path = "*.img";
    operator_.Do([] { CancelFileDialog(); });
    EXPECT_EQ(SelectFile(nullptr, path, kSelectToSave), 0);
    EXPECT_EQ(operator_.Texts("file", "directory").back(), folder);
    EXPECT_FALSE(DirectoryExists(directory_ / "Documents")) << "nor what was made above it";

    path = "*.img";
    operator_.Do([] { CancelFileDialog(); });
    SelectFile(nullptr, path, kSelectToOpen);
    EXPECT_EQ(operator_.Texts("file", "directory").back(), directory_.Path()) << "to open, while there is none";

    path = "*.img";
    operator_.Do([] { ChooseFiles({"a.img"}); });
    EXPECT_EQ(SelectFile(nullptr, path, kSelectToSave), 1);
    EXPECT_EQ(path, folder + "/a.img");
    EXPECT_TRUE(DirectoryExists(folder));
    EXPECT_EQ(LastFileDirectory, folder + "/");

    write::fileChoice.LastFileDirectory.clear();
    path = "*.img";
    operator_.Do([] { CancelFileDialog(); });
    SelectFile(nullptr, path, kSelectToOpen);
    EXPECT_EQ(operator_.Texts("file", "directory").back(), folder);
}

TEST_F(SelectFileDialog, WhereTheFolderCannotBeMadeTheProgramsDirectoryServes)
{
    write::fileChoice.FirstFileDirectory = directory_ / "a.img/Kelvo";
    std::string path = "*.img";
    operator_.Do([] { CancelFileDialog(); });
    SelectFile(nullptr, path, kSelectToSave);
    EXPECT_EQ(operator_.Texts("file", "directory").back(), directory_.Path());
    EXPECT_THAT(operator_.Boxes(), ::testing::IsEmpty());
}

TEST_F(SelectFileDialog, OffersThePatternAsItsFilterAndNoName)
{
    for (const std::string pattern : {"*.img", "*.seq", "*.buf", "*.sdv", "*.bmp"}) {
        for (const int mode : {kSelectToSave, kSelectToOpen, kSelectSeveral}) {
            std::optional<FrontFileDialog> shown;
            operator_.Do([&] {
                shown = FileDialogInFront();
                CancelFileDialog();
            });
            std::string path = pattern;
            EXPECT_EQ(SelectFile(nullptr, path, mode), 0);
            ASSERT_TRUE(shown) << pattern;
            EXPECT_EQ(shown->name, "") << pattern;
            EXPECT_THAT(shown->filters.at(0), testing::EndsWith("(" + pattern + ")"));
        }
    }
    EXPECT_THAT(operator_.Texts("file", "name"), testing::Each(""));
}

TEST_F(SelectFileDialog, CancellingLeavesTheFolderAndEmptiesThePath)
{
    write::fileChoice.LastFileDirectory = "/somewhere/";
    operator_.Do([] { CancelFileDialog(); });
    std::string path = "*.img";
    EXPECT_EQ(SelectFile(nullptr, path, kSelectToOpen), 0);
    EXPECT_EQ(path, "");
    EXPECT_EQ(LastFileDirectory, "/somewhere/");
    EXPECT_TRUE(operator_.Boxes().empty());
}

TEST_F(SelectFileDialog, SeveralFilesGiveTheFolderWithoutASeparator)
{
    operator_.Do([&] { ChooseFiles({directory_ / "a.img", directory_ / "two words.img"}); });
    std::string path = "*.img";
    EXPECT_EQ(SelectFile(nullptr, path, kSelectSeveral), 1);
    EXPECT_EQ(path, directory_.Path() + " a.img two words.img");
    EXPECT_EQ(StateText("SelectedPaths"), (directory_ / "a.img") + "\n" + (directory_ / "two words.img") + "\n");
    EXPECT_EQ(LastFileDirectory, directory_.Path());
}

TEST_F(SelectFileDialog, OneFileOfSeveralGivesItsWholePath)
{
    operator_.Do([&] { ChooseFiles({directory_ / "two words.img"}); });
    std::string path = "*.img";
    EXPECT_EQ(SelectFile(nullptr, path, kSelectSeveral), 1);
    EXPECT_EQ(path, directory_ / "two words.img");
    EXPECT_EQ(LastFileDirectory, directory_.Path());
}

TEST_F(SelectFileDialog, TheStatusLineHintsAndComesBack)
{
    const std::tuple<int, const char*> rows[] = {{kSelectToSave, "Enter filename to save image file to"},
                                                 {kSelectToOpen, "Select image file to view"},
                                                 {kSelectSeveral, "Select multiple image files to analyze"}};
    for (const auto& [mode, hint] : rows) {
        operator_.Do([] { CancelFileDialog(); });
        std::string path = "*.img";
        SelectFile(nullptr, path, mode);
        const std::vector<std::string> texts = operator_.Texts("status", "text");
        EXPECT_EQ(texts.at(texts.size() - 2), hint);
        EXPECT_EQ(StatusText, "before");
        EXPECT_EQ(StatusAlign, 6);
    }
}

TEST_F(SelectFileDialog, AFailureOfTheDialogIsTold)
{
    SetFault("file dialog", true);
    std::string path = "*.img";
    EXPECT_EQ(SelectFile(nullptr, path, kSelectToSave), 0);
    SetFault("file dialog", false);
    EXPECT_EQ(path, "");
    EXPECT_EQ(operator_.Boxes().at(0).text, "GetOpenFileName returned Error #65535");
    EXPECT_EQ(operator_.Boxes().at(0).caption, "WARNING");
    EXPECT_EQ(operator_.Boxes().at(0).icon, "stop");
    EXPECT_EQ(StatusText, "before");
}

TEST_F(SelectFileDialog, StatisticsFilesHaveTheirOwnListsAndAlwaysGiveZero)
{
    std::vector<std::string> filters;
    operator_.Do([&] {
        filters = FileDialogInFront()->filters;
        ChooseFiles({directory_ / "a.img"});
    });
    std::string path;
    EXPECT_EQ(SelectStatisticsFile(nullptr, path, kStatisticsFiles), 0);
    EXPECT_EQ(path, directory_ / "a.img");
    EXPECT_EQ(operator_.Texts("file", "title").at(0), "View statistics of selected file");
    EXPECT_THAT(filters, ElementsAre("Gain files (*.gai)", "Offset files (*.off)", "Noise files (*.noi)",
                                     "Bad pixel files (*.bad)", "Calib. ini files (*.cal)"));
    EXPECT_EQ(LastFileDirectory, "");

    operator_.Do([] { CancelFileDialog(); });
    EXPECT_EQ(SelectStatisticsFile(nullptr, path, kBadDetectorFiles), 0);
    EXPECT_EQ(path, "");
    EXPECT_EQ(operator_.Texts("file", "title").at(1), "Select bad detector file");

    operator_.Do([] { CancelFileDialog(); });
    SelectStatisticsFile(nullptr, path, 0);
    EXPECT_EQ(operator_.Texts("file", "title").at(2), "Select a file");
}

}  // namespace
}  // namespace kelvo

// Where the program's own notes lie, and what an earlier version left in the data directory.
#include "shell/note_directories.h"

#include "platform/faults.h"
#include "shell/start_options_write.h"
#include "state/windows_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> FilesBelow(const std::string& directory)
{
    std::vector<std::string> names;
    if (!std::filesystem::exists(directory)) return names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) names.push_back(entry.path().lexically_relative(directory).string());
    }
    return names;
}

class NoteDirectories : public testing::Test {
  protected:
    NoteDirectories()
    {
        setenv("XDG_STATE_HOME", (directory / "state").c_str(), 1);
        setenv("XDG_CACHE_HOME", (directory / "cache").c_str(), 1);
        std::filesystem::create_directories(data + "/opened");
        SetDefaultDir(data);
    }
    ~NoteDirectories() override
    {
        ClearFaults();
        unsetenv("XDG_STATE_HOME");
        unsetenv("XDG_CACHE_HOME");
        if (home) setenv("HOME", home->c_str(), 1);
        write::options.startOptions = {};
        SetStateDir(DefaultDir);
        SetCacheDir(DefaultDir);
    }
    void PutNotes() const
    {
        PutFile(data + "/window.ini", "[View]\nTheme=dark\n");
        PutFile(data + "/recent.ini", "[Recent]\nFile1=/a.img\n");
        PutFile(data + "/CommLog.txt", "[CommLog]\n");
        PutFile(data + "/kelvo.ini", "[Setup]\n");
    }
    void WithoutHome()
    {
        if (const char* const value = std::getenv("HOME")) home = value;
        unsetenv("HOME");
    }

    TempDirectory directory;
    const std::string data = directory / "data";
    const std::string state = directory / "state/kelvo";
    const std::string cache = directory / "cache/kelvo";
    std::optional<std::string> home;
};

TEST_F(NoteDirectories, AreTheUsersAndMade)
{
    PartNotesFromSettings();
    EXPECT_EQ(StateDir, state);
    EXPECT_EQ(CacheDir, cache);
    EXPECT_TRUE(std::filesystem::is_directory(state));
    EXPECT_TRUE(std::filesystem::is_directory(cache));
    EXPECT_EQ(DefaultDir, data);
}

TEST_F(NoteDirectories, StayWhenTheSetUpRunsAgain)
{
    PartNotesFromSettings();
    SetDefaultDir(data + "/");
    EXPECT_EQ(StateDir, state);
    EXPECT_EQ(CacheDir, cache);
}

TEST_F(NoteDirectories, AreTheDataDirectoryWithData)
{
    PutNotes();
    write::options.startOptions.keepsOneDirectory = true;
    PartNotesFromSettings();
    EXPECT_EQ(StateDir, data);
    EXPECT_EQ(CacheDir, data);
    EXPECT_THAT(FilesBelow(data), UnorderedElementsAre("window.ini", "recent.ini", "CommLog.txt", "kelvo.ini"));
    EXPECT_FALSE(std::filesystem::exists(state));
}

TEST_F(NoteDirectories, TakeOverWhatStoodInTheDataDirectory)
{
    PutNotes();
    PartNotesFromSettings();
    EXPECT_THAT(FilesBelow(data), UnorderedElementsAre("kelvo.ini"));
    EXPECT_THAT(FilesBelow(state), UnorderedElementsAre("window.ini", "recent.ini", "CommLog.txt"));
    EXPECT_EQ(FileContents(state + "/window.ini"), "[View]\nTheme=dark\n");
    EXPECT_EQ(FileContents(state + "/recent.ini"), "[Recent]\nFile1=/a.img\n");
}

TEST_F(NoteDirectories, LeaveWhatStandsInBoth)
{
    PutNotes();
    std::filesystem::create_directories(state);
    PutFile(state + "/recent.ini", "[Recent]\nFile1=/later.img\n");
    PartNotesFromSettings();
    EXPECT_EQ(FileContents(state + "/recent.ini"), "[Recent]\nFile1=/later.img\n");
    EXPECT_EQ(FileContents(data + "/recent.ini"), "[Recent]\nFile1=/a.img\n");
    EXPECT_EQ(FileContents(state + "/window.ini"), "[View]\nTheme=dark\n");
}

// Whichever step of the disk fails: either all stands in the one directory, or all in the other.
TEST_F(NoteDirectories, TakeOverAllOrNothing)
{
    int rounds = 0;
    for (int step = 1; step < 100; ++step) {
        SCOPED_TRACE(step);
        std::filesystem::remove_all(directory / "state");
        SetStateDir(DefaultDir);
        PutNotes();
        SetFaultOnce("disk", step);
        PartNotesFromSettings();
        const bool failed = QuestionsUntilFault("disk") == 0;
        ClearFaults();
        if (!failed) break;
        ++rounds;
        if (StateDir == data) {
            EXPECT_EQ(FileContents(data + "/window.ini"), "[View]\nTheme=dark\n");
            EXPECT_EQ(FileContents(data + "/recent.ini"), "[Recent]\nFile1=/a.img\n");
            EXPECT_THAT(FilesBelow(state), IsEmpty());
        } else {
            EXPECT_EQ(FileContents(state + "/window.ini"), "[View]\nTheme=dark\n");
            EXPECT_EQ(FileContents(state + "/recent.ini"), "[Recent]\nFile1=/a.img\n");
        }
    }
    EXPECT_GT(rounds, 3) << "each of the files met the fault";
}

TEST_F(NoteDirectories, AreTheDataDirectoryWhereTheUsersCantBeMade)
{
    PutNotes();
    PutFile(directory / "state", "a file in the way");
    PutFile(directory / "cache", "and another");
    PartNotesFromSettings();
    EXPECT_EQ(StateDir, data);
    EXPECT_EQ(CacheDir, data);
    EXPECT_EQ(FilesBelow(data).size(), 4U);
}

TEST_F(NoteDirectories, AreTheDataDirectoryWithoutAHome)
{
    unsetenv("XDG_STATE_HOME");
    unsetenv("XDG_CACHE_HOME");
    WithoutHome();
    PutNotes();
    PartNotesFromSettings();
    EXPECT_EQ(StateDir, data);
    EXPECT_EQ(CacheDir, data);
    EXPECT_EQ(FilesBelow(data).size(), 4U);
}

TEST_F(NoteDirectories, LieBelowTheHomeWhereNothingElseIsSaid)
{
    unsetenv("XDG_STATE_HOME");
    setenv("XDG_CACHE_HOME", "not/from/the/root", 1);
    WithoutHome();
    setenv("HOME", (directory / "home").c_str(), 1);
    PartNotesFromSettings();
    EXPECT_EQ(StateDir, directory / "home/.local/state/kelvo");
    EXPECT_EQ(CacheDir, directory / "home/.cache/kelvo");
    unsetenv("HOME");
}

TEST_F(NoteDirectories, CopiesOfOtherProgramsFilesMoveWithTheirTale)
{
    PutFile(data + "/opened/scan.seq", "frames");
    PutFile(data + "/opened/scan.seq.source", "Source=/home/me/scan.npy\n");
    PutFile(data + "/opened/mine.seq", "somebody's own");
    PartNotesFromSettings();
    EXPECT_THAT(FilesBelow(cache), UnorderedElementsAre("opened/scan.seq", "opened/scan.seq.source"));
    EXPECT_EQ(FileContents(cache + "/opened/scan.seq"), "frames");
    EXPECT_THAT(FilesBelow(data), UnorderedElementsAre("opened/mine.seq"));
}

TEST_F(NoteDirectories, AnEmptiedDirectoryOfCopiesGoes)
{
    PutFile(data + "/opened/scan.seq", "frames");
    PutFile(data + "/opened/scan.seq.source", "Source=/home/me/scan.npy\n");
    PartNotesFromSettings();
    EXPECT_FALSE(std::filesystem::exists(data + "/opened"));
}

}  // namespace
}  // namespace kelvo

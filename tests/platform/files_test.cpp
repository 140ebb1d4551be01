#include "platform/files.h"

#include "platform/faults.h"
#include "support/temp_directory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::span<const std::byte> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

File Opened(const std::string& path, FileMode mode)
{
    auto file = File::Open(path, mode);
    if (!file) throw std::runtime_error("can't open " + path);
    return std::move(*file);
}

std::string Names(const std::string& directory)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    std::string list;
    for (const std::string& name : names) list += name + ' ';
    return list;
}

mode_t ModeOf(const std::string& path)
{
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

class Paths : public ::testing::Test {
  protected:
    void SetUp() override
    {
        fs::create_directories(directory / "Data/Cal Sets");
        PutFile(directory / "Data/Cal Sets/Room.cal", "cal");
    }
    TempDirectory directory;
};

TEST_F(Paths, BothSeparatorsCount)
{
    EXPECT_EQ(ResolvePath(directory.Path() + "\\Data/Cal Sets\\Room.cal"), directory / "Data/Cal Sets/Room.cal");
}

TEST_F(Paths, ADriveLetterNamesNothing)
{
    EXPECT_EQ(ResolvePath("D:" + (directory / "Data")), directory / "Data");
    EXPECT_EQ(ResolvePath("d:name.img"), "name.img");
    EXPECT_EQ(ResolvePath("c:"), "");
}

TEST_F(Paths, ComponentsMatchInAnotherCase)
{
    EXPECT_EQ(ResolvePath(directory.Path() + "\\DATA\\CAL SETS\\ROOM.CAL"), directory / "Data/Cal Sets/Room.cal");
}

TEST_F(Paths, AnExactNameGoesBeforeOneInAnotherCase)
{
    PutFile(directory / "A.img", "upper");
    PutFile(directory / "a.img", "lower");
    EXPECT_EQ(ResolvePath(directory / "a.img"), directory / "a.img");
    EXPECT_EQ(ResolvePath(directory / "A.img"), directory / "A.img");
    EXPECT_EQ(ResolvePath(directory / "a.IMG"), directory / "A.img");  // the first in byte order
}

TEST_F(Paths, OnlyAsciiLettersAreFolded)
{
    PutFile(directory / "\xC3\xA4.img", "");
    EXPECT_EQ(ResolvePath(directory / "\xC3\x84.img"), directory / "\xC3\x84.img");
    EXPECT_EQ(ResolvePath(directory / "\xC3\xA4.IMG"), directory / "\xC3\xA4.img");
}

TEST_F(Paths, WhatDoesNotStandIsTakenAsWritten)
{
    EXPECT_EQ(ResolvePath(directory.Path() + "\\data\\New\\X.img"), directory / "Data/New/X.img");
    EXPECT_EQ(ResolvePath("nowhere\\At All"), "nowhere/At All");
    EXPECT_EQ(ResolvePath(""), "");
}

TEST_F(Paths, WritingGoesToTheFileOfAnotherCase)
{
    ASSERT_TRUE(ReplaceFile(directory.Path() + "\\data\\cal sets\\ROOM.CAL", "new"));
    EXPECT_EQ(FileContents(directory / "Data/Cal Sets/Room.cal"), "new");
    File file = Opened(directory / "DATA/CAL SETS/room.cal", FileMode::kCreate);
    EXPECT_EQ(file.Write(Bytes("newer")), 5U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(FileContents(directory / "Data/Cal Sets/Room.cal"), "newer");
    EXPECT_EQ(Names(directory / "Data/Cal Sets"), "Room.cal ");
}

TEST_F(Paths, TheClassicProgramDirectoryStandsForOurs)
{
    SetKelvoDirectory(directory / "Data/");
    for (const char* path : {"c:\\KELVO\\room.set", "C:/kelvo/room.set", "c:\\Kelvo\\\\room.set"}) {
        EXPECT_EQ(ResolvePath(path), directory / "Data/room.set") << path;
    }
    EXPECT_EQ(ResolvePath("c:\\KELVO"), directory / "Data");
    EXPECT_EQ(ResolvePath("c:\\KELVO\\CAL SETS\\ROOM.CAL"), directory / "Data/Cal Sets/Room.cal");
    EXPECT_EQ(ResolvePath("c:\\KELVO2\\x"), "/KELVO2/x");
    EXPECT_EQ(ResolvePath("d:\\KELVO\\x"), "/KELVO/x");
}

TEST_F(Paths, WithoutAProgramDirectoryTheWorkingOneServes)
{
    SetKelvoDirectory("");
    ASSERT_EQ(chdir(directory.Path().c_str()), 0);
    EXPECT_EQ(FileContents(ResolvePath("c:\\KELVO\\DATA\\CAL SETS\\room.cal")), "cal");
    EXPECT_TRUE(DirectoryExists("c:\\KELVO"));
}

TEST_F(Paths, AProgramDirectoryThatNamesItselfEndsSomewhere)
{
    SetKelvoDirectory("c:\\KELVO");
    EXPECT_EQ(ResolvePath("c:\\KELVO\\x"), "/KELVO/x");
    SetKelvoDirectory("/");
    EXPECT_EQ(ResolvePath("c:\\KELVO\\no such"), "/./no such");
}

TEST_F(Paths, HostileNamesOpenNothing)
{
    EXPECT_FALSE(FileExists(std::string_view("/etc/passwd\0.img", 16)));
    EXPECT_FALSE(File::Open(std::string_view("/etc/passwd\0.img", 16), FileMode::kRead));
    std::string deep;
    for (int i = 0; i < 1000000; ++i) deep += "a\\";
    EXPECT_FALSE(File::Open(deep, FileMode::kRead));
    EXPECT_FALSE(File::Open(directory / std::string(300, 'n'), FileMode::kCreate));
}

class Files : public ::testing::Test {
  protected:
    TempDirectory directory;
    std::string path = directory / "file.dat";
};

TEST_F(Files, ReadGivesWhatIsThereAndNoMore)
{
    PutFile(path, "0123456789");
    File file = Opened(path, FileMode::kRead);
    EXPECT_EQ(file.Length(), 10);
    std::array<std::byte, 16> block{};
    EXPECT_TRUE(file.Seek(7));
    EXPECT_EQ(file.Read(block), 3U);
    EXPECT_EQ(static_cast<char>(block[0]), '7');
    EXPECT_EQ(file.Read(block), 0U);
    EXPECT_TRUE(file.Seek(100));
    EXPECT_EQ(file.Read(block), 0U);
    EXPECT_FALSE(file.Seek(-1));
    EXPECT_EQ(file.Write(Bytes("x")), 0U);  // opened for reading
}

TEST_F(Files, CreateCutsAndReadWriteKeeps)
{
    PutFile(path, "old contents");
    EXPECT_EQ(Opened(path, FileMode::kReadWrite).Length(), 12);
    EXPECT_EQ(Opened(path, FileMode::kCreate).Length(), 0);
    EXPECT_FALSE(File::Open(path + "x", FileMode::kReadWrite));
    EXPECT_FALSE(File::Open(path + "x", FileMode::kRead));
    EXPECT_FALSE(fs::exists(path + "x"));
}

TEST_F(Files, DirectoriesDevicesAndPipesAreRefusedWithoutWaiting)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    for (const FileMode mode : {FileMode::kRead, FileMode::kReadWrite, FileMode::kCreate}) {
        EXPECT_FALSE(File::Open(path, mode));
        EXPECT_FALSE(File::Open(directory.Path(), mode));
    }
    EXPECT_FALSE(File::Open("/dev/zero", FileMode::kRead));
    EXPECT_FALSE(ReadWholeFile("/dev/zero", 10));
    EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(FileExists(directory.Path()));
}

TEST_F(Files, AFullDiskGivesAShortWrite)
{
    File full = Opened("/dev/full", FileMode::kCreate);
    EXPECT_EQ(full.Write(Bytes("data")), 0U);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(Files, MovedFilesHaveOneOwner)
{
    PutFile(path, "abc");
    File first = Opened(path, FileMode::kRead);
    File second = std::move(first);
    EXPECT_EQ(second.Length(), 3);
    EXPECT_TRUE(second.Close());
    EXPECT_FALSE(second.Close());
}

TEST_F(Files, PositionsBeyondFourGigabytesAreReached)
{
    constexpr std::int64_t kFar = (std::int64_t{1} << 32) + 5;
    File file = Opened(path, FileMode::kCreate);
    ASSERT_TRUE(file.Seek(kFar));
    ASSERT_EQ(file.Write(Bytes("z")), 1U) << "the temporary directory must take sparse files";
    EXPECT_EQ(file.Length(), kFar + 1);
}

TEST_F(Files, MakeDirectoriesIsTrueIfTheyStandAtTheEnd)
{
    EXPECT_TRUE(MakeDirectories(directory / "a/b\\c"));
    EXPECT_TRUE(MakeDirectories(directory / "a/b/c"));
    EXPECT_TRUE(fs::is_directory(directory / "a/b/c"));
    PutFile(path, "");
    EXPECT_FALSE(MakeDirectories(path + "/x"));
}

TEST_F(Files, DeleteTakesNamesInAnotherCase)
{
    PutFile(path, "");
    EXPECT_TRUE(DeleteFileNamed(directory / "FILE.DAT"));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(DeleteFileNamed(path));
}

TEST_F(Files, CopyIsWholeAndCanRefuseToReplace)
{
    std::string contents(200001, 'c');
    contents[100000] = '\0';
    PutFile(path, contents);
    const std::string copy = directory / "copy.dat";
    EXPECT_TRUE(CopyFileTo(path, copy, true));
    EXPECT_EQ(FileContents(copy), contents);
    PutFile(path, "new");
    EXPECT_FALSE(CopyFileTo(path, directory / "COPY.dat", true));
    EXPECT_EQ(FileContents(copy), contents);
    EXPECT_TRUE(CopyFileTo(path, copy, false));
    EXPECT_EQ(FileContents(copy), "new");
    EXPECT_TRUE(CopyFileTo(copy, copy, false));
    EXPECT_EQ(FileContents(copy), "new");
    EXPECT_FALSE(CopyFileTo(directory / "missing", copy, false));
    EXPECT_EQ(FileContents(copy), "new");
    EXPECT_EQ(Names(directory.Path()), "copy.dat file.dat ");
}

TEST_F(Files, ModificationTimeIsTheFiles)
{
    EXPECT_FALSE(FileModificationTime(path));
    PutFile(path, "");
    const std::array<timespec, 2> times{timespec{1000, 0}, timespec{123456789, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times.data(), 0), 0);
    EXPECT_EQ(FileModificationTime(path), 123456789);
}

TEST_F(Files, WholeFilesAreReadUpToTheLimit)
{
    PutFile(path, std::string("a\0b\n", 4));
    EXPECT_EQ(ReadWholeFile(path, 4), std::string("a\0b\n", 4));
    EXPECT_FALSE(ReadWholeFile(path, 3));
    EXPECT_EQ(errno, EFBIG);
    PutFile(path, "");
    EXPECT_EQ(ReadWholeFile(path, 0), "");
    EXPECT_FALSE(ReadWholeFile(directory / "missing", 10));
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Files, FilesThatTellNoLengthAreBoundedToo)
{
    ASSERT_EQ(fs::file_size("/proc/self/status"), 0U);
    EXPECT_TRUE(ReadWholeFile("/proc/self/status", 100000));
    EXPECT_FALSE(ReadWholeFile("/proc/self/status", 10));
}

TEST_F(Files, ReplaceKeepsThePermissions)
{
    PutFile(path, "old");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    EXPECT_TRUE(ReplaceFile(path, "new"));
    EXPECT_EQ(ModeOf(path), 0640U);
    EXPECT_EQ(FileContents(path), "new");
}

TEST_F(Files, NewFilesFollowTheProcessMask)
{
    umask(027);
    EXPECT_TRUE(ReplaceFile(path, "new"));
    EXPECT_EQ(ModeOf(path), 0640U);
}

TEST_F(Files, ReplaceFollowsLinks)
{
    fs::create_directory(directory / "real");
    PutFile(directory / "real/kelvo.ini", "old");
    fs::create_symlink("real/kelvo.ini", directory / "hop");
    fs::create_symlink(directory / "hop", path);
    EXPECT_TRUE(ReplaceFile(path, "new"));
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(FileContents(directory / "real/kelvo.ini"), "new");
    EXPECT_EQ(Names(directory / "real"), "kelvo.ini ");
}

TEST_F(Files, ReplaceMakesTheFileBehindADanglingLink)
{
    fs::create_symlink("later.ini", path);
    EXPECT_TRUE(ReplaceFile(path, "new"));
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(FileContents(directory / "later.ini"), "new");
}

TEST_F(Files, ReplaceGivesUpOnALoopOfLinks)
{
    fs::create_symlink("file.dat", path);
    EXPECT_FALSE(ReplaceFile(path, "new"));
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
}

TEST_F(Files, AFailedReplaceLeavesEverythingAsItWas)
{
    fs::create_directory(path);
    EXPECT_FALSE(ReplaceFile(path, "new"));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(ReplaceFile(directory / "missing/x", "new"));
    EXPECT_FALSE(ReplaceFile("", "new"));
    EXPECT_FALSE(ReplaceFile("/dev/full", "new"));
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
}

// The disk fails at the n-th step: made, written, flushed, put in its place. 0 where there is none.
int FailsAtStep(int n, const std::function<bool()>& work)
{
    SetFaultOnce("disk", n);
    const bool done = work();
    const bool came = QuestionsUntilFault("disk") == 0;
    SetFaultOnce("disk", 0);
    EXPECT_NE(done, came) << "step " << n;
    return came ? n : 0;
}

TEST_F(Files, ADiskThatFailsAtAnyStepOfAReplaceLeavesEverythingAsItWas)
{
    PutFile(path, "old");
    for (int n = 1; n <= 4; ++n) {
        EXPECT_EQ(FailsAtStep(n, [&] { return ReplaceFile(path, "new"); }), n);
        EXPECT_EQ(ReadWholeFile(path, 100), "old") << n;
        EXPECT_EQ(Names(directory.Path()), "file.dat ") << n;
    }
    EXPECT_EQ(FailsAtStep(5, [&] { return ReplaceFile(path, "new"); }), 0);
    EXPECT_EQ(ReadWholeFile(path, 100), "new");
}

TEST_F(Files, ADiskThatFailsKeepsWhatItHas)
{
    PutFile(path, "old");
    EXPECT_EQ(FailsAtStep(1, [&] { return DeleteFileNamed(path); }), 1);
    EXPECT_EQ(FailsAtStep(1, [&] { return MoveFileTo(path, directory / "other"); }), 1);
    EXPECT_EQ(FailsAtStep(1, [&] { return File::Open(path, FileMode::kCreate).has_value(); }), 1);
    EXPECT_EQ(ReadWholeFile(path, 100), "old");
    SetFaultOnce("disk read", 1);
    EXPECT_EQ(ReadWholeFile(path, 100), std::nullopt);
    SetFaultOnce("disk read", 2);
    EXPECT_EQ(ReadWholeFile(path, 100), std::nullopt);
}

// In a process without the administrator's rights, from whom nothing is protected.
bool OrdinaryUserCanReplace(const std::string& path)
{
    constexpr uid_t kNobody = 65534;
    const pid_t child = fork();
    if (child == 0) {
        const bool ordinary = geteuid() != 0 || setuid(kNobody) == 0;
        _exit(!ordinary ? 2 : ReplaceFile(path, "new") ? 1 : 0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2);
    return WEXITSTATUS(status) == 1;
}

TEST_F(Files, AWriteProtectedFileIsNotReplaced)
{
    PutFile(path, "old");
    ASSERT_EQ(chmod(directory.Path().c_str(), 0777), 0);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_FALSE(OrdinaryUserCanReplace(path));
    EXPECT_EQ(FileContents(path), "old");
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    EXPECT_TRUE(OrdinaryUserCanReplace(path));
    EXPECT_EQ(FileContents(path), "new");
}

TEST_F(Files, ANewFileTakesItsNameWhenItIsKept)
{
    PutFile(path, "old");
    {
        std::optional<NewFile> file = NewFile::Begin(path);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->Contents().Write(std::as_bytes(std::span("new", 3))), 3U);
        EXPECT_EQ(FileContents(path), "old");
        EXPECT_TRUE(file->Keep());
    }
    EXPECT_EQ(FileContents(path), "new");
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
}

TEST_F(Files, ANewFileThatIsLeftBesideStaysUntilTheNextOne)
{
    PutFile(path, "old");
    {
        std::optional<NewFile> file = NewFile::Begin(path);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->Contents().Write(std::as_bytes(std::span("part", 4))), 4U);
        EXPECT_EQ(file->LeaveBeside(), directory / ".file.dat.new");
    }
    EXPECT_EQ(FileContents(path), "old");
    EXPECT_EQ(FileContents(directory / ".file.dat.new"), "part");
    std::optional<NewFile> next = NewFile::Begin(path);
    ASSERT_TRUE(next);
    EXPECT_TRUE(next->Keep());
    EXPECT_EQ(FileContents(path), "");
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
}

TEST_F(Files, ANewFileThatIsDroppedLeavesTheFormerOne)
{
    PutFile(path, "old");
    {
        std::optional<NewFile> file = NewFile::Begin(path);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->Contents().Write(std::as_bytes(std::span("new", 3))), 3U);
    }
    EXPECT_EQ(FileContents(path), "old");
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
    EXPECT_FALSE(NewFile::Begin(directory / "missing/x"));
    EXPECT_FALSE(NewFile::Begin(directory.Path()));
    EXPECT_FALSE(NewFile::Begin(""));
    EXPECT_TRUE(NewFile::Begin("/dev/null"));
    EXPECT_EQ(access("/dev/null", F_OK), 0);
}

TEST_F(Files, LeftoversOfAKilledWriterAreUsedAgain)
{
    PutFile(directory / ".file.dat.new", "half of someth");
    EXPECT_TRUE(ReplaceFile(path, "new"));
    EXPECT_EQ(FileContents(path), "new");
    EXPECT_EQ(Names(directory.Path()), "file.dat ");
}

TEST_F(Files, TheLongestNamesCanBeReplaced)
{
    const std::string longest = directory / std::string(255, 'n');
    EXPECT_TRUE(ReplaceFile(longest, "new"));
    EXPECT_EQ(FileContents(longest), "new");
}

TEST(Recording, TwoBlocksStandOneBehindTheOther)
{
    const TempDirectory directory;
    File file = Opened(directory / "a", FileMode::kNew);
    EXPECT_EQ(file.Write(Bytes("head"), Bytes("pixels")), 10U);
    EXPECT_TRUE(file.SyncData());
    EXPECT_EQ(FileContents(directory / "a"), "headpixels");
    SetFault("disk full", true);
    EXPECT_LT(file.Write(Bytes("head"), Bytes("pixels")), 10U);
    SetFault("disk full", false);
    SetFault("disk unplugged", true);
    EXPECT_EQ(file.Write(Bytes("head"), Bytes("pixels")), 0U);
    EXPECT_EQ(errno, EIO);
    EXPECT_FALSE(file.SyncData());
    SetFault("disk unplugged", false);
}

TEST(Recording, ANewFileMustNotStand)
{
    const TempDirectory directory;
    PutFile(directory / "Mine", "mine");
    EXPECT_FALSE(File::Open(directory / "Mine", FileMode::kNew));
    EXPECT_FALSE(File::Open(directory / "mine", FileMode::kNew)) << "in another case it is the same file";
    EXPECT_EQ(FileContents(directory / "Mine"), "mine");
}

TEST(Recording, AFileIsTakenAsLongAsItIsOpenAndKnowsItsName)
{
    const TempDirectory directory;
    std::optional<File> owner = Opened(directory / "a", FileMode::kNew);
    EXPECT_TRUE(owner->Lock());
    File other = Opened(directory / "a", FileMode::kRead);
    EXPECT_FALSE(other.Lock());
    owner.reset();
    EXPECT_TRUE(other.Lock());
    EXPECT_TRUE(other.IsNamed());
    fs::remove(directory / "a");
    EXPECT_FALSE(other.IsNamed());
}

std::vector<std::string> Lines(std::string contents, std::size_t limit)
{
    LineReader reader(std::move(contents), limit);
    std::vector<std::string> lines;
    for (;;) {
        const auto line = reader.Next();
        if (!line) return lines;
        lines.push_back(*line);
    }
}

TEST(Moving, PutsAFileInAnothersPlaceWhateverItsLetterCase)
{
    const TempDirectory directory;
    PutFile(directory / "new", "new");
    PutFile(directory / "OLD.GAI", "old");
    EXPECT_TRUE(MoveFileTo(directory / "new", directory / "old.gai"));
    EXPECT_EQ(FileContents(directory / "OLD.GAI"), "new");
    EXPECT_FALSE(FileExists(directory / "new"));
    EXPECT_FALSE(MoveFileTo(directory / "missing", directory / "old.gai"));
    EXPECT_EQ(FileContents(directory / "OLD.GAI"), "new");
}

TEST(Lines, KeepTheirNewline)
{
    EXPECT_THAT(Lines("a\nb\n\nc", 80), ElementsAre("a\n", "b\n", "\n", "c"));
    EXPECT_THAT(Lines("", 80), IsEmpty());
}

TEST(Lines, CarriageReturnAndLineFeedAreOneNewline)
{
    EXPECT_THAT(Lines("a\r\nb\rc\r\n", 80), ElementsAre("a\n", "b\rc\n"));
    EXPECT_THAT(Lines("abc\r\nd", 4), ElementsAre("abc\n", "d"));
}

TEST(Lines, LongOnesComeInPieces)
{
    EXPECT_THAT(Lines("abcdefg\nh", 3), ElementsAre("abc", "def", "g\n", "h"));
    EXPECT_THAT(Lines("abc\nh", 3), ElementsAre("abc", "\n", "h"));
    EXPECT_THAT(Lines("ab", 0), ElementsAre("a", "b"));
}

TEST(Lines, TheEndShowsOnceAReadHasMetIt)
{
    LineReader closed("a\n", 80);
    EXPECT_EQ(closed.Next(), "a\n");
    EXPECT_FALSE(closed.AtEnd());
    EXPECT_EQ(closed.Next(), std::nullopt);
    EXPECT_TRUE(closed.AtEnd());

    LineReader open("a", 80);
    EXPECT_EQ(open.Next(), "a");
    EXPECT_TRUE(open.AtEnd());

    LineReader exact("abc", 3);
    EXPECT_EQ(exact.Next(), "abc");
    EXPECT_FALSE(exact.AtEnd());
}

}  // namespace
}  // namespace kelvo

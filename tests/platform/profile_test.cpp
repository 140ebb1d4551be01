#include "platform/profile.h"

#include "platform/faults.h"
#include "platform/files.h"
#include "platform/profile_text.h"
#include "platform/text.h"
#include "support/rounds.h"
#include "support/shown.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>

namespace kelvo {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSample =
    "; camera settings\r\n"
    "[Display]\r\n"
    "Contrast=76\r\n"
    "  Brightness = 837  \r\n"
    "Empty=\r\n"
    "Quoted=\"  two blanks\"\r\n"
    "Single='one'\r\n"
    "Half=\"open\r\n"
    "no key here\r\n"
    "A/Doffset=8200.0\r\n"
    "Equals=a=b\r\n"
    ";Hidden=1\r\n"
    "\r\n"
    "[Camera.2]\r\n"
    "Hroi=320\r\n";

std::string Value(std::string_view section, std::string_view key, std::string_view contents = kSample)
{
    return ProfileText(contents, section, key, "default");
}

std::string With(std::string_view contents, std::string_view section, std::string_view key, std::string_view value)
{
    return WithProfileKey(contents, section, key, &value);
}

std::string Without(std::string_view contents, std::string_view section, std::string_view key)
{
    return WithProfileKey(contents, section, key, nullptr);
}

TEST(ProfileText, NamesAreComparedWithoutCase)
{
    EXPECT_EQ(Value("Display", "Contrast"), "76");
    EXPECT_EQ(Value("DISPLAY", "contrast"), "76");
    EXPECT_EQ(Value("Camera.2", "HROI"), "320");
}

TEST(ProfileText, BlanksAndOnePairOfQuotationMarksComeOff)
{
    EXPECT_EQ(Value("Display", "Brightness"), "837");
    EXPECT_EQ(Value("Display", "Quoted"), "  two blanks");
    EXPECT_EQ(Value("Display", "Single"), "one");
    EXPECT_EQ(Value("Display", "Half"), "\"open");
    EXPECT_EQ(Value("S", "K", "[S]\nK=\"\"a\"\"\n"), "\"a\"");
    EXPECT_EQ(Value("S", "K", "[S]\nK=\"\n"), "\"");
}

TEST(ProfileText, AKeyWithoutValueIsEmptyAndAMissingOneGivesTheDefault)
{
    EXPECT_EQ(Value("Display", "Empty"), "");
    EXPECT_EQ(Value("Display", "Hroi"), "default");
    EXPECT_EQ(Value("Nowhere", "Contrast"), "default");
    EXPECT_EQ(ProfileText(kSample, "Display", "Missing", " N/A \t"), " N/A");
}

TEST(ProfileText, OnlyTheFirstEqualsSignDivides)
{
    EXPECT_EQ(Value("Display", "Equals"), "a=b");
    EXPECT_EQ(Value("Display", "A/Doffset"), "8200.0");
}

TEST(ProfileText, CommentsAreNoKeys)
{
    EXPECT_EQ(Value("Display", "Hidden"), "default");
    EXPECT_EQ(Value("Display", ";Hidden"), "default");
    EXPECT_EQ(Value("Display", "no key here"), "default");
}

TEST(ProfileText, TheFirstOfTwoKeysCountsAndSectionsOfOneNameAreOne)
{
    constexpr std::string_view kTwice = "[S]\nA=1\nA=2\n[T]\nB=3\n[s]\nA=4\nB=5\n";
    EXPECT_EQ(Value("S", "A", kTwice), "1");
    EXPECT_EQ(Value("S", "B", kTwice), "5");
    EXPECT_EQ(Value("T", "B", kTwice), "3");
}

TEST(ProfileText, OddBytesAreRead)
{
    EXPECT_EQ(Value("S", "A", "\xEF\xBB\xBF[S]\nA=1"), "1");
    EXPECT_EQ(Value("S", "A", "[S\nA=1"), "default");
    EXPECT_EQ(Value("", "A", "A=1"), "default");
    EXPECT_EQ(Value("S", "D", "[S]\nD=20 \xB0"), "20 \xB0");
    EXPECT_EQ(Value("S", "A", std::string_view("[S]\nA=\0x\n", 9)), std::string_view("\0x", 2));
    EXPECT_EQ(Value("S", "A", " [ S ] trailing\n\t A\t=\t1"), "1");
    EXPECT_EQ(Value("S", "A", ""), "default");
    EXPECT_EQ(Value("S", "A", "[S]\nA=" + std::string(5000000, 'x')).size(), 5000000U);
}

TEST(ProfileText, AReplacedValueLeavesEveryOtherByte)
{
    std::string expected(kSample);
    expected.replace(expected.find("837"), 3, "5");
    EXPECT_EQ(With(kSample, "display", "brightness", "5"), expected);
    EXPECT_EQ(With("[S]\r\nA=1", "S", "A", "22"), "[S]\r\nA=22");
    EXPECT_EQ(With("[S]\nA=\nB=2\n", "S", "A", "1"), "[S]\nA=1\nB=2\n");
    EXPECT_EQ(With("[S]\nA=\"q\"\n", "S", "A", "1"), "[S]\nA=1\n");
    EXPECT_EQ(With("[S]\nA=1\n", "S", "A", ""), "[S]\nA=\n");
}

TEST(ProfileText, ANewKeyGoesToTheEndOfItsSectionBeforeTheBlankLines)
{
    EXPECT_EQ(With("[S]\nA=1\n\n[T]\nB=2\n", "S", "C", "3"), "[S]\nA=1\nC=3\n\n[T]\nB=2\n");
    EXPECT_EQ(With("[S]\n\n", "S", "C", "3"), "[S]\nC=3\n\n");
    EXPECT_EQ(With("[S]\nA=1", "S", "C", "3"), "[S]\nA=1\nC=3\n");
    EXPECT_EQ(With("[S]", "S", "C", "3"), "[S]\nC=3\n");
    EXPECT_EQ(With("[S]\n[T]\n[S]\nX=1\n", "S", "C", "3"), "[S]\nC=3\n[T]\n[S]\nX=1\n");
}

TEST(ProfileText, ANewSectionGoesToTheEndBehindABlankLine)
{
    EXPECT_EQ(With("", "S", "A", "1"), "[S]\nA=1\n");
    EXPECT_EQ(With("[T]\nB=2\n", "S", "A", "1"), "[T]\nB=2\n\n[S]\nA=1\n");
    EXPECT_EQ(With("[T]\nB=2", "S", "A", "1"), "[T]\nB=2\n\n[S]\nA=1\n");
    EXPECT_EQ(With("[T]\nB=2\n\n", "S", "A", "1"), "[T]\nB=2\n\n[S]\nA=1\n");
}

TEST(ProfileText, LineEndsFollowTheFirstLine)
{
    EXPECT_EQ(With("[T]\r\nB=2\n", "S", "A", "1"), "[T]\r\nB=2\n\r\n[S]\r\nA=1\r\n");
    EXPECT_EQ(With("[S]\nB=2\r\n", "S", "A", "1"), "[S]\nB=2\r\nA=1\n");
}

TEST(ProfileText, ValuesThatReadingWouldStripAreQuoted)
{
    for (const std::string value : {" lead", "trail ", "\"q\"", "'q'", "\t", "plain", "\"", "a\"", ""}) {
        EXPECT_EQ(Value("S", "A", With("", "S", "A", value)), value);
    }
    EXPECT_EQ(With("", "S", "A", "plain"), "[S]\nA=plain\n");
    EXPECT_EQ(With("", "S", "A", " lead"), "[S]\nA=\" lead\"\n");
}

TEST(ProfileText, LineEndsInAValueCannotMakeNewLines)
{
    EXPECT_EQ(With("", "S", "A", std::string_view("1\n[T]\r\nB=2\0", 11)), "[S]\nA=\"1 [T]  B=2 \"\n");
}

TEST(ProfileText, NamesThatCannotStandChangeNothing)
{
    for (const std::string_view key : {"a=b", "", ";a", "[a", "a\nb"}) {
        EXPECT_EQ(With("[S]\n", "S", key, "1"), "[S]\n") << key;
    }
    for (const std::string_view section : {"a]b", "a\nb"}) EXPECT_EQ(With("[S]\n", section, "K", "1"), "[S]\n");
}

TEST(ProfileText, ADeletedKeyDoesNotComeBack)
{
    EXPECT_EQ(Without("[S]\nA=1\nB=2\na=3\n[T]\nA=4\n[S]\nA=5\n", "S", "A"), "[S]\nB=2\n[T]\nA=4\n[S]\n");
    EXPECT_EQ(Without(kSample, "Display", "Missing"), kSample);
    EXPECT_EQ(Without("[S]\nA=1", "S", "A"), "[S]\n");
}

class Profiles : public ::testing::Test {
  protected:
    std::int32_t Int(std::string_view value, std::int32_t defaultValue = 77)
    {
        PutFile(ini, "[S]\nK=" + std::string(value) + "\n");
        ForgetProfile(ini);
        return GetPrivateProfileInt("S", "K", defaultValue, ini);
    }

    TempDirectory directory;
    std::string ini = directory / "kelvo.ini";
};

TEST_F(Profiles, IntegersAreDecimalOrHexadecimalAndStopAtTheFirstForeignCharacter)
{
    EXPECT_EQ(Int("12"), 12);
    EXPECT_EQ(Int("12abc"), 12);
    EXPECT_EQ(Int("-16384"), -16384);
    EXPECT_EQ(Int("+5"), 5);
    EXPECT_EQ(Int("0x1F"), 31);
    EXPECT_EQ(Int("0X10g"), 16);
    EXPECT_EQ(Int("-0x10"), -16);
    EXPECT_EQ(Int("010"), 10);
    EXPECT_EQ(Int("\"9\""), 9);
    EXPECT_EQ(Int("4294967295"), -1);
    EXPECT_EQ(Int("4294967298"), 2);
}

TEST_F(Profiles, BlanksAroundAnIntegerDontCount)
{
    EXPECT_EQ(Int(" \t320 "), 320);
    EXPECT_EQ(Int("\"  320  \""), 320);
    EXPECT_EQ(Int(" ' -16384 ' "), -16384);
    EXPECT_EQ(Int("\" 0x1F\""), 31);
    EXPECT_EQ(Int("\"  \""), 0) << "no number";
}

TEST_F(Profiles, IntegersWithoutANumberAreZeroAndMissingOnesTheDefault)
{
    EXPECT_EQ(Int("abc"), 0);
    EXPECT_EQ(Int(""), 0);
    EXPECT_EQ(Int("- 5"), 0);
    EXPECT_EQ(Int("+-5"), 0);
    EXPECT_EQ(Int("0x"), 0);
    EXPECT_EQ(GetPrivateProfileInt("S", "Other", 77, ini), 77);
    EXPECT_EQ(GetPrivateProfileInt("S", "K", -3, directory / "missing.ini"), -3);
}

TEST_F(Profiles, ReadsSeePendingWritesAndTheDiskSeesThemTogether)
{
    PutFile(ini, "[S]\nA=1\n");
    WritePrivateProfileString("S", "A", "2", ini);
    WritePrivateProfileString("S", "B", "3", ini);
    EXPECT_EQ(GetPrivateProfileString("s", "a", "", ini), "2");
    EXPECT_TRUE(HasProfileKey("S", "B", ini));
    EXPECT_TRUE(ProfilesPending());
    EXPECT_EQ(FileContents(ini), "[S]\nA=1\n");
    EXPECT_TRUE(FlushProfiles());
    EXPECT_FALSE(ProfilesPending());
    EXPECT_EQ(FileContents(ini), "[S]\nA=2\nB=3\n");
    EXPECT_TRUE(BoxesShown().empty());
}

TEST_F(Profiles, AWriteMakesTheFile)
{
    WritePrivateProfileString("Setup", "ActiveCamera", "3", ini);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(ini), "[Setup]\nActiveCamera=3\n");
}

TEST_F(Profiles, ADeleteAloneMakesNoFile)
{
    DeleteProfileKey("S", "A", ini);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_FALSE(fs::exists(ini));
}

TEST_F(Profiles, DeletedKeysAreGoneAtOnceAndOnTheDisk)
{
    PutFile(ini, "[S]\nA=1\nB=2\n");
    DeleteProfileKey("S", "A", ini);
    EXPECT_FALSE(HasProfileKey("S", "A", ini));
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(ini), "[S]\nB=2\n");
}

TEST_F(Profiles, AChangeOnTheDiskIsSeen)
{
    for (int i = 0; i < 20; ++i) {  // of one size, in quick order: the file's time alone wouldn't show it
        PutFile(ini, Format("[S]\nA=%02d\n", i));
        ASSERT_EQ(GetPrivateProfileInt("S", "A", -1, ini), i);
    }
    fs::remove(ini);
    EXPECT_EQ(GetPrivateProfileInt("S", "A", -1, ini), -1);
}

TEST_F(Profiles, PendingWritesJoinWhatAnotherProgramWrote)
{
    PutFile(ini, "[S]\nA=1\nB=1\n");
    WritePrivateProfileString("S", "A", "2", ini);
    PutFile(ini, "[S]\nA=1\nB=9\n; note\n");
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(ini), "[S]\nA=2\nB=9\n; note\n");
}

TEST_F(Profiles, AnUnchangedValueDoesNotTouchTheFile)
{
    PutFile(ini, "[S]\nA=1\n");
    struct stat before {};
    ASSERT_EQ(stat(ini.c_str(), &before), 0);
    WritePrivateProfileString("S", "A", "1", ini);
    EXPECT_TRUE(FlushProfiles());
    struct stat after {};
    ASSERT_EQ(stat(ini.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(Profiles, NamesInAnotherCaseAreTheSameFile)
{
    PutFile(ini, "[S]\nA=1\n");
    WritePrivateProfileString("S", "A", "2", directory.Path() + "\\KELVO.INI");
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 0, ini), 2);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(ini), "[S]\nA=2\n");
}

TEST_F(Profiles, ForgetDropsPendingWrites)
{
    PutFile(ini, "[S]\nA=1\n");
    WritePrivateProfileString("S", "A", "2", ini);
    ForgetProfile(ini);
    EXPECT_FALSE(ProfilesPending());
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 0, ini), 1);
}

TEST_F(Profiles, AFailedWriteIsKeptTriedAgainAndToldOnce)
{
    const std::string later = directory / "later/kelvo.ini";
    WritePrivateProfileString("S", "A", "2", later);
    EXPECT_FALSE(FlushProfiles());
    EXPECT_FALSE(FlushProfiles());
    const std::vector<ShownBox> told{
        {.caption = "Kelvo message",
         .text = "Unable to write settings file\n" + later + "\nNo such file or directory"}};
    EXPECT_EQ(BoxesShown(), told);
    EXPECT_TRUE(ProfilesPending());
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 0, later), 2);
    fs::create_directory(directory / "later");
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(later), "[S]\nA=2\n");
    EXPECT_EQ(BoxesShown().size(), 1U);
}

TEST_F(Profiles, AHugeFileGivesDefaultsAndIsNeverReplaced)
{
    PutFile(ini, "[S]\nA=1\n");
    fs::resize_file(ini, 100000000);
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 5, ini), 5);
    WritePrivateProfileString("S", "A", "2", ini);
    EXPECT_FALSE(FlushProfiles());
    EXPECT_EQ(BoxesShown().size(), 1U);
    EXPECT_EQ(fs::file_size(ini), 100000000U);
}

// A disk that failed once: the file is read again, and what is pending for it reaches it.
TEST_F(Profiles, AHeldFileIsOfOneMoment)
{
    PutFile(ini, "[S]\nA=1\nB=1\n");
    {
        const HeldProfile held(ini);
        EXPECT_EQ(GetPrivateProfileInt("S", "A", 5, ini), 1);
        PutFile(ini, "[S]\nA=2\nB=2\n");
        SetFaultOnce("disk read", 1);
        EXPECT_EQ(GetPrivateProfileInt("S", "B", 5, ini), 1);
        EXPECT_EQ(QuestionsUntilFault("disk read"), 1) << "it wasn't read";
        const HeldProfile again(ini);
    }
    ClearFaults();
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 5, ini), 2);
    SetFaultOnce("disk read", 1);
    {
        const HeldProfile held(ini);
        EXPECT_FALSE(HasProfileKey("S", "A", ini));
        EXPECT_FALSE(HasProfileKey("S", "B", ini)) << "one that can't be read has no key, not some of them";
    }
    EXPECT_EQ(GetPrivateProfileInt("S", "B", 5, ini), 2);
}

TEST_F(Profiles, AFileThatCouldNotBeReadOnceIsReadAgain)
{
    PutFile(ini, "[S]\nA=1\n");
    usleep(150000);  // a file that is this old isn't read again without need
    SetFaultOnce("disk read", 1);
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 5, ini), 5);
    EXPECT_EQ(GetPrivateProfileInt("S", "A", 5, ini), 1);

    ForgetProfile(ini);
    SetFaultOnce("disk read", 1);
    WritePrivateProfileString("S", "B", "2", ini);
    EXPECT_TRUE(FlushProfiles());
    EXPECT_EQ(FileContents(ini), "[S]\nA=1\nB=2\n");
}

TEST_F(Profiles, ADirectoryOfThatNameIsLeftAlone)
{
    fs::create_directory(ini);
    EXPECT_EQ(GetPrivateProfileString("S", "A", "d", ini), "d");
    WritePrivateProfileString("S", "A", "2", ini);
    EXPECT_FALSE(FlushProfiles());
    EXPECT_TRUE(fs::is_directory(ini));
}

TEST_F(Profiles, ReadingKeyByKeyAgreesWithThePlainScan)
{
    std::mt19937 random(7);
    constexpr std::string_view kPieces[] = {"[S]", "[T]", "A", "B", "=", "1", "\"", " ", "\n", "\r\n", ";", "]", "\n"};
    for (int i = 0; i < 300; ++i) {
        std::string contents;
        for (auto n = random() % 40; n > 0; --n) contents += kPieces[random() % std::size(kPieces)];
        PutFile(ini, contents);
        for (const char* section : {"S", "T"}) {
            for (const char* key : {"A", "B"}) {
                ASSERT_EQ(GetPrivateProfileString(section, key, "none", ini),
                          ProfileText(contents, section, key, "none"))
                    << contents;
            }
        }
    }
}

[[noreturn]] void WriteForEver(const std::string& ini)
{
    for (int n = 0;; ++n) {
        WritePrivateProfileString("S", "A", std::to_string(n), ini);
        WritePrivateProfileString("S", "B", std::to_string(n), ini);
        FlushProfiles();
    }
}

// Two keys of one command and a filling that must never be cut.
void ExpectWhole(const std::string& contents, const std::string& filling)
{
    const std::string number = ProfileText(contents, "S", "A", "");
    ASSERT_FALSE(number.empty());
    ASSERT_EQ(contents, "[S]\nA=" + number + "\nB=" + number + "\nFilling=" + filling + "\n");
}

TEST_F(Profiles, AKilledWriterLeavesTheOldOrTheNewFile)
{
    const std::string filling(20000, 'f');
    PutFile(ini, "[S]\nA=-1\nB=-1\nFilling=" + filling + "\n");
    std::mt19937 random(3);
    std::set<std::string> seen;
    unsigned longestUs = 15000;  // a slow disk gets longer, until enough of the kills have met a writer at work
    for (int i = 0; i < Rounds(100) || (seen.size() <= 5 && i < 300); ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) WriteForEver(ini);
        usleep(static_cast<useconds_t>(random() % longestUs));
        ASSERT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string contents = FileContents(ini);
        ExpectWhole(contents, filling);
        if (!seen.insert(contents).second && i % 20 == 19) longestUs = std::min(2 * longestUs, 500000U);
    }
    EXPECT_GT(seen.size(), 5U) << "the writers never got to write";
    EXPECT_LE(std::distance(fs::directory_iterator(directory.Path()), {}), 2) << "leftovers pile up";
}

TEST_F(Profiles, AKeyThatWasKeptComesBackAsItStood)
{
    const std::string text = "; ours\r\n[S]\r\nA = \"16\"  \r\nB=\r\nE=5\r\n\r\n[T]\r\nA=1\r\n";
    PutFile(ini, text);
    const KeptProfileKey kept[] = {KeepProfileKey("S", "A", ini), KeepProfileKey("s", "B", ini),
                                   KeepProfileKey("S", "C", ini)};
    EXPECT_EQ(kept[0].rawValue, "\"16\"");
    EXPECT_EQ(kept[1].rawValue, "");
    EXPECT_EQ(kept[2].rawValue, std::nullopt);
    for (const char* key : {"A", "B", "C"}) WritePrivateProfileString("S", key, "new", ini);
    FlushProfiles();
    EXPECT_EQ(FileContents(ini), "; ours\r\n[S]\r\nA = new  \r\nB=new\r\nE=5\r\nC=new\r\n\r\n[T]\r\nA=1\r\n");
    for (const KeptProfileKey& key : kept) PutBackProfileKey(key);
    EXPECT_EQ(GetPrivateProfileString("S", "A", "", ini), "16");
    FlushProfiles();
    EXPECT_EQ(FileContents(ini), text);
}

// Also where the file ended without a line end, in blank lines, or held nothing.
TEST_F(Profiles, ASectionThatCameWithItsKeysGoesWithThem)
{
    for (const std::string text : {"[R]\r\nA=1\r\n", "[R]\nA=1", "[R]\nA=1\n\n\n", "; nothing", ""}) {
        SCOPED_TRACE(text);
        PutFile(ini, text);
        ForgetProfiles();
        const std::vector<KeptProfileKey> before = {KeepProfileKey("S", "B", ini), KeepProfileKey("S", "A", ini)};
        WritePrivateProfileString("S", "A", "1", ini);
        WritePrivateProfileString("S", "B", "2", ini);
        FlushProfiles();
        const std::string with = FileContents(ini);
        const std::vector<KeptProfileKey> after = {KeepProfileKey("S", "B", ini), KeepProfileKey("S", "A", ini)};
        PutBackProfileKeys(before);
        FlushProfiles();
        EXPECT_EQ(FileContents(ini), text);
        PutBackProfileKeys(after);
        FlushProfiles();
        EXPECT_EQ(FileContents(ini), with);  // the keys in their order again
    }
}

TEST_F(Profiles, ASectionThatStoodOrHoldsMoreStays)
{
    PutFile(ini, "[S]\n\n[T]\nA=1\n");
    const KeptProfileKey ofS = KeepProfileKey("S", "A", ini);
    const KeptProfileKey ofU = KeepProfileKey("U", "A", ini);
    WritePrivateProfileString("S", "A", "1", ini);
    WritePrivateProfileString("U", "A", "1", ini);
    WritePrivateProfileString("U", "C", "3", ini);
    WritePrivateProfileString("V", "A", "1", ini);
    PutBackProfileKeys({ofS, ofU});
    FlushProfiles();
    EXPECT_EQ(FileContents(ini), "[S]\n\n[T]\nA=1\n\n[U]\nC=3\n\n[V]\nA=1\n");
}

// One that was added behind it stands where it would without it.
TEST_F(Profiles, AnEmptiedSectionLeavesThoseBehindIt)
{
    PutFile(ini, "[R]\nA=1\n");
    const KeptProfileKey kept = KeepProfileKey("S", "A", ini);
    WritePrivateProfileString("S", "A", "1", ini);
    WritePrivateProfileString("T", "A", "1", ini);
    PutBackProfileKey(kept);
    FlushProfiles();
    EXPECT_EQ(FileContents(ini), "[R]\nA=1\n\n[T]\nA=1\n");
}

TEST_F(Profiles, AKeyThatStandsAsItWasKeptIsNotWritten)
{
    PutFile(ini, "[S]\nA='1'\n");
    PutBackProfileKey(KeepProfileKey("S", "A", ini));
    PutBackProfileKey(KeepProfileKey("S", "B", ini));
    EXPECT_FALSE(ProfilesPending());
}

TEST_F(Profiles, TwoProgramsThatWriteAtOnceLeaveAWholeFile)
{
    const std::string filling(20000, 'f');
    PutFile(ini, "[S]\nA=-1\nB=-1\nFilling=" + filling + "\n");
    std::vector<pid_t> children;
    for (int i = 0; i < 2; ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) WriteForEver(ini);
        children.push_back(child);
    }
    for (int i = 0; i < Rounds(200); ++i) {
        ExpectWhole(FileContents(ini), filling);
        usleep(1000);
    }
    for (const pid_t child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
}

}  // namespace
}  // namespace kelvo

#include "record/sequence_library.h"

#include "platform/profile.h"
#include "record/sequence_library_write.h"
#include "state/windows.h"
#include "support/recording_board.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>
#include <string>

namespace kelvo {
namespace {

class SequenceLibrary : public BoardTest {
  protected:
    static void PutLibrary(const std::string& lines)
    {
        PutFile(BuffBrdFilePath, "[Sequences]\n" + lines);
        ForgetProfile(BuffBrdFilePath);
    }
    static std::string Key(const char* key)
    {
        return GetPrivateProfileString("Sequences", key, "missing", BuffBrdFilePath);
    }
};

TEST_F(SequenceLibrary, HoldsOneFrameASubsequenceAndTheFirstOneInEachSequenceWithoutAFile)
{
    ASSERT_EQ(ReadSequences(), 1);
    EXPECT_EQ(SubSeqList[0], (SubSeqRecord{.Name = "A", .Frames = 1, .Skip = 0, .Trigger = 0}));
    EXPECT_EQ(SubSeqList[25], (SubSeqRecord{.Name = "Z", .Frames = 1, .Skip = 0, .Trigger = 0}));
    EXPECT_EQ(SeqList[9], (SeqRecord{.Name = "SeqName9", .Composition = "A", .TotalFrames = 1}));
    EXPECT_EQ(SeqNum, 0);
    EXPECT_EQ(SubSeqNum, 0);
}

TEST_F(SequenceLibrary, ReadsItsFileOnceARun)
{
    PutLibrary("SeqNum=3\nSeqName3=AB\nSubSeqNum=1\nSubSeqNameA=3 2 0\nSubSeqNameB=4 0 2\n");
    ASSERT_EQ(ReadSequences(), 1);
    EXPECT_EQ(SeqNum, 3);
    EXPECT_EQ(SubSeqNum, 1);
    EXPECT_EQ(SeqList[3], (SeqRecord{.Name = "SeqName3", .Composition = "AB", .TotalFrames = 7}));
    EXPECT_EQ(SubSeqList[1], (SubSeqRecord{.Name = "B", .Frames = 4, .Skip = 0, .Trigger = 2}));

    PutLibrary("SeqNum=5\nSubSeqNameA=9 9 9\n");
    ASSERT_EQ(ReadSequences(), 1);
    EXPECT_EQ(SeqNum, 3);
    EXPECT_EQ(SubSeqList[0].Frames, 3);
}

TEST_F(SequenceLibrary, TakesWhatAFileMayHoldWithoutHarm)
{
    PutLibrary(
        "SeqNum=10\nSubSeqNum=-1\nSeqName0=A BC\nSeqName1=aA1\nSeqName2=\nSeqName3=AAAAAAAAAAAAAAAA\n"
        "SubSeqNameA=-5 -1 99\nSubSeqNameB=2\nSubSeqNameC=many\nSubSeqNameD=7 3\n");
    ASSERT_EQ(ReadSequences(), 1);
    EXPECT_EQ(SeqNum, 0);
    EXPECT_EQ(SubSeqNum, 0);
    EXPECT_EQ(SeqList[0].Composition, "A");  // up to the blank
    EXPECT_EQ(SeqList[1].Composition, "aA1");
    EXPECT_EQ(SeqList[2].Composition, "");
    EXPECT_EQ(SeqList[3].Composition.size(), kLongestComposition);
    EXPECT_EQ(SeqList[3].TotalFrames, 0);  // a negative number of frames counts as none
    EXPECT_EQ(SubSeqList[0], (SubSeqRecord{.Name = "A", .Frames = -5, .Skip = -1, .Trigger = 99}));
    EXPECT_EQ(SubSeqList[1], (SubSeqRecord{.Name = "B", .Frames = 2, .Skip = 0, .Trigger = 0}));
    EXPECT_EQ(SubSeqList[2], (SubSeqRecord{.Name = "C", .Frames = 0, .Skip = 0, .Trigger = 0}));
    EXPECT_EQ(SubSeqList[3], (SubSeqRecord{.Name = "D", .Frames = 7, .Skip = 3, .Trigger = 0}));
}

TEST_F(SequenceLibrary, GoesBackIntoItsFile)
{
    ASSERT_EQ(ReadSequences(), 1);
    write::sequences.SeqNum = 2;
    write::sequences.SubSeqNum = 25;
    write::sequences.SeqList[2].Composition = "ZA";
    write::sequences.SubSeqList[25].Frames = 12;
    write::sequences.SubSeqList[25].Skip = 16383;
    write::sequences.SubSeqList[25].Trigger = 8;
    ASSERT_EQ(WriteSequences(), 1);
    EXPECT_EQ(Key("SeqNum"), "2");
    EXPECT_EQ(Key("SubSeqNum"), "25");
    EXPECT_EQ(Key("SeqName2"), "ZA");
    EXPECT_EQ(Key("SeqName9"), "A");
    EXPECT_EQ(Key("SubSeqNameZ"), "12 16383 8");
    EXPECT_EQ(Key("SubSeqNameA"), "1 0 0");
}

TEST_F(SequenceLibrary, SmallLettersOfTheFileCountForNothingWhenItIsReadAndAsTheirCapitalsLater)
{
    PutLibrary("SeqName0=aA\nSeqName1=b\nSubSeqNameA=3 0 0\nSubSeqNameB=2 0 0\n");
    ASSERT_EQ(ReadSequences(), 1);
    EXPECT_EQ(SeqList[0].TotalFrames, 3);
    EXPECT_EQ(SeqList[1].TotalFrames, 0);
    write::sequences.SubSeqList[0].Frames = 4;
    CountAllSequences();
    EXPECT_EQ(SeqList[0].TotalFrames, 8);
    EXPECT_EQ(SeqList[1].TotalFrames, 2);
    EXPECT_EQ(SeqList[0].Composition, "aA");
}

class Composition : public testing::Test {
  protected:
    Composition()
    {
        list[0] = {.Name = "A", .Frames = 3};
        list[1] = {.Name = "B", .Frames = 10};
        list[2] = {.Name = "C", .Frames = 0};
        list[3] = {.Name = "D", .Frames = -4};
        list[4] = {.Name = "E", .Frames = std::numeric_limits<std::int32_t>::max()};
    }
    std::array<SubSeqRecord, 5> list;
};

TEST_F(Composition, CountsCapitalsAlone)
{
    EXPECT_EQ(FramesOfComposition("AB", list), 13);
    EXPECT_EQ(FramesOfComposition("A B", list), 13);  // letters behind a blank count
    EXPECT_EQ(FramesOfComposition("AaBb1", list), 13);
    EXPECT_EQ(FramesOfComposition("DCA", list), 3);
    EXPECT_EQ(FramesOfComposition("", list), 0);
    EXPECT_EQ(FramesOfComposition("EE", list), std::numeric_limits<std::int32_t>::max());
}

TEST_F(Composition, IsCutBeforeTheLetterThatGoesBeyondTheStore)
{
    std::string composition = "AaBA";
    FittedSequence fitted = FitComposition(composition, list, 16);
    EXPECT_EQ(fitted.frames, 16);  // 3 + 3 + 10; the next A would make 19
    EXPECT_TRUE(fitted.cut);
    EXPECT_EQ(composition, "AaB");

    fitted = FitComposition(composition, list, 16);
    EXPECT_EQ(fitted.frames, 16);
    EXPECT_FALSE(fitted.cut);

    composition = "A1 9B";  // digits count for nothing
    fitted = FitComposition(composition, list, 13);
    EXPECT_EQ(fitted.frames, 13);
    EXPECT_FALSE(fitted.cut);
    EXPECT_EQ(composition, "A1 9B");

    composition = "EE";
    fitted = FitComposition(composition, list, 9999);
    EXPECT_EQ(fitted.frames, 0);
    EXPECT_EQ(composition, "");
}

TEST(TypedComposition, IsInCapitalsWithoutDigitsAndNoLongerThanItsBox)
{
    EXPECT_EQ(TakeComposition("ab c").composition, "AB C");
    EXPECT_FALSE(TakeComposition("ab c").hadDigits);
    EXPECT_EQ(TakeComposition("a1b2").composition, "AB");
    EXPECT_TRUE(TakeComposition("a1b2").hadDigits);
    EXPECT_EQ(TakeComposition("abcdefghijklmn").composition, "ABCDEFGHIJK");
}

TEST(PickedTrigger, TogglesInAllByTheRowInFirst)
{
    EXPECT_EQ(PickedTrigger(2, 1), 0);
    EXPECT_EQ(PickedTrigger(0, 1), 2);
    EXPECT_EQ(PickedTrigger(5, 1), 1);
    for (const int row : {0, 2, 3, 4, 8}) EXPECT_EQ(PickedTrigger(2, row), row);
}

}  // namespace
}  // namespace kelvo

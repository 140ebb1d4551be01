#include "viewing/sequence_naming.h"

#include "state/windows_write.h"
#include "support/operator.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(SequenceNaming, CutsTheDigitsOffTheEnd)
{
    const std::pair<const char*, const char*> rows[] = {
        {"run12", "run"}, {"run", "run"}, {"a1b2", "a1b"}, {"abcdefg", "abcdefg"}, {"abcdefg1234", "abcdefg"}};
    for (const auto& [name, stem] : rows) {
        EXPECT_EQ(StemOfSequenceName(name).stem, stem) << name;
        EXPECT_TRUE(StemOfSequenceName(name).refusal.empty()) << name;
    }
}

TEST(SequenceNaming, RefusesDigitsAlone)
{
    EXPECT_EQ(StemOfSequenceName("123").refusal, "A sequence name must contain at least\none numeric letter.");
    EXPECT_EQ(StemOfSequenceName("").refusal, "A sequence name must contain at least\none numeric letter.");
}

TEST(SequenceNaming, RefusesMoreThanSevenLetters)
{
    EXPECT_EQ(StemOfSequenceName("abcdefgh").refusal, "A sequence name must be 7 or\nfewer characters long.");
    EXPECT_EQ(StemOfSequenceName("1234567x99").refusal, "A sequence name must be 7 or\nfewer characters long.");
}

TEST(SequenceNaming, ARefusalKeepsThePath)
{
    TestOperator op;
    write::windows.SeqFilePath = "/data/a.seq";
    EXPECT_EQ(NameSequenceForSaving("/data/77.seq"), 0);
    EXPECT_EQ(op.Boxes().at(0).caption, "Kelvo message");
    EXPECT_EQ(SeqFilePath, "/data/a.seq");
    EXPECT_EQ(NameSequenceForSaving("/data/run5.seq"), 1);
    EXPECT_EQ(SeqFilePath, "/data/run.seq");
}

TEST(SequenceNaming, ANameOutlivesAnotherSetUp)
{
    SetDefaultDir("/data");
    EXPECT_EQ(SeqFilePath, "/data/a.seq");
    SetDefaultDir("/other");
    EXPECT_EQ(SeqFilePath, "/other/a.seq") << "none was given";
    EXPECT_EQ(NameSequenceForSaving("/elsewhere/run5.seq"), 1);
    for (const char* directory : {"/other", "/data"}) {
        SetDefaultDir(directory);
        EXPECT_EQ(SeqFilePath, "/elsewhere/run.seq");
    }
}

}  // namespace
}  // namespace kelvo

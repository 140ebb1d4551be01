#include "batch/batch.h"

#include "batch/batch_arguments.h"
#include "batch/command_words.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

TEST(Batch, OnlyAnExactWordInFrontIsACommand)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"recover.seq"}, {"Recover"}, {"--offscreen", "recover"}, {"last.cal"}}) {
        EXPECT_FALSE(RunBatch(arguments));
    }
    EXPECT_THAT(BatchHelp(), HasSubstr("  recover [--dry-run] [--json] FILE..."));
}

TEST(Batch, EachWordOfTheTableIsRun)
{
    for (const CommandWord& word : CommandWords()) {
        const std::vector<std::string> arguments = {std::string(word.word), "--no-such-option"};
        EXPECT_EQ(RunBatch(arguments), kBatchFailed) << word.word;
    }
}

BatchArguments Taken(std::vector<std::string> arguments, std::string_view word = "cut")
{
    return TakeApart(arguments, word);
}

TEST(Batch, ArgumentsAreFilesFlagsAndValues)
{
    const BatchArguments taken = Taken({"a", "--set", "x=y", "b", "--frames=3:4", "--", "--json", "-x"}, "apply");
    EXPECT_THAT(taken.files, ElementsAre("a", "b", "--json", "-x"));
    EXPECT_THAT(taken.values, ElementsAre(Pair("--set", "x=y"), Pair("--frames", "3:4")));
    EXPECT_EQ(taken.Value("--frames"), "3:4");
    EXPECT_EQ(Taken({"--set=x=y"}, "apply").Value("--set"), "x=y");
    EXPECT_EQ(Taken({"--tlow", "-20", "--thigh=-1"}, "calibrate").Value("--tlow"), "-20");
    EXPECT_FALSE(taken.Has("--json"));
    EXPECT_EQ(taken.Value("--bad"), std::nullopt);
    EXPECT_THAT(taken.error, IsEmpty());
    EXPECT_TRUE(Taken({"--json", "a"}, "recover").Has("--json"));
    EXPECT_FALSE(Taken({"--json", "a"}, "recover").Has("--dry-run"));
}

TEST(Batch, WhatIsNoOptionIsTold)
{
    EXPECT_EQ(Taken({"--jason"}).error, "unknown option --jason");
    EXPECT_EQ(Taken({"--json=1"}, "recover").error, "--json takes no value");
    EXPECT_EQ(Taken({"--json"}).error, "unknown option --json");
    EXPECT_EQ(Taken({"-json"}, "info").error, "unknown option -json (./-json is a file of that name)");
    EXPECT_EQ(Taken({"--frames"}).error, "--frames needs a value");
    EXPECT_EQ(Taken({"--jason", "--frames"}).error, "unknown option --jason");
}

TEST(Batch, NothingIsLeftAsideWithoutAWord)
{
    EXPECT_EQ(Taken({"--frames", "0:1", "--frames=2:3"}).error, "--frames is given twice");
    for (const char* const empty : {"--bad=", "--rectangle="}) {
        EXPECT_THAT(Taken({empty, "a"}, "stats").error, HasSubstr(" needs a value"));
    }
    EXPECT_EQ(Taken({"--bad", "", "a"}, "stats").error, "--bad needs a value");
    EXPECT_EQ(Taken({""}, "info").error, "an empty name names no file");
    EXPECT_EQ(Taken({"--", ""}, "info").error, "an empty name names no file");
    EXPECT_THAT(Taken({"--", "-"}, "cut").error, HasSubstr("- names no file"));
    EXPECT_THAT(Taken({"--json", "--json"}, "info").error, IsEmpty());
}

TEST(Batch, WhatIsToldStaysOnItsLine)
{
    EXPECT_EQ(Printable("a\n\x1B[2Jb\x7F \xFC"), "a??[2Jb? \xFC");
}

}  // namespace
}  // namespace kelvo

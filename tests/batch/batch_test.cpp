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
    const BatchArguments taken = Taken({"a", "--frames", "1:2", "b", "--frames=3:4", "--", "--json"});
    EXPECT_THAT(taken.files, ElementsAre("a", "b", "--json"));
    EXPECT_THAT(taken.values, ElementsAre(Pair("--frames", "1:2"), Pair("--frames", "3:4")));
    EXPECT_EQ(taken.Value("--frames"), "3:4");
    EXPECT_FALSE(taken.Has("--json"));
    EXPECT_EQ(taken.Value("--set"), std::nullopt);
    EXPECT_THAT(taken.error, IsEmpty());
    EXPECT_TRUE(Taken({"--json", "a"}, "recover").Has("--json"));
    EXPECT_FALSE(Taken({"--json", "a"}, "recover").Has("--dry-run"));
}

TEST(Batch, WhatIsNoOptionIsTold)
{
    EXPECT_EQ(Taken({"--jason"}).error, "unknown option --jason");
    EXPECT_EQ(Taken({"--json=1"}, "recover").error, "unknown option --json=1");
    EXPECT_EQ(Taken({"--json"}).error, "unknown option --json");
    EXPECT_EQ(Taken({"--frames"}).error, "--frames needs a value");
}

}  // namespace
}  // namespace kelvo

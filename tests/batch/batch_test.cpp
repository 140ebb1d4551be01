#include "batch/batch.h"

#include "batch/batch_arguments.h"

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

BatchArguments Taken(std::vector<std::string> arguments)
{
    constexpr std::string_view kFlags[] = {"--json"};
    constexpr std::string_view kOptions[] = {"--frames"};
    return TakeApart(arguments, kFlags, kOptions);
}

TEST(Batch, ArgumentsAreFilesFlagsAndValues)
{
    const BatchArguments taken = Taken({"a", "--json", "--frames", "1:2", "b", "--frames=3:4", "--", "--json"});
    EXPECT_THAT(taken.files, ElementsAre("a", "b", "--json"));
    EXPECT_THAT(taken.values, ElementsAre(Pair("--frames", "1:2"), Pair("--frames", "3:4")));
    EXPECT_EQ(taken.Value("--frames"), "3:4");
    EXPECT_TRUE(taken.Has("--json"));
    EXPECT_FALSE(taken.Has("--dry-run"));
    EXPECT_EQ(taken.Value("--set"), std::nullopt);
    EXPECT_THAT(taken.error, IsEmpty());
}

TEST(Batch, WhatIsNoOptionIsTold)
{
    EXPECT_EQ(Taken({"--jason"}).error, "unknown option --jason");
    EXPECT_EQ(Taken({"--json=1"}).error, "unknown option --json=1");
    EXPECT_EQ(Taken({"--frames"}).error, "--frames needs a value");
}

}  // namespace
}  // namespace kelvo

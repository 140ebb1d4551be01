#include "platform/directory.h"

#include "support/temp_directory.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Directories : public testing::Test {
  protected:
    Directories()
    {
        std::filesystem::create_directories(directory / "Sub.img");
        for (const char* name : {"b.img", "A.IMG", "c", "x[1].img", ".h.img"}) PutFile(directory / name, "");
        EXPECT_TRUE(ChangeDirectory(directory.Path()));
    }
    ~Directories() override { ChangeDirectory("/"); }
    TempDirectory directory;
};

TEST_F(Directories, AreNamedWithoutAClosingSeparator)
{
    EXPECT_EQ(CurrentDirectory(), directory.Path());
    EXPECT_TRUE(ChangeDirectory("SUB.IMG\\"));
    EXPECT_EQ(CurrentDirectory(), directory / "Sub.img");
    EXPECT_FALSE(ChangeDirectory("none"));
    EXPECT_EQ(CurrentDirectory(), directory / "Sub.img");
    std::filesystem::remove(directory / "Sub.img");
    EXPECT_EQ(CurrentDirectory(), "");
    EXPECT_THAT(FilesOf("*"), IsEmpty());
}

TEST_F(Directories, ListFilesByPatternsInAnyCase)
{
    EXPECT_THAT(FilesOf("*.img"), ElementsAre("A.IMG", "b.img", "x[1].img"));
    EXPECT_THAT(FilesOf("*.*"), ElementsAre("A.IMG", "b.img", "c", "x[1].img"));
    EXPECT_THAT(FilesOf("?"), ElementsAre("c"));
    EXPECT_THAT(FilesOf("B.img"), ElementsAre("b.img"));
    EXPECT_THAT(FilesOf(""), IsEmpty());
}

TEST_F(Directories, ListWhatIsBelowAndTheOneAbove)
{
    EXPECT_THAT(Subdirectories(), ElementsAre("..", "Sub.img"));
    ASSERT_TRUE(ChangeDirectory("/"));
    EXPECT_THAT(Subdirectories(), testing::Not(testing::Contains("..")));
}

}  // namespace
}  // namespace kelvo

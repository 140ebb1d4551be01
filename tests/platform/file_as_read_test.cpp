#include "platform/file_as_read.h"

#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace kelvo {
namespace {

class FileAsReadTest : public testing::Test {
  protected:
    // As it stands once its last change lies far enough behind.
    FileAsRead Settled() const
    {
        FileAsRead file = FileAsRead::Of(path);
        for (; !file.IsStill(path); file = FileAsRead::Of(path)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return file;
    }
    TempDirectory directory;
    std::string path = directory / "a.txt";
};

TEST_F(FileAsReadTest, IsAnotherOneOnceItIsWrittenReplacedOrRemoved)
{
    PutFile(path, "1234");
    const FileAsRead first = Settled();
    EXPECT_TRUE(first.IsStill(path));
    PutFile(path, "4321");
    EXPECT_FALSE(first.IsStill(path));
    const FileAsRead second = Settled();
    PutFile(directory / "b.txt", "5678");
    EXPECT_TRUE(second.IsStill(path));
    std::filesystem::rename(directory / "b.txt", path);
    EXPECT_FALSE(second.IsStill(path));
    const FileAsRead third = Settled();
    std::filesystem::remove(path);
    EXPECT_FALSE(third.IsStill(path));
}

TEST_F(FileAsReadTest, KnowsThatThereIsNone)
{
    const FileAsRead none = FileAsRead::Of(path);
    EXPECT_TRUE(none.IsStill(path));
    PutFile(path, "");
    EXPECT_FALSE(none.IsStill(path));
    EXPECT_FALSE(FileAsRead().IsStill(directory / "b.txt"));  // it was never read
}

TEST_F(FileAsReadTest, IsNeverTheSameWhereItChangedOnlyJustBefore)
{
    FileAsRead young;
    const auto oneMomentBehind = [&] {  // not where this machine made a pause in between
        const auto before = std::chrono::steady_clock::now();
        PutFile(path, "1234");
        young = FileAsRead::Of(path);
        return std::chrono::steady_clock::now() - before < std::chrono::milliseconds(50);
    };
    while (!oneMomentBehind()) {
    }
    EXPECT_FALSE(young.IsStill(path));
    Settled();
    EXPECT_FALSE(young.IsStill(path));
}

}  // namespace
}  // namespace kelvo

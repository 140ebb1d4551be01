#include "platform/child_process.h"

#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace kelvo {
namespace {

bool WriteText(ChildProcess& child, const std::string& text)
{
    return child.Write(std::as_bytes(std::span(text)));
}

TEST(ChildProcess, IsHandedEachByte)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/copy";
    std::optional<ChildProcess> child = ChildProcess::Start({"dd", "status=none", "of=" + path});
    ASSERT_TRUE(child);
    const std::string much(3'000'000, 'x');
    EXPECT_TRUE(WriteText(*child, much));
    EXPECT_TRUE(WriteText(*child, "end"));
    EXPECT_TRUE(child->Finish());
    std::ifstream file(path, std::ios::binary);
    const std::string copy(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(copy.size(), much.size() + 3);
    EXPECT_TRUE(copy == much + "end");
    EXPECT_EQ(child->LastError(), "");
}

TEST(ChildProcess, ThatIsntThereIsNone)
{
    EXPECT_FALSE(ChildProcess::Start({"no-such-program-anywhere"}));
    EXPECT_FALSE(ChildProcess::Start({}));
}

TEST(ChildProcess, ThatEndsEarlyTakesNoMoreAndLeavesItsLastWords)
{
    std::optional<ChildProcess> child =
        ChildProcess::Start({"sh", "-c", "echo first >&2; echo 'the reason' >&2; exit 3"});
    ASSERT_TRUE(child);
    EXPECT_FALSE(WriteText(*child, std::string(50'000'000, 'x')));  // more than any buffer of the system's takes
    EXPECT_FALSE(child->Finish());
    EXPECT_EQ(child->LastError(), "the reason");
}

TEST(ChildProcess, ThatFailsAtItsEndIsTold)
{
    std::optional<ChildProcess> child = ChildProcess::Start({"sh", "-c", "cat >/dev/null; exit 1"});
    ASSERT_TRUE(child);
    EXPECT_TRUE(WriteText(*child, "some"));
    EXPECT_FALSE(child->Finish());
}

TEST(ChildProcess, ThatIsDroppedEnds)
{
    const TempDirectory directory;
    const std::string path = directory.Path() + "/pid";
    {
        const std::optional<ChildProcess> child = ChildProcess::Start(
            {"sh", "-c", "echo $$ >" + path + ".new; mv " + path + ".new " + path + "; exec sleep 600"});
        ASSERT_TRUE(child);
        while (!std::ifstream(path)) {
        }
    }
    std::string number;
    std::ifstream(path) >> number;
    ASSERT_FALSE(number.empty());
    EXPECT_FALSE(std::ifstream("/proc/" + number + "/status"));
}

}  // namespace
}  // namespace kelvo

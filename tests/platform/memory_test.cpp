#include "platform/memory.h"

#include "state/windows_write.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace kelvo {
namespace {

TEST(Memory, BlockHasExactlyTheElementsAskedForAndIsZero)
{
    std::vector<std::int16_t> block(3, 7);
    ASSERT_TRUE(AllocateBlock(block, 5));
    EXPECT_EQ(block, std::vector<std::int16_t>(5, 0));
}

TEST(Memory, BlocksOfTwoGigabytesAreRefused)
{
    EXPECT_TRUE(MemoryAvailable((std::size_t{1} << 31) - 1));
    EXPECT_FALSE(MemoryAvailable(std::size_t{1} << 31));
    std::vector<float> block(3);
    EXPECT_FALSE(AllocateBlock(block, std::size_t{1} << 29));
    EXPECT_TRUE(block.empty());
}

TEST(Memory, SizesThatOverflowAreRefused)
{
    std::vector<std::uint32_t> block;
    EXPECT_FALSE(AllocateBlock(block, (std::size_t{1} << 62) + 1));  // 4 bytes each: wraps to 4
}

TEST(Memory, TheOrderedCallFailsOnce)
{
    FailAllocation(2);
    std::vector<int> block;
    EXPECT_TRUE(AllocateBlock(block, 10));
    EXPECT_FALSE(AllocateBlock(block, 10));
    EXPECT_TRUE(block.empty());
    EXPECT_TRUE(AllocateBlock(block, 10));
}

TEST(Memory, AnOrderedFailureCanBeTakenBack)
{
    FailAllocation(1);
    FailAllocation(0);
    EXPECT_TRUE(MemoryAvailable(1));
}

class PhysicalMemory : public testing::Test {
  protected:
    PhysicalMemory() { SetDefaultDir(directory.Path()); }

    std::uint64_t With(const std::string& keys) const
    {
        PutFile(directory / "platform.ini", "[Memory]\n" + keys);
        return AvailablePhysicalMemory();
    }

    // What the machine says at this moment; other programs take and give while the test runs.
    static double Machine() { return static_cast<double>(MemAvailableOf(FileContents("/proc/meminfo")).value_or(0)); }

    TempDirectory directory;
};

TEST_F(PhysicalMemory, IsReadFromTheSystemsTable)
{
    EXPECT_EQ(MemAvailableOf("MemTotal:  16 kB\nMemFree: 8 kB\nMemAvailable:    12 kB\nBuffers: 1 kB\n"), 12288U);
    EXPECT_EQ(MemAvailableOf("MemAvailable: 3000000000 kB\n"), 3072000000000U);
    EXPECT_EQ(MemAvailableOf("MemTotal: 16 kB\n"), std::nullopt);
    EXPECT_EQ(MemAvailableOf("XMemAvailable: 16 kB\n"), std::nullopt);
    EXPECT_EQ(MemAvailableOf("MemAvailable: kB\n"), std::nullopt);
    EXPECT_EQ(MemAvailableOf("MemAvailable: 18446744073709551615 kB\n"), std::nullopt);
    EXPECT_EQ(MemAvailableOf(""), std::nullopt);
}

TEST_F(PhysicalMemory, AQuarterOfWhatIsAvailableMayBeTaken)
{
    ASSERT_GT(Machine(), 0);
    const double share = static_cast<double>(AvailablePhysicalMemory()) / Machine();
    EXPECT_GT(share, 0.2);
    EXPECT_LT(share, 0.3);
}

TEST_F(PhysicalMemory, TheShareIsLimitedToOneToAHundredPercent)
{
    EXPECT_NEAR(static_cast<double>(With("Share=0\n")) / Machine(), 0.01, 0.005);
    EXPECT_NEAR(static_cast<double>(With("Share=-7\n")) / Machine(), 0.01, 0.005);
    EXPECT_NEAR(static_cast<double>(With("Share=80\n")) / Machine(), 0.8, 0.1);
    EXPECT_NEAR(static_cast<double>(With("Share=900\n")) / Machine(), 1, 0.2);
    EXPECT_NEAR(static_cast<double>(With("Share=much\n")) / Machine(), 0.25, 0.05);
}

TEST_F(PhysicalMemory, ALimitStandsBesideTheShare)
{
    EXPECT_EQ(With("Limit=10485760\n"), 10485760U);  // 64 frames of 320 x 256
    EXPECT_NEAR(static_cast<double>(With("Limit=0\n")) / Machine(), 0.25, 0.05);
    EXPECT_NEAR(static_cast<double>(With("Limit=9000000000000000000\n")) / Machine(), 0.25, 0.05);
}

}  // namespace
}  // namespace kelvo

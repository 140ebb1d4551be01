#include "badpixel/shared_blocks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

namespace kelvo {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomBytes(std::size_t size)
{
    std::mt19937 random(7);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

TEST(SharedBlocksTest, GivesItsBytesBack)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, SharedBlocks::kBlockBytes,
                                   SharedBlocks::kBlockBytes + 1, 5 * SharedBlocks::kBlockBytes - 1}) {
        const Bytes bytes = RandomBytes(size);
        const SharedBlocks blocks(bytes);
        EXPECT_EQ(blocks.Bytes(), bytes);
        EXPECT_EQ(blocks.Size(), size);
    }
}

TEST(SharedBlocksTest, AreEqualWhereTheirBytesAre)
{
    Bytes bytes = RandomBytes(3 * SharedBlocks::kBlockBytes);
    const SharedBlocks first(bytes);
    EXPECT_EQ(SharedBlocks(bytes), first);
    ++bytes.back();
    EXPECT_NE(SharedBlocks(bytes), first);
    bytes.pop_back();
    EXPECT_NE(SharedBlocks(bytes), first);
}

// A table of 640 x 512 entries with one entry edited at a time: each copy costs one block.
TEST(SharedBlocksTest, ManyCopiesWithFewDifferencesTakeFewBlocks)
{
    ASSERT_EQ(SharedBlockCount(), 0U);
    constexpr std::size_t kTableBytes = std::size_t{640} * 512 * 4;
    Bytes table = RandomBytes(kTableBytes);
    std::vector<SharedBlocks> copies{SharedBlocks(table)};
    const std::size_t whole = SharedBlockCount();
    EXPECT_EQ(whole, kTableBytes / SharedBlocks::kBlockBytes);
    for (std::size_t edit = 0; edit < 200; ++edit) {
        ++table[edit * 6000];
        copies.emplace_back(table);
        copies.emplace_back(table);  // and one without a difference
    }
    EXPECT_EQ(SharedBlockCount(), whole + 200);
    copies.clear();
    EXPECT_EQ(SharedBlockCount(), 0U);
}

}  // namespace
}  // namespace kelvo

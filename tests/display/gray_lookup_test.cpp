#include "display/gray_lookup.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace kelvo {
namespace {

std::vector<std::uint8_t> RandomLut(std::size_t size)
{
    std::mt19937 random(3);
    std::vector<std::uint8_t> lut(size);
    for (std::uint8_t& gray : lut) gray = static_cast<std::uint8_t>(random());
    return lut;
}

std::uint8_t Plain(std::int16_t count, const std::vector<std::uint8_t>& lut)
{
    if (count < 0) return lut[0];
    const auto index = static_cast<std::size_t>(count);
    return index < lut.size() ? lut[index] : lut[lut.size() - 1];
}

TEST(GrayLookup, EveryCountMeetsItsEntry)
{
    for (const std::size_t size : {1U, 255U, 16384U, 32767U, 32768U, 65535U}) {
        const std::vector<std::uint8_t> lut = RandomLut(size);
        const auto table = std::make_unique<GrayTable>();
        FillGrayTable(*table, lut);
        std::vector<std::int16_t> counts;
        for (int count = -32768; count <= 32767; ++count) counts.push_back(static_cast<std::int16_t>(count));
        std::vector<std::uint8_t> grays(counts.size());
        LookUpGrays(counts, *table, grays);
        for (std::size_t i = 0; i < counts.size(); ++i) {
            ASSERT_EQ(grays[i], Plain(counts[i], lut)) << counts[i] << " of " << size;
        }
    }
}

TEST(GrayLookup, EveryLengthEndsWhereItShould)
{
    const std::vector<std::uint8_t> lut = RandomLut(65535);
    const auto table = std::make_unique<GrayTable>();
    FillGrayTable(*table, lut);
    std::mt19937 random(4);
    for (std::size_t size = 0; size < 70; ++size) {
        std::vector<std::int16_t> counts(size);
        for (std::int16_t& count : counts) count = static_cast<std::int16_t>(random());
        std::vector<std::uint8_t> grays(size + 1, 77);
        LookUpGrays(counts, *table, std::span(grays).first(size));
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(grays[i], Plain(counts[i], lut)) << i << " of " << size;
        EXPECT_EQ(grays[size], 77) << size;
    }
}

}  // namespace
}  // namespace kelvo

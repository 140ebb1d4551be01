// The readout orders against small pictures drawn by hand, and against the gather that undoes each of them.
#include "simcam/sim_readout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>

namespace kelvo {
namespace {

using testing::ElementsAre;

// The samples of the first line of an 8 x 8 window.
std::vector<std::uint32_t> FirstLine(int scheme)
{
    std::vector<std::uint32_t> order = ReadoutOrder(scheme, 8, 8, false, false);
    order.resize(8);
    return order;
}

TEST(SimReadout, OneChannelSendsLineByLine)
{
    std::vector<std::uint32_t> plain(64);
    std::iota(plain.begin(), plain.end(), 0U);
    for (const int scheme : {0, 2, 9, 12, -1}) {
        EXPECT_EQ(ReadoutOrder(scheme, 8, 8, false, false), plain) << scheme;
    }
}

TEST(SimReadout, TwoChannelsReadTheHalvesOfALine)
{
    EXPECT_THAT(FirstLine(1), ElementsAre(0, 4, 1, 5, 2, 6, 3, 7));
    EXPECT_THAT(FirstLine(4), ElementsAre(0, 4, 1, 5, 2, 6, 3, 7));
    EXPECT_THAT(FirstLine(5), ElementsAre(4, 0, 5, 1, 6, 2, 7, 3));
}

TEST(SimReadout, FourChannelsReadTheQuartersOfALine)
{
    EXPECT_THAT(FirstLine(7), ElementsAre(0, 2, 4, 6, 1, 3, 5, 7));
}

TEST(SimReadout, TwoLinesGoSampleBySample)
{
    EXPECT_THAT(FirstLine(6), ElementsAre(0, 8, 1, 9, 2, 10, 3, 11));
}

// Rows 3 and 4 first, then 2 and 5, ...; each row starts (row mod 4) columns late, so that at time 0 row 3 is at column
// 8 - 3 = 5, row 4 at 0, row 2 at 6, row 5 at 7, row 1 at 7, row 6 at 6, row 0 at 0, row 7 at 5.
TEST(SimReadout, ColumnsGoFromTheMiddleOutward)
{
    EXPECT_THAT(FirstLine(8), ElementsAre(3 * 8 + 5, 4 * 8, 2 * 8 + 6, 5 * 8 + 7, 8 + 7, 6 * 8 + 6, 0, 7 * 8 + 5));
}

TEST(SimReadout, FlipsTurnTheReadoutNotTheChannels)
{
    std::vector<std::uint32_t> order = ReadoutOrder(2, 8, 8, true, false);
    EXPECT_EQ(order.front(), 56U);
    EXPECT_EQ(order.back(), 7U);
    order = ReadoutOrder(2, 8, 8, false, true);
    EXPECT_EQ(order.front(), 7U);
    EXPECT_EQ(order.back(), 56U);
    order = ReadoutOrder(4, 8, 8, true, true);
    order.resize(4);
    EXPECT_THAT(order, ElementsAre(63, 59, 62, 58));
}

// Where a decommutation table without delays looks for the sample of image pixel (a, c) of V lines of H columns.
using SampleOf = std::function<int(int a, int c, int V, int H)>;

TEST(SimReadout, TheDecommutationTableOfEachSchemeUndoesIt)
{
    struct Row {
        int scheme;
        SampleOf sample;
    };
    const auto wrap = [](int x, int N) { return (x < 0 ? x + N : x) % N; };
    const Row rows[] = {
        {1, [](int a, int c, int, int H) { return a * H + (c < H / 2 ? 2 * c : 2 * (c - H / 2) + 1); }},
        {2, [](int a, int c, int, int H) { return a * H + c; }},
        {4, [](int a, int c, int, int H) { return a * H + c % (H / 2) * 2 + c / (H / 2); }},
        {5, [](int a, int c, int, int H) { return a * H + c % (H / 2) * 2 + (1 - c / (H / 2)); }},
        {6, [](int a, int c, int, int H) { return a / 2 * 2 * H + c * 2 + a % 2; }},
        {7, [](int a, int c, int, int H) { return a * H + c % (H / 4) * 4 + c / (H / 4); }},
        {8,
         [&](int a, int c, int V, int H) {
             const int t = c * V + a % 4 * V;
             return wrap(a < V / 2 ? t + 254 - 2 * a : t + 2 * a - 255, V * H);
         }},
    };
    constexpr int kV = 256;  // the last scheme fits this height only
    constexpr int kH = 40;
    for (const Row& row : rows) {
        const std::vector<std::uint32_t> order = ReadoutOrder(row.scheme, kV, kH, false, false);
        ASSERT_EQ(order.size(), static_cast<std::size_t>(kV * kH));
        int wrong = 0;
        for (int a = 0; a < kV; ++a) {
            for (int c = 0; c < kH; ++c) {
                const auto sample = static_cast<std::size_t>(row.sample(a, c, kV, kH));
                if (order[sample] != static_cast<std::uint32_t>(a * kH + c)) ++wrong;
            }
        }
        EXPECT_EQ(wrong, 0) << row.scheme;
    }
}

TEST(SimReadout, EachPixelIsSentOnce)
{
    for (int scheme = 0; scheme <= 12; ++scheme) {
        std::vector<std::uint32_t> order = ReadoutOrder(scheme, 16, 24, true, true);
        std::ranges::sort(order);
        std::vector<std::uint32_t> all(std::size_t{16} * 24);
        std::iota(all.begin(), all.end(), 0U);
        EXPECT_EQ(order, all) << scheme;
    }
}

}  // namespace
}  // namespace kelvo

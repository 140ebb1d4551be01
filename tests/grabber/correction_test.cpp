#include "grabber/correction.h"

#include "grabber/correction_plan.h"
#include "platform/memory.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

using Counts = std::vector<std::int16_t>;
using Indices = std::vector<std::uint32_t>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

// ---- The definition, against cases worked by hand

std::int16_t Defined(std::int32_t calType, std::int32_t dataOffset, std::int16_t raw, std::int16_t offset, float gain)
{
    const Indices decom = {0};
    const Counts rawFrame = {raw};
    const Counts offsets = {offset};
    const std::vector<float> gains = {gain};
    Counts frame = {12345};
    CorrectByDefinition({calType, dataOffset, decom, offsets, gains}, rawFrame, frame);
    return frame[0];
}

TEST(CorrectionDefinition, WithoutCalibrationANegativeCountIsZero)
{
    EXPECT_EQ(Defined(0, 10, 7, 1000, 2), 17);
    EXPECT_EQ(Defined(0, -10, 7, 1000, 2), 0);
    EXPECT_EQ(Defined(3, -10, 12, 1000, 2), 2);
    EXPECT_EQ(Defined(-1, 0, -1, 0, 1), 0);
    EXPECT_EQ(Defined(0, 20000, 20000, 0, 1), 40000 - 65536);  // positive in 32 bits: stored as it is
}

TEST(CorrectionDefinition, ACalibratedCountBelowZeroStays)
{
    EXPECT_EQ(Defined(1, 0, 100, 300, 1), -200);
    EXPECT_EQ(Defined(2, 0, 100, 300, 2), -100);
}

TEST(CorrectionDefinition, SixteenBitsAreKeptWithoutLimiting)
{
    EXPECT_EQ(Defined(1, 0, 32767, -32768, 1), -1);             // 65535
    EXPECT_EQ(Defined(1, 0, -32768, 32767, 1), 1);              // -65535
    EXPECT_EQ(Defined(2, 0, 16384, 0, 0.25F), 0);               // 65536
    EXPECT_EQ(Defined(2, 0, 10000, 0, 0.125F), 80000 - 65536);  // 80000
    EXPECT_EQ(Defined(2, 0, -10000, 0, 0.125F), 65536 - 80000);
}

TEST(CorrectionDefinition, TheQuotientIsTakenInDoubleAndTruncated)
{
    EXPECT_EQ(Defined(2, 0, 100, 0, 0.1F), 999);  // 0.1F is 0.100000001490116...: 999.99998
    EXPECT_EQ(Defined(2, 0, -100, 0, 0.1F), -999);
    EXPECT_EQ(Defined(2, 0, 100, 0, -0.1F), -999);
    EXPECT_EQ(Defined(2, 0, 7, 0, 2), 3);
    EXPECT_EQ(Defined(2, 0, -7, 0, 2), -3);
    EXPECT_EQ(Defined(2, 0, 3, 0, 0.3F), 9);   // 0.3F is 0.300000011920929: 9.9999996
    EXPECT_EQ(Defined(2, 0, 7, 0, 0.7F), 10);  // 0.7F is 0.699999988079071: 10.0000002
    EXPECT_EQ(Defined(2, 5, 1000, 5, 1), 1000);
}

TEST(CorrectionDefinition, WhatThirtyTwoBitsDontHoldIsZero)
{
    EXPECT_EQ(Defined(2, 0, 100, 0, 0.0F), 0);
    EXPECT_EQ(Defined(2, 0, 100, 0, -0.0F), 0);
    EXPECT_EQ(Defined(2, 0, 0, 0, 0.0F), 0);
    EXPECT_EQ(Defined(2, 0, 100, 0, kNotANumber), 0);
    EXPECT_EQ(Defined(2, 0, 100, 0, 1e-30F), 0);
    EXPECT_EQ(Defined(2, 0, 100, 0, kInfinity), 0);   // the quotient is 0
    EXPECT_EQ(Defined(2, 0, 1, 0, 0x1p-31F), 0);      // 2^31, one too many
    EXPECT_EQ(Defined(2, 0, 32767, 0, 0x1p-16F), 0);  // 32767 x 65536: 32 bits hold it, the low 16 are 0
    EXPECT_EQ(Defined(2, 0, 3, 0, 0x1.8p-15F), 0);    // 65536
    EXPECT_EQ(Defined(2, 0, 9, 0, 0x1.8p-14F), 98304 - 65536 - 65536);  // 9 x 16384 / 1.5 = 98304: low half 0x8000
}

TEST(CorrectionDefinition, TheSumWrapsInThirtyTwoBits)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(Defined(0, kMost, 1, 0, 1), 0);                  // wraps to the least: negative
    EXPECT_EQ(Defined(0, kMost, 0, 0, 1), -1);                 // 0x7FFFFFFF, its low half
    EXPECT_EQ(Defined(1, kMost, 3, 0, 1), 2);                  // low half of 0x80000002
    EXPECT_EQ(Defined(2, kMost, 1, 0, 65536), -32768);         // -2^31 / 2^16
    EXPECT_EQ(Defined(2, kMost - 65535, 0, 0, 65536), 32767);  // 0x7FFF0000 / 2^16
}

TEST(CorrectionDefinition, TheListsAreReachedThroughTheDecommutation)
{
    const Indices decom = {2, 0, 0};
    const Counts raw = {10, 20, 30};
    const Counts offsets = {1, 2, 3};
    const std::vector<float> gains = {1, 2, 3};
    Counts frame(3);
    CorrectByDefinition({2, 0, decom, offsets, gains}, raw, frame);
    EXPECT_THAT(frame, ElementsAre(9, 9, 9));  // (30 - 3) / 3, (10 - 1) / 1 twice
    CorrectByDefinition({1, 100, decom, offsets, {}}, raw, frame);
    EXPECT_THAT(frame, ElementsAre(127, 109, 109));
}

TEST(CorrectionDefinition, AnEntryBeyondAListReadsZeroThere)
{
    const Indices decom = {5, 1};
    const Counts raw = {10, 20};
    const Counts offsets = {1};
    Counts frame = {1, 1, 77};
    CorrectByDefinition({1, 3, decom, offsets, {}}, raw, frame);
    EXPECT_THAT(frame, ElementsAre(3, 23, 77));  // pixels beyond the table are left
    CorrectByDefinition({2, 3, decom, offsets, {}}, raw, frame);
    EXPECT_THAT(frame, ElementsAre(0, 0, 77));  // no gain is a gain of 0
}

// ---- The fast path, bit for bit against the definition

struct Image {
    std::size_t width;
    std::size_t height;
    std::size_t Pixels() const { return width * height; }
};

using Order = std::function<std::uint32_t(const Image&, std::size_t row, std::size_t column)>;

Indices Ordered(const Image& image, const Order& order)
{
    Indices decom;
    for (std::size_t r = 0; r < image.height; ++r) {
        for (std::size_t c = 0; c < image.width; ++c) decom.push_back(order(image, r, c));
    }
    return decom;
}

std::uint32_t InOrder(const Image& image, std::size_t row, std::size_t column)
{
    return static_cast<std::uint32_t>(row * image.width + column);
}

std::uint32_t Mirrored(const Image& image, std::size_t row, std::size_t column)
{
    return InOrder(image, row, image.width - 1 - column);
}

// Line quarters or halves, sample by sample in turn.
template <std::size_t kChannels>
std::uint32_t Interleaved(const Image& image, std::size_t row, std::size_t column)
{
    const std::size_t part = std::max<std::size_t>(image.width / kChannels, 1);
    return InOrder(image, row, column % part * kChannels + column / part);
}

template <std::size_t kChannels>
std::uint32_t LastChannelFirst(const Image& image, std::size_t row, std::size_t column)
{
    const std::size_t part = std::max<std::size_t>(image.width / kChannels, 1);
    return InOrder(image, row, column % part * kChannels + (kChannels - 1 - std::min(column / part, kChannels - 1)));
}

template <std::size_t kChannels>
std::uint32_t InterleavedMirrored(const Image& image, std::size_t row, std::size_t column)
{
    return Interleaved<kChannels>(image, row, image.width - 1 - column);
}

std::uint32_t UpsideDown(const Image& image, std::size_t row, std::size_t column)
{
    return InOrder(image, image.height - 1 - row, column);
}

std::uint32_t Rotated(const Image& image, std::size_t row, std::size_t column)
{
    return static_cast<std::uint32_t>(column * image.height + image.height - 1 - row);
}

std::uint32_t Shifted(const Image& image, std::size_t row, std::size_t column)
{
    return static_cast<std::uint32_t>((row * image.width + column + 5) % image.Pixels());
}

std::uint32_t EverySecond(const Image& image, std::size_t row, std::size_t column)
{
    return static_cast<std::uint32_t>((row * image.width + 2 * column) % image.Pixels());
}

std::uint32_t AlwaysFirst(const Image&, std::size_t, std::size_t)
{
    return 0;
}

struct NamedOrder {
    const char* name;
    Order order;
};

const std::vector<NamedOrder>& Orders()
{
    static const std::vector<NamedOrder> kOrders = {
        {"in order", InOrder},
        {"mirrored", Mirrored},
        {"upside down", UpsideDown},
        {"two channels", Interleaved<2>},
        {"two channels, the second first", LastChannelFirst<2>},
        {"two channels mirrored", InterleavedMirrored<2>},
        {"four channels", Interleaved<4>},
        {"four channels, the last first", LastChannelFirst<4>},
        {"four channels mirrored", InterleavedMirrored<4>},
        {"rotated", Rotated},
        {"shifted", Shifted},
        {"every second sample", EverySecond},
        {"the first sample everywhere", AlwaysFirst},
    };
    return kOrders;
}

void Substitute(Indices& decom, std::mt19937& random, std::size_t count)
{
    for (std::size_t k = 0; k < count && !decom.empty(); ++k) {
        decom[random() % decom.size()] = decom[random() % decom.size()];
    }
}

enum class Gains { kTame, kHard, kAny };

float SomeGain(std::mt19937& random, Gains gains)
{
    static constexpr std::array kHard = {0.1F,    0.3F,     -0.1F,     0.7F,        1.0F,          1.0F / 3,
                                         0x1p-6F, -0x1p-6F, 0x1p100F,  0.99999994F, 1e20F,         0.015625F,
                                         3.0F,    -7.0F,    1.000001F, 0.0156251F,  0x1.fffffep99F};
    static constexpr std::array kOdd = {0.0F,        -0.0F,    1e-40F,    -1e-40F,        kInfinity, -kInfinity,
                                        kNotANumber, 1e-3F,    -1e-3F,    1e-30F,         3.4e38F,   -3.4e38F,
                                        0x1p-16F,    0x1p-17F, 0x1p-149F, 0x1.fffffep-7F, 0x1p101F};
    if (gains == Gains::kAny && random() % 3 == 0) return kOdd[random() % kOdd.size()];
    if (gains == Gains::kHard && random() % 2 == 0) return kHard[random() % kHard.size()];
    return std::uniform_real_distribution<float>(0.5F, 1.5F)(random);
}

struct Case {
    std::int32_t calType = 0;
    std::int32_t dataOffset = 0;
    Indices decom;
    Counts offset;
    std::vector<float> gain;
    Counts raw;
    CorrectionLists Lists() const { return {calType, dataOffset, decom, offset, gain}; }
};

Case RandomCase(std::int32_t calType, std::int32_t dataOffset, const Indices& decom, Gains gains, std::mt19937& random)
{
    Case made{calType, dataOffset, decom, Counts(decom.size()), std::vector<float>(decom.size()), Counts(decom.size())};
    const auto anyCount = [&] { return static_cast<std::int16_t>(random()); };
    std::ranges::generate(made.raw, anyCount);
    std::ranges::generate(made.offset, anyCount);
    std::ranges::generate(made.gain, [&] { return SomeGain(random, gains); });
    return made;
}

// One look-up for all: every count another gray value as far as bytes go.
const GrayTable& Table()
{
    static const std::unique_ptr<GrayTable> kTable = [] {
        auto table = std::make_unique<GrayTable>();
        for (std::size_t i = 0; i < table->size(); ++i) {
            (*table)[i] = static_cast<std::uint8_t>(i * 40503 >> 7);
        }
        return table;
    }();
    return *kTable;
}

// The instruction sets of this machine, one after the other.
template <typename Check>
void OnEachTarget(Check&& check)
{
    const std::int64_t supported = hwy::SupportedTargets();
    for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
        const std::int64_t target = rest & -rest;
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        SCOPED_TRACE(hwy::TargetName(target));
        check();
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

// Rows from the bottom up with three bytes between them, as a bitmap has them: what lies between stays.
void ExpectGraysAsDefined(const CorrectionPlan& plan, const Counts& raw, const Counts& expected, std::size_t width,
                          std::size_t rows, std::size_t firstColumn)
{
    const std::size_t grayWidth = width - std::min(firstColumn, width);
    const std::size_t stride = grayWidth + 3;
    std::vector<std::uint8_t> pixels(rows * stride, 99);
    Counts frame(expected.size(), 4711);
    std::uint8_t* const top = rows == 0 ? nullptr : pixels.data() + (rows - 1) * stride;
    CorrectAndLookUp(plan, raw, frame, {&Table(), top, -static_cast<std::ptrdiff_t>(stride), rows, firstColumn});
    ASSERT_EQ(frame, expected);

    std::vector<std::uint8_t> grays(rows * stride, 99);
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < grayWidth; ++column) {
            const std::size_t i = row * width + firstColumn + column;
            if (i >= expected.size()) break;
            grays[(rows - 1 - row) * stride + column] = Table()[static_cast<std::uint16_t>(expected[i])];
        }
    }
    ASSERT_EQ(pixels, grays);
}

void ExpectAsDefined(const Case& made, std::size_t width)
{
    Counts expected(made.decom.size(), 4711);
    CorrectByDefinition(made.Lists(), made.raw, expected);
    const CorrectionPlanPtr plan = NewCorrectionPlan(made.Lists(), width, made.raw.size());
    ASSERT_TRUE(plan);

    // One count more than the frame has: nothing may be written behind it.
    Counts frame(made.decom.size() + 1, 4711);
    CorrectFrame(*plan, made.raw, frame);
    ASSERT_EQ(frame.back(), 4711);
    frame.pop_back();
    ASSERT_EQ(frame, expected);

    if (width == 0) return;  // no rows to speak of
    ExpectGraysAsDefined(*plan, made.raw, expected, width, (expected.size() + width - 1) / width, 0);
    // A picture that is panned: shorter rows, fewer of them.
    ExpectGraysAsDefined(*plan, made.raw, expected, width, expected.size() / width * 2 / 3, width / 5 + 1);
}

constexpr std::array kImages = {Image{1, 1},  Image{7, 3},   Image{8, 5},    Image{16, 4},   Image{33, 9},
                                Image{64, 8}, Image{100, 6}, Image{128, 16}, Image{160, 12}, Image{63, 63}};

TEST(Correction, EveryOrderIsAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(11);
        for (const Image& image : kImages) {
            for (const NamedOrder& order : Orders()) {
                SCOPED_TRACE(std::string(order.name) + ", width " + std::to_string(image.width));
                const Indices decom = Ordered(image, order.order);
                for (const std::int32_t calType : {0, 1, 2, 7}) {
                    ExpectAsDefined(RandomCase(calType, 0, decom, Gains::kHard, random), image.width);
                }
            }
        }
    });
}

TEST(Correction, SubstitutedPixelsAreAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(12);
        for (const Image& image : kImages) {
            for (const NamedOrder& order : Orders()) {
                SCOPED_TRACE(std::string(order.name) + ", width " + std::to_string(image.width));
                Indices decom = Ordered(image, order.order);
                for (const std::size_t share : {100U, 10U, 3U}) {
                    Substitute(decom, random, decom.size() / share + 1);
                    ExpectAsDefined(RandomCase(2, 37, decom, Gains::kHard, random), image.width);
                    ExpectAsDefined(RandomCase(1, 37, decom, Gains::kHard, random), image.width);
                }
            }
        }
    });
}

TEST(Correction, ARandomPermutationIsAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(13);
        for (const Image& image : kImages) {
            Indices decom = Ordered(image, InOrder);
            std::ranges::shuffle(decom, random);
            for (const std::int32_t calType : {0, 1, 2}) {
                ExpectAsDefined(RandomCase(calType, -5, decom, Gains::kTame, random), image.width);
            }
        }
    });
}

TEST(Correction, OddGainsAreAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(14);
        for (const Image& image : kImages) {
            const Indices decom = Ordered(image, Interleaved<4>);
            for (int k = 0; k < 5; ++k) {
                ExpectAsDefined(RandomCase(2, 0, decom, Gains::kAny, random), image.width);
            }
        }
    });
}

TEST(Correction, ExtremesOfDataOffsetAreAsDefined)
{
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    OnEachTarget([] {
        std::mt19937 random(15);
        const Image image{64, 8};
        const Indices decom = Ordered(image, InOrder);
        for (const std::int32_t dataOffset :
             {kMost, kLeast, kMost - 40000, kLeast + 40000, 65536, -65536, 65537, -65537, 16777216, 32768}) {
            SCOPED_TRACE(dataOffset);
            for (const std::int32_t calType : {0, 1, 2}) {
                ExpectAsDefined(RandomCase(calType, dataOffset, decom, Gains::kHard, random), image.width);
            }
        }
    });
}

// Offsets as a camera has them leave room for DataOffset; those at the limits of 16 bits don't.
TEST(Correction, ADataOffsetThatFitsBesideTheOffsetsIsAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(18);
        const Image image{100, 6};
        const Indices decom = Ordered(image, Interleaved<4>);
        for (const std::int32_t dataOffset : {1, -1, 1000, -1000, 32268, 32269, -32267, -32268, -32269}) {
            SCOPED_TRACE(dataOffset);
            Case made = RandomCase(2, dataOffset, decom, Gains::kAny, random);
            for (std::int16_t& offset : made.offset) offset = static_cast<std::int16_t>(random() % 1001 - 500);
            made.offset.front() = 500;
            made.offset.back() = -500;
            ExpectAsDefined(made, image.width);
        }
    });
}

// A rejected detector has gain 0 and may stand in any row.
TEST(CorrectionPlan, OnlyGainsBetweenTheLimitsAreDividedInDouble)
{
    const auto inDouble = [](float gain) {
        const CorrectionPlanPtr plan = NewCorrectionPlan({2, 0, Indices{0}, Counts{0}, std::vector<float>{gain}}, 1, 1);
        return plan->rows.at(0).inDouble;
    };
    for (const float gain : {0.0F, -0.0F, 1.0F, -1.0F, 0x1p-8F, 0x1p-31F, 0x1p-149F, kInfinity, kNotANumber}) {
        EXPECT_FALSE(inDouble(gain)) << gain;
    }
    for (const float gain : {0x1.fffffep-9F, -0x1.fffffep-9F, 0x1.000002p-31F, -0x1p-16F}) {
        EXPECT_TRUE(inDouble(gain)) << gain;
    }
}

TEST(Correction, TheCallersRoundingComesBackAndDoesntMatter)
{
    for (const int direction : {FE_TONEAREST, FE_UPWARD, FE_TOWARDZERO}) {
        OnEachTarget([&] {
            std::mt19937 random(19);
            const Image image{100, 6};
            const Indices decom = Ordered(image, InOrder);
            const Case made = RandomCase(2, 0, decom, Gains::kAny, random);
            Counts expected(decom.size());
            CorrectByDefinition(made.Lists(), made.raw, expected);
            const CorrectionPlanPtr plan = NewCorrectionPlan(made.Lists(), image.width, made.raw.size());
            Counts frame(decom.size());
            std::fesetround(direction);
            CorrectFrame(*plan, made.raw, frame);
            const int after = std::fegetround();
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(after, direction);
            EXPECT_EQ(frame, expected);
        });
    }
}

// For each gain the counts just around every whole quotient: there a single precision quotient rounds up to the whole
// number that the true one doesn't reach.
TEST(Correction, QuotientsBesideWholeNumbersAreAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(16);
        int roundedUp = 0;
        for (int k = 0; k < 2000; ++k) {
            const float gain = SomeGain(random, Gains::kHard);
            Case made{2, 0, Indices(512), Counts(512, 0), std::vector<float>(512, gain), Counts(512)};
            std::iota(made.decom.begin(), made.decom.end(), 0U);
            for (std::size_t i = 0; i < made.raw.size(); ++i) {
                const double whole = static_cast<double>(static_cast<std::int64_t>(random() % 65536) - 32768);
                const double value = std::clamp(std::round(whole * double{gain}), -65535.0, 65535.0);
                made.raw[i] = static_cast<std::int16_t>(std::clamp(value, -32768.0, 32767.0));
                made.offset[i] = static_cast<std::int16_t>(made.raw[i] - static_cast<int>(value));
                const double difference = made.raw[i] - made.offset[i];
                const float single = static_cast<float>(difference) / gain;
                roundedUp += std::trunc(single) != std::trunc(difference / double{gain});
            }
            ExpectAsDefined(made, 512);
        }
        EXPECT_GT(roundedUp, 1000) << "the cases that matter must be among them";
    });
}

// A detector's whole range, at gains around 1 that are no round figures.
TEST(Correction, EveryCountOfAGainIsAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(17);
        for (const float gain : {0.1F, 0.3F, 0.9999999F, 1.0000001F, 0.85F, 1.15F, -0.1F, 0.0156250019F}) {
            Case made{2, 0, Indices(65536), Counts(65536, 0), std::vector<float>(65536, gain), Counts(65536)};
            std::iota(made.decom.begin(), made.decom.end(), 0U);
            for (std::size_t i = 0; i < made.raw.size(); ++i) made.raw[i] = static_cast<std::int16_t>(i);
            ExpectAsDefined(made, 256);
        }
    });
}

TEST(Correction, EntriesBeyondTheListsAreAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(18);
        const Image image{48, 6};
        Indices decom = Ordered(image, InOrder);
        for (const std::size_t at : {0U, 17U, 47U, 200U, 287U}) decom[at] = 288 + static_cast<std::uint32_t>(at);
        decom[100] = 0xFFFFFFFF;
        for (const std::int32_t calType : {0, 1, 2}) {
            Case made = RandomCase(calType, 9, decom, Gains::kTame, random);
            ExpectAsDefined(made, image.width);
            made.offset.resize(100);
            made.gain.resize(150);
            ExpectAsDefined(made, image.width);
            made.raw.resize(90);  // rows of the pattern lie beyond the raw frame
            ExpectAsDefined(made, image.width);
            made.offset.clear();
            made.gain.clear();
            ExpectAsDefined(made, image.width);
        }
    });
}

TEST(Correction, AShortLastRowIsAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(19);
        for (const std::size_t pixels : {1U, 15U, 40U, 100U, 131U}) {
            const Indices decom = Ordered({pixels, 1}, InOrder);
            for (const std::size_t width : {0U, 1U, 32U, 50U, 1000U}) {
                ExpectAsDefined(RandomCase(2, 0, decom, Gains::kHard, random), width);
            }
        }
    });
}

TEST(Correction, RandomListsAreAsDefined)
{
    OnEachTarget([] {
        std::mt19937 random(20);
        for (int k = 0; k < 300; ++k) {
            const Image image{1 + random() % 90, 1 + random() % 12};
            Indices decom = Ordered(image, Orders()[random() % Orders().size()].order);
            if (random() % 2) Substitute(decom, random, random() % decom.size() + 1);
            const auto gains = static_cast<Gains>(random() % 3);
            const auto dataOffset = static_cast<std::int32_t>(random()) >> (random() % 32);
            const auto calType = static_cast<std::int32_t>(random() % 3);
            ExpectAsDefined(RandomCase(calType, dataOffset, decom, gains, random), image.width);
        }
    });
}

TEST(Correction, BlocksThatAreTooShortAreLeftAlone)
{
    const Indices decom = {0, 1, 2, 3};
    const CorrectionPlanPtr plan = NewCorrectionPlan({0, 0, decom, {}, {}}, 2, 4);
    ASSERT_TRUE(plan);
    const Counts raw = {1, 2, 3, 4};
    Counts frame(4, 9);
    std::vector<std::uint8_t> pixels(4, 9);
    const GrayRows grays{&Table(), pixels.data(), 2, 2};
    CorrectFrame(*plan, std::span(raw).first(3), frame);
    CorrectFrame(*plan, raw, std::span(frame).first(3));
    CorrectAndLookUp(*plan, raw, std::span(frame).first(3), grays);
    EXPECT_THAT(frame, Each(9));
    EXPECT_THAT(pixels, Each(9));
}

TEST(Correction, WithoutPixelsNothingHappens)
{
    const CorrectionPlanPtr plan = NewCorrectionPlan({2, 0, {}, {}, {}}, 640, 0);
    ASSERT_TRUE(plan);
    Counts frame;
    CorrectFrame(*plan, {}, frame);
    EXPECT_TRUE(frame.empty());
}

TEST(Correction, ARefusedBlockGivesNoPlan)
{
    const Indices decom = {1, 0};
    const Counts offset = {1, 1};
    const std::vector<float> gain = {1, 1};
    for (int n = 1; n <= 5; ++n) {
        FailAllocation(n);
        EXPECT_FALSE(NewCorrectionPlan({2, 0, decom, offset, gain}, 2, 2)) << n;
    }
    FailAllocation(6);
    EXPECT_TRUE(NewCorrectionPlan({2, 0, decom, offset, gain}, 2, 2)) << "five blocks are all";
    FailAllocation(0);
}

// ---- The description of the gather

const RowGather& OnlyRow(const CorrectionPlanPtr& plan)
{
    return plan->rows.at(0);
}

CorrectionPlanPtr PlanOfRow(std::size_t width, const Order& order, std::size_t substituted)
{
    Indices decom = Ordered({width, 1}, order);
    for (std::size_t k = 0; k < substituted; ++k) decom[(k * 37 + 5) % width] = static_cast<std::uint32_t>(k);
    return NewCorrectionPlan({0, 0, decom, {}, {}}, width, width);
}

TEST(CorrectionPlan, FourChannelsAreOnePattern)
{
    const CorrectionPlanPtr plan = PlanOfRow(640, Interleaved<4>, 0);
    EXPECT_EQ(OnlyRow(plan).pattern, RowPattern::kInterleave);
    EXPECT_EQ(OnlyRow(plan).channels, 4);
    EXPECT_EQ(OnlyRow(plan).patches, 0U);
}

TEST(CorrectionPlan, SubstitutedPixelsArePatchesOverThePattern)
{
    const CorrectionPlanPtr plan = PlanOfRow(640, InterleavedMirrored<4>, 6);
    EXPECT_EQ(OnlyRow(plan).pattern, RowPattern::kInterleave);
    EXPECT_EQ(OnlyRow(plan).channels, 4);
    EXPECT_TRUE(OnlyRow(plan).mirrored);
    EXPECT_EQ(OnlyRow(plan).patches, 6U);
    EXPECT_EQ(plan->patches.at(0).column, 5U);
    EXPECT_EQ(plan->patches.at(0).source, 0U);
}

TEST(CorrectionPlan, AConstantDistanceIsAStride)
{
    const Image image{32, 16};
    const Indices decom = Ordered(image, Rotated);
    const CorrectionPlanPtr plan = NewCorrectionPlan({0, 0, decom, {}, {}}, image.width, image.Pixels());
    EXPECT_EQ(OnlyRow(plan).pattern, RowPattern::kStride);
    EXPECT_EQ(OnlyRow(plan).stride, 16);
    EXPECT_EQ(OnlyRow(plan).start, 15);
    EXPECT_TRUE(plan->patches.empty());
}

TEST(CorrectionPlan, APermutationHasNoPattern)
{
    std::mt19937 random(21);
    Indices decom = Ordered({640, 1}, InOrder);
    std::ranges::shuffle(decom, random);
    const CorrectionPlanPtr plan = NewCorrectionPlan({0, 0, decom, {}, {}}, 640, 640);
    EXPECT_EQ(OnlyRow(plan).pattern, RowPattern::kNone);
    EXPECT_EQ(OnlyRow(plan).patches, 640U);
}

// ---- Live video

class LiveCorrection : public ::testing::Test {
  protected:
    void SetUp() override
    {
        write::camera.ActiveConfig.Hroi = 2;
        write::camera.ActiveConfig.Vroi = 2;
        write::cal.DecomList = {3, 2, 1, 0};
        write::cal.OffsetList = {1, 2, 3, 4};
        write::cal.GainList = {1, 2, 0.5F, 0.1F};
        write::cal.CalType = 2;
        CalibrationListsChanged();
    }
    Counts Frame(std::int32_t dataOffset = 0)
    {
        Counts frame(4);
        CorrectLiveFrame(raw, frame, dataOffset);
        return frame;
    }
    Counts raw = {101, 202, 303, 404};
};

TEST_F(LiveCorrection, TakesTheListsInForce)
{
    EXPECT_THAT(Frame(), ElementsAre(3999, 600, 100, 100));  // 400 / 0.1F is 3999.99994
    write::cal.CalType = 1;
    EXPECT_THAT(Frame(), ElementsAre(400, 300, 200, 100));
    write::cal.CalType = 0;
    EXPECT_THAT(Frame(-200), ElementsAre(204, 103, 2, 0));
}

TEST_F(LiveCorrection, AChangedListCountsFromTheNextFrameOn)
{
    Frame();
    write::cal.DecomList = {0, 0, 0, 0};
    CalibrationListsChanged();
    EXPECT_THAT(Frame(), Each(100));
    write::cal.OffsetList[0] = 100;
    CalibrationListsChanged();
    EXPECT_THAT(Frame(), Each(1));
    write::cal.GainList[0] = 0.25F;
    CalibrationListsChanged();
    EXPECT_THAT(Frame(), Each(4));
    EXPECT_THAT(Frame(1), Each(8));  // another DataOffset needs no call
}

TEST_F(LiveCorrection, WithoutMemoryForThePlanTheDefinitionWorks)
{
    FailAllocation(1);
    EXPECT_THAT(Frame(), ElementsAre(3999, 600, 100, 100));
    FailAllocation(0);
    EXPECT_THAT(Frame(), ElementsAre(3999, 600, 100, 100));
}

TEST_F(LiveCorrection, AFrameShorterThanTheTableIsFilledToItsEnd)
{
    Counts frame(3, 7);
    CorrectLiveFrame(raw, std::span(frame).first(2), 0);
    EXPECT_THAT(frame, ElementsAre(3999, 600, 7));
}

// ---- Gathered frames

class GatheredCorrection : public LiveCorrection {};

TEST_F(GatheredCorrection, WorksInPlaceAndMeetsWhatItHasWritten)
{
    // Pixels 0 and 1 read 3 and 2 as gathered; 2 and 3 read what 1 and 0 have become.
    write::cal.CalType = 1;
    Counts frame = {101, 202, 303, 404};
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(400, 300, 298, 399));  // 404 - 4, 303 - 3, 300 - 2, 400 - 1
}

TEST_F(GatheredCorrection, ACopyKeepsTheGatheredValues)
{
    const Counts gathered = {101, 202, 303, 404};
    Counts frame = gathered;
    CalibrateGathered(gathered, frame);
    EXPECT_THAT(frame, ElementsAre(3999, 600, 100, 100));
}

TEST_F(GatheredCorrection, OfSumsIsTruncatedAndOfFloatsIsNot)
{
    write::cal.DecomList = {0, 1, 2, 3};
    write::cal.GainList = {4, 4, -4, 0};
    std::vector<std::int32_t> sums = {100000, 12, 12, 12};
    CalibrateRawFrame32(sums);
    EXPECT_THAT(sums, ElementsAre(24999, 2, -2, std::numeric_limits<std::int32_t>::min()));  // 99999/4, 10/4, 9/-4, 8/0
    std::vector<float> means = {100000.5F, 12, 12, 12};
    CalibrateRawFrameFloat(means);
    EXPECT_THAT(means, ElementsAre(24999.875F, 2.5F, -2.25F, kInfinity));
    write::cal.CalType = 1;
    means = {100000.5F, 12, 12, 12};
    CalibrateRawFrameFloat(means);
    EXPECT_THAT(means, ElementsAre(99999.5F, 10, 9, 8));
}

TEST_F(GatheredCorrection, AddsNoDataOffsetAndKeepsNegativeCounts)
{
    write::cal.DecomList = {0, 1, 2, 3};
    write::cal.CalType = 1;
    Counts frame = {0, 0, 0, -32768};
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(-1, -2, -3, 32764));
}

TEST_F(GatheredCorrection, WithoutCalibrationTheFrameIsLeft)
{
    write::cal.CalType = 0;
    Counts frame = {5, 6, 7, 8};
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(5, 6, 7, 8));
    write::cal.CalType = 3;
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(5, 6, 7, 8));
}

TEST_F(GatheredCorrection, StaysWithinItsBlocks)
{
    write::cal.CalType = 1;
    Counts frame = {101, 202, 303};  // entry 3 lies beyond it
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(101, 300, 298));
    write::cal.OffsetList.resize(2);
    write::cal.DecomList = {9, 1, 2};
    frame = {101, 202, 303};
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(101, 200, 303));
    write::cal.OffsetList.clear();
    CalibrateRawFrame16(frame);
    EXPECT_THAT(frame, ElementsAre(101, 200, 303));
}

}  // namespace
}  // namespace kelvo

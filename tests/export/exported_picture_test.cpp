// Pictures that leave the program: the color of each pixel, and what stands beside and over the frame.
#include "export/exported_picture.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/units.h"
#include "platform/application.h"
#include "platform/memory.h"
#include "state/display_state_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr int kColumns = 300;
constexpr int kRows = 220;
constexpr std::uint32_t kWhite = 0xFFFFFF;

std::array<std::uint8_t, kColorMapBytes> GrayMap()
{
    std::array<std::uint8_t, kColorMapBytes> map{};
    for (std::size_t i = 0; i < map.size(); ++i) map.at(i) = static_cast<std::uint8_t>(i % kColorMapEntries);
    return map;
}

std::uint32_t GrayPixel(std::uint32_t gray)
{
    return gray << 16 | gray << 8 | gray;
}

PictureOptions Options(CountRange range)
{
    PictureOptions options;
    options.look = PictureLook::Over(range, GrayMap());
    return options;
}

ExportDescription Description()
{
    ExportDescription description;
    description.columns = kColumns;
    description.rows = kRows;
    description.frames = 2;
    return description;
}

// Counts that name their place.
std::vector<std::int16_t> Frame()
{
    std::vector<std::int16_t> counts(static_cast<std::size_t>(kColumns) * kRows);
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<std::int16_t>(i % 4001);
    return counts;
}

DeviceBitmap Shown(PictureOptions options, const FrameTiming& timing = {})
{
    const std::vector<std::int16_t> counts = Frame();
    std::optional<ExportedPicture> picture = ExportedPicture::Make(Description(), std::move(options));
    if (!picture || !picture->Show({.counts = counts, .values = {}, .timing = timing})) {
        ADD_FAILURE();
        return {};
    }
    return picture->Picture();
}

std::uint32_t PixelAt(const DeviceBitmap& picture, int x, int y)
{
    return picture.pixels[static_cast<std::size_t>(y * picture.width + x)];
}

// Pixels of the frame that differ from those of a picture of the frame alone.
std::vector<Point> ChangedPixels(const DeviceBitmap& picture, CountRange range)
{
    const DeviceBitmap plain = Shown(Options(range));
    std::vector<Point> changed;
    for (int y = 0; y < kRows; ++y) {
        for (int x = 0; x < kColumns; ++x) {
            if (PixelAt(plain, x, y) != PixelAt(picture, x, y)) changed.push_back({x, y});
        }
    }
    return changed;
}

// --- The look -------------------------------------------------------------------------------------------------------

TEST(PictureLook, SpreadsARangeFromTheFirstColorToTheLast)
{
    for (const CountRange range :
         {CountRange{-100, 300}, {0, 4000}, {-32768, 32767}, {32766, 32767}, {-32768, -32767}}) {
        const auto look = PictureLook::Over(range, GrayMap());
        ASSERT_TRUE(look);
        EXPECT_EQ(look->Spread(), range);
        for (std::int32_t count = -32768; count <= 32767; ++count) {
            const std::uint32_t gray = look->ColorOf(static_cast<std::int16_t>(count)) & 0xFF;
            const double line = 255.0 * (count - range.low) / static_cast<double>(range.Span());
            ASSERT_NEAR(gray, std::floor(std::clamp(line, 0.0, 255.0)), 1) << count;
            ASSERT_TRUE(count > range.low || gray == 0) << count;
            ASSERT_TRUE(count < range.high || gray == 255) << count;
        }
    }
}

TEST(PictureLook, OnViewIsTheScreensTableInTheScreensColors)
{
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = 16383;
    write::display.ImageColor = 1231;  // inverted
    BuildDisplayLut(40, 300);
    const auto look = PictureLook::OnView();
    ASSERT_TRUE(look);
    for (std::int32_t count = -32768; count <= 32767; ++count) {
        const std::uint32_t gray = DisplayLut[static_cast<std::size_t>(std::max(count, 0))];
        ASSERT_EQ(look->ColorOf(static_cast<std::int16_t>(count)), GrayPixel(255 - gray)) << count;
    }
    // The scale's ends are the counts behind which nothing changes any more.
    const CountRange spread = look->Spread();
    EXPECT_EQ(look->ColorOf(static_cast<std::int16_t>(spread.low)), kWhite);
    EXPECT_NE(look->ColorOf(static_cast<std::int16_t>(spread.high - 1)), 0U);
    EXPECT_EQ(look->ColorOf(static_cast<std::int16_t>(spread.high)), 0U);
}

TEST(PictureLook, ThatHasNoMemoryIsNone)
{
    FailAllocation(1);
    EXPECT_FALSE(PictureLook::Over({0, 10}, GrayMap()));
    FailAllocation(0);
}

// Text needs an application.
class ExportedPictureTest : public testing::Test {
  protected:
    void SetUp() override
    {
        CommandLine offscreen;
        offscreen.offscreen = true;
        StartApplication(offscreen);
    }
};

// --- The frame ------------------------------------------------------------------------------------------------------

TEST_F(ExportedPictureTest, OfTheFrameAloneHasItsPixelsOneByOne)
{
    const DeviceBitmap picture = Shown(Options({0, 255}));
    EXPECT_EQ(std::pair(picture.width, picture.height), std::pair(kColumns, kRows));
    const std::vector<std::int16_t> counts = Frame();
    for (std::size_t i = 0; i < counts.size(); ++i) {
        ASSERT_EQ(picture.pixels[i], GrayPixel(static_cast<std::uint32_t>(std::min<int>(counts[i], 255)))) << i;
    }
}

TEST_F(ExportedPictureTest, HasTheScaleOnTheRightAndTheTimeBelowAndNothingOverTheFrame)
{
    const CountRange range{0, 4000};
    PictureOptions options = Options(range);
    options.scale = PictureScale{.line = {range, 20.0, 60.0, false},
                                 .title =
                                     "\xB0"
                                     "C"};
    options.time = true;
    const DeviceBitmap picture = Shown(options, {.utcNs = 1'795'000'000'123'456'789});
    EXPECT_GT(picture.width, kColumns + kScaleLabelLeft);
    EXPECT_GT(picture.height, kRows + PictureTextHeight());
    EXPECT_THAT(ChangedPixels(picture, range), testing::IsEmpty());
    // The bar goes from the last color on top to the first one, the title stands above it, ticks beside it.
    const ScaleBar bar = PlaceScaleBar(kRows, PictureTextHeight());
    EXPECT_EQ(PixelAt(picture, kColumns + kScaleBarLeft, bar.top), kWhite);
    EXPECT_EQ(PixelAt(picture, kColumns + kScaleBarLeft, bar.bottom - 1) & 0xFF, 1U);  // 256 colors on fewer rows
    for (int y = bar.top + 1; y < bar.bottom; ++y) {
        ASSERT_LE(PixelAt(picture, kColumns + kScaleBarLeft, y), PixelAt(picture, kColumns + kScaleBarLeft, y - 1))
            << y;
    }
    for (const ScaleTick& tick : PlaceScaleTicks(options.scale->line, bar.top, bar.bottom, PictureTextHeight())) {
        EXPECT_EQ(PixelAt(picture, kColumns + kScaleTickRight - 1, tick.y), kScaleInk) << tick.label;
        EXPECT_EQ(PixelAt(picture, kColumns + kScaleTickRight, tick.y), kScaleGround) << tick.label;
    }
    const auto hasInk = [&picture](const Rect& area) {
        for (int y = area.top; y < area.bottom; ++y) {
            for (int x = area.left; x < area.right; ++x) {
                if (PixelAt(picture, x, y) > 0xC0C0C0) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(hasInk({kColumns + kScaleBarLeft, 0, picture.width, bar.top}));             // the title
    EXPECT_TRUE(hasInk({kColumns + kScaleLabelLeft, bar.top, picture.width, bar.bottom}));  // labels
    EXPECT_TRUE(hasInk({0, kRows, kColumns, picture.height}));                              // the time
    EXPECT_FALSE(hasInk({kColumns, kRows, picture.width, picture.height}));
}

TEST_F(ExportedPictureTest, OfAFlatFrameIsAsHighAsItsScaleNeeds)
{
    ExportDescription description = Description();
    description.rows = 8;
    PictureOptions options = Options({0, 4000});
    options.scale = PictureScale{.line = {{0, 4000}, 0.0, 4000.0, true}, .title = "Counts"};
    const auto picture = ExportedPicture::Make(description, options);
    ASSERT_TRUE(picture);
    const ScaleBar bar = PlaceScaleBar(picture->Picture().height, PictureTextHeight());
    EXPECT_GE(PlaceScaleTicks(options.scale->line, bar.top, bar.bottom, PictureTextHeight()).size(), 3U);
    EXPECT_EQ(PixelAt(picture->Picture(), 0, 8), kScaleGround);
}

TEST_F(ExportedPictureTest, ShowsTheTimeOfEachFrameInItsTurn)
{
    PictureOptions options = Options({0, 4000});
    options.time = true;
    std::optional<ExportedPicture> picture = ExportedPicture::Make(Description(), options);
    ASSERT_TRUE(picture);
    const std::vector<std::int16_t> counts = Frame();
    std::vector<std::vector<std::uint32_t>> lines;
    for (const std::int64_t utcNs : {1'795'000'000'123'456'789, 1'795'000'001'123'456'789, 1'795'000'000'123'456'789}) {
        ASSERT_TRUE(picture->Show({.counts = counts, .values = {}, .timing = {.utcNs = utcNs}}));
        const auto& pixels = picture->Picture().pixels;
        lines.emplace_back(pixels.begin() + std::ptrdiff_t{kRows} * picture->Picture().width, pixels.end());
    }
    EXPECT_NE(lines[0], lines[1]);
    EXPECT_EQ(lines[0], lines[2]);
}

TEST(TimeOfPicture, IsWhatIsKnownOfIt)
{
    FrameTiming timing{.utcNs = 1'795'000'000'123'456'789};
    EXPECT_EQ(TimeOfPicture(timing, "2026-11-18T12:06:40", true), "2026-11-18T11:06:40.123456789Z");
    timing = {.seconds = 1.25};
    EXPECT_EQ(TimeOfPicture(timing, "2026-11-18T12:06:40", true), "1.250000 s");
    EXPECT_EQ(TimeOfPicture(timing, "2026-11-18T12:06:40", false), "2026-11-18T12:06:40 local time");
    EXPECT_EQ(TimeOfPicture(timing, "", false), "");
}

// --- Regions --------------------------------------------------------------------------------------------------------

TEST_F(ExportedPictureTest, DrawsRegionsInTwoTonesWithTheirNames)
{
    const CountRange range{0, 4000};
    PictureOptions options = Options(range);
    options.regions = {{.name = "R1", .shape = RegionShape::kRectangle, .place = {50, 60, 99, 119}}};
    const DeviceBitmap picture = Shown(options);
    // The outline lies around the pixels: from their upper and left edge to the one behind the last, and its rim a
    // pixel further.
    for (int x = 50; x <= 100; ++x) {
        EXPECT_EQ(PixelAt(picture, x, 60), kWhite) << x;
        EXPECT_EQ(PixelAt(picture, x, 120), kWhite) << x;
        EXPECT_EQ(PixelAt(picture, x + 1, 121), 0U) << x;
    }
    for (int y = 61; y < 120; ++y) {
        EXPECT_EQ(PixelAt(picture, 50, y), kWhite) << y;
        EXPECT_EQ(PixelAt(picture, 100, y), kWhite) << y;
        EXPECT_EQ(PixelAt(picture, 101, y + 1), 0U) << y;
    }
    const int width = PictureTextWidth("R1");
    for (const Point& at : ChangedPixels(picture, range)) {
        const bool isOutline = at.x >= 50 && at.x <= 101 && at.y >= 60 && at.y <= 121 &&
                               (at.x <= 51 || at.x >= 100 || at.y <= 61 || at.y >= 120);
        const bool isName = at.x >= 53 && at.x < 53 + width && at.y < 57 && at.y >= 57 - PictureTextHeight();
        EXPECT_TRUE(isOutline || isName) << at.x << ", " << at.y;
    }
    EXPECT_EQ(PixelAt(picture, 53, 57 - PictureTextHeight()), 0U);  // the name's own ground
}

TEST_F(ExportedPictureTest, DrawsRegionsWhereTheyLieInACut)
{
    const CountRange range{0, 4000};
    ExportDescription description = Description();
    description.provenance.left = 40;
    description.provenance.top = 30;
    PictureOptions options = Options(range);
    options.regions = {{.name = "", .shape = RegionShape::kLine, .place = {45, 35, 45, 80}}};
    std::optional<ExportedPicture> picture = ExportedPicture::Make(description, options);
    const std::vector<std::int16_t> counts = Frame();
    ASSERT_TRUE(picture && picture->Show({.counts = counts, .values = {}, .timing = {}}));
    // From the middle of one end to that of the other: a half is rounded up.
    for (int y = 6; y <= 51; ++y) EXPECT_EQ(PixelAt(picture->Picture(), 6, y), kWhite) << y;
}

TEST_F(ExportedPictureTest, LeavesOutWhatOfARegionLiesBeyondTheFrame)
{
    const CountRange range{0, 4000};
    PictureOptions options = Options(range);
    options.regions = {{.name = "far", .shape = RegionShape::kEllipse, .place = {-30000, -30000, -20000, -29000}},
                       {.name = "all", .shape = RegionShape::kRectangle, .place = {-5, -5, kColumns + 5, kRows + 5}}};
    options.scale = PictureScale{.line = {range, 0.0, 4000.0, true}, .title = "Counts"};
    const DeviceBitmap picture = Shown(options);
    EXPECT_THAT(ChangedPixels(picture, range), testing::IsEmpty());
}

}  // namespace
}  // namespace kelvo

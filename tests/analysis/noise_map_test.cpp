#include "analysis/noise_map.h"

#include "imagefile/frame_file.h"
#include "imagefile/header.h"
#include "imagefile/header_write.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// 3 x 2; the last pixel is bad.
NoiseMeasurement Measured()
{
    NoiseMeasurement measured;
    measured.source = "live video";
    measured.calibration = "/data/Last.cal";
    measured.columns = 3;
    measured.rows = 2;
    measured.frames = 64;
    measured.lost = 2;
    measured.beganUtcNs = 1'795'000'000'000'000'000;
    measured.knowsSaturated = true;
    measured.knowsBad = true;
    measured.countsPerDegree = 80.0;
    measured.noise.mean = {100, 200, 300, 400, 500, 600};
    measured.noise.deviation = {1, 2, 3, 4, 5, kNaN};
    measured.noise.netd = {12.5F, 25, 37.5F, 50, 62.5F, kNaN};
    measured.noise.badPixels = 1;
    measured.noise.saturatedPixels = 3;
    return measured;
}

TEST(NoiseMap, SpreadsTheColoursFromTheSmallestValueToTheWorstPercent)
{
    NoiseFigures figures;
    figures.smallest = 10;
    figures.worst = 30;
    figures.largest = 500;
    EXPECT_EQ(MapRangeOf(figures).low, 10);
    EXPECT_EQ(MapRangeOf(figures).high, 30);
    const std::array<std::uint32_t, 4> colors = {1, 2, 3, 4};
    const std::vector<float> values = {10, 14.9F, 15, 24.9F, 25, 30, 500, kNaN};
    const DeviceBitmap picture = NoisePicture(values, 4, MapRangeOf(figures), colors, 9);
    EXPECT_EQ(picture.width, 4);
    EXPECT_EQ(picture.height, 2);
    EXPECT_THAT(picture.pixels, ElementsAre(1U, 1U, 2U, 3U, 4U, 4U, 4U, 9U));
}

TEST(NoiseMap, HasARangeWhereAllPixelsAreAlike)
{
    NoiseFigures figures;
    figures.smallest = figures.worst = 5000;
    EXPECT_EQ(MapRangeOf(figures).high, 5005);
    figures.smallest = figures.worst = 0;
    EXPECT_EQ(MapRangeOf(figures).high, 0.01);
}

TEST(NoiseMap, KeepsItsShapeInItsAreaAndNamesThePixelUnderAPoint)
{
    const NoiseLayout layout = LayOutNoise({0, 0, 500, 400}, 32, 16, 70, 20);
    // 500 - 70 for ticks - 30 for gap and bar leave 400 points: 12 a pixel.
    EXPECT_EQ(layout.map.Width(), 12 * 32);
    EXPECT_EQ(layout.map.Height(), 12 * 16);
    EXPECT_GE(layout.bar.left, layout.map.right);
    EXPECT_LE(layout.bar.right + 70, 500);
    Point pixel;
    EXPECT_TRUE(NoisePixelAt(layout, 32, 16, {layout.map.left, layout.map.top}, pixel));
    EXPECT_EQ(pixel, (Point{0, 0}));
    EXPECT_TRUE(NoisePixelAt(layout, 32, 16, {layout.map.left + 12 * 7 + 11, layout.map.top + 12 * 3}, pixel));
    EXPECT_EQ(pixel, (Point{7, 3}));
    EXPECT_TRUE(NoisePixelAt(layout, 32, 16, {layout.map.right - 1, layout.map.bottom - 1}, pixel));
    EXPECT_EQ(pixel, (Point{31, 15}));
    EXPECT_FALSE(NoisePixelAt(layout, 32, 16, {layout.map.right, layout.map.top}, pixel));
    EXPECT_FALSE(NoisePixelAt(layout, 32, 16, {layout.map.left, layout.map.top - 1}, pixel));
}

TEST(NoiseMap, FitsALargeFrameAndNothingIntoNoRoom)
{
    const NoiseLayout large = LayOutNoise({0, 0, 460, 400}, 1024, 1024, 70, 20);
    EXPECT_LE(large.map.Width(), 360);
    EXPECT_EQ(large.map.Width(), large.map.Height());
    EXPECT_TRUE(LayOutNoise({0, 0, 60, 400}, 32, 16, 70, 20).map.Empty());
}

TEST(NoiseMap, PlotsEachBinAndLeavesTheMarksInSight)
{
    const std::vector<float> values = {1, 1, 1, 1, 2, 2, 3};
    const NoiseFigures figures = FiguresOfNoise(values).value();
    const NoiseHistogram histogram = HistogramOfNoise(values, figures);
    EXPECT_EQ(histogram.low, 1);
    EXPECT_DOUBLE_EQ(histogram.high, 3.5);  // a quarter beyond 3
    const PlotPicture plot = NoisePlot({0, 0, 400, 200}, histogram, figures, "mK",
                                       [](std::string_view text) { return static_cast<int>(8 * text.size()); });
    int tallest = 0;
    for (const Rect& bar : plot.bars) tallest = std::max(tallest, bar.Height());
    EXPECT_EQ(tallest, plot.box.Height() - 2);
    int dashed = 0;
    for (const PlotLine& line : plot.lines) {
        if (line.pen != PlotPen::kGrayDashed) continue;
        ++dashed;
        for (const Rect& bar : plot.bars) EXPECT_FALSE(line.from.x >= bar.left && line.from.x < bar.right);
    }
    EXPECT_EQ(dashed, 2);
    EXPECT_EQ(plot.labels.front().text, "mK");
    EXPECT_GE(plot.labels.size(), 3U);
}

TEST(NoiseMap, WritesALineForEachPixelBelowWhereItComesFrom)
{
    const NoiseMeasurement measured = Measured();
    const NoiseFigures figures = FiguresOfNoise(measured.noise.netd).value();
    const std::string csv = NoiseCsv(measured, figures, NoiseQuantity::kNetd);
    for (const char* note :
         {"# program: Kelvo ", "# measured: 2026-11-18T11:06:40.000000000Z\n", "# source: live video\n",
          "# counts: raw\n", "# calibration: /data/Last.cal\n", "# size: 2 rows, 3 columns\n", "# frames: 64\n",
          "# lost between them: 2\n", "# bad pixels left out: 1\n", "# saturated pixels: 3\n",
          "# counts a degree: 80\n", "# median (mK): 37.5\n", "# 99th percentile (mK): 62.5\n"}) {
        EXPECT_THAT(csv, HasSubstr(note));
    }
    const std::size_t table = csv.find("row,column");
    ASSERT_NE(table, std::string::npos);
    EXPECT_EQ(csv.substr(table),
              "row,column,mean,deviation,netd_mK\n"
              "0,0,100,1,12.5\n0,1,200,2,25\n0,2,300,3,37.5\n1,0,400,4,50\n1,1,500,5,62.5\n1,2,600,,\n");
}

// Readers skip them by their number.
TEST(NoiseMap, WritesAsManyNotesWhereLittleIsKnown)
{
    NoiseMeasurement measured = Measured();
    const std::string all = NoiseCsv(measured, FiguresOfNoise(measured.noise.netd).value(), NoiseQuantity::kNetd);
    measured.countsPerDegree.reset();
    measured.noise.netd.clear();
    measured.noise.deviation.assign(6, kNaN);
    measured.knowsSaturated = false;
    measured.changes = "less 32768";
    const NoiseFigures none = FiguresOfNoise(measured.noise.deviation).value();
    const std::string few = NoiseCsv(measured, none, NoiseQuantity::kDeviation);
    EXPECT_EQ(std::ranges::count(all, '#'), 14);
    EXPECT_EQ(std::ranges::count(few, '#'), 14);
    for (const char* note : {"# counts: raw, less 32768\n", "# saturated pixels: \n", "# counts a degree: \n",
                             "# median (counts): \n", "# 99th percentile (counts): \n"}) {
        EXPECT_THAT(few, HasSubstr(note));
    }
}

TEST(NoiseMap, LabelsNothingBeyondItsArea)
{
    const std::vector<float> alike = {0, 0, 0, 0};
    const NoiseFigures figures = FiguresOfNoise(alike).value();
    const auto width = [](std::string_view text) { return static_cast<int>(8 * text.size()); };
    const PlotPicture plot = NoisePlot({0, 0, 400, 200}, HistogramOfNoise(alike, figures), figures, "counts", width);
    ASSERT_GE(plot.labels.size(), 2U);
    for (const PlotLabel& label : plot.labels) {
        const int left = label.align == TextAlign::kCentre ? label.at.x - width(label.text) / 2 : label.at.x;
        EXPECT_TRUE(label.align == TextAlign::kRight || left >= 0) << label.text;
    }
}

TEST(NoiseMap, KeepsAnImageOfFloatsAndTheRecordOnView)
{
    const TempDirectory directory;
    const std::string path = directory / "netd.img";
    write::file.ImageHeader.ImageWidth = 77;
    write::file.ImageHeader.Year = 12;
    const NoiseMeasurement measured = Measured();
    const NoiseFigures figures = FiguresOfNoise(measured.noise.netd).value();
    ASSERT_TRUE(SaveNoiseImage(path, measured, figures, NoiseQuantity::kNetd));
    EXPECT_EQ(+ImageHeader.ImageWidth, 77);
    EXPECT_EQ(+ImageHeader.Year, 12);

    const std::string bytes = ReadWholeFile(path, 4096).value_or("");
    ASSERT_EQ(bytes.size(), 512U + 4 * 6);
    ImageHeaderRecord header;
    std::memcpy(&header, bytes.data(), sizeof header);
    EXPECT_EQ(+header.ImageWidth, 3);
    EXPECT_EQ(+header.ImageHeight, 2);
    EXPECT_EQ(+header.SampleBytes, 4);
    EXPECT_EQ(+header.DataType, 8);
    EXPECT_EQ(+header.HeaderVersion, 8);
    EXPECT_EQ(+header.FrameCount, 1U);
    EXPECT_EQ(+header.FramesAveraged, 64);
    EXPECT_EQ(+header.ImageHeaderDataOffset, 0);
    EXPECT_EQ(+header.IntensityCold, -10000);
    EXPECT_EQ(float{header.TemperatureHot}, -999.0F);
    EXPECT_EQ(+header.DisplayLow, 12);
    EXPECT_EQ(+header.DisplayHigh, 63);
    std::array<float, 6> values{};
    std::memcpy(values.data(), bytes.data() + 512, sizeof values);
    EXPECT_EQ(values[0], 12.5F);
    EXPECT_EQ(values[4], 62.5F);
    EXPECT_TRUE(std::isnan(values[5]));
}

TEST(NoiseMap, LeavesWhatStoodWhereTheDiskRefuses)
{
    const TempDirectory directory;
    const std::string path = directory / "netd.img";
    ASSERT_TRUE(ReplaceFile(path, "former"));
    const NoiseMeasurement measured = Measured();
    const NoiseFigures figures = FiguresOfNoise(measured.noise.netd).value();
    SetFault("disk", true);
    EXPECT_FALSE(SaveNoiseImage(path, measured, figures, NoiseQuantity::kNetd));
    SetFault("disk", false);
    EXPECT_EQ(ReadWholeFile(path, 4096), "former");
}

}  // namespace
}  // namespace kelvo

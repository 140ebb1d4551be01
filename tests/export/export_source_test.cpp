#include "export/export_source.h"

#include "display/units.h"
#include "export/export_job.h"
#include "platform/files.h"
#include "state/display_state_write.h"
#include "state/head_state_write.h"
#include "support/temp_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace kelvo {
namespace {

// One frame with all counts there are, 256 x 256, and two sources.
class ExportSourceTest : public testing::Test {
  protected:
    void SetUp() override
    {
        header_.ByteSwap = 0xFFFF;
        header_.ImageWidth = 256;
        header_.ImageHeight = 256;
        header_.SampleBytes = 2;
        header_.HeaderVersion = 8;
        header_.IntensityCold = 2900;
        header_.TemperatureCold = 19.7F;
        header_.IntensityHot = 9011;
        header_.TemperatureHot = 35.3F;
        request_.path = directory_ / "all.seq";
    }
    void Write()
    {
        std::vector<std::int16_t> counts(65536);
        for (std::size_t i = 0; i < counts.size(); ++i) {
            counts[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(i) - 32768);
        }
        std::string bytes(sizeof header_ + counts.size() * 2, '\0');
        std::memcpy(bytes.data(), &header_, sizeof header_);
        std::memcpy(bytes.data() + sizeof header_, counts.data(), counts.size() * 2);
        ASSERT_TRUE(ReplaceFile(request_.path, bytes));
    }

    TempDirectory directory_;
    ImageHeaderRecord header_;
    ExportRequest request_;
};

TEST_F(ExportSourceTest, EachValueIsTheOneOfTheScreen)
{
    Write();
    for (const auto& [form, unit] :
         {std::pair(ExportForm::kCelsius, kUnitCelsius), std::pair(ExportForm::kKelvin, kUnitKelvin),
          std::pair(ExportForm::kFahrenheit, kUnitFahrenheit)}) {
        request_.form = form;
        std::string why;
        std::optional<ExportSource> source = ExportSource::Open(request_, why);
        ASSERT_TRUE(source) << why;
        ASSERT_TRUE(source->Read(0, why)) << why;
        const ExportedFrame frame = source->Frame();
        ASSERT_EQ(frame.values.size(), 65536U);
        EXPECT_TRUE(frame.counts.empty());
        const UnitScope scope(header_, request_.path);
        for (std::int32_t count = -32768; count <= 32767; ++count) {
            const float value = frame.values[static_cast<std::size_t>(count + 32768)];
            ASSERT_EQ(value, CountsToUnit(count, unit, nullptr)) << count;
        }
    }
}

TEST_F(ExportSourceTest, ARectangleIsCutToTheFrame)
{
    Write();
    request_.place = RegionPlace{250, 10, 300, 5};
    std::string why;
    std::optional<ExportSource> source = ExportSource::Open(request_, why);
    ASSERT_TRUE(source) << why;
    EXPECT_EQ(source->Description().columns, 6U);
    EXPECT_EQ(source->Description().rows, 6U);
    EXPECT_EQ(source->Description().provenance.left, 250);
    EXPECT_EQ(source->Description().provenance.top, 5);
    ASSERT_TRUE(source->Read(0, why)) << why;
    const ExportedFrame frame = source->Frame();
    EXPECT_EQ(frame.counts[0], 5 * 256 + 250 - 32768);
    EXPECT_EQ(frame.counts[35], 10 * 256 + 255 - 32768);
    EXPECT_FALSE(source->Read(1, why));
    EXPECT_EQ(why, "There is no such frame.");
}

TEST_F(ExportSourceTest, VoltsAreThoseOfTheScreen)
{
    header_.DisplayLow = -120;
    header_.DisplayHigh = 4000;
    Write();
    request_.form = ExportForm::kVolts;
    request_.volts = {-1.5F, 2.5F};
    std::string why;
    std::optional<ExportSource> source = ExportSource::Open(request_, why);
    ASSERT_TRUE(source) << why;
    ASSERT_TRUE(source->Read(0, why)) << why;
    const ExportedFrame frame = source->Frame();
    // The screen's, with a camera of that range.
    write::display.DisplayLow = -120;
    write::display.DisplayHigh = 4000;
    write::head.VoltsLow = -1.5F;
    write::head.VoltsHigh = 2.5F;
    for (std::int32_t count = -32768; count <= 32767; ++count) {
        const float value = frame.values[static_cast<std::size_t>(count + 32768)];
        ASSERT_EQ(value, CountsToUnit(count, kUnitVolts, nullptr)) << count;
    }
}

// The four corners of an ellipse are outside of it, and one region does not see the other.
TEST_F(ExportSourceTest, RegionsArePartsOfOneFrame)
{
    Write();
    request_.regions = {{.name = "oval", .shape = RegionShape::kEllipse, .place = {10, 20, 13, 23}},
                        {.name = "dot", .shape = RegionShape::kPoint, .place = {255, 255, 0, 0}}};
    std::string why;
    std::optional<ExportSource> source = ExportSource::Open(request_, why);
    ASSERT_TRUE(source) << why;
    ASSERT_EQ(source->Parts(), 2U);
    EXPECT_THAT(source->Description(0).outside, testing::ElementsAre(1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1));
    EXPECT_THAT(source->Description(1).outside, testing::ElementsAre(0));
    ASSERT_TRUE(source->Read(0, why)) << why;
    EXPECT_EQ(source->Frame(0).counts[5], 21 * 256 + 11 - 32768);
    EXPECT_THAT(source->Frame(1).counts, testing::ElementsAre(32767));
    request_.regions.push_back({.name = "far", .shape = RegionShape::kPoint, .place = {256, 0, 0, 0}});
    EXPECT_FALSE(ExportSource::Open(request_, why));
    EXPECT_EQ(why, "Region far lies outside of the frame.");
}

TEST_F(ExportSourceTest, ATemperatureNeedsTwoSources)
{
    request_.form = ExportForm::kCelsius;
    std::string why;
    header_.TemperatureHot = header_.TemperatureCold;
    Write();
    EXPECT_FALSE(ExportSource::Open(request_, why));
    EXPECT_THAT(why, testing::HasSubstr("has no calibration with two temperatures"));
    header_.TemperatureHot = 35.3F;
    header_.IntensityHot = header_.IntensityCold;
    Write();
    EXPECT_FALSE(ExportSource::Open(request_, why));
}

TEST(PathsOfRegions, CanBeNamesOfFilesAndDiffer)
{
    const auto pathsOf = [](const std::string& path, std::initializer_list<const char*> names) {
        std::vector<Region> regions;
        for (const char* const name : names) regions.push_back({.name = name});
        return PathsOfRegions(path, regions);
    };
    EXPECT_THAT(pathsOf("a.b/x.tif", {"spot", "hot plate"}),
                testing::ElementsAre("a.b/x-spot.tif", "a.b/x-hot plate.tif"));
    EXPECT_THAT(pathsOf("a.b/x", {"../up"}), testing::ElementsAre("a.b/x-.._up"));
    EXPECT_THAT(pathsOf("x.h5", {"A", "a", "a-2", "a?"}),
                testing::ElementsAre("x-A.h5", "x-a-2.h5", "x-a-2-2.h5", "x-a_.h5"));
    EXPECT_THAT(pathsOf("x.h5", {"a/b:c*d?e\"f<g>h|i\\j"}), testing::ElementsAre("x-a_b_c_d_e_f_g_h_i_j.h5"));
}

TEST_F(ExportSourceTest, WhatIsNotThereIsToldWithoutABox)
{
    std::string why;
    EXPECT_FALSE(ExportSource::Open({.what = ExportWhat::kOnView}, why));
    EXPECT_EQ(why, "There is no picture on view.");
    EXPECT_FALSE(ExportSource::Open({.what = ExportWhat::kHostFrames}, why));
    EXPECT_EQ(why, "There are no frames in host memory.");
    Write();
    request_.listsInForce = true;
    request_.form = ExportForm::kCorrected;
    EXPECT_FALSE(ExportSource::Open(request_, why));
    EXPECT_THAT(why, testing::HasSubstr("is corrected already"));
    header_.IntensityCold = kUncalibratedIntensity;
    Write();
    EXPECT_FALSE(ExportSource::Open(request_, why));
    EXPECT_EQ(why, "No calibration is in force.");
}

}  // namespace
}  // namespace kelvo

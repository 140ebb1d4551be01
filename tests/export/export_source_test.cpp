#include "export/export_source.h"

#include "display/units.h"
#include "platform/files.h"
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
        ExportedFrame frame;
        ASSERT_TRUE(source->Read(0, frame, why)) << why;
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
    ExportedFrame frame;
    ASSERT_TRUE(source->Read(0, frame, why)) << why;
    EXPECT_EQ(frame.counts[0], 5 * 256 + 250 - 32768);
    EXPECT_EQ(frame.counts[35], 10 * 256 + 255 - 32768);
    EXPECT_FALSE(source->Read(1, frame, why));
    EXPECT_EQ(why, "There is no such frame.");
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

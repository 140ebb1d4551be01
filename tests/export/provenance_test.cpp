#include "export/provenance.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

TEST(Provenance, AnExposureStartsItsIntegrationTimeBeforeTheFrameIsComplete)
{
    FrameTiming timing;
    timing.utcNs = 5'000'000'000;
    timing.integrationMs = 2.5F;
    EXPECT_EQ(timing.StartUtcNs(), 4'997'500'000);
    for (const float unknown : {0.0F, -1.0F, std::nanf(""), INFINITY}) {
        timing.integrationMs = unknown;
        EXPECT_EQ(timing.StartUtcNs(), std::nullopt);
    }
    timing = {};
    timing.integrationMs = 1.0F;
    EXPECT_EQ(timing.StartUtcNs(), std::nullopt);
}

TEST(Provenance, ALocalTimeThatIsNoneIsEmpty)
{
    ImageHeaderRecord header;
    header.Year = 26;
    header.Month = 11;
    header.Day = 21;
    header.Hour = 12;
    EXPECT_EQ(LocalTimeText(header), "2026-11-21T12:00:00");
    header.Month = 13;
    EXPECT_EQ(LocalTimeText(header), "");
    EXPECT_EQ(LocalTimeText({}), "");
}

TEST(Provenance, GapsLieBetweenFramesAndNotBeforeTheFirst)
{
    std::vector<FrameTiming> timings(3);
    timings[0].number = 10;
    timings[0].lostByBoard = 9;
    timings[1].number = 11;
    timings[2].number = 17;
    timings[2].lostByRing = 2;
    timings[2].passedOver = 3;
    const std::vector<FrameGap> gaps = GapsOfTimings(timings);
    ASSERT_EQ(gaps.size(), 1U);
    EXPECT_EQ(gaps[0].beforeFrame, 2);
    EXPECT_EQ(gaps[0].firstNumber, 12);
    EXPECT_EQ(gaps[0].Missing(), 5);
    EXPECT_THAT(GapsOfTimings({}), testing::IsEmpty());
}

TEST(Provenance, FormsHaveTheirWords)
{
    for (const ExportForm form : {ExportForm::kCounts, ExportForm::kCorrected, ExportForm::kVolts, ExportForm::kCelsius,
                                  ExportForm::kKelvin, ExportForm::kFahrenheit}) {
        EXPECT_EQ(ExportFormOf(WordOf(form)), form);
    }
    EXPECT_EQ(ExportFormOf("watts"), std::nullopt);
    EXPECT_FALSE(IsFloatForm(ExportForm::kCorrected));
    EXPECT_TRUE(IsFloatForm(ExportForm::kVolts));
}

}  // namespace
}  // namespace kelvo

#include "genicam/camera_section.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace kelvo {
namespace {

using testing::DoubleNear;

CameraOffer Frames(std::int32_t columns, std::int32_t rows, std::int32_t columnStep = 1, std::int32_t rowStep = 1)
{
    CameraOffer offer;
    offer.columns = columns;
    offer.rows = rows;
    offer.columnStep = columnStep;
    offer.rowStep = rowStep;
    return offer;
}

// 320 x 256 is 81920 pixels of timing, 200 Hz 16384000 of them a second. The rates span 100 : 1; a byte's 256 dividers
// do that from 2 to 200, so that the master clock is 2 x 2 x 16384000.
TEST(SpanOfRates, IsAsFineAsAByteAllows)
{
    const SectionSize size{320, 256};
    const ClockSpan span = SpanRates(size, {2, 200});
    EXPECT_EQ(span,
              (ClockSpan{.frequencyHz = 65536000, .minIndex = 1, .maxIndex = 199, .extraRows = 0, .extraCols = 0}));
    EXPECT_EQ(RateOfRow(span, size, 0), 200);
    EXPECT_EQ(RateOfRow(span, size, 2), 100);  // 65536000 / 8 / 81920
    EXPECT_EQ(RateOfRow(span, size, 6), 50);   // 65536000 / 16 / 81920
    EXPECT_EQ(RateOfRow(span, size, 198), 2);  // 65536000 / 400 / 81920
}

// 322 x 257 go over the wire as 324 x 260, 84240 pixels; 60 Hz are 5054400. 6 : 1 is 42 to 252.
TEST(SpanOfRates, MakesTheTimingMultiplesOfFour)
{
    const SectionSize size{322, 257};
    const ClockSpan span = SpanRates(size, {10, 60});
    EXPECT_EQ(span,
              (ClockSpan{.frequencyHz = 424569600, .minIndex = 41, .maxIndex = 251, .extraRows = 3, .extraCols = 2}));
    EXPECT_EQ(RateOfRow(span, size, 0), 60);
    EXPECT_EQ(RateOfRow(span, size, 210), 10);  // 424569600 / 504 = 842400, / 84240
}

TEST(SpanOfRates, EndsAtThe256thPartOfAWiderOne)
{
    const SectionSize size{64, 64};
    const ClockSpan span = SpanRates(size, {1, 1000});
    EXPECT_EQ(span,
              (ClockSpan{.frequencyHz = 8192000, .minIndex = 0, .maxIndex = 255, .extraRows = 0, .extraCols = 0}));
    EXPECT_EQ(RateOfRow(span, size, 0), 1000);
    EXPECT_EQ(RateOfRow(span, size, 255), 3.90625);
    EXPECT_EQ(SpanRates(size, {0, 1000}), span);
}

// 1020 x 1020 at 4000 Hz are 4161600000 pixels a second; half of 31 bits are 1073741823, 1032.04711 Hz.
TEST(SpanOfRates, BeginsWithWhatTheMasterClockHasRoomFor)
{
    const SectionSize size{1020, 1020};
    const ClockSpan span = SpanRates(size, {1000, 4000});
    EXPECT_EQ(span,
              (ClockSpan{.frequencyHz = 2147483646, .minIndex = 0, .maxIndex = 1, .extraRows = 0, .extraCols = 0}));
    EXPECT_THAT(RateOfRow(span, size, 0), DoubleNear(1032.04711, 1e-5));
}

// What the head reckons out of the bytes is what the list says: no rate above the camera's, the last at its lowest.
TEST(SpanOfRates, StaysWithinTheCamerasForAllSizes)
{
    for (const std::int32_t columns : {4, 63, 64, 320, 640, 1020}) {
        for (const std::int32_t rows : {4, 65, 256, 512, 1020}) {
            for (const NumberRange rates : {NumberRange{1, 60}, {0.5, 100}, {25, 25}, {3.3, 97.7}, {100, 900}}) {
                const SectionSize size{columns, rows};
                const ClockSpan span = SpanRates(size, rates);
                ASSERT_TRUE(0 <= span.minIndex && span.minIndex <= span.maxIndex && span.maxIndex <= 255);
                ASSERT_GT(span.frequencyHz, 0);
                ASSERT_EQ((columns + span.extraCols) % 4 + (rows + span.extraRows) % 4, 0);
                const double step =
                    1.0 / ((columns + span.extraCols) * (rows + span.extraRows));  // a whole Hz of pixels
                EXPECT_LE(RateOfRow(span, size, 0), rates.most);
                EXPECT_GE(RateOfRow(span, size, 0), rates.most - step);
                EXPECT_LE(RateOfRow(span, size, span.maxIndex - span.minIndex), rates.least + step);
            }
        }
    }
}

TEST(RowOfRate, IsTheHighestThatIsNotAbove)
{
    const SectionSize size{320, 256};
    const ClockSpan span = SpanRates(size, {2, 200});  // 200, 133.3, 100, 80, 66.7, 57.1, 50, ... 2
    EXPECT_EQ(RowOfRate(span, size, 500), 0);
    EXPECT_EQ(RowOfRate(span, size, 199), 1);
    EXPECT_EQ(RowOfRate(span, size, 60), 5);
    EXPECT_EQ(RowOfRate(span, size, 50), 6);
    EXPECT_EQ(RowOfRate(span, size, 49.99999999), 6);  // the same rate
    EXPECT_EQ(RowOfRate(span, size, 0.1), 198);
}

// Lines of row 0 are 2 + (rows - 1) / 4 * 4, each three rows have 4 less, and the byte is lines + 2.
TEST(FirstIntegrationRow, HasALineCountThatAByteTakes)
{
    EXPECT_EQ(FirstIntegrationRow(64), 0);      // 62 lines
    EXPECT_EQ(FirstIntegrationRow(252), 0);     // 250
    EXPECT_EQ(FirstIntegrationRow(256), 3);     // 254; 250 from row 3 on
    EXPECT_EQ(FirstIntegrationRow(512), 195);   // 510; 250 from row 195 on
    EXPECT_EQ(FirstIntegrationRow(1020), 576);  // 1018; 250 from row 576 on
}

TEST(UnityOffset, IsHalfTheCountRange)
{
    EXPECT_EQ(UnityOffsetOfBits(8), 128);
    EXPECT_EQ(UnityOffsetOfBits(12), 2048);
    EXPECT_EQ(UnityOffsetOfBits(14), 8192);
    EXPECT_EQ(UnityOffsetOfBits(16), 16384);  // counts of 16 bits come shifted right by one
}

TEST(SizeForSection, IsTheCamerasUpTo4096InItsOwnSteps)
{
    EXPECT_EQ(SizeForSection(Frames(640, 512)), (SectionSize{640, 512}));
    EXPECT_EQ(SizeForSection(Frames(1280, 1024)), (SectionSize{1280, 1024}));
    EXPECT_EQ(SizeForSection(Frames(5120, 4096)), (SectionSize{4096, 4096}));
    EXPECT_EQ(SizeForSection(Frames(8192, 5120, 48, 7)), (SectionSize{4080, 4095}));
    EXPECT_EQ(SizeForSection({}), (SectionSize{0, 0}));
}

TEST(CameraSection, SaysWhatTheCameraIs)
{
    FoundCamera camera;
    camera.vendor = "Kelvo";
    camera.model = "Loopback";
    camera.serial = "K7";
    CameraOffer offer = Frames(322, 257);
    offer.formats = {"Mono12"};
    offer.ratesHz = NumberRange{10, 60};
    offer.rateHz = 30;
    std::map<std::string, std::string> keys;
    for (const SectionKey& each : CameraSection(camera, offer, *PixelFormatNamed("Mono12"), 7)) {
        EXPECT_TRUE(keys.emplace(each.key, each.value).second) << each.key << " twice";
    }
    const std::map<std::string, std::string> expected = {
        {"Description", "Kelvo Loopback K7"},
        {"nCommPort", "7"},
        {"Hroi", "322"},
        {"Vroi", "257"},
        {"Hactive", "322"},
        {"Vactive", "257"},
        {"Htotal", "324"},
        {"Vtotal", "260"},
        {"DecomScheme", "2"},
        {"UnityGain", "16384"},
        {"UnityOffset", "2048"},
        {"Yzoom", "2"},
        {"Xzoom", "2"},
        {"QVF1058_MasterClockFrequency", "424569600"},
        {"QVF1058_MasterClockMinIndex", "41"},
        {"QVF1058_MasterClockMaxIndex", "251"},
        {"QVF1058_ExtraTimingRows", "3"},
        {"QVF1058_ExtraTimingCols", "2"},
        {"IndexFrameRate", "42"},             // divider 84: half of 60 Hz
        {"IndexIntegrationTime", "6,6,6,6"},  // of 258 lines, 250 from row 6 on
    };
    for (const auto& [key, value] : expected) EXPECT_EQ(keys[key], value) << key;
}

TEST(CameraSection, CutsADescriptionThatHasNoRoom)
{
    FoundCamera camera;
    camera.vendor = std::string(60, 'v');
    camera.model = std::string(60, 'm');
    const auto keys = CameraSection(camera, Frames(64, 64), *PixelFormatNamed("Mono8"), 1);
    EXPECT_EQ(keys.front().value, std::string(60, 'v') + " " + std::string(18, 'm'));
}

TEST(HeadName, IsTheSerialNumberOrTheAddress)
{
    FoundCamera camera;
    camera.address = "127.0.0.1";
    EXPECT_EQ(HeadName(camera), "127.0.0.1");
    camera.serial = "K7";
    EXPECT_EQ(HeadName(camera), "K7");
}

}  // namespace
}  // namespace kelvo

#include "genicam/camera_section.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

constexpr std::int64_t kLargestFrequency = 2147483647;
constexpr std::int32_t kClockIndexes = 256;  // a byte's
constexpr std::int32_t kWireUnit = 4;

std::int32_t UpToUnit(std::int32_t side)
{
    return (side + kWireUnit - 1) / kWireUnit * kWireUnit;
}

std::int32_t SideForSection(std::int32_t side, std::int32_t step)
{
    const std::int32_t within = std::min(side, kLargestSectionSide);
    return within - within % std::max(step, 1);
}

std::int64_t TimingPixels(SectionSize size)
{
    return std::int64_t{UpToUnit(size.columns)} * UpToUnit(size.rows);
}

}  // namespace

SectionSize SizeForSection(const CameraOffer& offer)
{
    return {SideForSection(offer.columns, offer.columnStep), SideForSection(offer.rows, offer.rowStep)};
}

ClockSpan SpanRates(SectionSize size, const NumberRange& ratesHz)
{
    // The highest rate's pixel clock is the master clock / (2 first); an index is one less than the divider that it
    // stands for. So the larger the first divider, the finer the steps and the smaller the span.
    const std::int64_t pixels = TimingPixels(size);
    const double wanted = std::floor(static_cast<double>(pixels) * ratesHz.most);
    constexpr std::int64_t kLargestPixelClock = kLargestFrequency / 2;
    const auto pixelClock = static_cast<std::int64_t>(std::min(wanted, static_cast<double>(kLargestPixelClock)));
    const double highest = static_cast<double>(pixelClock) / static_cast<double>(pixels);
    const double widestRatio = kClockIndexes;
    const double ratio = ratesHz.least > 0 ? std::clamp(highest / ratesHz.least, 1.0, widestRatio) : widestRatio;

    const auto widest = static_cast<std::int64_t>(kClockIndexes / ratio);
    const std::int64_t room = kLargestFrequency / (2 * std::max(pixelClock, std::int64_t{1}));
    const std::int64_t first = std::max(std::min(widest, room), std::int64_t{1});
    const auto last = static_cast<std::int64_t>(
        std::min(std::ceil(static_cast<double>(first) * ratio - 1e-9), double{kClockIndexes}));
    return {.frequencyHz = static_cast<std::int32_t>(2 * first * pixelClock),
            .minIndex = static_cast<std::int32_t>(first - 1),
            .maxIndex = static_cast<std::int32_t>(std::max(last, first) - 1),
            .extraRows = UpToUnit(size.rows) - size.rows,
            .extraCols = UpToUnit(size.columns) - size.columns};
}

double RateOfRow(const ClockSpan& span, SectionSize size, std::int32_t row)
{
    const std::int32_t divider = 2 * (span.minIndex + row) + 2;
    const std::int32_t pixelClock = span.frequencyHz / divider;  // in whole Hz, as the head has it
    return static_cast<double>(pixelClock) / static_cast<double>(TimingPixels(size));
}

std::int32_t RowOfRate(const ClockSpan& span, SectionSize size, double rateHz)
{
    constexpr double kSameRate =
        1e-6;  // relative: a rate that the camera says back isn't the one asked to the last bit
    const std::int32_t last = span.maxIndex - span.minIndex;
    std::int32_t row = 0;
    while (row < last && RateOfRow(span, size, row) > rateHz * (1 + kSameRate)) ++row;
    return row;
}

std::int32_t FirstIntegrationRow(std::int32_t rows)
{
    // The list begins with 2 + (rows - 1) / 4 * 4 lines, and each three rows of it have 4 lines less.
    constexpr std::int32_t kMostLines = 255 - 2;
    constexpr std::int32_t kRowsOfList = 3;
    constexpr std::int32_t kLines = 4;
    const std::int32_t tooMany = 2 + (rows - 1) / kLines * kLines - kMostLines;
    return tooMany <= 0 ? 0 : kRowsOfList * ((tooMany + kLines - 1) / kLines);
}

std::int32_t UnityOffsetOfBits(std::int32_t bits)
{
    return 1 << (BitsOfCounts(bits, DefaultCountRule(bits)) - 1);
}

std::vector<SectionKey> CameraSection(const FoundCamera& camera, const CameraOffer& offer, const PixelFormat& format,
                                      std::int32_t port)
{
    constexpr NumberRange kRatesUnsaid{1, 60};  // Hz, of a camera that doesn't tell its own
    constexpr std::int32_t kUnityGain = 16384;  // one count for a count
    constexpr std::size_t kLongestDescription = 79;
    const SectionSize size = SizeForSection(offer);
    const ClockSpan span = SpanRates(size, offer.ratesHz.value_or(kRatesUnsaid));
    const std::int32_t rateRow = RowOfRate(span, size, offer.rateHz.value_or(kRatesUnsaid.most));
    const std::int32_t integrationRow = FirstIntegrationRow(size.rows);
    const std::int32_t zoom = size.columns <= 320 ? 3 : size.columns <= 640 ? 2 : 1;
    std::string description = camera.vendor + " " + camera.model + " " + HeadName(camera);
    if (description.size() > kLongestDescription) description.resize(kLongestDescription);

    const auto number = [](std::int32_t value) { return Format("%d", value); };
    return {
        {"Description", description},
        {"nCommPort", number(port)},
        {"Htotal", number(size.columns + span.extraCols)},
        {"Vtotal", number(size.rows + span.extraRows)},
        {"Hactive", number(size.columns)},
        {"Vactive", number(size.rows)},
        {"Hroi", number(size.columns)},
        {"Vroi", number(size.rows)},
        {"DecomScheme", "2"},  // line by line, as the camera sends
        {"Vstart", "0"},
        {"Hdelay", "0"},
        {"Idelay", "0"},
        {"CalDelay", "0"},
        {"NumOutputs", "1"},
        {"NumChannels", "1"},
        {"DualCamera", "0"},
        {"UnityGain", number(kUnityGain)},
        {"UnityOffset", number(UnityOffsetOfBits(format.bits))},
        {"ZeroOffset", "0"},
        {"BufferCapture", "1"},
        {"numBufFrames", "8"},
        {"Xzoom", number(zoom)},
        {"Yzoom", number(zoom)},
        {"Xoffset", "0"},
        {"Yoffset", "0"},
        {"Xpan", "0"},
        {"Ypan", "0"},
        {"QVF1058_MasterClockFrequency", number(span.frequencyHz)},
        {"QVF1058_MasterClockMinIndex", number(span.minIndex)},
        {"QVF1058_MasterClockMaxIndex", number(span.maxIndex)},
        {"QVF1058_ExtraTimingRows", number(span.extraRows)},
        {"QVF1058_ExtraTimingCols", number(span.extraCols)},
        {"QVF1058_Gain0", "0"},
        {"ColStart", "0"},
        {"RowStart", "0"},
        {"FlipCols", "0"},
        {"FlipRows", "0"},
        {"IndexFrameRate", number(rateRow)},
        {"IndexIntegrationTime", Format("%d,%d,%d,%d", integrationRow, integrationRow, integrationRow, integrationRow)},
        {"DataOffset", "0"},
    };
}

}  // namespace kelvo

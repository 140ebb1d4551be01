#include "simcam/kept_frames.h"

#include "imagefile/header.h"
#include "platform/faults.h"
#include "platform/text.h"
#include "state/windows.h"

namespace kelvo {

namespace {

constexpr std::string_view kFault = "keep frames";

ImageHeaderRecord HeaderOf(std::int32_t columns, std::int32_t rows)
{
    ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = static_cast<std::int16_t>(columns);
    header.ImageHeight = static_cast<std::int16_t>(rows);
    header.SampleBytes = sizeof(std::int16_t);
    header.IntensityCold = kUncalibratedIntensity;
    header.TemperatureCold = kUncalibratedTemperature;
    header.IntensityHot = kUncalibratedIntensity;
    header.TemperatureHot = kUncalibratedTemperature;
    header.UnitScale = 1;
    header.HeaderVersion = kFirstVersionWithFrameHeaders;
    header.BottomRow = static_cast<std::int16_t>(rows - 1);
    header.RightColumn = static_cast<std::int16_t>(columns - 1);
    header.DataType = 1;
    return header;
}

}  // namespace

void KeptFrames::BeginNext()
{
    file_.reset();
    if (!FaultIsSet(kFault)) {
        number_ = 0;
        return;
    }
    file_ = File::Open(DefaultDir + Format("/kept%d.seq", ++number_), FileMode::kCreate);
}

void KeptFrames::Keep(std::span<const std::int16_t> counts, std::int32_t columns, std::int32_t rows)
{
    if (!file_ || !FaultIsSet(kFault)) return;
    if (file_->Length() == 0) {
        const ImageHeaderRecord header = HeaderOf(columns, rows);
        file_->Write(std::as_bytes(std::span(&header, 1)));
    }
    file_->Write(std::as_bytes(counts));
}

}  // namespace kelvo

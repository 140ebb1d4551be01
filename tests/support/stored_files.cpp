#include "support/stored_files.h"

namespace kelvo {

ImageHeaderRecord PlainHeader(int width, int height)
{
    ImageHeaderRecord header{};
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = static_cast<std::int16_t>(width);
    header.ImageHeight = static_cast<std::int16_t>(height);
    header.SampleBytes = 2;
    header.HeaderFill1 = 0xFFFF;
    header.HeaderFill2 = 0xFFFF;
    header.Year = 26;
    header.Month = 11;
    header.Day = 21;
    header.Hour = 12;
    header.Minute = 34;
    header.Second = 5;
    header.IntensityCold = -10000;
    header.TemperatureCold = -999.0F;
    header.IntensityHot = -10000;
    header.TemperatureHot = -999.0F;
    header.UnitScale = 1.0F;
    header.HeaderVersion = 8;
    header.FrameCount = 1;
    header.BottomRow = static_cast<std::int16_t>(height - 1);
    header.RightColumn = static_cast<std::int16_t>(width - 1);
    header.FramesAveraged = 1;
    header.DisplayLow = 0;
    header.DisplayHigh = 16383;
    header.DataType = 1;
    return header;
}

std::string SampleBytes(const std::vector<std::int16_t>& samples)
{
    std::string bytes;
    for (const std::int16_t sample : samples) {
        const auto value = static_cast<std::uint16_t>(sample);
        bytes += static_cast<char>(value & 0xFF);
        bytes += static_cast<char>(value >> 8);
    }
    return bytes;
}

std::string HeaderBytes(const ImageHeaderRecord& header)
{
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

void WriteImageFile(const std::string& path, const ImageHeaderRecord& header,
                    const std::vector<std::vector<std::int16_t>>& frames)
{
    std::string bytes = HeaderBytes(header);
    for (const std::vector<std::int16_t>& frame : frames) bytes += SampleBytes(frame);
    PutFile(path, bytes);
}

}  // namespace kelvo

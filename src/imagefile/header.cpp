#include "imagefile/header.h"

#include "imagefile/header_write.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

namespace write {
HeaderVariables file;
}

constinit const ImageHeaderRecord& ImageHeader = write::file.ImageHeader;
constinit const SpiffHeaderRecord& SpiffHeader = write::file.SpiffHeader;
constinit const std::uint32_t& ByteSwap = write::file.ByteSwap;
constinit const std::int32_t& IrigEnable = write::file.IrigEnable;

void ResetHeader()
{
    write::file = {};
}

namespace {

// A field of a packed record has no address to keep: each is read when it is asked for.
StateValue Number(double value)
{
    return value;
}

const StateNames kStateNames{
    Named("ByteSwap", ByteSwap),
    {"ImageHeader", [] { return StateValue{DigestOf(std::as_bytes(std::span(&ImageHeader, 1)))}; }},
    Named("IrigEnable", IrigEnable),
    {"ImageHeader.ByteSwap", [] { return Number(ImageHeader.ByteSwap); }},
    {"ImageHeader.ImageWidth", [] { return Number(ImageHeader.ImageWidth); }},
    {"ImageHeader.ImageHeight", [] { return Number(ImageHeader.ImageHeight); }},
    {"ImageHeader.SampleBytes", [] { return Number(ImageHeader.SampleBytes); }},
    {"ImageHeader.HeaderVersion", [] { return Number(ImageHeader.HeaderVersion); }},
    {"ImageHeader.FrameCount", [] { return Number(ImageHeader.FrameCount); }},
    {"ImageHeader.FrameRate", [] { return Number(ImageHeader.FrameRate); }},
    {"ImageHeader.IntegrationMsec", [] { return Number(ImageHeader.IntegrationMsec); }},
    {"ImageHeader.IntensityCold", [] { return Number(ImageHeader.IntensityCold); }},
    {"ImageHeader.IntensityHot", [] { return Number(ImageHeader.IntensityHot); }},
    {"ImageHeader.TemperatureCold", [] { return Number(ImageHeader.TemperatureCold); }},
    {"ImageHeader.TemperatureHot", [] { return Number(ImageHeader.TemperatureHot); }},
    {"ImageHeader.DisplayLow", [] { return Number(ImageHeader.DisplayLow); }},
    {"ImageHeader.DisplayHigh", [] { return Number(ImageHeader.DisplayHigh); }},
    {"ImageHeader.DataType", [] { return Number(ImageHeader.DataType); }},
    {"ImageHeader.FramesAveraged", [] { return Number(ImageHeader.FramesAveraged); }},
    {"ImageHeader.ImageHeaderDataOffset", [] { return Number(ImageHeader.ImageHeaderDataOffset); }},
};

constexpr std::uint16_t kHeaderFill = 0xFFFF;
constexpr std::int16_t kWrittenVersion = 8;
constexpr std::int16_t kIntegerSamples = 1;
constexpr std::size_t kHeaderWords = sizeof(ImageHeaderRecord) / 2;

// Fields of the header take the low bits of wider settings.
std::int16_t Low16(std::int64_t value)
{
    return static_cast<std::int16_t>(static_cast<std::uint64_t>(value));
}

// The count passes through a signed 16-bit field on its way: from 32768 frames on it doesn't survive.
std::uint32_t NarrowedFrameCount(std::int64_t count)
{
    return static_cast<std::uint32_t>(std::int32_t{Low16(count)});
}

void SetRectangle(std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom)
{
    write::file.ImageHeader.TopRow = Low16(top);
    write::file.ImageHeader.LeftColumn = Low16(left);
    write::file.ImageHeader.BottomRow = Low16(bottom);
    write::file.ImageHeader.RightColumn = Low16(right);
    write::file.ImageHeader.ImageWidth = Low16(right - left + 1);
    write::file.ImageHeader.ImageHeight = Low16(bottom - top + 1);
}

void SetCalibration()
{
    write::file.ImageHeader.IntensityCold = Low16(IntensityCold);
    write::file.ImageHeader.TemperatureCold = TemperatureCold;
    write::file.ImageHeader.IntensityHot = Low16(IntensityHot);
    write::file.ImageHeader.TemperatureHot = TemperatureHot;
    write::file.ImageHeader.UnitScale = 1.0F;
}

void SetDisplayAndVideo()
{
    write::file.ImageHeader.DisplayLow = Low16(DisplayLow);
    write::file.ImageHeader.DisplayHigh = Low16(DisplayHigh);
    write::file.ImageHeader.VideoGain1 = Low16(VideoGain[0]);
    write::file.ImageHeader.VideoOffset1 = Low16(VideoOffset[0]);
    write::file.ImageHeader.VideoGain2 = Low16(VideoGain[1]);
    write::file.ImageHeader.VideoOffset2 = Low16(VideoOffset[1]);
    write::file.ImageHeader.DataType = kIntegerSamples;
}

void SetCameraTiming()
{
    write::file.ImageHeader.FrameRate = FrameRate;
    write::file.ImageHeader.IntegrationMsec = static_cast<float>(IntegrationMsecInForce);
    write::file.ImageHeader.NumOutputs = Low16(ActiveConfig.NumOutputs);
}

void SetDate()
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    write::file.ImageHeader.Hour = Low16(local.tm_hour);
    write::file.ImageHeader.Minute = Low16(local.tm_min);
    write::file.ImageHeader.Second = Low16(local.tm_sec);
    write::file.ImageHeader.Month = Low16(local.tm_mon + 1);
    write::file.ImageHeader.Day = Low16(local.tm_mday);
    write::file.ImageHeader.Year = Low16(local.tm_year % 100);
}

// A run of numbered files ends where the next one is missing: that is no error, only a sound.
std::int32_t TellOpenFailure(std::string_view path)
{
    if (SteppingFrames) {
        MessageBeep(Sound::kInformation);
    } else {
        MessageBox(hWndMain, "Failed to open file\n" + std::string(path), "Read Image Header Error");
    }
    return -1;
}

template <typename Record>
std::size_t ReadRecord(File& file, Record& record)
{
    return file.Read(std::as_writable_bytes(std::span(&record, 1)));
}

void UnwrapSpiff(File& file, ImageHeaderRecord& destination)
{
    if (file.Seek(0)) ReadRecord(file, write::file.SpiffHeader);  // what a short file lacks stays from the file before
    destination = SpiffHeader.Image;
}

bool SizesAreUsable(const ImageHeaderRecord& header)
{
    const auto within = [](std::int32_t value, std::int32_t most) { return value > 0 && value <= most; };
    return within(header.ImageWidth, kMaxImageSide) && within(header.ImageHeight, kMaxImageSide) &&
           within(header.SampleBytes, 4);
}

void SetFrameCountFromLength(ImageHeaderRecord& header, std::int64_t fileBytes, std::int64_t headerBytes)
{
    const std::int64_t recordBytes = FrameRecordBytes(header);
    if (SizesAreUsable(header) && recordBytes != 0) {
        header.FrameCount = static_cast<std::uint32_t>((fileBytes - headerBytes) / recordBytes);
    }
    if (header.FrameCount < 2) header.FrameCount = 1;
}

void SwapBytes(std::span<std::byte> block, std::size_t wordCount)
{
    const std::size_t words = std::min(wordCount, block.size() / 2);
    for (std::size_t i = 0; i < words; ++i) std::swap(block[2 * i], block[2 * i + 1]);
}

int Failed(std::string_view text, std::string_view caption)
{
    MessageBox(hWndMain, text, caption);
    return 0;
}

}  // namespace

bool HasTwoSources(const ImageHeaderRecord& header)
{
    return header.IntensityCold < header.IntensityHot && header.TemperatureCold < header.TemperatureHot;
}

bool BearsCalibration(const ImageHeaderRecord& header)
{
    const bool isEmpty = header.IntensityCold == 0 && header.IntensityHot == 0;
    return header.IntensityCold != kUncalibratedIntensity && !isEmpty;
}

std::int64_t FrameRecordBytes(const ImageHeaderRecord& header)
{
    return std::int64_t{header.ImageWidth} * header.ImageHeight * header.SampleBytes + header.ImageHeaderDataOffset;
}

ImageHeaderRecord* BuildImageHeader(ImageHeaderRecord* destination, std::int32_t firstFrame, std::int32_t lastFrame,
                                    std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    // With IrigEnable the time would come from a reader that this version leaves empty: the field stays.
    if (IrigEnable == 0) write::file.ImageHeader.IrigTime.fill(0);
    write::file.ImageHeader.ByteSwap = static_cast<std::uint16_t>(ByteSwap);
    write::file.ImageHeader.HeaderVersion = kWrittenVersion;
    write::file.ImageHeader.FrameCount = NarrowedFrameCount(std::int64_t{lastFrame} + 1 - firstFrame);
    write::file.ImageHeader.FramesAveraged = 0;
    SetRectangle(left, top, right, bottom);
    write::file.ImageHeader.SampleBytes = 2;
    write::file.ImageHeader.HeaderFill1 = kHeaderFill;
    write::file.ImageHeader.HeaderFill2 = kHeaderFill;
    SetCalibration();
    SetDisplayAndVideo();
    if (ViewingFile == 0) SetCameraTiming();  // otherwise they describe the file on view
    SetDate();
    write::file.ImageHeader.ImageHeaderDataOffset = 0;
    *destination = ImageHeader;
    return destination;
}

std::int32_t ReadHeaderOf(File& file, ImageHeaderRecord& destination)
{
    if (ReadRecord(file, destination) < sizeof destination) return -1;
    std::int32_t headerBytes = sizeof(ImageHeaderRecord);
    if (DeclaresSpiff(destination)) {
        headerBytes = sizeof(SpiffHeaderRecord);
        UnwrapSpiff(file, destination);
    }
    if (destination.HeaderVersion < kFirstVersionWithFrameHeaders) destination.ImageHeaderDataOffset = 0;
    SetFrameCountFromLength(destination, file.Length(), headerBytes);
    return headerBytes;
}

std::int32_t ReadImageHeader(std::string_view path, ImageHeaderRecord& destination)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) return TellOpenFailure(path);
    const std::int32_t headerBytes = ReadHeaderOf(*file, destination);
    if (headerBytes < 0) {
        file.reset();
        MessageBox(hWndMain, "Error reading Image File Header\n" + std::string(path), kMessageCaption);
    }
    return headerBytes;
}

bool DeclaresSpiff(const ImageHeaderRecord& header)
{
    return (header.ByteSwap & 0xFF) == 1;
}

void RestoreSwappedHeader(ImageHeaderRecord& header)
{
    const bool isSwapped = header.ByteSwap == 0 && header.HeaderVersion != 0 && (header.HeaderVersion & 0xFF) == 0;
    if (!isSwapped) return;
    SwapHeaderBytes(std::as_writable_bytes(std::span(&header, 1)), kHeaderWords);
    if (header.HeaderVersion < kFirstVersionWithFrameHeaders) header.ImageHeaderDataOffset = 0;
}

void SwapHeaderBytes(std::span<std::byte> block, std::size_t wordCount)
{
    SwapBytes(block, wordCount);
}

void SwapDataBytes(std::span<std::byte> block, std::size_t wordCount)
{
    SwapBytes(block, wordCount);
}

int WriteImageHeader(std::string_view path, ImageHeaderRecord record)
{
    const std::span<std::byte> bytes = std::as_writable_bytes(std::span(&record, 1));
    if (record.ByteSwap == 0) SwapHeaderBytes(bytes, kHeaderWords);
    std::optional<File> file = File::Open(path, FileMode::kReadWrite);
    if (!file) return Failed("Error opening file.", "Software Error!");
    const bool written = file->Write(bytes) == bytes.size();
    if (!file->Close() || !written) return Failed("Error writing Image Header to file.", "Software Error!");
    return 1;
}

int WriteImageData(std::string_view path, std::span<std::byte> data, std::int64_t offset, std::int32_t byteCount,
                   bool swap)
{
    const std::size_t wanted = byteCount > 0 ? static_cast<std::size_t>(byteCount) : 0;
    const std::span<std::byte> bytes = data.first(std::min(wanted, data.size()));
    std::optional<File> file = File::Open(path, FileMode::kReadWrite);
    if (!file) return Failed("Error opening file.", "Software Error!");
    if (!file->Seek(offset)) return Failed("Unable to correctly access file.", "Software Error");
    if (swap) SwapDataBytes(bytes, wanted / 2);
    const bool written = file->Write(bytes) == wanted;
    if (!file->Close() || !written) return Failed("Error writing data from buffer to file.", "Software Error");
    return 1;
}

}  // namespace kelvo

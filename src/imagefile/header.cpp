#include "imagefile/header.h"

#include "platform/box.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>

namespace kelvo {

ImageHeaderRecord ImageHeader;
SpiffHeaderRecord SpiffHeader;
std::uint32_t ByteSwap = 0xFFFF;
std::int32_t IrigEnable = 0;

namespace {

constexpr std::uint16_t kHeaderFill = 0xFFFF;
constexpr std::int16_t kWrittenVersion = 8;
constexpr std::int16_t kFirstVersionWithFrameHeaders = 8;
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
    ImageHeader.TopRow = Low16(top);
    ImageHeader.LeftColumn = Low16(left);
    ImageHeader.BottomRow = Low16(bottom);
    ImageHeader.RightColumn = Low16(right);
    ImageHeader.ImageWidth = Low16(right - left + 1);
    ImageHeader.ImageHeight = Low16(bottom - top + 1);
}

void SetCalibration()
{
    ImageHeader.IntensityCold = Low16(IntensityCold);
    ImageHeader.TemperatureCold = TemperatureCold;
    ImageHeader.IntensityHot = Low16(IntensityHot);
    ImageHeader.TemperatureHot = TemperatureHot;
    ImageHeader.UnitScale = 1.0F;
}

void SetDisplayAndVideo()
{
    ImageHeader.DisplayLow = Low16(DisplayLow);
    ImageHeader.DisplayHigh = Low16(DisplayHigh);
    ImageHeader.VideoGain1 = Low16(VideoGain[0]);
    ImageHeader.VideoOffset1 = Low16(VideoOffset[0]);
    ImageHeader.VideoGain2 = Low16(VideoGain[1]);
    ImageHeader.VideoOffset2 = Low16(VideoOffset[1]);
    ImageHeader.DataType = kIntegerSamples;
}

void SetCameraTiming()
{
    ImageHeader.FrameRate = FrameRate;
    ImageHeader.IntegrationMsec = static_cast<float>(IntegrationMsecInForce);
    ImageHeader.NumOutputs = Low16(ActiveConfig.NumOutputs);
}

void SetDate()
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    ImageHeader.Hour = Low16(local.tm_hour);
    ImageHeader.Minute = Low16(local.tm_min);
    ImageHeader.Second = Low16(local.tm_sec);
    ImageHeader.Month = Low16(local.tm_mon + 1);
    ImageHeader.Day = Low16(local.tm_mday);
    ImageHeader.Year = Low16(local.tm_year % 100);
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

bool DeclaresSpiff(const ImageHeaderRecord& header)
{
    return (header.ByteSwap & 0xFF) == 1;
}

void UnwrapSpiff(File& file, ImageHeaderRecord& destination)
{
    if (file.Seek(0)) ReadRecord(file, SpiffHeader);  // what a short file lacks stays from the file before
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

std::int64_t FrameRecordBytes(const ImageHeaderRecord& header)
{
    return std::int64_t{header.ImageWidth} * header.ImageHeight * header.SampleBytes + header.ImageHeaderDataOffset;
}

ImageHeaderRecord* BuildImageHeader(ImageHeaderRecord* destination, std::int32_t firstFrame, std::int32_t lastFrame,
                                    std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    // With IrigEnable the time would come from a reader that this version leaves empty: the field stays.
    if (IrigEnable == 0) ImageHeader.IrigTime.fill(0);
    ImageHeader.ByteSwap = static_cast<std::uint16_t>(ByteSwap);
    ImageHeader.HeaderVersion = kWrittenVersion;
    ImageHeader.FrameCount = NarrowedFrameCount(std::int64_t{lastFrame} + 1 - firstFrame);
    ImageHeader.FramesAveraged = 0;
    SetRectangle(left, top, right, bottom);
    ImageHeader.SampleBytes = 2;
    ImageHeader.HeaderFill1 = kHeaderFill;
    ImageHeader.HeaderFill2 = kHeaderFill;
    SetCalibration();
    SetDisplayAndVideo();
    if (ViewingFile == 0) SetCameraTiming();  // otherwise they describe the file on view
    SetDate();
    ImageHeader.ImageHeaderDataOffset = 0;
    *destination = ImageHeader;
    return destination;
}

std::int32_t ReadImageHeader(std::string_view path, ImageHeaderRecord& destination)
{
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) return TellOpenFailure(path);
    if (ReadRecord(*file, destination) < sizeof destination) {
        file.reset();
        MessageBox(hWndMain, "Error reading Image File Header\n" + std::string(path), kMessageCaption);
        return -1;
    }
    std::int32_t headerBytes = sizeof(ImageHeaderRecord);
    if (DeclaresSpiff(destination)) {
        headerBytes = sizeof(SpiffHeaderRecord);
        UnwrapSpiff(*file, destination);
    }
    if (destination.HeaderVersion < kFirstVersionWithFrameHeaders) destination.ImageHeaderDataOffset = 0;
    SetFrameCountFromLength(destination, file->Length(), headerBytes);
    return headerBytes;
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

void ResetImageHeader()
{
    ImageHeader = {};
    SpiffHeader = {};
    ByteSwap = 0xFFFF;
    IrigEnable = 0;
}

}  // namespace kelvo

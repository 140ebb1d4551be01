// The image file format: a header of 512 bytes (1024 in files of the spectrometer trigger), then frames back to back,
// each with a FrameHeader of 80 bytes before it where the header says so. The extension names the use, the header alone
// decides the layout.
//
// One process-wide ImageHeader describes the frame on view, and most writers build theirs there. Bytes that no field
// names are carried along: a saved file inherits the reserved bytes of the last file read, so that a field of an older
// file survives.
//
// All fields are little-endian at these offsets, without alignment; floats are IEEE single precision.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

class File;

static_assert(std::endian::native == std::endian::little, "the records below are the file's bytes");

struct [[gnu::packed]] ImageHeaderRecord {
    std::uint16_t ByteSwap = 0;     // 0: byte-swapped file; any other value: native order
    std::int16_t ImageWidth = 0;    // pixels a row
    std::int16_t ImageHeight = 0;   // rows a frame
    std::int16_t SampleBytes = 0;   // 2: integer counts, 4: floats
    std::uint16_t HeaderFill1 = 0;  // 0xFFFF
    std::uint16_t HeaderFill2 = 0;  // 0xFFFF
    std::int16_t Year = 0;          // 0 to 99
    std::int16_t Month = 0;         // 1 to 12
    std::int16_t Day = 0;           // 1 to 31
    std::int16_t Hour = 0;
    std::int16_t Minute = 0;
    std::int16_t Second = 0;
    std::int16_t IntensityCold = 0;  // counts of the low-flux source, -10000 for none
    float TemperatureCold = 0;       // °C, -999.0 for none
    std::int16_t IntensityHot = 0;
    float TemperatureHot = 0;
    float UnitScale = 0;             // 1.0
    std::int16_t HeaderVersion = 0;  // 8 in every file that is written
    std::uint32_t FrameCount = 0;    // as written; on reading it follows from the length
    std::int16_t TopRow = 0;         // the stored rectangle, inclusive
    std::int16_t LeftColumn = 0;
    std::int16_t BottomRow = 0;
    std::int16_t RightColumn = 0;
    std::int16_t FramesAveraged = 0;
    float FrameRate = 0;                        // Hz
    float IntegrationMsec = 0;                  // ms
    std::array<std::uint8_t, 48> Reserved64{};  // a .buf file keeps Frames at 64 and Skip at 88 here
    std::int16_t DisplayLow = 0;                // counts
    std::int16_t DisplayHigh = 0;               // counts
    std::int16_t VideoGain1 = 0;
    std::int16_t VideoOffset1 = 0;
    std::int16_t VideoGain2 = 0;
    std::int16_t VideoOffset2 = 0;
    std::int16_t DataType = 0;  // 1: 16-bit integers, 8: floats
    std::array<std::uint8_t, 8> Reserved126{};
    std::array<std::uint8_t, 8> IrigTime{};
    std::int16_t NumOutputs = 0;
    std::int16_t ImageHeaderDataOffset = 0;  // bytes of the FrameHeader before each frame: 0 or 80
    std::array<std::uint8_t, 36> StartTimeSlot{};
    std::array<std::uint8_t, 330> StopTimeSlot{};  // and reserved to the end
};
static_assert(sizeof(ImageHeaderRecord) == 512);

// Wraps an ImageHeader in files of the spectrometer trigger.
struct [[gnu::packed]] SpiffHeaderRecord {
    std::uint8_t SpiffMarker = 1;          // how a file declares this header; a plain one begins with 0xFF or 0x00
    std::int32_t SpiffHeaderIdentity = 0;  // key SpiffHeaderIdentity of Setup
    std::int32_t SpiffTime = 0;            // seconds since 1 January 1970
    std::int16_t SpiffStepCount = 0;
    std::int32_t SpiffDisplayHigh = 0;
    std::int32_t SpiffDisplayLow = 0;
    std::int16_t SpiffLeft = 0;
    std::int16_t SpiffTop = 0;
    std::uint8_t SpiffFlag = 0;  // 1
    std::int16_t SpiffWidth = 0;
    std::int16_t SpiffHeight = 0;
    std::int16_t SpiffOffsetWord = 0;
    float SpiffScaleA = 0;
    float SpiffStepCountF = 0;
    float SpiffScaleB = 0;
    std::array<std::uint8_t, 69> Reserved42{};
    ImageHeaderRecord Image;  // a complete copy at this odd offset
    std::array<std::uint8_t, 401> Reserved623{};
};
static_assert(sizeof(SpiffHeaderRecord) == 1024);

// In front of every frame when ImageHeaderDataOffset is 80.
struct [[gnu::packed]] FrameHeaderRecord {
    std::array<char, 30> FrameTimeText{};  // "Sat Nov 21 12:04:01.123 2026\n" and a terminator
    std::int32_t FrameNum = 0;             // index in the file, from 0
    std::int32_t AllFramesNum = 0;         // camera frames since the start of the save
    float FrameIntegrationMsec = 0;        // ms
    std::array<std::uint8_t, 30> Reserved42{};
    std::array<std::uint8_t, 8> FrameIrigTime{};
};
static_assert(sizeof(FrameHeaderRecord) == 80);

constexpr std::int16_t kUncalibratedIntensity = -10000;
constexpr float kUncalibratedTemperature = -999.0F;

// Two sources, the cold one's intensity and temperature below the hot one's.
bool HasTwoSources(const ImageHeaderRecord& header);
// The header tells of a calibration by one source (its intensity is the cold one) or two, with temperatures or without;
// otherwise it has kUncalibratedIntensity, or zeros of a program that knows of none.
bool BearsCalibration(const ImageHeaderRecord& header);

constexpr std::int16_t kFirstVersionWithFrameHeaders = 8;  // before it ImageHeaderDataOffset means nothing
constexpr std::int32_t kMaxImageSide = 1024;               // beyond it a header's frame count is taken as stored

// The frame on view.
extern const ImageHeaderRecord& ImageHeader;
extern const SpiffHeaderRecord& SpiffHeader;
// Keys of section Setup that headers take: read by ReadSetupKeys.
extern const std::uint32_t& ByteSwap;  // 0: the words of files are swapped; otherwise 0xFFFF
extern const std::int32_t& IrigEnable;

// Fills ImageHeader for frames firstFrame to lastFrame of an inclusive rectangle in image coordinates, copies it to
// destination and returns destination. FramesAveraged is 0 until a writer sets it. FrameRate, IntegrationMsec and
// NumOutputs keep the values of the file on view while there is one. A count of 32768 frames or more is narrowed with
// sign (32768 gives 0xFFFF8000).
ImageHeaderRecord* BuildImageHeader(ImageHeaderRecord* destination, std::int32_t firstFrame, std::int32_t lastFrame,
                                    std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);

// Reads a file's header into destination, never swapped back. Returns its size, 512 or 1024, or -1 after reporting:
// "Failed to open file\n%s" under "Read Image Header Error" (while SteppingFrames only the information sound), "Error
// reading Image File Header\n%s" under "Kelvo message". The frame count follows from the file's length. On failure
// destination may hold part of what was read: callers that show a frame put their record back.
std::int32_t ReadImageHeader(std::string_view path, ImageHeaderRecord& destination);

// The same of an open file whose position is its beginning, with nothing told.
std::int32_t ReadHeaderOf(File& file, ImageHeaderRecord& destination);

// Whether the first byte of a file, read as a header, says that a SpiffHeader wraps it.
bool DeclaresSpiff(const ImageHeaderRecord& header);

// A header whose file has all its words exchanged, itself among them (its version's low byte is 0), in native order;
// another one stays as it is.
void RestoreSwappedHeader(ImageHeaderRecord& header);

// Exchanges the two bytes of each of wordCount 16-bit words; never beyond the block.
void SwapHeaderBytes(std::span<std::byte> block, std::size_t wordCount);
void SwapDataBytes(std::span<std::byte> block, std::size_t wordCount);

// Patches the first 512 bytes of an existing file; the copy is swapped first when its ByteSwap is 0. 1, or 0 after a
// box: "Error opening file." or "Error writing Image Header to file." under "Software Error!".
int WriteImageHeader(std::string_view path, ImageHeaderRecord record);

// Writes byteCount bytes of data at a file offset of an existing file; with swap, data's words are exchanged first, in
// place, and stay so. 1, or 0 after a box: "Error opening file." under "Software Error!", "Unable to correctly access
// file." or "Error writing data from buffer to file." under "Software Error".
int WriteImageData(std::string_view path, std::span<std::byte> data, std::int64_t offset, std::int32_t byteCount,
                   bool swap);

// Bytes of one record, its FrameHeader included, in 64 bits: ImageWidth x ImageHeight x SampleBytes +
// ImageHeaderDataOffset as the signed fields give it (it may be 0 or negative in a hostile file).
std::int64_t FrameRecordBytes(const ImageHeaderRecord& header);

}  // namespace kelvo

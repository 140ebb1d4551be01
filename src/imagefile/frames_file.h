// The journal of a recorded sequence: beside NAME.seq grows NAME.seq.frames, with a record of 64 bytes for each frame
// of the sequence, in order. It tells which frame of the camera each one is, when it was complete, what is missing
// before it and why, and the checksum of its pixels. It is only ever appended to. A record is written before its frame,
// so that each whole frame of a recording that was killed has one.
//
// The file: FramesHeadRecord, then headBytes - 64 bytes of text, lines "Key=value" (a backslash, a line feed and a
// carriage return in a value as \\, \n and \r), filled up with zeros; from headBytes on the records; behind the last
// frame one that closes the journal. A journal without it wasn't closed: the program was killed, or still records.
// All numbers are little-endian.
#pragma once

#include "platform/files.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

struct FramesHeadRecord {
    std::array<char, 8> magic = {'K', 'V', 'F', 'R', 'A', 'M', 'E', 'S'};
    std::uint32_t version = 1;
    std::uint32_t headBytes = 64;  // a multiple of 64: where the records begin
    std::uint32_t recordBytes = 64;
    std::uint32_t pixelBytes = 0;  // of a frame, without its FrameHeader
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::uint32_t textBytes = 0;  // of the lines behind these 64 bytes
    std::array<std::uint8_t, 24> reserved{};
    std::uint32_t crc = 0;  // CRC-32C of all headBytes, these four taken as 0
};
static_assert(sizeof(FramesHeadRecord) == 64);

enum FrameFlag : std::uint32_t {
    kTriggerFrame = 1,     // the frame at which the trigger came
    kMarkedFrame = 2,      // the first one completed after a mark was set; `mark` is its number
    kFirstOfPart = 4,      // the frame before it is the last one of another file of the same run
    kRecoveredFrame = 8,   // its record was lost and made again from the sequence: times are 0, what is missing unknown
    kFirstOfRun = 16,      // the frame before it is the last one of an earlier run into the same file
    kClosesJournal = 128,  // no frame: the end. `number` is how many frames there are, `mark` an EndOfRecording
};

struct FrameRecord {
    std::int64_t number = 0;       // by the board, from 1; -1: it doesn't count
    std::int64_t monotonicNs = 0;  // of a clock that never jumps, its zero unknown
    std::int64_t utcNs = 0;        // since 1 January 1970, the same moment
    float integrationMs = 0;
    std::uint32_t flags = 0;        // FrameFlag
    std::uint32_t lostByBoard = 0;  // frames between the one before and this one: gone before they were read
    std::uint32_t lostByRing = 0;   // for which the ring of frames had no place
    std::uint32_t passedOver = 0;   // left out on purpose
    std::uint32_t triggers = 0;     // pulses of the board's trigger input by then, low 32 bits
    std::uint32_t mark = 0;
    std::uint32_t lostByTransport = 0;  // sent by the camera and damaged or gone on the way to the board
    std::uint32_t pixelCrc = 0;         // CRC-32C of the pixels as they stand in the file
    std::uint32_t crc = 0;              // CRC-32C of the 60 bytes before
    friend bool operator==(const FrameRecord&, const FrameRecord&) = default;
};
static_assert(sizeof(FrameRecord) == 64);

enum class EndOfRecording : std::uint32_t {
    kStopped = 0,      // by the operator
    kComplete = 1,     // as many frames, or as long, as was wished
    kNextPart = 2,     // it goes on in the next file
    kDiskFull = 3,     // stopped with little room left
    kWriteFailed = 4,  // the disk refused
    kFileDeleted = 5,  // the file was taken away under it
    kRecovered = 6,    // closed afterwards
};

// Keys of the head's text, in any order; others may stand there.
namespace frames_key {
constexpr std::string_view kProgram = "Program";               // "Kelvo 0.9"
constexpr std::string_view kCamera = "Camera";                 // its description
constexpr std::string_view kSettings = "Settings";             // of the recorder, "Key=value" lines
constexpr std::string_view kCalibration = "CalibrationSet";    // the .cal in force; empty: none
constexpr std::string_view kChecksum = "CalibrationChecksum";  // SHA-256 of that file; empty: none
constexpr std::string_view kPixels = "Pixels";                 // kRawPixels or kCorrectedPixels
constexpr std::string_view kSampleName = "SampleName";         //
constexpr std::string_view kComment = "Comment";               //
constexpr std::string_view kClock = "Clock";                   // where the times come from
constexpr std::string_view kCounts = "Counts";  // what was done to make them signed 16 bits; missing: nothing
}  // namespace frames_key
constexpr std::string_view kRawPixels = "raw";              // in readout order
constexpr std::string_view kCorrectedPixels = "corrected";  // as on the screen

struct FramesHead {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    std::uint32_t pixelBytes = 0;
    std::vector<std::pair<std::string, std::string>> texts;  // key and value, as they stand in the file
    // The value of a key; empty where there is none.
    std::string Text(std::string_view key) const;
    // In place of its former value, or behind the others.
    void SetText(std::string_view key, std::string_view value);
    friend bool operator==(const FramesHead&, const FramesHead&) = default;
};

// "x.seq.frames" of "x.seq".
std::string FramesPathOf(std::string_view sequencePath);

// A count of frames as a record holds it: 32 bits at most.
std::uint32_t RecordField(std::int64_t count);
// The record with its own checksum put right.
FrameRecord Sealed(FrameRecord record);
// Its checksum holds.
bool IsWhole(const FrameRecord& record);
FrameRecord ClosingRecord(std::int64_t frames, EndOfRecording why);

enum class FramesFault {
    kNone,
    kNotOpened,  // there is no such file, or it can't be read
    kNoJournal,  // it isn't one
    kNewer,      // of a version to come, which may say more than is understood here
    kDamaged,    // it is one with a broken head
    kNoMemory
};

// A journal as it stands in a file; any file gives a clear result.
struct FramesFile {
    FramesFault fault = FramesFault::kNone;
    FramesHead head;                     //
    std::int64_t headBytes = 0;          //
    std::vector<FrameRecord> records;    // of the frames, up to the first that isn't whole; without the closing one
    std::optional<FrameRecord> closing;  // nullopt: it wasn't closed
    std::int64_t bytesBehind = 0;        // behind what could be read: part of a record, or broken ones
};
FramesFile ReadFramesFile(std::string_view path);
// The same for what repairs it: a record that isn't whole but has whole ones behind it doesn't end them. In its place
// stands an empty one, which isn't whole either.
FramesFile SalvageFramesFile(std::string_view path);
// What has been added to an open journal since it was read: behind the first `settled` records, which stand; the later
// ones may have been taken back meanwhile. Where it can't be read any more the journal stays as it is.
void ReadOn(std::string_view path, std::int64_t settled, FramesFile& journal);
// What a file with that head, these records and a closing one consists of.
std::vector<std::byte> FramesFileBytes(const FramesHead& head, std::span<const FrameRecord> records,
                                       const std::optional<FrameRecord>& closing);
// Puts a journal with these contents in the place of the one at path, or there anew: all or nothing. False: what stood
// there stands.
bool ReplaceFramesFile(std::string_view path, const FramesHead& head, std::span<const FrameRecord> records,
                       const std::optional<FrameRecord>& closing);

// A journal in the making. One write call a record and no memory taken for it.
class FramesFileWriter {
  public:
    // A new file with its head on the disk; nullopt where one stands, or none can be made.
    static std::optional<FramesFileWriter> Create(std::string_view path, const FramesHead& head);
    // One that stands goes on behind its last whole record: its closing record, and what lies behind, is taken off.
    static std::optional<FramesFileWriter> Continue(std::string_view path, const FramesFile& journal);
    // False where the disk didn't take the record: what it took of it is cut off again.
    bool Append(const FrameRecord& record);
    // Takes the last records back: their frames didn't reach the disk.
    bool DropLast(std::int64_t records);
    // Behind the last record; passes on what is missing behind the last frame.
    bool Close(const FrameRecord& closing);
    bool SyncData() { return file_.SyncData(); }
    std::int64_t Records() const { return records_; }

  private:
    FramesFileWriter(File file, std::int64_t headBytes) : file_(std::move(file)), headBytes_(headBytes) {}
    File file_;
    std::int64_t headBytes_;
    std::int64_t records_ = 0;
};

// What is missing in a sequence.
struct FrameGap {
    std::int64_t beforeFrame = 0;  // index in the file of the frame behind the gap
    std::int64_t firstNumber = 0;  // of the first one that is missing, by the board; -1: it doesn't count
    std::int64_t lostByBoard = 0;
    std::int64_t lostByRing = 0;
    std::int64_t passedOver = 0;
    std::int64_t unexplained = 0;  // by the numbers alone: the records that told why are gone
    std::int64_t lostByTransport = 0;
    std::int64_t Missing() const { return lostByTransport + lostByBoard + lostByRing + passedOver + unexplained; }
    friend bool operator==(const FrameGap&, const FrameGap&) = default;
};
// Why, with how many each: "3 lost by the transport, 2 lost by the board, 1 passed over"
std::string CausesOf(const FrameGap& gap);
// In order. What is missing before the first frame counts where the file goes on with another (kFirstOfPart): before a
// run begins, nothing is missing.
std::vector<FrameGap> GapsOf(std::span<const FrameRecord> records);

}  // namespace kelvo

// Continuous save without its window (record/contsave_dialog.h): frames of the camera go to one file, each that comes
// or one an interval, for as long as the operator wants.
//
//     AllocateSaveBuffer();
//     if (BeginSave(options) == SaveStart::kBegun) ...
//     SaveTick();                        // each time that the timer expires
//     const SavedRun run = EndSave();
//
// The file is an ImageHeader (512 bytes) and SaveFrameCount records of SaveFrameBytes bytes: Hroi x Vroi counts row by
// row, and before them a FrameHeader where ImageHeaderDataOffset is 80. In a byte-swapped file the header alone is
// swapped, on its way to the disk; memory keeps it in native order.
//
// While a run is on, a recording is (grabber/recording.h): every frame of the camera is saved, passed over because the
// interval says so, or counted as lost.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

extern const std::int64_t& SaveFrameBytes;  // a record of the file
extern const std::int32_t& SaveFrameCount;  // whole records in the file
// Camera frames since the start of the run, by the clock: a file without the board's numbers tells so how many it
// lacks.
extern const std::int32_t& AllFramesNum;
// Integration time in force, ms, as each frame header tells it. The dialog says which.
extern const float& FrameIntegrationTime;
void SetFrameIntegrationTime(float milliseconds);

// ---- The block

// SaveBuffer: room for one record of the camera's size. False where memory is refused.
bool AllocateSaveBuffer();
void FreeSaveBuffer();
// The camera's picture as it is now, corrected, through the same block to the screen: what the operator sees before a
// run. Live video runs. False after the box of a frame that didn't come.
bool ShowPreviewFrame();

// ---- Frame headers

// The moment that frame headers tell, ns since 1 January 1970: a run sets that of each frame's blank.
void SetFrameTime(std::int64_t utcNs);
// That moment in local time as the C library writes it, with milliseconds: "Thu Nov 12 19:46:55.123 2026\n".
// A zero byte ends it.
using TimeStamp = std::array<char, 30>;
void FormatTimeStamp(TimeStamp& text);

// How many frames the camera has given, estimated from the seconds of the minute at which frames were complete. A board
// may know no numbers; those that know theirs tell them elsewhere, and this estimate stays what readers of these files
// expect.
struct FrameEstimate {
    float previousSeconds = 0;  // 0 to below 120: a rollover that was made up for keeps its 60
    float olderSeconds = 0;     // of the frame before
    std::int32_t previousStep = 0;
    std::int32_t allFrames = 0;
};
// Seconds single, their difference too, products in double. The first frame of a file is number 0, each other one at
// least one further.
void AddFrame(FrameEstimate& estimate, float nowSeconds, float frameRate, bool firstOfFile);

// The FrameHeader of the next record at the start of buffer, which holds 80 bytes: time, SaveFrameCount, AllFramesNum,
// FrameIntegrationTime; reserved bytes are 0.
void FillFrameHeader(std::span<std::int16_t> buffer);

// ---- A run

struct SaveOptions {
    std::string path;
    bool addsToFile = false;    // behind the frames that are there; otherwise what stands under the name is deleted
    bool frameHeaders = false;  // of a new file; one that is added to keeps its layout
    bool calibrated = false;    // frames corrected by the calibration in force; otherwise raw, in readout order
    bool shows = false;         // each saved frame is drawn
    bool syncOut = false;       // the external sync is pulsed before the first frame of the file
    float updateRate = 0;       // s from one save to the next; 0: every frame
};

enum class SaveStart {
    kBegun,
    kNoMemory,     // for the ring of frames; it has been told
    kCantOpen,     // or the header of a new file couldn't be written
    kShortHeader,  // of a file that is to be added to
    kOtherFrames   // its frames have another size or layout
};
// Live video runs and SaveBuffer stands. Opens the recording, then the file, and ImageHeader describes it. On failure
// ImageHeader, and a file that was to be added to, are as before.
SaveStart BeginSave(const SaveOptions& options);
bool SaveRuns();
// A journal grows beside the file. None does where it couldn't be made, or where frames are added to a file whose
// journal doesn't tell of exactly those that stand there.
bool SaveKeepsJournal();

enum class SaveTrouble {
    kNone,
    kNoFrame,    // LastFrameReadFault (grabber/frame_read.h) tells why
    kNotWritten  // what was written of the frame is cut off again
};
// One frame: the first that is complete after the call begins. With updateRate 0 the next one in order, and those that
// wait behind it, for some 20 ms. Waits for a frame up to 2 s. It ends with the first trouble; the run goes on.
SaveTrouble SaveTick();

// To be called now and then between two ticks: frames that no tick will take make room for others.
void PassOverWhatWaits();
// Of the run that is on or was last, by board and ring; nullopt: the board doesn't count.
std::optional<std::int64_t> LostFrames();

struct SavedRun {
    std::string path;
    std::int32_t firstFrame = 0;  // in the file
    std::int32_t frames = 0;
    bool closed = false;  // false: the last header or the file's end may not have arrived
};
// Ends the run: with updateRate 0 what the ring has from before is saved still. FrameCount goes into the header.
SavedRun EndSave();

// Seconds for which the disk of path has room for the frames of a run, at the camera's rate or the interval; nullopt
// where rate or room aren't known. freed: bytes that the run frees first.
std::optional<double> SecondsOfRoom(const SaveOptions& options, std::int64_t freed);

// ---- Afterwards

enum class CorrectionEnd { kDone, kCantOpen, kNoMemory, kCantRead, kCantWrite };
// Corrects the frames of a run where they stand, and no others of the file, with the calibration in force: image order,
// counted from the first pixel, by the formula of the live picture (grabber/correction.h). The header isn't marked. At
// a fault the frames before it stay corrected.
CorrectionEnd CorrectSavedRun(const SavedRun& saved);

// As at start.
void ResetContinuousSave();

}  // namespace kelvo

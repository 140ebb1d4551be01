// The recorder: live video to disk, as long as it takes, on a trigger and with what came before it, every frame told
// of. It knows no window: one starts it, looks at its status and ends it; so do scripts and tests.
//
//     std::string why;
//     if (!StartRecorder(settings, why)) ...            // why: a sentence for the operator
//     TriggerRecorder(); MarkRecorder();                // as the operator likes
//     const RecorderStatus status = CurrentRecorderStatus();
//     StopRecorder();                                   // status.verdict stands until the next start
//
// A sequence NAME.seq has frame headers (AllFramesNum: the board's own number, FrameNum: its place in the file) and a
// journal NAME.seq.frames (imagefile/frames_file.h). Its header is always in native order. No file is ever overwritten.
//
// While one runs, a recording runs (grabber/recording.h). The frames are written by its own thread; with the virtual
// clock by the clock. All calls here are the main thread's, and each returns at once, but for StartRecorder and
// StopRecorder (what still waits in the ring is written then) and MeasureWriteRate.
#pragma once

#include "grabber/capture.h"
#include "record/recorder_settings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class RecorderState {
    kIdle,       // nothing runs; what the status tells is of the last run
    kWaiting,    // for its clock time
    kArmed,      // for the trigger
    kRecording,  //
};

enum class RecorderEnd {
    kNone,         // it runs, or never ran
    kStopped,      // StopRecorder
    kComplete,     // all events are done
    kDiskFull,     // room for less than 5 s was left
    kWriteFailed,  // the disk refused a frame: those before it stand
    kFileDeleted,  // the file was taken away under it
    kNoFile,       // the next file couldn't be made
};

struct RecorderStatus {
    RecorderState state = RecorderState::kIdle;
    RecorderEnd end = RecorderEnd::kNone;
    std::vector<std::string> files;  // the sequences of this run, whole paths, in order; the last one is being written
    std::int64_t event = 0;          // the one that is waited for or written, from 1
    std::int64_t frames = 0;         // recorded, in all files; of kBoth once
    std::int64_t framesOfEvent = 0;
    double seconds = 0;  // recorded: from the first to the last frame of each event
    std::int64_t marks = 0;
    // Inside the events, as their gap tables have it.
    std::optional<std::int64_t> lostByBoard = 0;  // nullopt: the board doesn't count
    std::int64_t lostByRing = 0;
    std::int64_t lostByTransport = 0;
    // All of them; nullopt where the board doesn't count.
    std::optional<std::int64_t> Lost() const
    {
        return lostByBoard ? std::optional(lostByTransport + *lostByBoard + lostByRing) : std::nullopt;
    }
    std::int64_t bytes = 0;              // written
    std::int64_t preTriggerWaiting = 0;  // frames kept before the trigger
    std::optional<double> mean;          // of the rectangle or region in the newest frame
    CaptureCounts counts;                // of the whole run
    std::size_t ringFrames = 0;          // for which the ring has place
    double ringSeconds = 0;              // the same at the present rate
    double secondsLeft = -1;             // room on the disk at the needed rate; below 0: not known
    std::string verdict;                 // after the end: "6000 frames, none lost, 60.0 s"
    std::string message;                 // after an end that wasn't wished: a sentence for the operator; else empty
    // After the end: 0, all is there; 1, frames were lost, or may have been; 2, it ended early.
    int exitCode = 0;
};

// Live video begins where it doesn't run. False, and nothing runs, with why: a setting is out of range ("A recording of
// n frames needs at least one."), a pre-trigger is longer than the ring ("The ring holds at most 5.2 s (520 frames)
// before the trigger."), the rectangle or region of the trigger isn't in the picture ("There is no region R1."), no
// file can be made in the directory, no camera is on, a recording runs. Where memory is refused, or there is no camera,
// a box has told it too.
bool StartRecorder(const RecorderSettings& settings, std::string& why);
// Ends it: what is in the ring belongs to it. Nothing happens where none runs. To be called before the camera goes off
// and before the program ends.
void StopRecorder();
bool RecorderRuns();  // from StartRecorder to the end, whoever ends it

// The first frame completed from now on is the trigger frame. Only with kButton and kSignal, each by its own; others
// ignore it. While none is armed nothing happens, but one signal that comes then stays until the next arming.
void TriggerRecorder();
void SignalRecorder();
// The first frame completed from now on gets the next mark; its number, from 1. 0 while nothing records.
std::int64_t MarkRecorder();

// "2 by the transport, 1 by the board, 0 by the ring": where the frames went of a board that counts; the transport is
// named where it lost any.
std::string LostPlacesText(const RecorderStatus& status);

RecorderStatus CurrentRecorderStatus();
inline constexpr std::uint32_t kRecorderTimer = 24;  // of the main window
// Gives back board and menu where the run has come to its end by itself. To be called now and then while one runs: the
// main window's timer kRecorderTimer does.
void TendRecorder();

// Before: the most frames that a pre-trigger may have with the present camera and ring, and what is needed.
std::int64_t LongestPreTrigger();
std::int64_t PreTriggerFramesOf(const RecorderSettings& settings);  // of its seconds at the present rate; 0 without one
std::string LongestPreTriggerText();  // "The ring holds at most 5.2 s (520 frames) before the trigger."
double BytesPerSecondNeeded(const RecorderSettings& settings);  // 0 without a frame rate
// Writes for half a second into the directory, each 4 MB with its fdatasync so that no backlog is left to wait for,
// and takes the file away again. Blocks so long. nullopt: nothing can be written there.
std::optional<double> MeasureWriteRate(std::string_view directory);  // bytes a second

// As at start: nothing runs, nothing was recorded.
void ResetRecorder();

}  // namespace kelvo

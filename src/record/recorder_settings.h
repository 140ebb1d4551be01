// What the operator chose for the recorder: a value, kept in recorder.ini of the data directory, a file of its own that
// calibration sets don't carry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

enum class RecordPixels : std::int32_t {
    kRaw,        // NAME.seq: readout order, DataOffset added
    kCorrected,  // NAME_cal.seq: image order, as the live picture shows it
    kBoth,
};
enum class RecordLength : std::int32_t { kUntilStopped, kFrames, kSeconds };
enum class RecordTrigger : std::int32_t {
    kNone,        // an event begins at once
    kButton,      // TriggerRecorder
    kBoardInput,  // a pulse at the board's trigger input
    kMean,        // the mean of a rectangle comes to lie in a window
    kSignal,      // SignalRecorder: the external signal
    kRegion,      // the mean of a region of the view passes a value
};
enum class RegionPass : std::int32_t { kRising, kFalling };

// A run has events, one file each. An event begins with its trigger frame, or without a trigger with the next frame;
// its length counts from that frame on (with a trigger this is the post-trigger).
struct RecorderSettings {
    std::string directory;                              // of the files; it exists
    std::string namePattern = "{date}_{time}_{n:03}";   // without an extension, see EventName
    RecordPixels pixels = RecordPixels::kRaw;           //
    RecordLength length = RecordLength::kUntilStopped;  //
    std::int64_t frames = 1000;                         // of an event, with kFrames; 1 and more
    double seconds = 10;                                // of an event, with kSeconds; above 0
    double intervalSeconds = 0;                         // one frame each so long; 0: every frame
    std::string startTime;                              // "14:30:00", the next such local time; empty: at once
    RecordTrigger trigger = RecordTrigger::kNone;       //
    double preTriggerSeconds = 0;                       // kept in the ring before the trigger, at the present rate;
    std::int64_t preTriggerFrames = 0;                  // where this is above 0, so many frames
    std::int32_t meanLeft = 0;                          // the rectangle, image coordinates, inclusive
    std::int32_t meanTop = 0;                           //
    std::int32_t meanRight = 0;                         //
    std::int32_t meanBottom = 0;                        //
    double meanLow = 0;                                 // the window in counts as the live picture has them, inclusive
    double meanHigh = 0;                                //
    std::string region;                                 // its name (regions/region_list.h), with kRegion
    double regionLevel = 0;                             // the value in counts as the live picture has them
    RegionPass regionPass = RegionPass::kRising;        //
    std::int64_t events = 1;                            // with a trigger it is armed again so often; 0: until stopped
    double splitGigabytes = 0;                          // a new file before one grows beyond 10^9 bytes x this; 0: none
    double splitMinutes = 0;                            // or longer than this; 0: none
    double syncSeconds = 2;                             // what a power cut costs at most; 0.1 to 60
    std::string sampleName;                             // both go into the journal's head
    std::string comment;                                //
    friend bool operator==(const RecorderSettings&, const RecorderSettings&) = default;
};

// What is missing in the file, or makes no sense, is as above.
RecorderSettings ReadRecorderSettings();
void WriteRecorderSettings(const RecorderSettings& settings);
// The ring's size for all that records, kept beside them: 1 to 2047 MB (2^20 bytes), 0 by the memory that is available
// (a quarter, at most 2 GB). The read puts it in force, as does the write (SetRingBytes).
inline constexpr std::int64_t kMostRingMegabytes = 2047;
std::int64_t ReadRingMegabytes();
void WriteRingMegabytes(std::int64_t megabytes);
// As "Key=value" lines, as the file has them: what the journal keeps.
std::string RecorderSettingsText(const RecorderSettings& settings);

// The name of event n (from 1) that begins at a local time: {date} is 20261122, {time} 143000, {sample} the sample's
// name, {n} the event's number, {n:03} the same with three digits.
std::string EventName(std::string_view pattern, std::int64_t n, std::int64_t utcNs, std::string_view sampleName);
// Whether the pattern makes a file's name: not empty, no separator, only the words above in its braces.
bool PatternIsUsable(std::string_view pattern);
// Whether the event's number stands in it: then names differ by that, otherwise by a number put behind.
bool PatternCounts(std::string_view pattern);

// Seconds from a local time of day to the next "HH:MM:SS" or "HH:MM", 0 to 86399; below 0: no time of day.
std::int64_t SecondsUntil(std::string_view timeOfDay, std::int64_t nowUtcSeconds);

}  // namespace kelvo

// Triggered save: one averaged image for each step that something outside makes, typically of a spectrometer's scan, as
// float frames of one file. Here are the triggers and the steps of a run; the dialog (record/triggered_save_dialog.h)
// has its timers and its questions.
//
// A run:  BeginTriggeredRun and NameTriggeredFile; then for each step TriggerHasFired until it has,
// GatherTriggeredFrame, WriteTriggeredFrame; EndTriggeredRun however it ends.
#pragma once

#include <cstdint>
#include <string>

namespace kelvo {

// What fires a step (Type1). Any other number fires at once.
constexpr std::int32_t kTriggerSoftware = 0;   // at once, or on the Enter key
constexpr std::int32_t kTriggerIntensity = 1;  // the mean of a rectangle lies in a window
constexpr std::int32_t kTriggerExternal = 2;   // the board's trigger input
constexpr std::int32_t kTriggerSerial = 3;     // a port's query; there is none, so that it never fires

constexpr std::int32_t kMostTriggers = 9999;
constexpr std::int32_t kMostTriggerFrames = 999;

// Section Trigger of kelvo.ini, with its keys' names and defaults.
struct TriggerSettings {
    std::int32_t CodeTrigger = 0;         // 0: a run starts at once; otherwise on the external signal
    std::int32_t Type1 = 0;               // what fires a step
    std::int32_t NumTriggers = 1;         // steps of a run, 1 to 9999
    std::int32_t TriggerDelay = 0;        // ms between trigger and gathering
    std::int32_t NumFramesToAverage = 1;  // a step, 1 to 999
    std::int32_t VgaOffDuringSave = 1;    // 1: the display is held off during a run, where a control says so
    std::int32_t SoftwareAll = 0;         // 1: the software trigger waits for the Enter key, but at the first step
    std::int32_t Left = 0;                // the rectangle whose mean fires, inclusive, image pixels
    std::int32_t Top = 0;
    std::int32_t Right = 128;
    std::int32_t Bottom = 128;
    std::int32_t IntensityLo1 = 2048;  // the window of that mean, counts, both ends included
    std::int32_t IntensityHi1 = 4095;
};
extern const TriggerSettings& triggerSettings;

void ReadTriggerKeys();
void WriteTriggerKey(const char* key, std::int32_t value);

extern const std::int32_t& AcquisitionRunning;  // 1: a run is under way
extern const std::int32_t& TriggersLeft;        // steps still to come
extern const std::int32_t& TrigFirstPass;       // what the next TestTrigger gets as armed

// 1: the trigger of that type has fired; 0: not yet. It blocks for a frame (intensity) or for at most 50 ms (external).
// armed: of the software trigger, not 0 behind the first step; of the intensity trigger, the mode of the run's gather
// (acquire/averaging.h), from which that of its own frame follows; of the external one, not 0 where the board has to be
// armed first. extra isn't used.
//
// The intensity trigger takes one whole frame and the mean of its rectangle, held to the frame; without a frame it
// hasn't fired, and TriggerTestFailed is true until the next test. Where the board can't be armed the operator reads
// "Unable to start triggered acquisiton", where it can't go back to the grab "Error starting grab after trigger to
// image processing board".
int TestTrigger(std::int32_t type, std::int32_t armed, std::int32_t extra);
bool TriggerTestFailed();

// on 1: the board's trigger input on, and one capture armed; on 0: off, and the grab goes on. 1 where the board took
// it.
int ArmExternalTrigger(std::int32_t on);
// One slice, of at most 50 ms, of a wait for the trigger, so that a dialog lives between two calls. 1: it fired. 0: not
// in this slice; where the slices come to msec the board is armed again, and a new wait begins.
int WaitExternalTrigger(std::int32_t msec);

// ---- A run

enum class RunBegan { kYes, kNoIntegerMemory, kNoFloatMemory };
// The steps as triggerSettings has them, of whole frames of the camera: memory for them is taken, nothing else.
RunBegan BeginTriggeredRun();
void NameTriggeredFile(const std::string& path);  // a whole path
// TestTrigger for the next step, and what follows for the one behind it. With SoftwareAll a key that is held is one
// step: it has to come up first. True: it fired, and TriggersLeft is one less.
bool TriggerHasFired();
// 1; 0 after the gather's own box, or Escape. Blocks while frames come. Live video is begun again where it was frozen.
int GatherTriggeredFrame();
std::int32_t TriggersDone();  // that have fired, from 1 for the first

enum class StepWritten {
    kYes,
    kNotOpened,  // the file can't be made or opened
    kNoHeader,   // of a new file; there is none then
    kCut         // the disk took a part of the frame, which was cut off again
};
// Appends the frame: the first to a new file behind its header, written beside the name and put there whole, the others
// to the file as it stands. The file is closed after each.
StepWritten WriteTriggeredFrame();
// The frames are freed, and what runs on ends: AcquisitionRunning is 0.
void EndTriggeredRun();

// As at start.
void ResetTriggeredSave();

}  // namespace kelvo

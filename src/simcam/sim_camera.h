// The simulated camera: one model behind the head's wire protocol and the board. A camera is known by its file (the
// identity, the crystal, the detector, the scene); whoever opens the same file gets the same camera, and the head keeps
// its registers when its link closes.
//
// While a capture runs, its thread reads frames and the main thread answers for the head and moves the bench: each call
// here on a camera has it to itself. Cameras are opened and forgotten by the main thread while no capture runs.
#pragma once

#include "grabber/copm2.h"
#include "wirehead/head_registers.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

struct SimCamera;

// The camera of a file in DefaultDir (or of a whole path). Null, with what is wrong in error, where the file can't be
// read or makes no camera.
std::shared_ptr<SimCamera> OpenSimCamera(const std::string& file, std::string& error);
// The camera that the board shows, or the one opened last; null: none.
std::shared_ptr<SimCamera> CurrentSimCamera();

// What the head answers to a frame of four bytes: nothing when it is silent, fewer bytes when it answers short. Faults
// (platform/faults.h): "head silent", "head refuses", "head short", "head noise".
std::vector<std::uint8_t> AnswerSimFrame(SimCamera& camera, const WireFrame& frame);

// The frame period that the registers give, in microseconds; 0 while the clocks are off and no blank comes.
double SimFramePeriodUs(const SimCamera& camera);
// The integration time that the registers give, in microseconds; at most the frame period.
double SimIntegrationUs(const SimCamera& camera);
// What a board sees on the camera's video: rows and columns of its window, the converter's bits. The head has no
// reading back: rate and integration time are reckoned from what it was sent.
CameraReport SimReport(const SimCamera& camera);

// Frame number n of the readout: rows x columns of the window in readout order, cut at height x width; what the window
// doesn't cover is 0. A pure function of the registers, the scene in front of the camera at timeUs, the seed and n.
void ReadSimFrame(SimCamera& camera, std::int64_t n, std::int64_t timeUs, std::int32_t width, std::int32_t height,
                  std::span<std::int16_t> out);

// The bench. A source stands in front of the camera until another is chosen. kVolts isn't light: a DC voltage at the
// inputs of the video path, past the detector, the same for each pixel.
enum class SimSource { kLow, kHigh, kScene, kRaw, kVolts };
SimSource SimSourceInFront(const SimCamera& camera);
void PutSimSource(SimCamera& camera, SimSource source);
double SimSourceDegrees(const SimCamera& camera, SimSource source);             // °C; 0 for kVolts
bool SetSimSourceDegrees(SimCamera& camera, SimSource source, double degrees);  // false outside -40 to 150 °C
double SimInputVolts(const SimCamera& camera);
bool SetSimInputVolts(SimCamera& camera, double volts);  // false outside -5 to 5 V
// Raw frames as the scene: 16-bit signed values, as many rows and columns as the file's name or settings tell. Empty,
// or why not.
std::string LoadSimRawFrames(SimCamera& camera, const std::string& path, std::int32_t columns, std::int32_t rows);
// The name of the file that the raw frames came from; empty while none are loaded.
const std::string& SimRawName(const SimCamera& camera);

// What the detector at image column x, row y really is: "gain", "offset", "dark", "noise", "deviation", and 1 under
// what it is of "dead", "weak", "strong", "offset_bad", "hot", "noisy", "blinking"; empty outside the array. The
// deviation, counts rms, is that of its raw counts from frame to frame with the registers and the source that are now
// in force (of a moving one: as in the last frame read): sqrt(shot^2 + read^2 + 1/12), the last for rounding to whole
// counts. Levels of a blinking detector and the converter's ends are left out of it; the test pattern, which has no
// noise, has 0.
std::vector<std::pair<std::string, double>> SimTruth(const SimCamera& camera, int x, int y);

// What the head's registers hold (NamedRegisters).
std::vector<std::pair<std::string, double>> SimHeadRegisters(const SimCamera& camera);

// The registers as a head tells them to a board in another process (simcam/head_socket.h), and the camera with those of
// such a head: false, and as it was, for a text that isn't one. A head that has ended leaves a camera without clocks.
std::string SimRegistersText(const SimCamera& camera);
bool TakeSimRegisters(SimCamera& camera, std::string_view text);
void PowerDownSimHead(SimCamera& camera);

// Makes "sim:FILE" ports known to platform/serial.h, and the board "sim" to grabber/copm2.h.
void RegisterSimulatedHeads();
void RegisterSimulatedBoard();

// The board counts frames first to last of its grabs (from 1) and hasn't got them: they can't be had as the next frame.
// For tests of who records; to be called while no capture runs.
void SkipSimFrames(std::int64_t first, std::int64_t last);

// The simulated board's lines, for the bench; from any thread. Pulses at the trigger input are taken while amdig_trigen
// has it on: a frame that icp_trig_snap armed is the first one complete behind the pulse, and each frame's stamp has
// the number of pulses taken by its blank.
void PulseSimTrigger();
void SetSimTriggerPeriod(
    std::int64_t periodUs);  // one each so long, the first after a whole period; 0, as at start: none
struct SimLines {
    bool triggerOn = false;
    std::int64_t triggers = 0;         // pulses taken since the board came up
    std::int64_t triggerPeriodUs = 0;  // 0: none come by themselves
    std::int32_t syncSource = 0;       // as amdig_exsen chose it
    std::int32_t syncLevel = 0;        // of the sync output: 0 low, 1 high
    std::int64_t syncPulses = 0;       // times that it went from low to high
};
SimLines ReadSimLines();

// The simulated board as it comes up: no camera, no frame, nothing at its lines.
void ResetSimBoard();

// No camera made so far; who holds one keeps it.
void ForgetSimCameras();

}  // namespace kelvo

// A camera as board and head share it: opened when one of them needs it, set to what the head's registers ask, its
// frames in order and kept until they are read, and had back when it is lost. What the operator is to be told gathers
// here until the board is asked for it.
//
// A thread of its own has the stream and, once a camera is lost, tries to have it back: after 0.5, 1, 2 and 4 s, then
// each 5 s, until it is there or Release is called. Then its settings are sent again and compared, and the frames that
// went missing meanwhile are counted by the time that passed. All calls may come from any thread.
#pragma once

#include "genicam/camera_device.h"
#include "grabber/copm2.h"
#include "wirehead/head_registers.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

class SharedCamera {
  public:
    SharedCamera(std::string device, CameraOpener opener);
    ~SharedCamera();
    SharedCamera(const SharedCamera&) = delete;
    SharedCamera& operator=(const SharedCamera&) = delete;

    // A camera that is open with other settings is opened again with these; a grab ends then.
    void SetSettings(const DeviceSettings& settings);

    // What the section that drives the head says and the wire can't: the crystal that its registers divide, the frame
    // with blank rows and columns, multiples of 4, and the frame itself, which the camera is set to when it is opened.
    // The wire has the former in a byte each, at most 1020; where the byte agrees with a larger size, that one holds,
    // otherwise the wire's does and the operator is told.
    struct Section {
        double clockHz = 48e6;
        std::int32_t timingRows = 0;     // 0: the wire's
        std::int32_t timingColumns = 0;  // the same
        std::int32_t rows = 0;           // 0: as the camera stands
        std::int32_t columns = 0;        // the same
    };
    void SetSection(const Section& section);

    // True where the camera is open, or could be opened now; it blocks for that. False where it isn't there, or is lost
    // and being tried again.
    bool Open(std::string& error);
    // Turned off: the stream ends, the camera is given back, nothing is tried again. What was asked of it is forgotten;
    // the frames stand.
    void Release();

    // The head's answer to a frame of the wire. Nothing where no camera is there at all; the refusal while it is lost.
    std::vector<std::uint8_t> Answer(const WireFrame& frame);

    // The stream runs, and frames are counted from 1; triggered: each waits for a trigger. False where the camera
    // refuses. One that is lost begins when it is back.
    enum class Trigger { kNone, kInput, kSoftware };
    bool BeginGrab(Trigger trigger);
    void EndGrab();

    // The number of the newest whole frame since BeginGrab, and of those up to it the ones that never came whole.
    std::int64_t FrameCount();
    std::int64_t LostByTransport();
    // The oldest frame numbered above `after` that is kept, or the newest where `after` is nullopt: width x height
    // values of it at (x, y), and what is known of it. Waits up to limitUs. What lies beyond the frame is 0.
    bool ReadFrame(std::optional<std::int64_t> after, std::int64_t limitUs, std::int32_t x, std::int32_t y,
                   std::int32_t width, std::int32_t height, std::span<std::int16_t> out, FrameStamp& stamp);
    // A frame above `after`, within the limit; false at once while the camera is lost.
    bool WaitForFrame(std::int64_t after, std::int64_t limitUs);

    CameraReport Report();
    std::vector<std::string> TakeNotes();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace kelvo

// A recording, whoever makes it: a burst, a continuous save, the recorder. While one runs every frame is captured
// (grabber/capture.h), the frame account is the capture's, the grab isn't restarted, and commands that need the board
// are grey. The machine stays awake meanwhile, and the desktop tells the end of a long one (platform/long_run.h).
//
// Who only observes needs the capture too: where nothing records it runs for him alone.
#pragma once

#include "grabber/capture.h"

#include <cstddef>
#include <functional>

namespace kelvo {

// Live video runs. Begins with the first frame completed from now on, with a ring of ringFrames (0: as large as the
// setting says) and, where consume is given, a thread that hands it the frames that wait (CaptureOptions). False, and
// nothing changes, after "Unable to allocate memory to store data to disk!" under "Kelvo Warning"; also where one runs.
bool BeginRecording(std::size_t ringFrames = 0, std::function<void()> consume = {});
// Ends it. Where the picture was frozen meanwhile, the grab ends now.
void EndRecording();
bool RecordingRuns();

// Live video runs, and frames of the camera's size are shown to the observer (ObserveFrames) until EndObserving,
// whether something records or not. Where nothing does a capture runs for him; a recording that begins takes its place,
// and has one of its own again when it ends: the frames between the two, if any, show in their numbers. Where there is
// no memory for that one the observing has ended (ObservingRuns); nothing is told. False, and nothing changes, where
// somebody observes already, memory is refused or the board isn't open; nothing is told.
bool BeginObserving(FrameObserver observer);
// What still waits is observed before it returns.
void EndObserving();
bool ObservingRuns();
// A recording or an observer has the capture, and with it the board: the grab isn't restarted, and commands that need
// the board are grey.
bool CaptureIsUsed();
// As at start.
void ResetRecording();

// One that lives as long as its block.
class Recording {
  public:
    explicit Recording(std::size_t ringFrames = 0) : began_(BeginRecording(ringFrames)) {}
    ~Recording()
    {
        if (began_) EndRecording();
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    bool Began() const { return began_; }

  private:
    bool began_;
};

}  // namespace kelvo

// A recording, whoever makes it: a burst, a continuous save, the recorder. While one runs every frame is captured
// (grabber/capture.h), the frame account is the capture's, the grab isn't restarted, and commands that need the board
// are grey.
#pragma once

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

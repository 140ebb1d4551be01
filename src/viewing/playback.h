// The viewer's own commands: opening any stored file, playing a file's frames, going to a frame, copying the picture.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kelvo {

constexpr unsigned kPlayTimer = 20;  // of the main window

// Opens a file dropped, named on the command line, or chosen from the recent ones: its first frame; a file of several
// frames becomes the sequence on view, a single image doesn't. Of a file of another program its copy comes on view
// (viewing/foreign_view.h), and the file itself joins the recent ones. 1 if it is on view.
int OpenStoredFile(std::string_view path);

// How fast a file is played. A recorded sequence against its frames' true times: each is shown when its time comes, and
// where reading or drawing is late, frames are skipped. Any other file, and a frame of a recording that has no time,
// against its header's frame rate (10 Hz where it has none), each frame in turn.
struct PlaySpeed {
    double factor;
    std::string_view text;
};
constexpr std::array<PlaySpeed, 5> kPlaySpeeds{{{0.25, "1/4"}, {0.5, "1/2"}, {1, "1"}, {2, "2"}, {4, "4"}}};
constexpr int kNormalSpeed = 2;  // index into kPlaySpeeds

struct PlayState {
    bool playing = false;
    int speed = kNormalSpeed;
    bool backwards = false;
    bool loop = true;  // around and around; otherwise playing stops at the last frame, backwards at the first
    friend bool operator==(const PlayState&, const PlayState&) = default;
};
PlayState PlayStateNow();

// Plays the file on view from the frame on view on; where playing ended, from its beginning. Without a file of several
// frames it says so. At the end of a file that is being recorded it waits for more.
void StartPlaying();
void StopPlaying();
void PlayOrStop();  // Space: nothing happens without a file of several frames
bool Playing();
void PlayNextFrame();  // at kPlayTimer

// Also while it plays. An index outside the table changes nothing; faster and slower end at the table's ends.
void SetPlaySpeed(int speed);
void PlayFaster();
void PlaySlower();
void SetPlayBackwards(bool backwards);
void TogglePlayBackwards();
void SetPlayLoop(bool loop);
void TogglePlayLoop();

// The frames of the file on view that can be gone through, 0 where it holds but one; which of them is on view, from 0;
// and another one of them onto the view.
std::uint32_t FramesToPlay();
std::uint32_t FrameOnView();
void ShowFrame(std::uint32_t frame);

void GoToFrameDialog();
// What is on view, pixel for pixel without zoom, to the clipboard. Without a picture it says so.
void CopyPicture();

// Nothing is chosen about playing.
void ResetPlayback();

}  // namespace kelvo

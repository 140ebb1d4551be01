// Replay of the stored frames (HostFrames) on the main window's timer 5. It is the frozen picture that moves: live
// video is frozen meanwhile, and whatever asks for the picture gets the replayed frame (ReplayedFrame). It goes on
// behind and without the dialog that started it, and ends by itself where live video resumes, a file comes on view, or
// the frames are dropped.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kelvo {

// Results of StartReplay below 0.
inline constexpr int kReplayNoStore = -7;
inline constexpr int kReplayNoFrames = -15;  // fewer than one, or more than the store has

// The dialog's list of rates.
struct ReplayRate {
    std::string_view text;
    double hz;
};
inline constexpr std::array<ReplayRate, 11> kReplayRates = {{{"50", 50},
                                                             {"24", 24},
                                                             {"20", 20},
                                                             {"15", 15},
                                                             {"10", 10},
                                                             {"5", 5},
                                                             {"2", 2},
                                                             {"1", 1},
                                                             {"0.5", 0.5},
                                                             {"0.2", 0.2},
                                                             {"0.1", 0.1}}};
// ReplayRateIndex becomes row, and ReplayPeriodMs 1000 / its rate, truncated. Nothing changes where there is no such
// row.
void SetReplayRate(std::int32_t row);

// Freezes live video, leaves a stored file that is on view, and begins with frame ReplayCurrent at once. 1, or a code
// above, with nothing changed.
int StartReplay(std::int32_t frames);
// stay 0: replay is off, and live video resumes where the camera is on. stay 1: it pauses.
void StopReplay(std::int32_t stay);
// Goes on from a pause.
void ResumeReplay();
// Paused: that frame comes on view (held to the frames that are stored).
void ShowReplayFrame(std::int32_t frame);

// The main window's timer 5: the next frame comes on view. The dialog, where it is open, shows the number four times a
// second.
void OnReplayTimer();

// Of the dialog BUFFER, which replay writes into.
inline constexpr int kReplayFrame = 1016;
inline constexpr int kReplayBar = 1011;

}  // namespace kelvo

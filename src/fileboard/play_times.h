// When the frames of a recording come again, and under which number: its own times and the gaps of its journal, or a
// given rate. Pure: times are microseconds since the playing began, numbers count from 1.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

// One frame of a recording: the camera's number and the time, both from the first frame on, which has 0.
struct PlayedFrame {
    std::int64_t number = 0;
    std::int64_t us = 0;
    friend bool operator==(const PlayedFrame&, const PlayedFrame&) = default;
};

struct PlayTimes {
    std::vector<PlayedFrame> frames;  // in order; both values grow
    std::int64_t periodUs = 1;        // from the last frame to the first one of the next round, and before the first
    bool loops = true;                // after the last frame the first one follows; otherwise none
    double rateHz = 0;                // of frames none of which is missing
    bool rateIsKnown = true;          // false: nothing tells one, and it is kRateOfUnknownHz
};

// Frames in the order in which they come, from 0 and through all rounds: `which` of a round, and its number and time.
struct PlayMoment {
    std::int64_t which = 0;
    std::int64_t number = 0;
    std::int64_t us = 0;
    friend bool operator==(const PlayMoment&, const PlayMoment&) = default;
};

// The last frame that is complete at us; nullopt: none is yet.
std::optional<PlayMoment> LastPlayed(const PlayTimes& times, std::int64_t us);
// The first frame with a number above `after` (0: the first of all); nullopt: the recording ends before.
std::optional<PlayMoment> NextPlayed(const PlayTimes& times, std::int64_t after);

// What is known of a recorded frame before it is played.
struct RecordedTime {
    std::int64_t missing = 0;      // frames lost between the one before and this one
    std::int64_t monotonicNs = 0;  // of the recording's clock; 0: not known
    bool beginsAnew = false;       // the frame before it belongs to another run: the two clocks have nothing in common
};
// rateHz: of the playing, 0: at the recorded times. Where these aren't all known, or don't grow, frames and gaps come
// at recordedHz; 0: that isn't known either, and it is found between the known times, or else kRateOfUnknownHz.
constexpr double kRateOfUnknownHz = 50;
PlayTimes TimesOf(const std::vector<RecordedTime>& recorded, double rateHz, double recordedHz, bool loops);

}  // namespace kelvo

// A board whose frames are copies out of memory: what is left is the way behind it.
#pragma once

#include "grabber/copm2.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace bench {

constexpr int kWidth = 640;
constexpr int kHeight = 512;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

// Microseconds of processor time that this thread has taken.
double ThreadUs();

// Settings of the bench's own in that directory, the camera and the head of 640 x 512 at 100 Hz, live video, and the
// board open. False where it can't be opened.
bool OpenMemoryBoard(const std::string& directory);

// From here on so many frames, then none.
// kPaced: one each kPeriodUs; in the middle between two of them the thread that asks makes a plain copy of one.
// kAtOnce: as soon as they are asked for, but while kMostWaiting are in the ring none: no frame is lost.
enum class Pace { kPaced, kAtOnce };
constexpr std::int64_t kPeriodUs = 2000;
constexpr std::int64_t kMostWaiting = 8;
void GiveFrames(std::int64_t frames, Pace pace);

// What the thread that asks has spent on each frame that was paced: microseconds of processor time.
struct BoardWork {
    std::vector<double> frame;  // from the board's own copy until it asks for the next one
    std::vector<double> copy;
};
// To be called while nobody asks the board.
const BoardWork& WorkOfBoard();

std::span<const std::int16_t> FrameOfBoard();

}  // namespace bench

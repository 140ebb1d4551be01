// A board that always comes up and writes down what it is asked to do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// Makes the board known as "recorded". Its grab leaves the display off, so that no frame is asked for.
void RegisterRecordedBoard();

// "init", "grab" and "freeze" since the last call, in order.
std::vector<std::string> TakeBoardCalls();

// The result of the configuration's loading from here on; 0 is success.
void SetBoardConfigurationResult(int result);

// From here on each frame holds this count throughout; without one the board times out.
void SetBoardCounts(std::optional<std::int16_t> counts);
// From here on the frames are these, over and over, each a whole readout.
void SetBoardFrames(std::vector<std::vector<std::int16_t>> frames);

}  // namespace kelvo

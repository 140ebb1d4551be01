// The simulated head's registers: what the frames of four bytes set, and what the pixel clock, the frame size, the
// integration counters, the focal plane's serial word, the gain and the DACs mean for the video.
#pragma once

#include "simcam/sim_settings.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace kelvo {

// The focal plane's window in detectors, all limits inclusive; rows or columns may be none (end below start).
struct SimWindow {
    std::int32_t colStart = 0;
    std::int32_t colEnd = 0;
    std::int32_t rowStart = 0;
    std::int32_t rowEnd = 0;
    std::int32_t Columns() const { return colEnd < colStart ? 0 : colEnd + 1 - colStart; }
    std::int32_t Rows() const { return rowEnd < rowStart ? 0 : rowEnd + 1 - rowStart; }
    friend bool operator==(const SimWindow&, const SimWindow&) = default;
};

// As the head stands after power-up: clocks and biases off, no frame size, the whole array as window, gain 0, offset
// DACs at mid-scale. It keeps what it was sent for as long as the program runs.
struct SimHead {
    SimModel model = SimModel::kInSb;
    double clockHz = 0;
    SimWindow array;  // the whole array

    std::uint8_t clockIndex = 63;       // m: pixel clock = clock / (2m + 2)
    std::uint8_t timingRows = 0;        // in units of 4 lines
    std::uint8_t timingCols = 0;        // in units of 4 pixels
    std::uint8_t integrationLines = 0;  // lines + 2
    std::uint8_t integrationCols = 0;   // in units of 4 pixels
    bool clocksOn = false;
    bool biasesOn = false;
    std::uint8_t gainCode = 0;
    std::array<std::uint8_t, 8> dac{128, 128, 128, 128, 128, 128, 128, 128};

    SimWindow window;
    std::uint8_t detBias = 15;
    std::uint8_t pedBias = 3;
    std::uint8_t colGain = 4;
    bool testMode = false;
    bool flipCols = false;
    bool flipRows = false;

    // Operands by register and selector, of every frame that was heard.
    std::map<std::uint16_t, std::array<std::uint8_t, 2>> kept;
};

SimHead PowerUpHead(const SimSettings& settings);

// Takes one frame into the registers. A frame that means nothing to this head is only kept.
void TakeHeadFrame(SimHead& head, const std::array<std::uint8_t, 4>& frame);

// The head's own answer: the identity where it is asked for, the frame itself otherwise.
std::array<std::uint8_t, 4> HeadAnswer(const SimHead& head, const std::array<std::uint8_t, 4>& frame);

// All that the head was set to, a line each: a name and a number; and what it keeps of its frames. The second takes
// such a text; false, and the head as it was, where it isn't one. Model, clock and array are the camera's own and stay.
std::string HeadRegistersText(const SimHead& head);
bool TakeHeadRegistersText(SimHead& head, std::string_view text);

double PixelClockHz(const SimHead& head);
// 0 while no blank comes: the InSb head's clocks are off, or it was sent no frame size.
double FramePeriodSeconds(const SimHead& head);
// At most the frame period.
double IntegrationSeconds(const SimHead& head);

// Row of the table of volts a count: the operator's index 1 to 14 reaches the head as a code of its own order.
std::int32_t GainIndexOfCode(std::uint8_t code);

}  // namespace kelvo

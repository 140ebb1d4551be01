// The registers of a head at the other end of the wire: what the frames of four bytes set, and what the pixel clock,
// the frame size, the integration counters, the focal plane's serial word, the gain and the DACs mean for the video.
// Heads inside the program are made of it, whatever camera they stand for.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

enum class HeadModel { kInSb, kHgCdTe };

// What goes over the wire: register, selector and two operands, or an answer.
using WireFrame = std::array<std::uint8_t, 4>;

// The focal plane's window in detectors, all limits inclusive; rows or columns may be none (end below start).
struct FocalPlaneWindow {
    std::int32_t colStart = 0;
    std::int32_t colEnd = 0;
    std::int32_t rowStart = 0;
    std::int32_t rowEnd = 0;
    std::int32_t Columns() const { return colEnd < colStart ? 0 : colEnd + 1 - colStart; }
    std::int32_t Rows() const { return rowEnd < rowStart ? 0 : rowEnd + 1 - rowStart; }
    friend bool operator==(const FocalPlaneWindow&, const FocalPlaneWindow&) = default;
};

// As the head stands after power-up: clocks and biases off, no frame size, the whole array as window, gain 0, offset
// DACs at mid-scale. It keeps what it was sent for as long as the program runs.
struct HeadRegisters {
    HeadModel model = HeadModel::kInSb;
    double clockHz = 0;
    FocalPlaneWindow array;  // the whole array

    std::uint8_t clockIndex = 63;  // m: pixel clock = clock / (2m + 2)
    std::uint8_t timingRows = 0;   // in units of 4 lines
    std::uint8_t timingCols = 0;   // in units of 4 pixels
    // Of the frame what such a byte can't say, multiples of 1024 lines and pixels: for who knows them otherwise.
    std::int32_t rowsBeyondByte = 0;
    std::int32_t colsBeyondByte = 0;
    std::uint8_t integrationLines = 0;  // lines + 2
    std::uint8_t integrationCols = 0;   // in units of 4 pixels
    bool clocksOn = false;
    bool biasesOn = false;
    std::uint8_t gainCode = 0;
    std::array<std::uint8_t, 8> dac{128, 128, 128, 128, 128, 128, 128, 128};

    FocalPlaneWindow window;
    std::uint8_t detBias = 15;
    std::uint8_t pedBias = 3;
    std::uint8_t colGain = 4;
    bool testMode = false;
    bool flipCols = false;
    bool flipRows = false;

    // Operands by register and selector, of every frame that was heard.
    std::map<std::uint16_t, std::array<std::uint8_t, 2>> kept;
};

// clockHz: of the master clock; columns x rows: of the whole array.
HeadRegisters PowerUpHead(HeadModel model, double clockHz, std::int32_t columns, std::int32_t rows);

// Takes one frame into the registers. A frame that means nothing to this head is only kept.
void TakeHeadFrame(HeadRegisters& head, const WireFrame& frame);

// The head's own answer: the identity where it is asked for, the frame itself otherwise.
WireFrame HeadAnswer(const HeadRegisters& head, const WireFrame& frame);

// All that the head was set to, a line each: a name and a number; and what it keeps of its frames. The second takes
// such a text; false, and the head as it was, where it isn't one. Model, clock and array are the camera's own and stay.
std::string HeadRegistersText(const HeadRegisters& head);
bool TakeHeadRegistersText(HeadRegisters& head, std::string_view text);

// The same for scripts: "clock", "rows" and "columns" of a frame (pixels), "integration_rows", "integration_columns"
// (units as sent), "delays" (as sent), "gain" (the code), "offset" (DAC 0), "left", "top", "right", "bottom" of the
// window (detectors, inclusive), "detector_bias", "pedestal_bias", "column_gain", "test_mode", "flip_columns",
// "flip_rows", "clocks_on", "biases_on".
std::vector<std::pair<std::string, double>> NamedRegisters(const HeadRegisters& head);

// The frame that the registers ask for, blank lines and pixels included; 0: none was sent.
std::int32_t RowsOfTiming(const HeadRegisters& head);
std::int32_t ColumnsOfTiming(const HeadRegisters& head);

double PixelClockHz(const HeadRegisters& head);
// 0 while no blank comes: the InSb head's clocks are off, or it was sent no frame size.
double FramePeriodSeconds(const HeadRegisters& head);
// At most the frame period.
double IntegrationSeconds(const HeadRegisters& head);

// Row of the table of volts a count: the operator's index 1 to 14 reaches the head as a code of its own order.
std::int32_t GainIndexOfCode(std::uint8_t code);

}  // namespace kelvo

// The dialogs that wait until a source stands before the camera, CAL_COLD and CAL_HOT. While one is open it shows, four
// times a second, what the raw live picture tells of that source (acquire/picture_figures.h).
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>

namespace kelvo {

// Texts and a button of both.
constexpr int kSourceMean = 20401;       // "8123.4 counts"; "-" without live video, as the next three
constexpr int kSourceDeviation = 20402;  // "96.0 counts"
constexpr int kSourceSaturated = 20403;  // "0.12 %"
constexpr int kSourceSteady = 20404;
constexpr int kSourceBench = 20405;  // "Simulated bench..."

// The bench of the simulated camera, which stands above the calibrations: the shell sets it. While it is there the
// dialogs have a button that opens it; one that isn't set has none.
struct SourceBench {
    bool (*isThere)() = nullptr;
    void (*open)(HWND owner) = nullptr;
};
void SetSourceBench(const SourceBench& bench);

// The source dialogs; title of the run. 1 on Ok, with TemperatureCold or TemperatureHot (state/cal_state.h; -999.0 for
// an empty field) and the emissivity of CalSettings taken over, once both fields are right. 0 on Cancel, whatever was
// tried before: both are as they were.
int ColdSourceDialog(HWND window, const std::string& title);
int HotSourceDialog(HWND window);
LRESULT fnCALCOLDDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
LRESULT fnCALHOTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo

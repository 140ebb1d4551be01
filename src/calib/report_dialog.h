// The dialog that shows a calibration's report: the text, and the map of bad detectors. The wheel and the buttons
// beside the map zoom it by whole factors, a click brings a place into the middle, and the line below names the
// detector under the pointer, its class, and who answers for it.
#pragma once

#include "calib/calibration_report.h"
#include "platform/types.h"
#include "ui/command_end.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

constexpr int kReportText = 1001;
constexpr int kReportMap = 1002;
constexpr int kReportLegend = 1003;
constexpr int kReportDetector = 20421;  // "Column 12, row 34: Noisy. Column 13, row 34 answers for it."
constexpr int kReportNearer = 20422;
constexpr int kReportFarther = 20423;

// Shows the classic result box with one more button, which opens the report. Blocks.
void ShowResult(HWND window, const std::string& text, std::string_view caption, const CalibrationReport& report);

// Command 2070: the report that the set in force carries, and whether it tells of the lists as they are. A box tells
// where no calibration is in force, or where its set has no report.
CommandEnd OpenCalibrationReport();

LRESULT fnCALREPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

}  // namespace kelvo

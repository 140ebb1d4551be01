// The bench: a small window in which the operator puts a source in front of the simulated camera. It stays usable while
// a dialog is open.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

HWND BenchWindow();  // null while it isn't open

// True while a simulated camera is connected.
bool SimBenchIsThere();
// Opens the window in the lower right corner of the owner, or brings it to the front; tells in a box where there is no
// simulated camera.
void OpenBenchWindow(HWND owner);
void CloseBenchWindow();
LRESULT fnBENCHDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// sim.source: "low", "high", "scene" or "raw", at a temperature in °C if one is given, or "volts", a voltage at the
// inputs, in volts; empty, or why it can't be.
std::string PutBenchSource(std::string_view source, std::optional<double> value);
// sim.truth: what the detector at image column x, row y really is; empty outside the array and without a simulated
// camera.
std::vector<std::pair<std::string, double>> BenchTruth(int x, int y);
// sim.head: what the head's registers hold; empty without a simulated camera.
std::vector<std::pair<std::string, double>> BenchHeadRegisters();

// sim.trigger: one pulse at the board's trigger input, or with a period one each so many ms from now on, 0 to 60000 (0:
// none); empty, or why it can't be.
std::string PulseBenchTrigger(std::optional<double> periodMs);
// sim.lines: "trigger_on" (the input is taken), "triggers" (pulses taken), "trigger_period" (ms; 0: none),
// "sync_source", "sync" (1: the output is high), "sync_pulses" (times that it went high); empty without a simulated
// camera.
std::vector<std::pair<std::string, double>> BenchLines();

// The window is gone.
void ResetBenchWindow();

}  // namespace kelvo

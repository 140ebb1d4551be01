// The bench of the camera that is connected: each kind of camera inside the program has its own, and none knows of the
// others. What the operator and scripts do to "the bench" goes to the one of the board that platform.ini names.
#pragma once

#include "platform/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

bool BenchIsThere();
// Opens its window; tells in a box where no camera that is connected has one.
void OpenBench(HWND owner);
void CloseBenches();

// The calls of scripts. Texts are empty, or why it can't be; lists are empty where the camera doesn't know.
std::string PutSource(std::string_view source, std::optional<double> value);  // sim.source
std::vector<std::pair<std::string, double>> TruthOf(int x, int y);            // sim.truth
std::vector<std::pair<std::string, double>> RegistersOfHead();                // sim.head
std::string PulseTrigger(std::optional<double> periodMs);                     // sim.trigger
std::vector<std::pair<std::string, double>> LinesOfBoard();                   // sim.lines

}  // namespace kelvo

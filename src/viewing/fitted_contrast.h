// Contrast fitted to what is on view: once, or four times a second for as long as the operator lets it. Bad detectors
// don't count.
#pragma once

#include <cstdint>
#include <vector>

namespace kelvo {

// Contrast and brightness from the frame on view; where the file's range doesn't allow it, it says why.
void FitContrastOnView();

// Marks (non-zero) for the pixels of the frame on view whose detectors are bad (pixel/bad_marks.h): those of the list
// in force, and of the camera's own frames those without a gain. Empty where the frame isn't of the camera's size.
std::vector<std::uint8_t> BadPixelsOnView();

constexpr std::uint32_t kFitTimer = 22;  // of the main window

// "Keep fitted": the pair follows the picture and is nobody's choice, so that the settings keep theirs
// (OwnFitInForce). A change by hand ends it. On or off is kept in window.ini.
void OpenKeepFitted();  // at start
bool KeepsFitted();
void SetKeepFitted(bool on);
void ToggleKeepFitted();
void OnFitTimer();
// Off where the operator has changed the pair since it was found, as the timer would find in a moment.
void EndTakenOverFit();

constexpr const char* kKeepFittedKey = "KeepFitted";  // of window.ini's section View

// Off.
void ResetKeepFitted();

}  // namespace kelvo

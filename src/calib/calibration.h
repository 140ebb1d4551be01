// The calibration set on disk and its dialogs.
#pragma once

#include "platform/types.h"

#include <string>

namespace kelvo {

// Reads the records of the set, CalSettings (and CalSettings2 with DualCamera), from section Calibration of kelvo.ini;
// finishes or undoes a set "Last" that a broken run left half replaced. CalType 0, CalDone 0.
void LoadCalibrationSettings();

// Asks for a set's .cal file: of the active camera, to open; to save the calibration in force as. 1 and the whole path
// in FilePathBuf; 0 where the operator cancels.
int ChooseCalibrationToOpen(HWND window);
int ChooseCalibrationToSave(HWND window);

// 1; 0 after a box that names what is wrong with the set.
int LoadCalibration(HWND window, const std::string& calPath);
// The set under another name: whole, or not there. 1 or 0.
int SaveCalibrationAs(const std::string& calPath);

// 1 when a run should start. Without a camera that is on: a box, and 0.
int RunCalibrationDialog(HWND window);
// The source dialogs; title of the run. 1 on Ok.
int ColdSourceDialog(HWND window, const std::string& title);
int HotSourceDialog(HWND window);

}  // namespace kelvo

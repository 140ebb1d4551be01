// The calibration set: read with the settings at start-up, put in force, saved under another name.
//
// A set is up to seven files of one name: .gai, .off, .noi (readout order), .dcm (image order), .bad, .report.txt and
// .cal, which is kelvo.ini as it stood when the set was made. The lists have no header: a set is only good for the
// camera that made it, and the .cal tells which one. Loading makes the .cal the new kelvo.ini.
#pragma once

#include "calib/set_reader.h"
#include "platform/types.h"

#include <cstdint>
#include <string>

namespace kelvo {

// Reads the records of the set, CalSettings (and CalSettings2 with DualCamera), from section Calibration of kelvo.ini;
// finishes or undoes a set that a broken run left half replaced (calib/last_set.h). CalType 0, CalDone 0.
void LoadCalibrationSettings();

// Makes a set the one in force: settings, video settings (sent to the head), tables, orientation, bad pixels; live
// video starts again. 1; 0 after a box that names what is wrong with the set, and all is as it was: record, tables,
// settings files, head. A .dcm that couldn't be read, or names pixels outside the frame, is told, and the table is
// built anew. A head on an external clock: the operator is asked for its rate before anything is sent; 0 where he gives
// none.
int PutInForce(HWND window, const CalibrationSet& set);

// Reads the set of a .cal file and puts it in force; result and boxes are those of PutInForce.
int LoadCalibration(HWND window, const std::string& calPath);

// The set in force under another name, which ends in .cal: whole, or not there. One whose files couldn't be written by
// its run is written from memory, under its own name too. A set that stood under that name comes back on a failure. 1,
// also where it has that name already; 0 where there is no calibration (told in a box), for another ending, or where a
// file couldn't be copied (neither is told here).
int SaveCalibrationAs(const std::string& calPath);

// The highest count of the converter at the camera's unity setting, |UnityGain (2 UnityOffset - 1) / 16384| without its
// fraction: the display's range once a calibration is in force. Within 32 bits.
std::int32_t FullScaleCounts();

// Live video shows that range: DisplayLow, DisplayHigh, and the volts that belong to them.
void ShowFullScale();

}  // namespace kelvo

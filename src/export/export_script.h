// Exports as operator scripts have them: a table of settings, what was written by names.
#pragma once

#include "script/script.h"

#include <string>

namespace kelvo {

// export{...}: out (the new file); of ("view", which is also meant where nothing is given, "file" with file, or "host
// frames"); to ("tiff", "fits", "hdf5", "npy", "csv", "png", "mp4"; otherwise by out's extension); as ("counts",
// "corrected", "volts", "celsius", "kelvin", "fahrenheit"); first (from 0) and count of frames; set (a .cal) or
// in_force (true) for raw frames of a file; rectangle {left, top, right, bottom}; replace (true: out may stand). Of
// pictures, which have the contrast, brightness and colors on view: scale, time (true: shown beside them), regions
// (true: those of the view, or the path of a file of regions). Escape finishes the frame and closes the file. Empty, or
// why it can't be: nothing is written then.
std::string ExportByScript(const ScriptFields& table);

// Of the last one that was written: file, of a picture a frame last_file too, format, form, unit, frames, columns,
// rows, bad_detectors (nil where they aren't known), stopped.
ScriptFields LastExportFields();

void ResetExportScript();

}  // namespace kelvo

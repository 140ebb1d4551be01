// Exports as operator scripts have them: a table of settings, what was written by names.
#pragma once

#include "script/script.h"

#include <string>

namespace kelvo {

// export{...}: out (the new file); of ("view", which is also meant where nothing is given, "file" with file, or "host
// frames"); to ("tiff", "fits", "hdf5", "npy", "csv", "png", "mp4"; otherwise by out's extension); as ("counts",
// "corrected", "volts", "celsius", "kelvin", "fahrenheit"); first (from 0) and count of frames; set (a .cal) or
// in_force (true) for raw frames of a file; rectangle {left, top, right, bottom}, or region, a name of the view's
// regions or with regions, a file of regions, of those; regions alone (true: the view's) is each of them, in a file of
// its own; replace (true: out may stand). Of pictures, which have the contrast, brightness and colors on view: scale,
// time (true: shown beside them), draw_regions (true: those of the view, or the path of a file of regions). Escape
// finishes the frame and closes the file. Empty, or why it can't be: nothing is written then.
std::string ExportByScript(const ScriptFields& table);

// Of the last one that was written: file (the first of files), files, format, form, unit, frames, columns, rows,
// bad_detectors (nil where they aren't known), stopped.
ScriptFields LastExportFields();

void ResetExportScript();

}  // namespace kelvo

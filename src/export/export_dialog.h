// File > Export...: the dialog EXPORT asks what goes where, and writes it (export/export_job.h).
#pragma once

#include "platform/types.h"
#include "ui/command_end.h"

#include <cstdint>

namespace kelvo {

constexpr int kExportWhat =
    22001;  // the picture on view, the frames of the file on view, host frames; as far as there are
constexpr int kExportFirst = 22002;  // frames from 0, both included; grey for the picture on view
constexpr int kExportLast = 22003;
constexpr int kExportForm = 22004;    // in the order of ExportForm
constexpr int kExportFormat = 22005;  // in the order of ExportFormats()
constexpr int kExportName = 22006;
constexpr int kExportPart = 22007;   // the whole picture, each region of the view, and of several all of them
constexpr int kExportScale = 22010;  // ticks of what a picture shows beside its pixels; grey for formats of values
constexpr int kExportTime = 22011;
constexpr int kExportRegions = 22012;

// The command. Without a file on view, camera and host frames there is nothing to export, which the status line tells.
//
// The dialog offers the file on view, or else the picture; form, format and ticks of the export before in this run; the
// name of the source with the format's ending in the directory last saved to. A name without an ending gets the
// format's; one with the ending of a format chooses that, and changes with the format. The lists in force correct raw
// frames of a file where the form asks for it. Of a region the rectangle around it is written; all of them go to a file
// each, NAME with the region's name behind it (PathsOfRegions). A file that stands is asked about ("%s already
// exists.\nDo you want to replace it?"), several in one question. What can't be is told in a box, and the dialog stays:
// frames that aren't there, ExportSource's and the writer's reasons. What stood under the name stays then.
//
// While frames are written the status line shows how far it is; Esc stops, the file has the frames up to there, and the
// line says so. At the end the line tells what was written. kLeaveStatus then, and where there is nothing to export.
CommandEnd ExportFrames();

LRESULT fnEXPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);

// No export was made.
void ResetExportDialog();

}  // namespace kelvo

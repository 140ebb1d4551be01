// "kelvo export IN OUT": frames of a file for other programs, without a window.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// The arguments behind the word. 0; 1 where it was stopped (Ctrl+C) and OUT has the frames up to there, or where it was
// stopped before the first one; 2 with the reason on the error stream, where the progress is shown too. With --json the
// standard output gets one object: "file", "format", "form", "unit", "frames", "stopped".
int ExportCommand(std::span<const std::string> arguments);

inline constexpr std::string_view kExportDetails =
    "  --to FORMAT            tiff, fits, hdf5, npy or csv (one frame); otherwise by OUT's extension\n"
    "  --as FORM              counts (as they are stored), corrected, volts, celsius, kelvin, fahrenheit\n"
    "  --frames A:B           frames A to B - 1 alone, counted from 0; A: to the end, :B from the first\n"
    "  --set X.cal            corrects raw frames with that set; its lists lie beside it\n"
    "  --volts LOW:HIGH       what the two ends of the file's display range are in volts\n"
    "  --rectangle L,T,R,B    columns L to R and rows T to B alone, counted from 0\n"
    "  --force                OUT may stand and is replaced\n"
    "  --json                 tell on the standard output what was made\n"
    "The progress stands on the error stream; Ctrl+C finishes the frame and closes the file.\n";
inline constexpr std::string_view kExportEnding =
    "Ends with 0 where it is done, with 1 where it was stopped, with 2 where it couldn't be: the error stream tells\n"
    "why, and what stood under the name of the result stands.\n";

}  // namespace kelvo

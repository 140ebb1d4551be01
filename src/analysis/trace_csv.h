// Traces and their spectra as text for other programs: comma-separated values in the C locale, '#' lines with where
// they come from before a line of column names. Texts are Latin-1 inside; a file is UTF-8 (ToUtf8).
#pragma once

#include "regions/spectrum.h"
#include "regions/trace.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// A '#' line for the program, each entry of the origin, unit, frames and each gap; then a row a frame:
//     frame,number,seconds,utc,missing,R1 mean,R1 deviation,R1 minimum,R1 maximum,...
// frame from 1; number by the board; seconds since the first frame, and UTC as ISO 8601, both to the nanosecond, empty
// where they aren't known; missing: frames between the one before and this one; the figures in units[unit] of the
// trace, a mean and a deviation with the digits that give the same double, minimum and maximum the same single.
std::string TraceCsv(const Trace& trace, std::size_t unit = 0);

// The amplitude spectrum of each line's mean in that unit: a '#' line for the frames that it is of and the window; then
// a row a line:
//     hertz,R1 amplitude,...
// "cycles per frame" in place of hertz where no time is known. No row where no run is long enough.
std::string SpectrumCsv(const Trace& trace, std::size_t unit = 0);
// A field that holds a comma, a quotation mark or a line's end in quotation marks, as RFC 4180 has it.
std::string CsvField(std::string_view text);

// The means of a line, frame by frame.
std::vector<double> MeansOf(const TraceLine& line, const TraceScale& scale);
// ", 3 bad ones left out", behind a number of pixels; empty: none is.
std::string LeftOutText(const TraceLine& line);
// "101 to 300 of 500 frames": those that a spectrum is of, from 1.
std::string FramesOfSpectrum(const Spectrum& spectrum, std::size_t frames);

}  // namespace kelvo

// What travels with exported values: where they come from, what made them, what they mean, and when each frame was
// taken. A plain value that every writer puts into its format in that format's own way.
#pragma once

#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "platform/json_text.h"
#include "regions/region.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class ExportForm {
    kCounts,     // 16 bits, as they are stored or shown
    kCorrected,  // 16 bits, corrected by a calibration
    kVolts,      // 32-bit floats, as the others that follow
    kCelsius,
    kKelvin,
    kFahrenheit
};
bool IsFloatForm(ExportForm form);
std::string_view WordOf(ExportForm form);  // "counts", "corrected", "volts", "celsius", "kelvin", "fahrenheit"
std::optional<ExportForm> ExportFormOf(std::string_view word);

// Where a frame stands in time.
struct FrameTiming {
    std::int64_t index = 0;           // in its source, from 0
    std::int64_t number = -1;         // by the board, from 1; -1: it doesn't count, or isn't known
    std::optional<double> seconds{};  // since the first frame of the source; nullopt: not known
    std::int64_t utcNs = 0;           // when the frame was complete, since 1 January 1970; 0: not known
    float integrationMs = 0;          // 0: not known
    std::uint32_t lostByBoard = 0;    // frames between the one before and this one (imagefile/frames_file.h)
    std::uint32_t lostByRing = 0;
    std::uint32_t passedOver = 0;
    std::uint32_t lostByTransport = 0;
    // The start of exposure: when the frame was complete, less its integration time. nullopt where either isn't known.
    std::optional<std::int64_t> StartUtcNs() const;
};

// A count and the value that it stands for.
struct ScalePoint {
    std::int32_t count = 0;
    float value = 0;
};

struct Provenance {
    std::string program;     // that exported: "Kelvo 1.2.3"
    std::string recordedBy;  // that recorded; empty: not known
    std::string source;      // the whole path of the file, or "frame on view", "host frames"
    std::string camera;      // its description; empty: not known
    std::string pixels;      // "raw" (readout order), "corrected"; empty: not known
    std::string set;         // the .cal that corrected them; empty: none, or not known
    std::string setSha256;   // of that file
    std::string difference;  // what the camera's picture is shown less of; empty: the picture itself
    std::string sample;      // the recording's own words
    std::string comment;
    ExportForm form = ExportForm::kCounts;
    std::string quantity;  // "Signal", "Temperature"
    std::string unit;      // "Counts", "V", "°C", "K", "°F"; Latin-1
    // Two points of the line from counts to values; none for counts.
    std::optional<std::array<ScalePoint, 2>> scale;
    std::optional<Region> region;  // that is exported; nullopt: a rectangle, or the whole picture
    std::int32_t left = 0;         // of the exported rectangle in the source's frame
    std::int32_t top = 0;
    ImageHeaderRecord header;      // of the source, native order: head settings, sources, local time
    std::int64_t exportedUtc = 0;  // seconds since 1 January 1970
    bool badKnown = false;         // a list of bad detectors was at hand
    std::int64_t badDetectors = 0;
};

// The header's own time, local and without a zone: "2026-11-21T12:04:05"; empty where it isn't a time.
std::string LocalTimeText(const ImageHeaderRecord& header);
// The unit in ASCII for formats that take no more: "adu" (the field's name for counts), "V", "deg C", "K", "deg F".
std::string AsciiUnit(ExportForm form);

// What is missing in and between frames: gaps behind the first one of these timings.
std::vector<FrameGap> GapsOfTimings(std::span<const FrameTiming> timings);

// The members of docs/formats.md: "program", "exported", "source", "camera", "form", "quantity", "unit", "scale",
// "columns", "rows" and so on; with timings "frames" and "gaps" too.
JsonText ProvenanceJson(const Provenance& provenance, std::size_t columns, std::size_t rows,
                        std::span<const FrameTiming> timings);
// [{"count": 3000, "value": 20}, {"count": 9000, "value": 25}]; "null" for counts.
std::string ScaleJson(const Provenance& provenance);
// {"index": 0, "number": 17, "seconds": 0.17, "utc": "...", "start_utc": "...", "integration_ms": 2.0, ...}; what isn't
// known is null.
std::string TimingJson(const FrameTiming& timing);
// The same facts as lines "key: value" for formats with plain comments.
std::vector<std::string> ProvenanceLines(const Provenance& provenance, std::span<const FrameTiming> timings);

}  // namespace kelvo

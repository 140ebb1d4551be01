// The formats that exports are written in, and the writer of each.
#pragma once

#include "export/frame_sink.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

enum class ExportFormat { kTiff, kFits, kHdf5, kNpy, kCsv };
struct ExportFormatNames {
    ExportFormat format;
    std::string_view word;       // "tiff"
    std::string_view extension;  // ".tif"
    std::string_view title;      // "TIFF, a page a frame"
};
std::span<const ExportFormatNames> ExportFormats();
std::optional<ExportFormat> ExportFormatOf(std::string_view word);
// By the name's end: ".tif" or ".tiff", ".fits" or ".fit", ".h5" or ".hdf5", ".npy", ".csv" in any case.
std::optional<ExportFormat> ExportFormatByExtension(std::string_view path);

// A sink that hasn't begun: Begin looks whether the name may be written.
std::unique_ptr<FrameSink> MakeFrameSink(ExportFormat format, const std::string& path, bool replace);

}  // namespace kelvo

// The formats that exports are written in, and the writer of each.
#pragma once

#include "export/frame_sink.h"
#include "export/picture_options.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

enum class ExportFormat { kTiff, kFits, kHdf5, kNpy, kCsv, kPng, kMp4 };
struct ExportFormatNames {
    ExportFormat format;
    std::string_view word;       // "tiff"
    std::string_view extension;  // ".tif"
    std::string_view title;      // "TIFF, a page a frame"
    bool isPicture = false;      // of the colors that counts have, with PictureOptions; of values it can't be made
};
std::span<const ExportFormatNames> ExportFormats();
// Why a picture can't have a form of floats.
inline constexpr std::string_view kPictureOfCounts =
    "A picture is made of counts: please choose counts or corrected counts.";
const ExportFormatNames& NamesOf(ExportFormat format);
std::optional<ExportFormat> ExportFormatOf(std::string_view word);
// By the name's end: ".tif" or ".tiff", ".fits" or ".fit", ".h5" or ".hdf5", ".npy", ".csv", ".png", ".mp4" in any
// case.
std::optional<ExportFormat> ExportFormatByExtension(std::string_view path);

// A sink that hasn't begun: Begin looks whether the name may be written.
// options are of pictures alone.
std::unique_ptr<FrameSink> MakeFrameSink(ExportFormat format, const std::string& path, bool replace,
                                         PictureOptions options = {});
// One for each name.
std::vector<std::unique_ptr<FrameSink>> MakeFrameSinks(ExportFormat format, const std::vector<std::string>& paths,
                                                       bool replace, const PictureOptions& options);

}  // namespace kelvo

#include "export/export_formats.h"

#include "export/csv_writer.h"
#include "export/fits_writer.h"
#include "export/hdf5_writer.h"
#include "export/mp4_writer.h"
#include "export/npy_writer.h"
#include "export/png_writer.h"
#include "export/tiff_writer.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo {

namespace {

constexpr ExportFormatNames kFormats[] = {
    {ExportFormat::kTiff, "tiff", ".tif", "TIFF, a page a frame"},
    {ExportFormat::kFits, "fits", ".fits", "FITS cube with a table of times"},
    {ExportFormat::kHdf5, "hdf5", ".h5", "HDF5, a chunk a frame"},
    {ExportFormat::kNpy, "npy", ".npy", "NumPy, with a JSON beside it"},
    {ExportFormat::kCsv, "csv", ".csv", "CSV, one frame"},
    {ExportFormat::kPng, "png", ".png", "PNG, a picture a frame", true},
    {ExportFormat::kMp4, "mp4", ".mp4", "MP4 video, with the colors on view", true},
};

}  // namespace

std::span<const ExportFormatNames> ExportFormats()
{
    return kFormats;
}

const ExportFormatNames& NamesOf(ExportFormat format)
{
    return *std::ranges::find(kFormats, format, &ExportFormatNames::format);
}

std::optional<ExportFormat> ExportFormatOf(std::string_view word)
{
    const auto* const found = std::ranges::find(kFormats, word, &ExportFormatNames::word);
    if (found == std::end(kFormats)) return std::nullopt;
    return found->format;
}

std::optional<ExportFormat> ExportFormatByExtension(std::string_view path)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kOthers = {
        {{".tiff", "tiff"}, {".fit", "fits"}, {".hdf5", "hdf5"}}};
    for (const ExportFormatNames& names : ExportFormats()) {
        if (EqualIgnoringCase(extension, names.extension)) return names.format;
    }
    for (const auto& [other, word] : kOthers) {
        if (EqualIgnoringCase(extension, other)) return ExportFormatOf(word);
    }
    return std::nullopt;
}

std::unique_ptr<FrameSink> MakeFrameSink(ExportFormat format, const std::string& path, bool replace,
                                         PictureOptions options)
{
    switch (format) {
        case ExportFormat::kTiff:
            return std::make_unique<TiffWriter>(path, replace);
        case ExportFormat::kFits:
            return std::make_unique<FitsWriter>(path, replace);
        case ExportFormat::kNpy:
            return std::make_unique<NpyWriter>(path, replace);
        case ExportFormat::kHdf5:
            return std::make_unique<Hdf5Writer>(path, replace);
        case ExportFormat::kPng:
            return std::make_unique<PngWriter>(path, replace, std::move(options));
        case ExportFormat::kMp4:
            return std::make_unique<Mp4Writer>(path, replace, std::move(options));
        case ExportFormat::kCsv:
            break;
    }
    return std::make_unique<CsvWriter>(path, replace);
}

std::vector<std::unique_ptr<FrameSink>> MakeFrameSinks(ExportFormat format, const std::vector<std::string>& paths,
                                                       bool replace, const PictureOptions& options)
{
    std::vector<std::unique_ptr<FrameSink>> sinks;
    sinks.reserve(paths.size());
    for (const std::string& path : paths) sinks.push_back(MakeFrameSink(format, path, replace, options));
    return sinks;
}

}  // namespace kelvo

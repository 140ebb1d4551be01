#include "export/export_formats.h"

#include "export/csv_writer.h"
#include "export/fits_writer.h"
#include "export/hdf5_writer.h"
#include "export/npy_writer.h"
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
};

}  // namespace

std::span<const ExportFormatNames> ExportFormats()
{
    return kFormats;
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

std::unique_ptr<FrameSink> MakeFrameSink(ExportFormat format, const std::string& path, bool replace)
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
        case ExportFormat::kCsv:
            break;
    }
    return std::make_unique<CsvWriter>(path, replace);
}

}  // namespace kelvo

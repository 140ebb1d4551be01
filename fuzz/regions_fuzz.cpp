// A file of regions: read, put on the view, written and read again as the same; and their pixels in a frame.
#include "regions/region_list.h"
#include "regions/regions_file.h"
#include "reset/reset.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    std::string why;
    const auto file = kelvo::RegionsOfText(std::string_view(reinterpret_cast<const char*>(data), size), why);
    if (file.has_value() != why.empty()) __builtin_trap();
    if (!file) return 0;
    if (!kelvo::SetRegions(file->regions, why) || kelvo::Regions.size() != file->regions.size()) __builtin_trap();
    for (const kelvo::Region& region : kelvo::Regions) {
        for (const kelvo::PixelRun& run : kelvo::PixelsOf(region.shape, region.place, 640, 512)) {
            if (run.row < 0 || run.row >= 512 || run.first < 0 || run.last < run.first || run.last >= 640) {
                __builtin_trap();
            }
        }
    }
    // A reflected temperature that a black body doesn't need is gone after the first time.
    kelvo::RegionsFile taken{.columns = file->columns, .rows = file->rows, .regions = kelvo::Regions};
    const auto again = kelvo::RegionsOfText(kelvo::TextOfRegions(taken), why);
    for (kelvo::Region& region : taken.regions) region.number = 0;
    if (!again || *again != taken) __builtin_trap();
    return 0;
}

// A list of bad detectors, read into maps of several regions.
#include "pixel/bad_pixels.h"
#include "quiet_boxes.h"
#include "reset/reset.h"
#include "state/camera_config.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace {

constexpr std::int32_t kSides[][2] = {{3, 4}, {0, 0}, {512, 640}, {-1, 2147483647}};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return kelvo::QuietBoxes();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    const std::string& path = input.Put(data, size);
    // The size chooses the region: one reading an input, since each may tell of many lines.
    const auto& [rows, columns] = kSides[size % std::size(kSides)];
    kelvo::CameraConfig config;
    config.Vroi = rows;
    config.Hroi = columns;
    kelvo::BadDetMap map(12, 0);
    if (kelvo::LoadBadDetFile(path, map, config) != 1 || map.size() != 12) __builtin_trap();
    return 0;
}

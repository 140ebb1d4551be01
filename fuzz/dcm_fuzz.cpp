// A table on disk, as DECOM.TMP of a small camera: what is taken lies in the frame and stays there in every
// orientation.
#include "pixel/decommutation.h"
#include "platform/files.h"
#include "quiet_boxes.h"
#include "reset/reset.h"
#include "state/camera_config.h"
#include "state/windows_write.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>

namespace {

constexpr std::int32_t kSides[][2] = {{2, 3}, {3, 2}, {1, 4}, {3, 3}};
constexpr std::int32_t kSchemes[] = {2, 3, 10, 11, 12};

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
    kelvo::SetDefaultDir(std::filesystem::path(path).parent_path().string());
    if (!kelvo::CopyFileTo(path, kelvo::DecomTempPath(), false)) __builtin_trap();
    const auto& [rows, columns] = kSides[size % std::size(kSides)];
    kelvo::CameraConfig config;
    config.Vroi = rows;
    config.Hroi = columns;
    config.DecomScheme = kSchemes[size % std::size(kSchemes)];
    config.Idelay = size > 0 ? static_cast<std::int8_t>(data[0]) : 0;
    auto table = kelvo::LoadDecomList(config);
    kelvo::DeleteFileNamed(kelvo::DecomTempPath());  // the directory goes with the process
    if (table && (!kelvo::DecomEntriesLieInFrame(*table, config) || !kelvo::ReorderDecomList(*table, config, 1, 1, 1) ||
                  !kelvo::DecomEntriesLieInFrame(*table, config))) {
        __builtin_trap();
    }
    return 0;
}

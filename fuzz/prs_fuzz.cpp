// A search pattern, used on a map with bad pixels: no entry may come from anywhere but a good pixel of the region.
#include "pixel/bad_pixels.h"
#include "quiet_boxes.h"
#include "reset/reset.h"
#include "state/cal_settings_write.h"
#include "state/camera_config.h"
#include "temp_file.h"

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return kelvo::QuietBoxes();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    static kelvo::FuzzFile input;
    kelvo::write::calSet.CalSettings.PRSfile = input.Put(data, size);
    kelvo::CameraConfig config;
    config.Vroi = 5;
    config.Hroi = 7;
    kelvo::BadDetMap bad(35, 0);
    for (std::size_t i = size % 3; i < bad.size(); i += 3) bad[i] = 1;
    std::vector<std::uint32_t> decom(bad.size());
    std::iota(decom.begin(), decom.end(), 0U);
    if (kelvo::ReplaceBadDet(decom, bad, config) != 1) __builtin_trap();
    for (std::size_t i = 0; i < decom.size(); ++i) {
        const bool isOwn = decom[i] == i;
        if (!isOwn && (decom[i] >= bad.size() || bad[decom[i]] || !bad[i])) __builtin_trap();
    }
    return 0;
}

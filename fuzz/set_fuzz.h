// A data directory of a fuzz target's own with a small camera and a set on the disk, made anew for each input.
#pragma once

#include "calib/calibration_set.h"
#include "platform/files.h"
#include "reset/reset.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config_write.h"
#include "state/windows_write.h"

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace kelvo {

class FuzzSet {
  public:
    FuzzSet()
    {
        directory_ = (std::filesystem::temp_directory_path() / "kelvo-fuzz-XXXXXX").string();
        if (!mkdtemp(directory_.data())) abort();
    }
    FuzzSet(const FuzzSet&) = delete;
    FuzzSet& operator=(const FuzzSet&) = delete;
    ~FuzzSet()
    {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }

    // The input in place of one file of the set. What the load leaves must fit the frame.
    void Load(std::string_view file, const std::uint8_t* data, std::size_t size)
    {
        ResetModules();
        MakeCamera();
        Put(file, {reinterpret_cast<const char*>(data), size});
        LoadCalibration(nullptr, directory_ + "/plain.cal");
        constexpr std::size_t kPixels = 9;
        for (const std::uint32_t entry : DecomList) {
            if (entry >= kPixels) __builtin_trap();
        }
        if (DecomList.size() > kPixels || GainList.size() > kPixels || OffsetList.size() > kPixels) __builtin_trap();
    }

  private:
    // Nothing of the input before stands in the directory.
    void MakeCamera()
    {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
        std::filesystem::create_directory(directory_, ignored);
        SetDefaultDir(directory_);
        write::camera.ActiveCamera = 2;
        write::camera.ActiveConfig.Hroi = 3;
        write::camera.ActiveConfig.Vroi = 3;
        Put("plain.gai", std::string(36, '\0'));
        Put("plain.off", std::string(18, '\0'));
        Put("plain.dcm", std::string(36, '\0'));
        Put("plain.cal",
            "[Setup]\nActiveCamera=2\n[Calibration]\nGainFile=plain.gai\nOffsetFile=plain.off\nDecomFile=plain.dcm\n"
            "BadDetFile=\n");
    }

    void Put(std::string_view file, std::string_view contents) const
    {
        std::ofstream stream(directory_ + '/' + std::string(file), std::ios::binary);
        stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    }

    std::string directory_;
};

}  // namespace kelvo

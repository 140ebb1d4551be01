// A small camera that is on, and sets of its own on the disk. The frame is 2 x 4 pixels, read out row by row.
#pragma once

#include "support/head_fixture.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

class CalibrationTest : public HeadTest {
  protected:
    void SetUp() override;

    // A whole set of the active camera: gains 1.0, 1.25, 1.5, ...; offsets 100, 101, ...; the table backwards; no bad
    // detectors. calText is the .cal as it stands on the disk.
    void PutSet(const std::string& calPath, std::string_view calText = kCalText);
    static void PutGains(const std::string& path, const std::vector<float>& gains);
    static void PutOffsets(const std::string& path, const std::vector<std::int16_t>& offsets);
    static void PutTable(const std::string& path, const std::vector<std::uint32_t>& table);

    std::string InDirectory(std::string_view name) const { return directory / name; }
    // A key of a file on the disk, "missing" where there is none.
    static std::string KeyOf(const std::string& file, const char* section, const char* key);

    // Runs what opens a dialog, and works the dialog meanwhile; closes by Cancel what the work leaves open.
    void Work(const std::function<void()>& open, std::function<void(HWND)> work,
              std::function<void(HWND)> then = nullptr);

    static constexpr std::string_view kCalText =
        "[Setup]\nActiveCamera=2\nIndexFrameRate=5\nIntTime=21,22,23,24\nVideoGain1=6\nVideoOffset1=170\n"
        "VideoOffset2=171\nMark=of the set\n"
        "[Calibration]\nDriverNumber=2\nCalType=2\nDecomFile=warm.dcm\nGainFile=warm.gai\nOffsetFile=warm.off\n"
        "BadDetFile=\nCalFile=C:\\KELVO\\warm.cal\nTemperatureCold=20.500000\nTemperatureHot=25.000000\n"
        "IntensityCold=3000\nIntensityHot=9000\n"
        "[Display]\nSubstBadPixels=1\nMirrorVert=0\nMirrorHoriz=0\nRotateCCW=0\n";
};

}  // namespace kelvo

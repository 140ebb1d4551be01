#include "record/recording_head.h"

#include "grabber/board_state.h"
#include "grabber/copm2.h"
#include "grabber/frame_size.h"
#include "platform/digest.h"
#include "platform/files.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

namespace {

constexpr std::size_t kLargestSetFile = std::size_t{1} << 24;
constexpr const char* kClock = "CLOCK_MONOTONIC and the system's UTC, taken at the frame's vertical blank";

std::string ChecksumOf(const std::string& path)
{
    if (path.empty()) return {};
    const std::optional<std::string> contents = ReadWholeFile(path, kLargestSetFile);
    return contents ? Sha256Of(*contents) : std::string();
}

}  // namespace

FramesHead HeadOfRecording()
{
    const std::string set = CalType == 0 ? std::string() : CalSettings.CalFile;
    FramesHead head;
    head.columns = static_cast<std::uint32_t>(ActiveConfig.Hroi);
    head.rows = static_cast<std::uint32_t>(ActiveConfig.Vroi);
    head.pixelBytes = static_cast<std::uint32_t>(CameraFrameValues() * sizeof(std::int16_t));
    head.SetText(frames_key::kProgram, "Kelvo " KELVO_VERSION);
    head.SetText(frames_key::kCamera, ActiveConfig.Description);
    const CameraReport camera = icp_report(IcpModule);
    head.SetText(frames_key::kClock, camera.clock.empty() ? kClock : camera.clock);
    if (!camera.counts.empty()) head.SetText(frames_key::kCounts, camera.counts);
    head.SetText(frames_key::kCalibration, set);
    head.SetText(frames_key::kChecksum, ChecksumOf(set));
    return head;
}

}  // namespace kelvo

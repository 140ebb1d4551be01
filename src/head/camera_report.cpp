#include "head/camera_report.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "head/camera_head.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "state/frame_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kPauseMs = 250;  // between two questions for notes, and while a capture runs between any

CameraReport report;
std::optional<std::int64_t> askedMs;
std::optional<std::int64_t> notesMs;
bool lossIsTold = false;
bool boxWasShown = false;

StateValue Told(std::optional<std::int32_t> value)
{
    return std::int64_t{value.value_or(0)};
}

const StateNames kStateNames{
    {"CameraRate", [] { return StateValue{report.rateHz.value_or(0)}; }},
    {"CameraIntegration", [] { return StateValue{report.integrationMs.value_or(0)}; }},
    {"CameraColumns", [] { return Told(report.columns); }},
    {"CameraRows", [] { return Told(report.rows); }},
    {"CameraBits", [] { return Told(report.bits); }},
    {"CameraLost", [] { return StateValue{std::int64_t{report.link == CameraLink::kLost ? 1 : 0}}; }},
    {"CameraClock", [] { return StateValue{report.clock}; }},
    {"CameraCounts", [] { return StateValue{report.counts}; }},
};

// One text, a note a line.
std::string Joined(const std::vector<std::string>& notes, const char* separator)
{
    std::string text;
    for (const std::string& note : notes) text += (text.empty() ? "" : separator) + note;
    return text;
}

}  // namespace

const CameraReport& CurrentCameraReport()
{
    return report;
}

void AskCamera()
{
    if (!CameraOn) return;
    const std::int64_t nowMs = TickMs();
    if (CaptureRuns() && askedMs && nowMs - *askedMs < kPauseMs) return;
    askedMs = nowMs;
    report = icp_report(IcpModule);
    TakeToldTiming(report.rateHz, report.integrationMs);
}

void FollowCamera()
{
    AskCamera();
    const std::int64_t nowMs = TickMs();
    if (!CameraOn || (notesMs && nowMs - *notesMs < kPauseMs)) return;
    notesMs = nowMs;
    const std::vector<std::string> notes = icp_take_notes(IcpModule);
    if (notes.empty()) return;
    if (boxWasShown) {
        StatusNote(Joined(notes, " "));
        return;
    }
    boxWasShown = true;
    MessageBox(hWndMain, Joined(notes, "\n"), kMessageCaption, BoxIcon::kInformation);
}

bool CameraIsLost()
{
    AskCamera();
    const bool isLost = CameraOn && report.link == CameraLink::kLost;
    if (isLost != lossIsTold) StatusNote(isLost ? report.linkText : "The camera is back");
    lossIsTold = isLost;
    return isLost;
}

void ForgetCameraReport()
{
    report = {};
    askedMs.reset();
    notesMs.reset();
    lossIsTold = false;
    boxWasShown = false;
    TakeToldTiming(std::nullopt, std::nullopt);
}

}  // namespace kelvo

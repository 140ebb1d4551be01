#include "head/camera_report.h"

#include "grabber/board_state.h"
#include "grabber/capture.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "state/frame_state.h"
#include "state/head_state_write.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::int64_t kPauseMs = 250;  // between two questions for notes, and while a capture runs between any

CameraReport report;
float reckonedHz = 0;
double reckonedMs = 0;
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

void PutRateInForce()
{
    write::head.FrameRate = report.rateHz ? static_cast<float>(*report.rateHz) : reckonedHz;
}

void PutIntegrationInForce()
{
    write::head.IntegrationMsecInForce = report.integrationMs.value_or(reckonedMs);
}

void TakeReport(CameraReport now)
{
    const CameraReport before = std::exchange(report, std::move(now));
    if (report.rateHz != before.rateHz) PutRateInForce();
    if (report.integrationMs != before.integrationMs) PutIntegrationInForce();
}

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

void TakeReckonedRate(float rateHz)
{
    reckonedHz = rateHz;
    PutRateInForce();
}

float ReckonedRate()
{
    return reckonedHz;
}

void TakeReckonedIntegration(double integrationMs)
{
    reckonedMs = integrationMs;
    PutIntegrationInForce();
}

void AskCamera()
{
    if (!CameraOn) return;
    const std::int64_t nowMs = TickMs();
    if (CaptureRuns() && askedMs && nowMs - *askedMs < kPauseMs) return;
    askedMs = nowMs;
    TakeReport(icp_report(IcpModule));
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
    TakeReport({});
    askedMs.reset();
    notesMs.reset();
    lossIsTold = false;
    boxWasShown = false;
}

void ResetCameraReport()
{
    reckonedHz = 0;
    reckonedMs = 0;
    ForgetCameraReport();
}

}  // namespace kelvo

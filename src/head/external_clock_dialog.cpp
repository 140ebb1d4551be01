// Asks the operator for the rate of an external frame clock, which no register of the head tells.
#include "head/external_clock_dialog.h"

#include "head/camera_head.h"
#include "platform/dialog.h"
#include "platform/text.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "state/head_state.h"
#include "ui/dialog_frame.h"

#include <optional>
#include <string>

namespace kelvo {

namespace {

constexpr int kRateEdit = 624;
constexpr int kClockName = 1644;
constexpr int kYes = 6;
constexpr int kNo = 7;
constexpr float kHighestRate = 250.0F;

std::string clockNameShown;

// A number and nothing else.
std::optional<float> ScanRate(std::string_view text)
{
    std::string_view rest = text;
    const std::optional<float> rate = TakeFloat(rest);
    return rate && Trimmed(rest).empty() ? rate : std::nullopt;
}

void Open(HWND dialog)
{
    SetDlgItemText(dialog, kClockName, clockNameShown);
    SetDlgItemText(dialog, kRateEdit, Format("%.3f", static_cast<double>(FrameRate)));
    CentreDialog(dialog);
    FocusDlgItem(dialog, kRateEdit);
}

void Accept(HWND dialog)
{
    const std::optional<float> rate = ScanRate(GetDlgItemText(dialog, kRateEdit));
    if (!rate) {
        RefuseField(dialog, kRateEdit, "The frame rate must be a number, in Hz.");
        return;
    }
    if (!(*rate >= 0 && *rate <= kHighestRate)) {
        RefuseField(dialog, kRateEdit, "The frame rate must be between 0.0 & 250.0 Hz.");
        return;
    }
    SetFrameRate(*rate);
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    {kYes, Accept},
    {kNo, CancelDialog},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{.name = "FRAMERATE",
                             .procedure = fnFrRateDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpExternalClock};

}  // namespace

int ExternalClockDialog(HWND parent, std::string_view clockName)
{
    clockNameShown = clockName;
    return RunDialog(kFrame, parent);
}

LRESULT fnFrRateDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo

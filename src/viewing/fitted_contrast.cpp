#include "viewing/fitted_contrast.h"

#include "display/display_pipeline.h"
#include "display/fit_contrast.h"
#include "grabber/frame_size.h"
#include "pixel/bad_marks.h"
#include "platform/box.h"
#include "platform/menu.h"
#include "platform/timers.h"
#include "resources/ids.h"
#include "state/buffer_state.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/contrast_fit.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/view_switch.h"

#include <optional>

namespace kelvo {

namespace {

constexpr ViewSwitch kSwitch{kCmdViewKeepFitted, kKeepFittedKey};
constexpr std::int64_t kRefitMs = 250;

bool keepsFitted = false;
bool hasFitted = false;  // since it was switched on

bool PictureIsOnView()
{
    return ViewingFile ? !ImageBuffer.empty() : CameraOn && !LiveFrame.empty();
}

void Refit()
{
    const ContrastFit fit = FitOfPicture(BadPixelsOnView());
    if (!fit.reason.empty()) return;
    ShowOwnFit(fit);
    hasFitted = true;
}

void Switch(bool on)
{
    keepsFitted = on;
    hasFitted = false;
    if (on) {
        SetTimer(hWndMain, kFitTimer, 0);
    } else {
        KillTimer(hWndMain, kFitTimer);
    }
}

}  // namespace

std::vector<std::uint8_t> BadPixelsOnView()
{
    const Point size = FrameSizeOnView();
    if (size.x != ActiveConfig.Hroi || size.y != ActiveConfig.Vroi || size.x <= 0 || size.y <= 0) return {};
    std::string why;  // a fit goes without them then
    const std::optional<BadDetMap> marks = ViewingFile ? ListedInForce(why) : BadDetectorsInForce(why);
    return marks.value_or(BadDetMap(static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y)));
}

void FitContrastOnView()
{
    if (!PictureIsOnView()) {
        MessageBox(hWndMain, "There is no stored frame on view.", kMessageCaption, BoxIcon::kInformation);
        return;
    }
    if (keepsFitted) {
        Refit();
    } else {
        FitContrastToPicture(BadPixelsOnView());
    }
}

void OpenKeepFitted()
{
    const bool on = ViewSwitchIsOn(kSwitch);
    CheckMenuItem(hWndMain, kCmdViewKeepFitted, on);
    if (on) Switch(true);
}

bool KeepsFitted()
{
    return keepsFitted;
}

void SetKeepFitted(bool on)
{
    Switch(on);
    KeepViewSwitch(kSwitch, on);
}

void ToggleKeepFitted()
{
    SetKeepFitted(!keepsFitted);
}

void EndTakenOverFit()
{
    if (keepsFitted && hasFitted && !OwnFitInForce()) SetKeepFitted(false);
}

void OnFitTimer()
{
    EndTakenOverFit();
    if (!keepsFitted) return;
    if (PeriodicUpdates && PictureIsOnView()) Refit();
    SetTimer(hWndMain, kFitTimer, kRefitMs);
}

void ResetKeepFitted()
{
    keepsFitted = false;
    hasFitted = false;
}

}  // namespace kelvo

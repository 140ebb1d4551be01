#include "viewing/playback.h"

#include "dibapi32/dibapi32.h"
#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/paint.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "resources/dialog_ids.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/recent_files.h"
#include "ui/status.h"
#include "viewing/coefficient_view.h"
#include "viewing/viewing.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace kelvo {

namespace {

constexpr double kDefaultRateHz = 10.0;
constexpr int kNoFrame = -2;  // none was chosen

void Tell(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption, BoxIcon::kInformation);
}

// The file on view has several frames to go through; it becomes the sequence that is stepped.
bool TakeSequenceOnView()
{
    if (!ViewingFile || ImageHeader.FrameCount < 2 || IsCoefficientFile(ViewFilePath)) {
        Tell("There is no sequence on view.");
        return false;
    }
    if (!ViewingSequence || LoadName != ViewFilePath) {
        write::frames.LoadName = ViewFilePath;
        write::frames.CurrentFrame = 0;
    }
    write::frames.LastFrame = ImageHeader.FrameCount - 1;
    return true;
}

std::int64_t FramePeriodMs()
{
    const double rate = ImageHeader.FrameRate;
    const double hertz = std::isfinite(rate) && rate > 0.01 ? std::min(rate, 1000.0) : kDefaultRateHz;
    return std::max<std::int64_t>(1, std::llround(1000.0 / hertz));
}

void OpenGoToFrame(HWND dialog)
{
    SetDlgItemText(dialog, kGoToFrameRange, Format("0 to %u", LastFrame));
    SetDlgItemInt(dialog, kGoToFrameNumber, static_cast<int>(CurrentFrame));
    FocusDlgItem(dialog, kGoToFrameNumber);
}

void AcceptGoToFrame(HWND dialog)
{
    const auto frame = ScanDecimal(GetDlgItemText(dialog, kGoToFrameNumber));
    if (!frame || *frame < 0 || static_cast<std::uint32_t>(*frame) > LastFrame) {
        Tell(Format("Please enter a frame number from 0 to %u.", LastFrame));
        FocusDlgItem(dialog, kGoToFrameNumber);
        return;
    }
    EndDialog(dialog, *frame);
}

void CancelGoToFrame(HWND dialog)
{
    EndDialog(dialog, kNoFrame);
}

LRESULT fnGOTOFRAMEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kGoToFrameEntries[] = {{kIdOk, AcceptGoToFrame}, {kIdCancel, CancelGoToFrame}};
constexpr DialogFrame kGoToFrame{.name = "GOTOFRAME",
                                 .procedure = fnGOTOFRAMEDlgProc,
                                 .open = OpenGoToFrame,
                                 .entries = kGoToFrameEntries,
                                 .cantOpenResult = kNoFrame};
LRESULT fnGOTOFRAMEDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kGoToFrame, dialog, message, wParam, lParam);
}

}  // namespace

int OpenStoredFile(std::string_view path)
{
    StopPlaying();
    int shown = 0;
    if (IsCoefficientFile(path)) {
        shown = ViewCoefficientFile(path);
    } else {
        ImageHeaderRecord header = ImageHeader;
        write::frames.SteppingFrames = 0;  // a file that can't be opened is told in a box
        if (ReadImageHeader(path, header) < 0) return 0;
        shown = header.FrameCount > 1 ? ViewSequence(path) : ViewImage(path, 0);
    }
    if (shown) {
        AddRecentFile(path);
        StatusString(kIdleHint, kLeftAligned);
    }
    return shown;
}

void StartPlaying()
{
    if (!TakeSequenceOnView()) return;
    SetTimer(hWndMain, kPlayTimer, FramePeriodMs());
}

void StopPlaying()
{
    if (hWndMain) KillTimer(hWndMain, kPlayTimer);
}

bool Playing()
{
    return hWndMain && TimerIsSet(hWndMain, kPlayTimer);
}

void PlayNextFrame()
{
    const bool stillOnView = ViewingFile && LoadName == ViewFilePath;
    if (!stillOnView || !GoToFrame(CurrentFrame >= LastFrame ? 0 : CurrentFrame + 1)) {
        StopPlaying();
        return;
    }
    if (!ImageCursorOn) StatusString(kIdleHint, kLeftAligned);
}

void GoToFrameDialog()
{
    StopPlaying();
    if (!TakeSequenceOnView()) return;
    const int frame = RunDialog(kGoToFrame, hWndMain);
    if (frame >= 0) GoToFrame(static_cast<std::uint32_t>(frame));
}

void CopyPicture()
{
    const std::optional<DeviceBitmap> picture = BitmapFromDib(FrameBitmap);
    if (!picture) {
        Tell("There is no picture to copy.");
        return;
    }
    CopyToClipboard(*picture);
}

}  // namespace kelvo

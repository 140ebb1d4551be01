#include "viewing/playback.h"

#include "dibapi32/dibapi32.h"
#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "resources/dialog_ids.h"
#include "resources/ids.h"
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
#include <cstddef>
#include <optional>
#include <utility>

namespace kelvo {

namespace {

constexpr double kDefaultRateHz = 10.0;
constexpr int kNoFrame = -2;  // none was chosen

// LoadName, CurrentFrame and LastFrame are those of the file on view.
bool IsSequenceOnView()
{
    return ViewingSequence && LoadName == ViewFilePath;
}

void Tell(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption, BoxIcon::kInformation);
}

PlayState play;  // but for playing, which the timer knows

// The file on view becomes the sequence that is stepped; false, after a box, where it has not several frames.
bool TakeSequenceOnView()
{
    if (FramesToPlay() == 0) {
        Tell("There is no sequence on view.");
        return false;
    }
    if (!IsSequenceOnView()) {
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
    const double factor = kPlaySpeeds[static_cast<std::size_t>(play.speed)].factor;
    return std::max<std::int64_t>(1, std::llround(1000.0 / (hertz * factor)));
}

std::uint32_t FirstToPlay()
{
    return play.backwards ? LastFrame : 0;
}

std::uint32_t LastToPlay()
{
    return play.backwards ? 0 : LastFrame;
}

// nullopt: playing has come to its end.
std::optional<std::uint32_t> NextToPlay()
{
    const bool atEnd = play.backwards ? CurrentFrame == 0 : CurrentFrame >= LastFrame;
    if (!atEnd) return play.backwards ? CurrentFrame - 1 : CurrentFrame + 1;
    if (!play.loop) return std::nullopt;
    return FirstToPlay();
}

void SetPlayTimer()
{
    SetTimer(hWndMain, kPlayTimer, FramePeriodMs());
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

PlayState PlayStateNow()
{
    PlayState now = play;
    now.playing = Playing();
    return now;
}

void StartPlaying()
{
    if (!TakeSequenceOnView()) return;
    if (!play.loop && CurrentFrame == LastToPlay()) ShowFrame(FirstToPlay());
    SetPlayTimer();
}

void StopPlaying()
{
    if (hWndMain) KillTimer(hWndMain, kPlayTimer);
}

void PlayOrStop()
{
    if (Playing()) {
        StopPlaying();
    } else if (FramesToPlay() > 0) {
        StartPlaying();
    }
}

bool Playing()
{
    return hWndMain && TimerIsSet(hWndMain, kPlayTimer);
}

void PlayNextFrame()
{
    const bool stillOnView = ViewingFile && LoadName == ViewFilePath;
    const std::optional<std::uint32_t> next = stillOnView ? NextToPlay() : std::nullopt;
    if (!next || !GoToFrame(*next)) {
        StopPlaying();
        return;
    }
    if (!ImageCursorOn) StatusString(kIdleHint, kLeftAligned);
}

void SetPlaySpeed(int speed)
{
    if (speed < 0 || std::cmp_greater_equal(speed, kPlaySpeeds.size())) return;
    play.speed = speed;
    if (Playing()) SetPlayTimer();
}

void PlayFaster()
{
    SetPlaySpeed(play.speed + 1);
}

void PlaySlower()
{
    SetPlaySpeed(play.speed - 1);
}

void SetPlayBackwards(bool backwards)
{
    play.backwards = backwards;
    if (hWndMain) CheckMenuItem(hWndMain, kCmdViewBackwards, backwards);
}

void TogglePlayBackwards()
{
    SetPlayBackwards(!play.backwards);
}

void SetPlayLoop(bool loop)
{
    play.loop = loop;
    if (hWndMain) CheckMenuItem(hWndMain, kCmdViewLoop, loop);
}

void TogglePlayLoop()
{
    SetPlayLoop(!play.loop);
}

std::uint32_t FramesToPlay()
{
    const bool several = ViewingFile && ImageHeader.FrameCount > 1 && !IsCoefficientFile(ViewFilePath);
    return several ? ImageHeader.FrameCount : 0;
}

std::uint32_t FrameOnView()
{
    return IsSequenceOnView() ? CurrentFrame : 0;
}

void ShowFrame(std::uint32_t frame)
{
    if (FramesToPlay() == 0 || !TakeSequenceOnView() || !GoToFrame(frame)) return;
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

void ResetPlayback()
{
    play = {};
}

}  // namespace kelvo

#include "viewing/playback.h"

#include "dibapi32/dibapi32.h"
#include "display/display_pipeline.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/clock.h"
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
#include "viewing/foreign_view.h"
#include "viewing/recorded_view.h"
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
    LookAgain();
    return true;
}

double RateHz()
{
    const double rate = ImageHeader.FrameRate;
    return std::isfinite(rate) && rate > 0.01 ? std::min(rate, 1000.0) : kDefaultRateHz;
}

double SpeedFactor()
{
    return kPlaySpeeds[static_cast<std::size_t>(play.speed)].factor;
}

std::int64_t FramePeriodMs()
{
    return std::max<std::int64_t>(1, std::llround(1000.0 / (RateHz() * SpeedFactor())));
}

std::uint32_t FirstToPlay()
{
    return play.backwards ? LastFrame : 0;
}

std::uint32_t LastToPlay()
{
    return play.backwards ? 0 : LastFrame;
}

bool AtLastToPlay(std::uint32_t frame)
{
    return play.backwards ? frame == 0 : frame >= LastFrame;
}

// The end of the file on view isn't there yet.
bool MoreMayCome()
{
    const RecordedFile* const recorded = RecordedFileOnView();
    return recorded && recorded->grows && !play.backwards;
}

// nullopt: playing has come to its end.
std::optional<std::uint32_t> NextToPlay(std::uint32_t frame)
{
    if (!AtLastToPlay(frame)) return play.backwards ? frame - 1 : frame + 1;
    if (!play.loop || MoreMayCome()) return std::nullopt;
    return FirstToPlay();
}

bool PlaysByTrueTime()
{
    const RecordedFile* const recorded = RecordedFileOnView();
    return recorded && recorded->isUsable;
}

// ---- by the frames' true times

constexpr double kUsPerMs = 1000.0;
constexpr std::int64_t kNsPerUs = 1000;
constexpr std::int64_t kNsPerDay = 86'400'000'000'000;
constexpr std::int64_t kWaitForMoreMs = 100;

// The frame that was shown last, and when it was due, on the TickUs scale.
struct PlayClock {
    std::uint32_t frame = 0;
    double dueUs = 0;
};
PlayClock playClock;

void StartPlayClock()
{
    playClock = {.frame = CurrentFrame, .dueUs = static_cast<double>(TickUs())};
}

// The time between two neighbours as they were taken; a frame's period where a time is missing or can't be true, and
// from the last frame around to the first.
double TrueStepUs(std::uint32_t from, std::uint32_t to)
{
    const double periodUs = 1e6 / RateHz();
    const auto [earlier, later] = std::minmax(from, to);
    const FrameRecord* const before = RecordOnView(earlier);
    const FrameRecord* const after = RecordOnView(later);
    if (later - earlier != 1 || !before || !after) return periodUs;
    const bool haveTimes = ((before->flags | after->flags) & kRecoveredFrame) == 0 && before->monotonicNs >= 0;
    if (!haveTimes || after->monotonicNs <= before->monotonicNs) return periodUs;
    const std::int64_t stepNs = after->monotonicNs - before->monotonicNs;
    return stepNs > kNsPerDay ? periodUs : static_cast<double>(stepNs) / double{kNsPerUs};
}

double DueUs(const PlayClock& shown, std::uint32_t next)
{
    return shown.dueUs + TrueStepUs(shown.frame, next) / SpeedFactor();
}

// The last frame whose time has come; nullopt: playing ended with the one that is on view. A program that was held up
// for longer than the whole file takes goes on from now.
std::optional<PlayClock> FrameDue(double nowUs)
{
    PlayClock due = playClock;
    for (std::uint32_t passed = 0; passed <= LastFrame; ++passed) {
        const std::optional<std::uint32_t> next = NextToPlay(due.frame);
        if (!next) return due.frame == playClock.frame ? std::nullopt : std::optional(due);
        const double dueUs = DueUs(due, *next);
        if (dueUs > nowUs) return due;
        due = {.frame = *next, .dueUs = dueUs};
    }
    return PlayClock{.frame = due.frame, .dueUs = nowUs};
}

// For the frame after the one on view. The last one's own end comes with the next tick.
void SetTrueTimer()
{
    const std::optional<std::uint32_t> next = NextToPlay(playClock.frame);
    const double waitUs = next ? DueUs(playClock, *next) - static_cast<double>(TickUs()) : 0.0;
    const auto waitMs = static_cast<std::int64_t>(std::ceil(waitUs / kUsPerMs));
    SetTimer(hWndMain, kPlayTimer, std::max<std::int64_t>(waitMs, 1));
}

// Looks again for what has come meanwhile, which is shown from then on.
bool WaitsForMore()
{
    if (!MoreMayCome() || !AtLastToPlay(CurrentFrame) || LookAgain() || !MoreMayCome()) return false;
    StartPlayClock();
    SetTimer(hWndMain, kPlayTimer, kWaitForMoreMs);
    return true;
}

// ---- either way

void SetPlayTimer()
{
    if (PlaysByTrueTime()) {
        StartPlayClock();
        SetTrueTimer();
    } else {
        SetTimer(hWndMain, kPlayTimer, FramePeriodMs());
    }
}

// False where playing is over.
bool PlayByTrueTime()
{
    if (playClock.frame != CurrentFrame) StartPlayClock();  // the operator went elsewhere meanwhile
    const std::optional<PlayClock> due = FrameDue(static_cast<double>(TickUs()));
    if (!due) return false;
    const bool isAnother = due->frame != CurrentFrame;
    playClock = *due;
    if (isAnother && !GoToFrame(due->frame)) return false;
    SetTrueTimer();
    return true;
}

bool PlayByRate()
{
    const std::optional<std::uint32_t> next = NextToPlay(CurrentFrame);
    return next && GoToFrame(*next);
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
        const std::optional<std::string> file = FileToShow(path);
        if (!file || !MayViewRecording(*file)) return 0;
        write::frames.SteppingFrames = 0;  // a file that can't be opened is told in a box
        if (ReadImageHeader(*file, header) < 0) return 0;
        shown = header.FrameCount > 1 ? ViewSequence(*file) : ViewImage(*file, 0);
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
    if (!play.loop && !MoreMayCome() && CurrentFrame == LastToPlay()) ShowFrame(FirstToPlay());
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
    if (stillOnView && WaitsForMore()) return;
    if (!stillOnView || !(PlaysByTrueTime() ? PlayByTrueTime() : PlayByRate())) {
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
    if (Playing() && PlaysByTrueTime()) SetPlayTimer();
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
    playClock = {};
}

}  // namespace kelvo

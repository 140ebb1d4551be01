#include "viewing/play_bar.h"

#include "display/display_pipeline_write.h"
#include "platform/dialog.h"
#include "platform/paint.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/dialog_ids.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "viewing/playback.h"
#include "viewing/recorded_dialog.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace kelvo {

namespace {

HWND strip = nullptr;

// What the strip shows: its controls are written where one of them changes.
struct Shown {
    PlayState play;
    std::uint32_t frames = 0;  // of the file on view; 0: the strip is hidden
    std::uint32_t frame = 0;
    std::string file;
    std::string gaps;  // what the button to them says; empty: it isn't there
    friend bool operator==(const Shown&, const Shown&) = default;
};
Shown shown;

std::string GapsText()
{
    const RecordedFile* const recorded = RecordedFileOnView();
    return recorded ? ShortSummaryOf(*recorded) + "..." : std::string();
}

Shown OnView()
{
    const std::uint32_t frames = FramesToPlay();
    return {.play = PlayStateNow(),
            .frames = frames,
            .frame = frames > 0 ? FrameOnView() : 0,
            .file = frames > 0 ? ViewFilePath : std::string(),
            .gaps = frames > 0 ? GapsText() : std::string()};
}

int Height()
{
    return GetClientRect(strip).Height();
}

void PressPlay(HWND /*strip*/)
{
    PlayOrStop();
}

void DragToFrame(HWND /*strip*/, int /*bar*/, int position)
{
    StopPlaying();
    ShowFrame(static_cast<std::uint32_t>(position));
}

void PickSpeed(HWND bar)
{
    SetPlaySpeed(ListSelection(bar, kPlaySpeed));
}

void TickBackwards(HWND bar)
{
    SetPlayBackwards(IsDlgButtonChecked(bar, kPlayBackwards));
}

void TickLoop(HWND bar)
{
    SetPlayLoop(IsDlgButtonChecked(bar, kPlayLoop));
}

// Both stand out on the ground of the picture in all themes. 0x00BBGGRR.
constexpr std::uint32_t kGapColor = 0x005050FF;
constexpr std::uint32_t kMarkColor = 0x0000C8FF;

void DrawTicks(HWND bar)
{
    const HWND area = DlgItemWindow(bar, kPlayTicks);
    const RecordedFile* const recorded = RecordedFileOnView();
    if (!area || !recorded) return;
    const Rect client = GetClientRect(area);
    FillSurface(area, client, kPictureGround);
    for (const BarTick& tick : TicksOf(*recorded, client.Width())) {
        FillSurface(area, {tick.x - 1, client.top, tick.x + 1, client.bottom}, tick.isGap ? kGapColor : kMarkColor);
    }
}

void ShowGaps(HWND /*strip*/)
{
    ShowGapsAndMarks();
}

void Fill(const Shown& now, const Shown& before)
{
    SetScrollRange(strip, kPlayPosition, 0, static_cast<int>(now.frames) - 1);
    SetScrollPos(strip, kPlayPosition, static_cast<int>(now.frame));
    SetDlgItemText(strip, kPlayFrame, Format("frame %u of %u", now.frame, now.frames));
    SetDlgItemText(strip, kPlayButton, now.play.playing ? "Stop" : "Play");
    ListSelect(strip, kPlaySpeed, now.play.speed);
    CheckDlgButton(strip, kPlayBackwards, now.play.backwards);
    CheckDlgButton(strip, kPlayLoop, now.play.loop);
    SetDlgItemText(strip, kPlayGaps, now.gaps);
    for (const int id : {kPlayGaps, kPlayTicks}) ShowDlgItem(strip, id, !now.gaps.empty());
    if (now.file != before.file || now.frames != before.frames) DrawTicks(strip);
}

void Show(bool isShown)
{
    write::picture.PictureBottomMargin = isShown ? Height() : 0;
    PlacePlayBar();
    ShowWindow(strip, isShown);
    RepaintPicture();  // it scrolls that much further, or no more
}

void FollowPicture(bool /*newFrame*/)
{
    FollowPlayBar();
}

void Open(HWND bar)
{
    for (const PlaySpeed& speed : kPlaySpeeds) ListAdd(bar, kPlaySpeed, speed.text);
    ListSelect(bar, kPlaySpeed, kNormalSpeed);
    CheckDlgButton(bar, kPlayLoop, true);
    DlgItemWindow(bar, kPlayTicks);  // the surface before the layout
}

constexpr DialogEntry kEntries[] = {
    {kPlayButton, PressPlay},
    OnScroll(kPlayPosition, DragToFrame),
    {kPlaySpeed, PickSpeed, kSelectionChanged},
    {kPlayBackwards, TickBackwards},
    {kPlayLoop, TickLoop},
    {kPlayGaps, ShowGaps},
    OnPaint(kPlayTicks, DrawTicks),
};
constexpr DialogFrame kFrame{.name = "PLAYBAR", .procedure = fnPLAYBARProc, .open = Open, .entries = kEntries};

}  // namespace

void OpenPlayBar()
{
    strip = CreateStrip(kFrame.name, hWndMain, fnPLAYBARProc);
    if (!strip) return;
    AddPictureLayer(FollowPicture);
    PlacePlayBar();
}

void PlacePlayBar()
{
    if (!strip) return;
    const int bottom = ClientHeight - TextHeight;
    MoveWindow(strip, {0, bottom - Height(), ClientWidth, bottom});
}

void FollowPlayBar()
{
    if (!strip) return;
    const Shown now = OnView();
    if (now == shown) return;
    const Shown before = std::exchange(shown, now);
    const bool wasShown = before.frames > 0;
    if (now.frames > 0) Fill(now, before);
    if (wasShown != (now.frames > 0)) Show(now.frames > 0);
}

std::vector<BarTick> TicksOf(const RecordedFile& recorded, int width)
{
    constexpr std::int64_t kThumb = 15;  // of the slider: its middle is over the frame on view
    const std::int64_t last = recorded.frames - 1;
    if (!recorded.isUsable || last < 1 || width <= kThumb) return {};
    std::map<int, bool> isGapAt;
    const auto placeOf = [&](std::int64_t frame) {
        return static_cast<int>(kThumb / 2 + frame * (width - kThumb) / last);
    };
    const std::vector<FrameRecord>& records = recorded.journal.records;
    for (std::size_t i = 0; i < records.size() && std::cmp_less_equal(i, last); ++i) {
        if ((records[i].flags & (kMarkedFrame | kTriggerFrame)) != 0)
            isGapAt[placeOf(static_cast<std::int64_t>(i))] = false;
    }
    for (const FrameGap& gap : recorded.gaps) isGapAt[placeOf(gap.beforeFrame)] = true;
    std::vector<BarTick> ticks;
    ticks.reserve(isGapAt.size());
    for (const auto& [x, isGap] : isGapAt) ticks.push_back({x, isGap});
    return ticks;
}

LRESULT fnPLAYBARProc(HWND bar, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    const LRESULT result = HandleDialogMessage(kFrame, bar, message, wParam, lParam);
    FollowPlayBar();
    return result;
}

void ResetPlayBar()
{
    strip = nullptr;
    shown = {};
}

}  // namespace kelvo

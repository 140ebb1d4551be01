#include "head/video_setup_dialog.h"

#include "dibapi32/dibapi32.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "grabber/frame_account.h"
#include "grabber/host_frames.h"
#include "head/advanced_dialog.h"
#include "head/camera_head.h"
#include "head/head_transaction.h"
#include "head/oscilloscope.h"
#include "head/scope_frame_write.h"
#include "head/video_settings.h"
#include "output/print_image.h"
#include "pixel/saturation.h"
#include "pixel/unity_coefficients.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "script/script.h"
#include "state/buffer_state_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/video.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr int kPrint = 339;
constexpr int kFirstLabel = 602;
constexpr int kPlotArea = 620;
constexpr int kLeftMarks = 621;
constexpr int kRightMarks = 622;
constexpr int kFrameRateBox = 624;
constexpr int kIntegrationBox = 626;
constexpr int kFirstOffsetText = 641;
constexpr int kFirstOffsetBar = 651;
constexpr int kFirstGainText = 655;
constexpr int kFirstGainBar = 660;
constexpr int kUnity = 670;
constexpr int kAdvanced = 1020;
constexpr int kFirstPixel = 1375;
constexpr int kLastPixel = 1377;
constexpr int kSavePlot = 1606;
constexpr int kBand = 20441;
constexpr int kSaturated = 20442;

constexpr std::int32_t kMostOffset = 255;
constexpr std::int32_t kMostGain = 15;
constexpr std::size_t kChannels = 4;

constexpr std::uint32_t kTickTimer = 1;
constexpr std::int64_t kTickMs = 20;

constexpr std::uint32_t kWhitePaper = 0xFFFFFF;
constexpr std::uint32_t kGreenPaper = 0x00FF00;  // the same in either order of its bytes
constexpr ColorRef kMarkColor = 0x000000;
constexpr ColorRef kMarkPaper = 0xFFFFFF;
constexpr ColorRef kGoodBand = 0x40A030;
constexpr ColorRef kOutsideBand = 0xB0B0B0;
constexpr int kLeftMarkLength = 3;
constexpr int kRightMarkLength = 4;

// What the bars show until OK stores it.
struct Levels {
    std::array<std::int32_t, kChannels> gain{};
    std::array<std::int32_t, kChannels> offset{};
};
Levels chosen;

// The rows with which the head came in, for Cancel.
struct Rows {
    std::int32_t frameRate = 0;
    std::int32_t integration = 0;
};
Rows atOpening;

int saturatedShown = -1;  // hundredths of a percent that stand in the dialog; -1: none

ScopePlot OscBitmap;
DeviceBitmap OscPicture;  // OscBitmap as it was painted last: its memory serves the next tick

bool IsHgCdTe()
{
    return HeadTiming.HeadModel == kHgCdTeHead;
}

// --- The head ------------------------------------------------------------------------------------------------------

// The head is as it was when the dialog opened.
void SendAsAtOpening()
{
    SetFrameRateIndex(atOpening.frameRate);
    SetIntegration(atOpening.integration);
    SetVideoGain(VideoGain[0]);
    SetVideoOffset(VideoOffset[0]);
    SetVoltsRange(VideoGain[0], VideoOffset[0]);
}

// --- The plot ------------------------------------------------------------------------------------------------------

// Columns or rows of dots that fill so many logical pixels: at a fractional ratio a dot is a whole number of device
// pixels all the same.
int DotsIn(HWND window, int logicalPixels)
{
    const int extent = ScaledExtent(window, logicalPixels, 1);
    if (extent < 1) return 0;
    return static_cast<int>(std::int64_t{logicalPixels} * logicalPixels / extent);
}

// Follows the size of its area. False after a box where memory is refused.
bool FitPlot(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kPlotArea);
    const Rect client = GetClientRect(area);
    const int width = DotsIn(area, client.Width()) / 16 * 16;
    const int height = DotsIn(area, client.Height());
    if (OscBitmap.width == width && OscBitmap.height == height && !OscBitmap.bits.empty()) return true;
    if (AllocatePlot(OscBitmap, width, height)) return true;
    MessageBox(dialog, "Failure to allocate global graphics memory!", kMessageCaption);
    return false;
}

void DrawMarks(HWND dialog, int id, int length)
{
    const HWND strip = DlgItemWindow(dialog, id);
    const Rect client = GetClientRect(strip);
    FillSurface(strip, client, kMarkPaper);
    for (const int row : MarkRows(client.Height())) FillSurface(strip, {0, row, length, row + 1}, kMarkColor);
}

void DrawTickMarks(HWND dialog)
{
    DrawMarks(dialog, kLeftMarks, kLeftMarkLength);
    DrawMarks(dialog, kRightMarks, kRightMarkLength);
}

void DrawPlot(HWND dialog)
{
    const std::size_t values = std::min(OscFrame.size(), static_cast<std::size_t>(OscPixels));
    PlotFrame(OscBitmap, std::span<const std::int16_t>(OscFrame).first(values), DisplayLow, DisplayHigh,
              ActiveConfig.OscilliscopeRes);
    const std::uint32_t paper = CalType != 0 ? kGreenPaper : kWhitePaper;
    const HWND area = DlgItemWindow(dialog, kPlotArea);
    FillSurface(area, GetClientRect(area), paper);
    PlotPicture(OscBitmap, paper, OscPicture);
    StretchPixels(area, {0, 0, OscBitmap.width, OscBitmap.height}, OscPicture);
}

// Green beside the good counts. They are the converter's own: a calibrated picture's are others.
void DrawGoodBand(HWND dialog)
{
    const HWND strip = DlgItemWindow(dialog, kBand);
    const Rect client = GetClientRect(strip);
    FillSurface(strip, client, kOutsideBand);
    const std::optional<int> top = RowOfCount(kGoodSignalHigh, DisplayLow, DisplayHigh, client.Height());
    const std::optional<int> bottom = RowOfCount(kGoodSignalLow, DisplayLow, DisplayHigh, client.Height());
    if (CalType == 0 && top && bottom) FillSurface(strip, {0, *top, client.Width(), *bottom + 1}, kGoodBand);
}

// Only what has changed: a frame that shows nothing new takes no memory.
void ShowSaturated(HWND dialog)
{
    const double share = SaturatedShare(RawFrame);
    const int hundredths = static_cast<int>(std::lround(share * 10000));
    if (std::exchange(saturatedShown, hundredths) == hundredths) return;
    SetDlgItemText(dialog, kSaturated, SaturatedText(share));
}

// Made before the dialog is laid out, so that the first tick finds them at their size.
void MakeSurfaces(HWND dialog)
{
    for (const int id : {kPlotArea, kLeftMarks, kRightMarks, kBand}) DlgItemWindow(dialog, id);
}

void ShowPixelAxis(HWND dialog)
{
    SetDlgItemText(dialog, kFirstPixel, "0");
    SetDlgItemInt(dialog, kLastPixel, OscPixels);
}

void ShowAxisLabels(HWND dialog)
{
    int id = kFirstLabel;
    for (const std::int32_t counts : MarkCounts(DisplayLow, DisplayHigh)) {
        std::string text;
        CountsToUnit(counts, DisplayUnit, &text);
        SetDlgItemText(dialog, id++, text);
    }
}

void ShowUnit(HWND dialog)
{
    SetWindowText(dialog, ScopeTitle(DisplayUnit));
    ShowAxisLabels(dialog);
}

// The range or what can be read of it may have changed.
void RefreshUnits(HWND dialog)
{
    SetVoltsRange(chosen.gain[0], chosen.offset[0]);
    ShowUnits(dialog);
    ShowUnit(dialog);
}

// --- The tick ------------------------------------------------------------------------------------------------------

void StartTick(HWND dialog)
{
    SetTimer(dialog, kTickTimer, kTickMs);
}

void StopTick(HWND dialog)
{
    KillTimer(dialog, kTickTimer);
}

// While something else stands in front of the dialog.
class TickPause {
  public:
    explicit TickPause(HWND dialog) : dialog_(dialog) { StopTick(dialog_); }
    ~TickPause() { StartTick(dialog_); }
    TickPause(const TickPause&) = delete;
    TickPause& operator=(const TickPause&) = delete;

  private:
    HWND dialog_;
};

void FreeBlocks()
{
    OscBitmap = {};
    OscPicture = {};
    FreeOscFrame();
}

void Leave(HWND dialog, int result)
{
    FreeBlocks();
    EndDialog(dialog, result);
}

void GiveUp(HWND dialog)
{
    MessageBox(dialog, "Bad status on GetVideoData().  Error reading image processor!", kMessageCaption);
    write::frames.LiveVideo = 0;
    SendAsAtOpening();
    StatusString(kIdleHint, kLeftAligned);
    Leave(dialog, 0);
}

void Tick(HWND dialog)
{
    StopTick(dialog);
    AccountHeldUp();  // the scope looks at a frame now and then; the others aren't lost
    const int read = GetVideoData(write::scope.OscFrame);
    DrawTickMarks(dialog);
    if (read < 1) {
        GiveUp(dialog);
        return;
    }
    if (!FitPlot(dialog)) {
        Leave(dialog, 0);
        return;
    }
    DrawPlot(dialog);
    DrawGoodBand(dialog);
    ShowSaturated(dialog);
    if (!DisplayEnabled) DrawFrame(OscFrame);  // otherwise it is in the image window already
    NoteScriptFrame();
    StartTick(dialog);
}

// The range is the whole one again, and the picture is drawn in it.
bool TakeCorrectionAway()
{
    const bool done = ResetUnityGainOffset(ActiveConfig) != 0;
    BuildDisplayLut(Contrast, Brightness);
    return done;
}

// --- Opening -------------------------------------------------------------------------------------------------------

// The row of the clock in force. Without a head that has been programmed the row stays as the settings have it.
std::int32_t RowInForce()
{
    if (HeadTiming.TimingCols == 0) return IndexFrameRate;
    return HeadTiming.MasterClockIndex - HeadTiming.MasterClockMinIndex;
}

void ListFrameRates(HWND dialog)
{
    ListClear(dialog, kFrameRateBox);
    for (std::int32_t clock = HeadTiming.MasterClockMinIndex; clock <= HeadTiming.MasterClockMaxIndex; ++clock) {
        ListAdd(dialog, kFrameRateBox, FrameRateText(FrameRateAtClock(clock)));
    }
    ListSelect(dialog, kFrameRateBox, RowInForce());
}

void ListIntegrationTimes(HWND dialog)
{
    FillIntegrationCombo(dialog, IndexFrameRate, IndexIntegrationTime.at(SlotInUse()));
    UpdateIntegrationTime();
}

void OpenLists(HWND dialog)
{
    SetFrameRate(FrameRateAtClock(HeadTiming.MasterClockIndex));
    write::head.IndexFrameRate = RowInForce();
    ListFrameRates(dialog);
    if (IsHgCdTe()) write::head.IndexIntegrationTime.at(SlotInUse()) = 0;
    atOpening = {.frameRate = IndexFrameRate, .integration = IndexIntegrationTime.at(SlotInUse())};
    ListIntegrationTimes(dialog);
}

void ShowLevel(HWND dialog, std::size_t channel)
{
    const auto place = static_cast<int>(channel);
    SetDlgItemInt(dialog, kFirstOffsetText + place, chosen.offset.at(channel));
    SetDlgItemInt(dialog, kFirstGainText + place, chosen.gain.at(channel));
}

// The largest value stands at the top, position 0. A section may hold what no bar can show.
int PositionOf(std::int32_t value, int most)
{
    return most - std::clamp(value, 0, most);
}

// Outputs beyond half the channels have no bars of their own and follow the first.
void OpenBars(HWND dialog)
{
    chosen = {.gain = VideoGain, .offset = VideoOffset};
    const auto ownBars = static_cast<std::size_t>(std::clamp(ActiveConfig.NumChannels / 2, 0, 3));
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        if (channel > ownBars) {
            chosen.gain.at(channel) = chosen.gain[0];
            chosen.offset.at(channel) = chosen.offset[0];
            continue;
        }
        const auto place = static_cast<int>(channel);
        SetScrollRange(dialog, kFirstOffsetBar + place, 0, kMostOffset);
        SetScrollPos(dialog, kFirstOffsetBar + place, PositionOf(chosen.offset.at(channel), kMostOffset));
        SetScrollRange(dialog, kFirstGainBar + place, 0, kMostGain);
        SetScrollPos(dialog, kFirstGainBar + place, PositionOf(chosen.gain.at(channel), kMostGain));
        ShowLevel(dialog, channel);
    }
}

// The first set-up after a turn-on without a calibration starts from a clean state. False after a box.
bool DoFirstSetup(HWND dialog)
{
    write::cal.CalType = 0;
    if (!InstallDecommutation(ActiveConfig, MirrorHoriz, MirrorVert, RotateCCW, true)) return false;
    StatusMessage("Set unity gain and offset", kLeftAligned);
    if (!TakeCorrectionAway()) {
        MessageBox(dialog, "Unable to Set UnityGain and Offset!", kMessageCaption);
    }
    write::head.FirstSetupPending = 0;
    StatusMessage("Start acquiring data", kLeftAligned);
    if (CameraOn) RestartGrab();
    return true;
}

bool PrepareScope(HWND dialog)
{
    if (!FitPlot(dialog) || !FitOscFrame()) return false;
    ShowPixelAxis(dialog);
    saturatedShown = -1;
    StatusString(kVideoSetupHint, kLeftAligned);
    return !FirstSetupPending || DoFirstSetup(dialog);
}

void Open(HWND dialog)
{
    const Hourglass hourglass;
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture
    MakeSurfaces(dialog);
    OpenLists(dialog);
    OpenBars(dialog);
    SetVideoOffset(chosen.offset[0]);
    SetVideoGain(chosen.gain[0]);
    if (!PrepareScope(dialog)) {
        Leave(dialog, 0);
        return;
    }
    ResetHostFrameNext();
    StatusMessage("Set valid units", kLeftAligned);
    RefreshUnits(dialog);
    StatusString(kIdleHint, kLeftAligned);
    FocusDlgItem(dialog, kIdOk);
    StartTick(dialog);
}

// --- What the operator does ----------------------------------------------------------------------------------------

// The toolkit has moved the list by a page of its own; a page here is four rows from where it stood.
void PageSelection(HWND dialog, int box, int row)
{
    if (KeyIsDown(Key::kPageUp)) ListSelect(dialog, box, PageBack(row));
    if (KeyIsDown(Key::kPageDown)) ListSelect(dialog, box, PageOn(row, ListCount(dialog, box)));
}

void Tell(HWND dialog, std::string_view text)
{
    MessageBox(dialog, text, kMessageCaption);
}

void PickFrameRate(HWND dialog)
{
    PageSelection(dialog, kFrameRateBox, IndexFrameRate);
    if (ListSelection(dialog, kFrameRateBox) == -1) Tell(dialog, "Error getting frame rate ComboBox value!");
    const int row = ListSelection(dialog, kFrameRateBox);
    if (row == -1) {
        Tell(dialog, "Error setting frame rate listbox value!");
        return;
    }
    const Hourglass hourglass;
    SetFrameRateIndex(row);
    ListIntegrationTimes(dialog);
}

void PickIntegration(HWND dialog)
{
    PageSelection(dialog, kIntegrationBox, IndexIntegrationTime.at(SlotInUse()));
    const int index = ListSelection(dialog, kIntegrationBox);
    if (index == -1) {
        Tell(dialog, "Error getting integration ComboBox value!");
        return;
    }
    SetIntegration(index);
}

// With one channel one bar drives all.
void Choose(std::array<std::int32_t, kChannels>& values, std::size_t channel, std::int32_t value)
{
    values.at(channel) = value;
    if (ActiveConfig.NumChannels <= 1) values.fill(value);
}

void ShowVolts(HWND dialog)
{
    SetVoltsRange(chosen.gain[0], chosen.offset[0]);
    if (DisplayUnit != kUnitCounts) ShowAxisLabels(dialog);
}

void ScrollOffset(HWND dialog, int bar, int position)
{
    const auto channel = static_cast<std::size_t>(bar - kFirstOffsetBar);
    Choose(chosen.offset, channel, kMostOffset - position);
    ShowLevel(dialog, channel);
    SetVideoOffset(chosen.offset.at(channel));
    ShowVolts(dialog);
}

void ScrollGain(HWND dialog, int bar, int position)
{
    const auto channel = static_cast<std::size_t>(bar - kFirstGainBar);
    Choose(chosen.gain, channel, kMostGain - position);
    ShowLevel(dialog, channel);
    SetVideoGain(chosen.gain.at(channel));
    ShowVolts(dialog);
}

void SetUnity(HWND dialog)
{
    if (!CameraOn) return;
    const Hourglass hourglass;
    write::cal.CalType = 0;
    StatusMessage("Setting Unity Gain & Unity Offset", kLeftAligned);
    TakeCorrectionAway();
    if (CameraOn) RestartGrab();
    RefreshUnits(dialog);
    FocusDlgItem(dialog, kIdOk);
    StatusString(kIdleHint, kLeftAligned);
}

void PickUnit(HWND dialog)
{
    TakeUnit(dialog);
    ShowUnit(dialog);
}

void PrintPlot(HWND dialog)
{
    const TickPause pause(dialog);
    PrintImage(dialog);
}

void SavePlot(HWND dialog)
{
    const TickPause pause(dialog);
    const Dib picture = CaptureWindowDib(dialog, kCaptureWindow);
    if (!picture) {
        Tell(dialog, "Failure to allocate global graphics memory!");
        return;
    }
    std::string path = "*.bmp";
    if (!SelectFile(dialog, path, kSelectToSave)) return;
    if (const int error = SaveDib(picture, path)) DibError(error);
}

// A new window has other frame rates, another integration table and another number of pixels.
void RunAdvanced(HWND dialog)
{
    const TickPause pause(dialog);
    AdvancedDialog(dialog);
    ListFrameRates(dialog);
    ListIntegrationTimes(dialog);
    FitOscFrame();
    ShowPixelAxis(dialog);
    RefreshUnits(dialog);
}

void Accept(HWND dialog)
{
    StopTick(dialog);
    if (CameraOn) RestartGrab();
    write::head.VideoGain = chosen.gain;
    write::head.VideoOffset = chosen.offset;
    SaveVideoSettings(IniFilePath);
    StatusString(kIdleHint, kLeftAligned);
    Leave(dialog, 1);
}

void Cancel(HWND dialog)
{
    StopTick(dialog);
    if (CameraOn) RestartGrab();
    SendAsAtOpening();
    StatusString(kIdleHint, kLeftAligned);
    Leave(dialog, 0);
}

// The head keeps what it was given; the settings stay as they were.
void CloseWindow(HWND dialog)
{
    Leave(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    {kFrameRateBox, PickFrameRate, kSelectionChanged},
    {kIntegrationBox, PickIntegration, kSelectionChanged},
    {kUnitList, PickUnit, kSelectionChanged},
    OnScroll(kFirstOffsetBar, ScrollOffset),
    OnScroll(kFirstOffsetBar + 1, ScrollOffset),
    OnScroll(kFirstOffsetBar + 2, ScrollOffset),
    OnScroll(kFirstOffsetBar + 3, ScrollOffset),
    OnScroll(kFirstGainBar, ScrollGain),
    OnScroll(kFirstGainBar + 1, ScrollGain),
    OnScroll(kFirstGainBar + 2, ScrollGain),
    OnScroll(kFirstGainBar + 3, ScrollGain),
    OnTimer(kTickTimer, Tick),
    {kUnity, SetUnity},
    {kPrint, PrintPlot},
    {kSavePlot, SavePlot},
    {kAdvanced, RunAdvanced},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "QVF1058",
                             .procedure = fnVIDEOSETDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpVideoSetup,
                             .closed = CloseWindow};

}  // namespace

int VideoSetupDialog(HWND parent)
{
    if (!LinkIsReady()) return 0;
    const std::int32_t updatesBefore = std::exchange(write::buffer.PeriodicUpdates, 0);
    const HeadHearing hearing;
    const std::int32_t missingBefore = std::exchange(write::head.VideoSetupMissing, 0);
    const int result = RunDialog(kFrame, parent);
    if (result != 1) write::head.VideoSetupMissing = missingBefore;
    CloseLinkAfterUse();
    write::buffer.PeriodicUpdates = updatesBefore;
    if (!ViewingFile) RestartGrab();
    hearing.TellIfUnheard(parent, "Frame rate, integration time, gain or offset may not be as they are set.");
    return result;
}

LRESULT fnVIDEOSETDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetVideoSetupDialog()
{
    chosen = {};
    atOpening = {};
    OscBitmap = {};
    saturatedShown = -1;
}

}  // namespace kelvo

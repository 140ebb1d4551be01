#include "record/buffer_dialog.h"

#include "analysis/frame_graph_dialog.h"
#include "grabber/board.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames_write.h"
#include "head/camera_head.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "record/buffer_file.h"
#include "record/buffer_file_dialogs.h"
#include "record/capture_sequence.h"
#include "record/live_video.h"
#include "record/replay.h"
#include "record/sequence_library_write.h"
#include "resources/help_contexts.h"
#include "state/buffer_state_write.h"
#include "state/cal_state.h"
#include "state/camera_config_write.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows_write.h"
#include "ui/dialog_frame.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "video/video.h"
#include "viewing/written_note.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr int kStoredFrames = 1332;
constexpr int kSequenceList = 1334;
constexpr int kComposition = 1336;
constexpr int kTotalFrames = 1338;
constexpr int kSubSequenceList = 1340;
constexpr int kFramesToCapture = 1342;
constexpr int kFramesToSkip = 1344;
constexpr int kTriggerType = 1346;
constexpr int kReplay = 1348;
constexpr int kRate = 1350;
constexpr int kStartCapture = 1352;
constexpr int kPause = 1353;
constexpr int kSaveBuffer = 1354;
constexpr int kLoadFromDisk = 1356;
constexpr int kGraph = 1358;
constexpr int kClearBuffer = 1360;
constexpr int kStoreSize = 20600;  // "500 frames, 5.0 s at 100.000 Hz"

constexpr std::string_view kErrorCaption = "Buffer Board Error";
constexpr std::string_view kPauseCaption = "&Pause";
constexpr std::string_view kPlayCaption = "&Play";

SubSeqRecord& SubSequenceOnView()
{
    return write::sequences.SubSeqList[static_cast<std::size_t>(SubSeqNum)];
}

SeqRecord& SequenceOnView()
{
    return write::sequences.SeqList[static_cast<std::size_t>(SeqNum)];
}

// All codes of the grabbing layer have one text.
void TellGrabberError(HWND dialog, int code)
{
    std::string text;
    GetBoardErrorText(code, text);
    MessageBox(dialog, text, kErrorCaption);
}

void Enable(HWND dialog, std::initializer_list<int> ids, bool enabled)
{
    for (const int id : ids) EnableDlgItem(dialog, id, enabled);
}

// ---- What is shown

void ShowStoredFrames(HWND dialog)
{
    SetDlgItemInt(dialog, kStoredFrames, FramesInBuffer);
    SetScrollRange(dialog, kReplayBar, 0, std::max(FramesInBuffer - 1, 0));
}

void ShowStoreSize(HWND dialog)
{
    std::string text = Format("%d frames", numBufFrames);
    if (FrameRate > 0) {
        const double rate = static_cast<double>(FrameRate);
        text += Format(", %.1f s at %.3f Hz", numBufFrames / rate, rate);
    }
    SetDlgItemText(dialog, kStoreSize, text);
}

void ShowSequence(HWND dialog)
{
    SetDlgItemText(dialog, kComposition, SequenceOnView().Composition);
    SetDlgItemInt(dialog, kTotalFrames, SequenceOnView().TotalFrames);
}

void ShowSubSequence(HWND dialog)
{
    SetDlgItemInt(dialog, kFramesToCapture, SubSequenceOnView().Frames);
    SetDlgItemInt(dialog, kFramesToSkip, SubSequenceOnView().Skip);
    ListSelect(dialog, kTriggerType, SubSequenceOnView().Trigger);
}

void ShowReplayPlace(HWND dialog)
{
    const std::int32_t frame = std::max(ReplayOnView, 0);
    SetDlgItemInt(dialog, kReplayFrame, frame);
    SetScrollPos(dialog, kReplayBar, frame);
}

// What can be done while replay is on, and while it isn't.
void EnableByReplay(HWND dialog)
{
    const bool stands = ReplayActive == 0;
    const bool hasFrames = FramesInBuffer > 0;
    Enable(dialog, {kStartCapture, kClearBuffer, kLoadFromDisk}, stands);
    Enable(dialog, {kSaveBuffer, kGraph}, stands && hasFrames);
    EnableDlgItem(dialog, kPause, !stands);
    EnableDlgItem(dialog, kReplay, hasFrames);
    SetDlgItemText(dialog, kPause, ReplayPaused ? kPlayCaption : kPauseCaption);
    CheckDlgButton(dialog, kReplay, !stands);
}

// ---- The library

bool RefuseNumber(HWND dialog, int id, std::int32_t before, std::string_view text, bool beeps)
{
    SetDlgItemInt(dialog, id, before);
    if (beeps) MessageBeep(Sound::kDefault);
    MessageBox(dialog, text, kMessageCaption);
    return false;
}

bool TakeTypedComposition(HWND dialog)
{
    TypedComposition taken = TakeComposition(GetDlgItemText(dialog, kComposition));
    if (taken.hadDigits) MessageBeep(Sound::kDefault);
    SequenceOnView().Composition = std::move(taken.composition);
    SequenceOnView().TotalFrames = CheckSequenceSize(dialog);
    ShowSequence(dialog);
    return true;
}

// The text of the box says 1, and 0 is taken: a subsequence that is passed over.
bool TakeFramesToCapture(HWND dialog)
{
    SubSeqRecord& record = SubSequenceOnView();
    const std::optional<std::int32_t> frames = ScanDecimal(GetDlgItemText(dialog, kFramesToCapture));
    if (!frames || *frames < 0 || *frames > numBufFrames) {
        return RefuseNumber(dialog, kFramesToCapture, record.Frames,
                            Format("Number of frames to capture\n must be in range: 1 to %d", numBufFrames), true);
    }
    record.Frames = *frames;
    SetDlgItemInt(dialog, kFramesToCapture, *frames);
    CountAllSequences();
    SequenceOnView().TotalFrames = CheckSequenceSize(dialog);
    ShowSequence(dialog);
    return true;
}

bool TakeFramesToSkip(HWND dialog)
{
    SubSeqRecord& record = SubSequenceOnView();
    const std::optional<std::int32_t> skip = ScanDecimal(GetDlgItemText(dialog, kFramesToSkip));
    if (!skip) return RefuseNumber(dialog, kFramesToSkip, record.Skip, "Unable to Skip number!", false);
    if (*skip < 0 || *skip > kMostSkip) {
        return RefuseNumber(dialog, kFramesToSkip, record.Skip, "Number of frames to skip must be 0 to 16383", false);
    }
    record.Skip = *skip;
    SetDlgItemInt(dialog, kFramesToSkip, *skip);
    return true;
}

// What was typed and not left yet, before a button or a list acts. False after a box.
bool TakeTyped(HWND dialog)
{
    const SubSeqRecord& record = SubSequenceOnView();
    if (GetDlgItemText(dialog, kComposition) != SequenceOnView().Composition && !TakeTypedComposition(dialog))
        return false;
    const auto differs = [&](int id, std::int32_t value) { return GetDlgItemText(dialog, id) != Format("%d", value); };
    if (differs(kFramesToCapture, record.Frames) && !TakeFramesToCapture(dialog)) return false;
    return !differs(kFramesToSkip, record.Skip) || TakeFramesToSkip(dialog);
}

void OnCompositionLeft(HWND dialog)
{
    TakeTypedComposition(dialog);
}

void OnFramesLeft(HWND dialog)
{
    TakeFramesToCapture(dialog);
}

void OnSkipLeft(HWND dialog)
{
    TakeFramesToSkip(dialog);
}

void HintOnFrames(HWND /*dialog*/)
{
    StatusMessage(Format("# of Frames to capture: 1 to %d", numBufFrames), kLeftAligned);
}

void HintOnSkip(HWND /*dialog*/)
{
    StatusMessage("Frames to skip range: 0-16383", kLeftAligned);
}

void PickSequence(HWND dialog)
{
    TakeTyped(dialog);
    write::sequences.SeqNum = std::max(ListSelection(dialog, kSequenceList), 0);
    ShowSequence(dialog);
}

void PickSubSequence(HWND dialog)
{
    TakeTyped(dialog);
    write::sequences.SubSeqNum = std::max(ListSelection(dialog, kSubSequenceList), 0);
    ShowSubSequence(dialog);
}

void PickTrigger(HWND dialog)
{
    SubSeqRecord& record = SubSequenceOnView();
    record.Trigger = PickedTrigger(record.Trigger, ListSelection(dialog, kTriggerType));
    ListSelect(dialog, kTriggerType, record.Trigger);
}

// ---- The store

void EmptyStore()
{
    ResetHostFrameNext();
    write::buffer.FramesInBuffer = 0;
    write::buffer.BufferStale = 0;
}

// Frames 0 to the last one, and the whole of the head's window.
void ProposeTransfer()
{
    write::buffer.BufferFirstFrame = 0;
    write::buffer.BufferLastFrame = FramesInBuffer - 1;
    write::buffer.BufferRectTop = FpaSerialWord.RowStart;
    write::buffer.BufferRectLeft = FpaSerialWord.ColStart;
    write::buffer.BufferRectBottom = FpaSerialWord.RowStart + ActiveConfig.Vroi - 1;
    write::buffer.BufferRectRight = FpaSerialWord.ColStart + ActiveConfig.Hroi - 1;
}

// Range, rectangle and place as they stand now, for a load that fails.
class TransferAsItWas {
  public:
    void PutBack() const
    {
        for (std::size_t i = 0; i < kVariables.size(); ++i) write::buffer.*kVariables[i] = values_[i];
    }

  private:
    using Buffer = BufferStateVariables;
    static constexpr std::array kVariables = {
        &Buffer::BufferFirstFrame, &Buffer::BufferLastFrame, &Buffer::BufferRectTop, &Buffer::BufferRectLeft,
        &Buffer::BufferRectBottom, &Buffer::BufferRectRight, &Buffer::BufferLoadAt};
    static std::array<std::int32_t, kVariables.size()> Now()
    {
        std::array<std::int32_t, kVariables.size()> values{};
        for (std::size_t i = 0; i < kVariables.size(); ++i) values[i] = write::buffer.*kVariables[i];
        return values;
    }
    std::array<std::int32_t, kVariables.size()> values_ = Now();
};

void SetUpStore(HWND dialog)
{
    CheckBoardModules();
    write::buffer.HostFrameBytes = AllocateHostFrames();
    if (HostFrameBytes == 0) MessageBox(dialog, "Buffer board memory not accessable!", "Hardware Error");
}

void CountStore()
{
    const std::int64_t frameBytes = static_cast<std::int64_t>(CameraFrameValues()) * 2;
    if (frameBytes > 0) write::camera.numBufFrames = static_cast<std::int32_t>(HostFrameBytes / frameBytes);
}

// True where replay isn't on; otherwise the operator reads what to do first.
bool ReplayStands(HWND dialog, std::string_view refusal)
{
    if (!ReplayActive) return true;
    MessageBox(dialog, refusal, kMessageCaption);
    return false;
}

void ClearBuffer(HWND dialog)
{
    if (!ReplayStands(dialog, "Stop the REPLAY function before Reset.")) return;
    EmptyStore();
    write::buffer.ReplayCurrent = 0;
    EnableByReplay(dialog);
    EnableDlgItem(dialog, kStartCapture, HostFrameBytes > 0);
    ShowStoredFrames(dialog);
    ShowReplayPlace(dialog);
}

// ---- A burst

bool HasSomethingToCapture(HWND dialog)
{
    if (SequenceOnView().TotalFrames > 0) return true;
    MessageBeep(Sound::kDefault);
    MessageBox(dialog, "Define a sequence composed of subsequences with non-zero number of frames to capture.",
               "Nothing to capture!");
    return false;
}

bool AgreeToOverflow(HWND dialog)
{
    if (SequenceOnView().TotalFrames <= numBufFrames - FramesInBuffer) return true;
    MessageBeep(Sound::kDefault);
    return MessageBox(dialog, "Probable buffer board memory overflow.\n\nContinue?", "Warning", BoxIcon::kQuestion,
                      BoxButtons::kYesNo) == Button::kYes;
}

// The live display is held off while it lives.
class NoPeriodicUpdates {
  public:
    NoPeriodicUpdates() { write::buffer.PeriodicUpdates = 0; }
    ~NoPeriodicUpdates() { write::buffer.PeriodicUpdates = 1; }
    NoPeriodicUpdates(const NoPeriodicUpdates&) = delete;
    NoPeriodicUpdates& operator=(const NoPeriodicUpdates&) = delete;
};

// The frames that were stored count, however the burst ended.
void CountBurst(HWND dialog)
{
    const std::int64_t frames = std::int64_t{FramesInBuffer} + LastBurst().frames;
    write::buffer.FramesInBuffer = static_cast<std::int32_t>(std::min<std::int64_t>(frames, numBufFrames));
    if (frames <= numBufFrames) return;
    MessageBox(dialog, "Probable loss of data!", "Buffer Board Memory Overflow");
    const std::int32_t oldest = HostFrameNext > numBufFrames - 1 ? 0 : HostFrameNext;
    StatusNote(StatusText + Format(" Frame %d is the oldest.", oldest));
}

void RunBurst(HWND dialog)
{
    const Hourglass hourglass;
    StatusMessage(
        Format(" Starting capture of %u frames to Host RAM.", static_cast<unsigned>(SequenceOnView().TotalFrames)),
        kLeftAligned);
    const NoPeriodicUpdates heldOff;
    const std::int32_t calType = CalType;
    const int result =
        CaptureSequence(FrameRate, static_cast<int>(std::floor(FrameRate)), SequenceOnView().Composition, SubSeqList);
    if (result < 0) {
        write::buffer.PeriodicUpdates = 1;
        TellGrabberError(dialog, result);
    }
    if (CalType != calType) StatusNote(" The picture is not calibrated any more: load the calibration again.");
    CountBurst(dialog);
}

void StartCapture(HWND dialog)
{
    if (ReplayActive) {
        MessageBeep(Sound::kDefault);
        ReplayStands(dialog, "Stop the REPLAY function before Capture.");
        FocusDlgItem(dialog, kReplay);
        return;
    }
    if (!TakeTyped(dialog) || !HasSomethingToCapture(dialog) || !AgreeToOverflow(dialog) || !BeginLiveVideo()) return;
    if (BufferStale) EmptyStore();
    RunBurst(dialog);
    if (FramesInBuffer > 0) ProposeTransfer();
    EnableByReplay(dialog);
    ShowStoredFrames(dialog);
}

// ---- Replay

void SwitchReplay(HWND dialog)
{
    if (IsDlgButtonChecked(dialog, kReplay)) {
        ShowStoredFrames(dialog);
        if (StartReplay(FramesInBuffer) < 0) {
            MessageBox(dialog, "Unable to grab frames to Host RAM", kErrorCaption);
        } else {
            write::buffer.BufferStale = 1;
        }
    } else {
        StopReplay(0);
        write::buffer.ReplayCurrent = 0;
    }
    EnableByReplay(dialog);
    ShowReplayPlace(dialog);
}

void PauseOrPlay(HWND dialog)
{
    if (GetDlgItemText(dialog, kPause) == kPauseCaption) {
        StopReplay(1);
    } else {
        ResumeReplay();
    }
    SetDlgItemText(dialog, kPause, ReplayPaused ? kPlayCaption : kPauseCaption);
}

void PickRate(HWND dialog)
{
    SetReplayRate(ListSelection(dialog, kRate));
}

void MoveReplay(HWND dialog, int /*bar*/, int position)
{
    if (ReplayActive && ReplayPaused) {
        ShowReplayFrame(position);
    } else {
        ShowReplayPlace(dialog);
    }
}

// ---- Buffer files

void LoadFromDisk(HWND dialog)
{
    if (!ReplayStands(dialog, "Stop the REPLAY function before Load.")) return;
    std::string path = "*.buf";
    if (!SelectFile(dialog, path, kSelectToOpen)) return;
    write::windows.FilePathBuf = path;
    const TransferAsItWas before;
    if (!BufferLoadDialog(dialog)) return;
    const Hourglass hourglass;
    StatusMessage(" Wait - Loading frames from disk to Buffer Board memory.", kLeftAligned);
    const int result = LoadBufferFile(path, BufferFirstFrame, BufferLastFrame, BufferRectTop, BufferRectLeft,
                                      BufferRectBottom, BufferRectRight);
    if (result < 1) {
        before.PutBack();
        TellGrabberError(dialog, result);
        StatusString(kHostRamHint, kLeftAligned);
        return;
    }
    const std::int64_t frames = std::int64_t{BufferLoadAt} + 1 + (std::int64_t{BufferLastFrame} - BufferFirstFrame);
    write::buffer.FramesInBuffer = static_cast<std::int32_t>(std::clamp<std::int64_t>(frames, 0, numBufFrames));
    write::hostFrames.HostFrameNext = FramesInBuffer;
    StatusString(kHostRamHint, kLeftAligned);
    EnableByReplay(dialog);
    ShowStoredFrames(dialog);
}

void SaveBuffer(HWND dialog)
{
    if (!ReplayStands(dialog, "Stop the REPLAY function before Saving.") || !TakeTyped(dialog)) return;
    std::string path = "*.buf";
    if (!SelectFile(dialog, path, kSelectToSave)) return;
    write::windows.FilePathBuf = path;
    ProposeTransfer();
    if (!BufferSaveDialog(dialog)) return;
    const Hourglass hourglass;
    StatusMessage(" Wait - Storing frames to disk from Buffer Board.", kLeftAligned);
    const int result = SaveBufferFile(path, BufferFirstFrame, BufferLastFrame, BufferRectTop, BufferRectLeft,
                                      BufferRectBottom, BufferRectRight, SequenceOnView().Composition, SubSeqList);
    if (result < 1) {
        TellGrabberError(dialog, result);
        StatusString(kHostRamHint, kLeftAligned);
        return;
    }
    NoteSavedFile(path, static_cast<std::uint32_t>(BufferLastFrame - BufferFirstFrame + 1));
}

void GraphBuffer(HWND dialog)
{
    if (TakeTyped(dialog)) BufferGraphDialog(dialog);
}

// ---- Opening and the end

void AskToRestartDisplay(HWND dialog)
{
    if (LiveVideo) return;
    const Button answer =
        MessageBox(dialog, "You must restart the display to view buffer board images.\nRestart image display?",
                   "Restart Image Display?", BoxIcon::kQuestion, BoxButtons::kYesNo);
    if (answer == Button::kYes) ToggleLiveVideo();
}

void OpenWithoutReplay(HWND dialog)
{
    SetReplayRate(1);
    write::buffer.ReplayPaused = 0;
    SetUpStore(dialog);
    if (FramesInBuffer == 0) {
        ResetHostFrameNext();
        write::buffer.ReplayCurrent = 0;
    }
    AskToRestartDisplay(dialog);
    write::buffer.BufferStale = 0;
}

void FillLists(HWND dialog)
{
    for (const SeqRecord& record : SeqList) ListAdd(dialog, kSequenceList, record.Name);
    for (const SubSeqRecord& record : SubSeqList) ListAdd(dialog, kSubSequenceList, record.Name);
    for (const std::string_view name : kTriggerNames) ListAdd(dialog, kTriggerType, name);
    for (const ReplayRate& rate : kReplayRates) ListAdd(dialog, kRate, rate.text);
    ListSelect(dialog, kSequenceList, SeqNum);
    ListSelect(dialog, kSubSequenceList, SubSeqNum);
    ListSelect(dialog, kRate, ReplayRateIndex);
}

void Open(HWND dialog)
{
    if (ReplayActive) {
        write::buffer.BufferStale = 1;
    } else {
        OpenWithoutReplay(dialog);
    }
    CountStore();
    if (!ReadSequences()) {
        MessageBox(dialog, "Unable to open/close Buffer Board initialization file.", kMessageCaption);
        CancelDialog(dialog);
        return;
    }
    FillLists(dialog);
    ShowSequence(dialog);
    ShowSubSequence(dialog);
    ShowStoredFrames(dialog);
    ShowStoreSize(dialog);
    ShowReplayPlace(dialog);
    EnableByReplay(dialog);
    EnableDlgItem(dialog, kGraph, false);
    SetDlgItemTip(dialog, kGraph, "Of what has been captured, loaded or replayed since this window was opened");
    if (HostFrameBytes == 0) EnableDlgItem(dialog, kStartCapture, false);
    write::buffer.BufferDialog = dialog;
    CentreDialog(dialog);
    FocusDlgItem(dialog, kComposition);
    StatusString(kHostRamHint, kLeftAligned);
}

void Accept(HWND dialog)
{
    if (!TakeTyped(dialog)) return;
    WriteSequences();
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    {kSequenceList, PickSequence, kSelectionChanged},
    {kComposition, OnCompositionLeft, kEditFocusLost},
    {kSubSequenceList, PickSubSequence, kSelectionChanged},
    {kFramesToCapture, HintOnFrames, kEditFocus},
    {kFramesToCapture, OnFramesLeft, kEditFocusLost},
    {kFramesToSkip, HintOnSkip, kEditFocus},
    {kFramesToSkip, OnSkipLeft, kEditFocusLost},
    {kTriggerType, PickTrigger, kSelectionChanged},
    {kReplay, SwitchReplay},
    {kPause, PauseOrPlay},
    {kRate, PickRate, kSelectionChanged},
    OnScroll(kReplayBar, MoveReplay),
    {kStartCapture, StartCapture},
    {kClearBuffer, ClearBuffer},
    {kLoadFromDisk, LoadFromDisk},
    {kSaveBuffer, SaveBuffer},
    {kGraph, GraphBuffer},
    {kIdOk, Accept},
};

LRESULT fnBUFFERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogFrame kFrame{.name = "BUFFER",
                             .procedure = fnBUFFERDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpHostRamCapture};
LRESULT fnBUFFERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace

int CheckSequenceSize(HWND dialog)
{
    const FittedSequence fitted = FitComposition(SequenceOnView().Composition, SubSeqList, numBufFrames);
    if (fitted.cut) {
        SetDlgItemText(dialog, kComposition, SequenceOnView().Composition);
        MessageBox(dialog, "Unable to store # of frames requested into buffer.", kMessageCaption);
    }
    return fitted.frames;
}

int HostRamCaptureDialog(HWND parent)
{
    if (!GrabberPresent) return 0;
    const int result = RunDialog(kFrame, parent);
    write::buffer.BufferDialog = nullptr;
    return result;
}

CommandEnd HostRamCapture()
{
    if (!GrabberPresent) {
        StatusNote(
            "Host RAM capture needs the frame grabber: turn the camera on, or choose a camera that has host frames.");
        return CommandEnd::kLeaveStatus;
    }
    HostRamCaptureDialog(hWndMain);
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo

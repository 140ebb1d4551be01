#include "shell/commands.h"

#include "analysis/histogram_dialog.h"
#include "analysis/image_math_dialog.h"
#include "analysis/line_plot_dialog.h"
#include "analysis/noise_dialog.h"
#include "analysis/statistics_command.h"
#include "badpixel/image_commands.h"
#include "calib/calibration_commands.h"
#include "calib/report_dialog.h"
#include "camera/camera_commands.h"
#include "display/display_pipeline.h"
#include "export/export_dialog.h"
#include "grabber/recording.h"
#include "output/print_image.h"
#include "platform/box.h"
#include "platform/help.h"
#include "platform/text.h"
#include "platform/window.h"
#include "record/buffer_dialog.h"
#include "record/contsave_dialog.h"
#include "record/recorder_run.h"
#include "record/recorder_window.h"
#include "record/trace_window.h"
#include "record/triggered_save_dialog.h"
#include "regions/region_window.h"
#include "resources/board_use.h"
#include "resources/command_list.h"
#include "resources/menu.h"
#include "shell/about.h"
#include "shell/benches.h"
#include "shell/cameras_dialog.h"
#include "shell/color_scale.h"
#include "shell/desktop_commands.h"
#include "shell/frame_account_window.h"
#include "shell/menu_scripts.h"
#include "shell/saturation_overlay.h"
#include "shell/script_recording.h"
#include "shell/script_window.h"
#include "shell/shutdown.h"
#include "shell/support_dialog.h"
#include "shell/undo.h"
#include "shell/window_state.h"
#include "state/frame_state.h"
#include "state/windows_write.h"
#include "ui/command_end.h"
#include "ui/status.h"
#include "usermodule/user_dialog.h"
#include "video/cursor_command.h"
#include "video/image_cursor.h"
#include "video/picture_commands.h"
#include "video/zoom_pan.h"
#include "viewing/difference_dialog.h"
#include "viewing/fitted_contrast.h"
#include "viewing/playback.h"
#include "viewing/recorded_dialog.h"
#include "viewing/save_commands.h"
#include "viewing/tiff_command.h"
#include "viewing/view_commands.h"

#include <algorithm>
#include <iterator>

namespace kelvo {

namespace {

// A command as a function that says how it ends, out of one that doesn't.
template <void (*run)(), CommandEnd end = CommandEnd::kResetStatus>
CommandEnd Then()
{
    run();
    return end;
}

void CombineImages()
{
    StopPlaying();
    ImageMathDialog(hWndMain);
}

CommandEnd NoiseOfPixels()
{
    StopPlaying();
    return MeasureNoise();
}

void OpenBenchOfCamera()
{
    OpenBench(hWndMain);
}

// A key that works the selected region (regions/region_editing.h), with none selected.
void NoRegionTookIt() {}

struct Command {
    int id;
    CommandEnd (*run)();
};

constexpr Command kCommands[] = {
    {kCmdHostRamCapture, HostRamCapture},
    {kCmdSaveImage, SaveImageFile},
    {kCmdLoadImage, LoadImageFile},
    {kCmdNameSequenceForSaving, NameSequence},
    {kCmdSaveSequence, SaveNextOfSequence},
    {kCmdTriggeredSave, Then<SaveOnTriggers>},
    {kCmdNameSequenceToLoad, NameSequenceForLoading},
    {kCmdLoadNext, NextFrame},
    {kCmdLoadLast, PreviousFrame},
    {kCmdContinuousSave, SaveContinuously},
    {kCmdSaveBitmap, SaveBitmap},
    {kCmdPrintBitmap, PrintBitmap},
    {kCmdPrinterSetup, Then<OpenPrinterSetup>},
    {kCmdExit, AskToExit},
    {kCmdDisplaySetup, DisplaySetup},
    {kCmdVideoSetup, VideoSetup},
    {kCmdImageSetup, ImageSetup},
    {kCmdConfiguration, Configure},
    {kCmdCameras, OpenCameras},
    {kCmdSaveTiff8, SaveTiff8},
    {kCmdSaveTiff16, SaveTiff16},
    {kCmdExport, ExportFrames},
    {kCmdDialogHelp, Then<ShowDialogHelp, CommandEnd::kLeaveStatus>},
    {kCmdNewCalibration, NewCalibration},
    {kCmdUpdateCalibration, UpdateCalibration},
    {kCmdSaveCalibration, SaveCalibration},
    {kCmdLoadCalibration, LoadPreviousCalibration},
    {kCmdApplyCalibration, ApplyCalibrationToData},
    {kCmdViewStatistics, ViewStatistics},
    {kCmdFreeze, FreezeFrame},
    {kCmdReplaceBadPixels, ReplaceBadPixels},
    {kCmdNormalGray, ShowNormalGray},
    {kCmdInvertedGray, ShowInvertedGray},
    {kCmdNormalColor, ShowNormalColor},
    {kCmdImageCursor, Then<ToggleImageCursor, CommandEnd::kLeaveStatus>},
    {kCmdTrackball, Then<ToggleTrackballMode, CommandEnd::kLeaveStatus>},
    {kCmdNextColorMap, ShowNextColorMap},
    {kCmdHistogram, ShowHistogram},
    {kCmdLinePlot, LinePlot},
    {kCmdImageMath, Then<CombineImages, CommandEnd::kLeaveStatus>},
    {kCmdNoise, NoiseOfPixels},
    {kCmdDifference, CompareWithReference},
    {kCmdTurnOn, TurnOn},
    {kCmdHelpContents, Then<ShowHelpContents>},
    {kCmdHelpSearch, Then<SearchHelp>},
    {kCmdHelpKeys, Then<ShowKeysHelp>},
    {kCmdHelpOnHelp, Then<ShowHelpOnHelp>},
    {kCmdDesktopTutorial, Then<ShowTutorial>},  // the desktop has none of its own to run
    {kCmdKelvoTutorial, Then<ShowTutorial>},
    {kCmdSupportFiles, SaveSupportFiles},
    {kCmdAbout, Then<ShowAbout>},
    {kCmdViewGoToFrame, Then<GoToFrameDialog>},
    {kCmdViewPlay, Then<StartPlaying>},
    {kCmdViewStop, Then<StopPlaying>},
    {kCmdViewCopyPicture, Then<CopyPicture>},
    {kCmdViewFitContrast, Then<FitContrastOnView>},
    {kCmdViewFrameAccount, Then<ToggleFrameAccount>},
    {kCmdViewColorScale, Then<ToggleColorScale>},
    {kCmdViewSaturation, Then<ToggleSaturationOverlay>},
    {kCmdBench, Then<OpenBenchOfCamera>},
    {kCmdViewPlayOrStop, Then<PlayOrStop>},
    {kCmdViewBackwards, Then<TogglePlayBackwards>},
    {kCmdViewLoop, Then<TogglePlayLoop>},
    {kCmdViewFaster, Then<PlayFaster>},
    {kCmdViewSlower, Then<PlaySlower>},
    {kCmdViewGaps, Then<ShowGapsAndMarks>},
    {kCmdViewRegions, Then<OpenRegionsWindow>},
    {kCmdRegionRemove, Then<NoRegionTookIt>},
    {kCmdRegionWider, Then<NoRegionTookIt>},
    {kCmdRegionNarrower, Then<NoRegionTookIt>},
    {kCmdUndo, Undo},
    {kCmdRedo, Redo},
    {kCmdViewFit, Then<FitView>},
    {kCmdViewOneToOne, Then<ShowOneToOne>},
    {kCmdViewCentre, Then<CentreView>},
    {kCmdViewKeepFitted, Then<ToggleKeepFitted>},
    {kCmdThemeDesktop, Then<UseDesktopTheme>},
    {kCmdThemeLight, Then<UseLightTheme>},
    {kCmdThemeDark, Then<UseDarkTheme>},
    {kCmdCalibrationReport, OpenCalibrationReport},
    {kCmdVoltageCalibration, CalibrateVoltage},
    {kCmdRecorder, Then<OpenRecorderWindow>},
    {kCmdTraces, Then<OpenTraceWindow>},
    {kCmdRecorderTrigger, Then<TriggerByHand, CommandEnd::kLeaveStatus>},
    {kCmdRecorderMark, Then<MarkByHand, CommandEnd::kLeaveStatus>},
    {kCmdScriptWindow, Then<OpenScriptWindow, CommandEnd::kLeaveStatus>},
    {kCmdScriptStop, Then<StopMenuScript, CommandEnd::kLeaveStatus>},
    {kCmdScriptRecord, Then<ToggleScriptRecording, CommandEnd::kLeaveStatus>},
};

// A key of a grey item.
CommandEnd NotWhileTheBoardIsUsed()
{
    const BoardUse use = RecordingRuns() ? BoardUse::kRecording : BoardUse::kTrace;
    MessageBox(hWndMain, std::string(TipOf(use)) + '.', kMessageCaption, BoxIcon::kInformation);
    return CommandEnd::kResetStatus;
}

CommandEnd MovePicture(int id)
{
    ZoomPanCommand(id);
    return ImageCursorOn ? CommandEnd::kLeaveStatus : CommandEnd::kResetStatus;  // the read-out stays
}

CommandEnd OpenRecent(int id)
{
    return OpenRecentFile(static_cast<std::size_t>(id - kCmdRecentFirst));
}

CommandEnd StartMenuScript(int id)
{
    RunMenuScript(id);
    return CommandEnd::kLeaveStatus;
}

// Commands that differ by their number alone.
struct CommandRange {
    int first;
    int last;
    CommandEnd (*run)(int id);
};

constexpr CommandRange kRanges[] = {
    {kCmdZoomPanFirst, kCmdZoomPanLast, MovePicture},
    {kCmdNoUserFunction, kCmdNoUserFunction, UserCommand},
    {kCmdUserFirst, kCmdUserLast, UserCommand},
    {kCmdRecentFirst, kCmdRecentFirst + kRecentFileCount - 1, OpenRecent},
    {kCmdScriptFirst, kCmdScriptFirst + kScriptCount, StartMenuScript},
};

constexpr const CommandRange* CommandRangeOf(int id)
{
    return std::ranges::find_if(kRanges, [id](const CommandRange& r) { return r.first <= id && id <= r.last; });
}

constexpr bool IsHandledOnce(const CommandRow& row)
{
    if (!IsCommand(row)) return true;
    const auto handlers =
        std::ranges::count(kCommands, row.id, &Command::id) + (CommandRangeOf(row.id) != std::end(kRanges));
    return handlers == 1;
}
constexpr bool IsListed(const Command& command)
{
    const CommandRow* const row = CommandRowOf(command.id);
    return row != std::end(kCommandList) && IsCommand(*row);
}
// Every command of the list has one handler, and no handler stands without a row.
static_assert(std::ranges::all_of(kCommandList, IsHandledOnce));
static_assert(std::ranges::all_of(kCommands, IsListed));

LRESULT ResultOf(CommandEnd end)
{
    if (end == CommandEnd::kLeaveStatus) return 1;
    StatusString(kIdleHint, kLeftAligned);
    return 0;
}

}  // namespace

namespace {

LRESULT Run(HWND window, int id)
{
    if (CaptureIsUsed() && NeedsBoard(id)) return ResultOf(NotWhileTheBoardIsUsed());
    const auto* const command = std::ranges::find(kCommands, id, &Command::id);
    if (command != std::end(kCommands)) return ResultOf(command->run());
    const CommandRange* const range = CommandRangeOf(id);
    if (range != std::end(kRanges)) return ResultOf(range->run(id));
    return DefWindowProc(window, WM_COMMAND, static_cast<WPARAM>(id), 0);
}

}  // namespace

LRESULT RunCommand(HWND window, int id)
{
    const LRESULT result = Run(window, id);
    TellUnfitDifference();
    return result;
}

LRESULT ShowCommandHelp(HWND window, int id)
{
    write::windows.HelpMode = 0;
    if (const int context = HelpContextOf(id)) {
        ShowHelpContext(context);
        return 0;
    }
    MessageBox(hWndMain, "Help not available for this Menu item.", kMessageCaption);
    return DefWindowProc(window, WM_COMMAND, static_cast<WPARAM>(id), 0);
}

}  // namespace kelvo

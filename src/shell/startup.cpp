#include "shell/startup.h"

#include "analysis/frame_graph_settings.h"
#include "calib/calibration_set.h"
#include "calib/source_dialogs.h"
#include "camera/configuration_dialog.h"
#include "camera/turn_on.h"
#include "config/data_directory.h"
#include "config/display_settings.h"
#include "config/settings.h"
#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "grabber/board.h"
#include "head/active_camera.h"
#include "head/identify_head.h"
#include "head/video_settings.h"
#include "imagefile/tiff_file.h"
#include "platform/application.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/help.h"
#include "platform/menu.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/window.h"
#include "record/external_signal.h"
#include "record/recorder_settings.h"
#include "regions/region_view.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "resources/keys_page.h"
#include "resources/menu.h"
#include "script/script.h"
#include "shell/benches.h"
#include "shell/color_scale.h"
#include "shell/frame_account_window.h"
#include "shell/main_window.h"
#include "shell/note_directories.h"
#include "shell/panel.h"
#include "shell/saturation_overlay.h"
#include "shell/second_start.h"
#include "shell/start_options.h"
#include "shell/undo.h"
#include "shell/window_state.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/windows_write.h"
#include "ui/recent_files.h"
#include "ui/select_file_write.h"
#include "ui/splash.h"
#include "ui/status_write.h"
#include "ui/window_file.h"
#include "usermodule/user_functions.h"
#include "usermodule/user_menu.h"
#include "video/image_cursor_write.h"
#include "video/video.h"
#include "viewing/fitted_contrast.h"
#include "viewing/play_bar.h"
#include "viewing/playback.h"

#include <unistd.h>

#include <filesystem>

namespace kelvo {

namespace {

constexpr std::int64_t kSplashMs = 1500;

bool MakeMainWindow()
{
    const WindowClass mainClass{.name = "KELVO",
                                .procedure = MainWndProc,
                                .icon = "1_LN2DEWAR",
                                .systemBackground = false,
                                .background = kPictureGround};
    if (!RegisterWindowClass(mainClass)) return false;
    const HWND window = CreateMainWindow("KELVO", "Kelvo");
    if (!window) return false;
    SetMenu(window, MainMenu());
    FillHelpPage(kHelpKeys, KeysPageTables());
    SetPointer(Pointer::kArrow);
    UseStoredTheme(window);
    ShowMainWindow(window);
    UpdateWindow(window);
    write::windows.hWndMain = window;
    return true;
}

bool MakeStatusWindow()
{
    const WindowClass statusClass{.name = "StatusWndClass",
                                  .procedure = StatusWndProc,
                                  .icon = {},
                                  .systemBackground = false,
                                  .background = StatusBackground};
    if (!RegisterWindowClass(statusClass)) {
        MessageBox(hWndMain, "Unable to register Status Window class!", kMessageCaption);
        return false;
    }
    write::windows.hWndStatus =
        CreateChildWindow("StatusWndClass", hWndMain, {0, ClientHeight - TextHeight, ClientWidth, ClientHeight});
    if (!hWndStatus) {
        MessageBox(hWndMain, "Unable to create Status Window.", kMessageCaption);
        return false;
    }
    UpdateWindow(hWndStatus);
    StatusString(kStartHint, kCentred);
    return true;
}

// Turns the camera on as the command line says, or leaves the choice to the operator, unless the start is for looking
// at files. The request is queued, so that the control panel stands before a dialog opens.
void StartCamera(std::string_view commandLine)
{
    if (!InitializeHardware()) {
        MessageBox(hWndMain, "Initialize Hardware Failure", kMessageCaption);
        return;
    }
    const bool turnOn = commandLine.size() >= kShortestCommandLine;
    if (!turnOn && !startOptions.viewFiles.empty()) return;
    if (turnOn && TurnCameraOn(std::string(commandLine).c_str(), 1)) return;
    PostMessage(hWndMain, WM_COMMAND, kCmdTurnOn, 0);
}

// Once a directory: what the operator takes away later stays away.
std::vector<std::string> LayShippedFiles()
{
    if (!MakeDirectories(DefaultDir)) return {DefaultDir};
    const std::string stamp = DefaultDir + "/shipped.stamp";
    if (FileExists(stamp)) return {};
    std::vector<std::string> missing = CopyShippedFiles(DefaultDir);
    // Where it can't be written the next start looks again.
    if (missing.empty()) {
        ReplaceFile(stamp,
                    "The files that come with Kelvo were put here. Without this file the next start puts those "
                    "that are missing back.\n");
    }
    return missing;
}

void EnterDefaultDirectory()
{
    SetDefaultDir(FindDefaultDirectory());
    const std::vector<std::string> missing = LayShippedFiles();
    if (!missing.empty()) {
        std::string text = "These files of Kelvo couldn't be made:\n";
        for (const std::string& file : missing) text += "\n" + file;
        MessageBox(hWndMain, text, "Kelvo File Error!");
    }
    write::fileChoice.FirstFileDirectory = FirstDirectoryForFiles();
    // Without it relative names are taken from where the program was started; all of ours are whole.
    if (chdir(DefaultDir.c_str()) != 0) return;
}

// A newcomer finds the sources of the simulated camera beside the turn-on dialog, once. A script opens the bench
// itself.
void OpenBenchAtFirstStart()
{
    constexpr const char* kSection = "Bench";
    constexpr const char* kKey = "Shown";
    const bool shown = WindowFileInt(kSection, kKey, ScriptRuns() ? 1 : 0) != 0;
    if (shown || !startOptions.viewFiles.empty() || !BenchIsThere()) return;
    OpenBench(hWndMain);
    WriteWindowFile(kSection, kKey, "1");
}

// Host RAM capture is there only with host frames behind it.
void FitMenuToCamera()
{
    if (!hWndMain) return;
    if (ActiveConfig.BufferCapture) {
        RestoreMenuItem(hWndMain, kCmdHostRamCapture);
    } else {
        DeleteMenuItem(hWndMain, kCmdHostRamCapture);
    }
    SetMenuText(hWndMain, kCmdTriggeredSave, "&Bio-Rad save...");
}

}  // namespace

std::string FindDefaultDirectory()
{
    if (!startOptions.dataDirectory.empty()) return startOptions.dataDirectory;
    return DataDirectoryByDefault();
}

std::string FirstDirectoryForFiles()
{
    return startOptions.staysInDirectory ? std::string() : UserDocumentsDirectory() + "/Kelvo";
}

int WinMain(const void* /*instance*/, const void* /*previousInstance*/, std::string_view commandLine, int /*show*/)
{
    SetRestart({InitialSetup, InitializeHardware});
    SetSourceBench({BenchIsThere, OpenBench});
    SetDefaultDir(FindDefaultDirectory());
    PartNotesFromSettings();
    if (!MakeMainWindow()) return 0;
    if (!InitialSetup()) {
        MessageBox(hWndMain, "Initialize Variables Failure", kMessageCaption);
        return 0;
    }
    write::status.StatusBackground = 0xFF0000;
    write::status.StatusForeground = 0xFFFFFF;
    if (!MakeStatusWindow()) return 0;
    if (!PointerPresent()) MessageBox(hWndMain, "Vantir requires a trackball or mouse!", kMessageCaption);

    SetPointer(Pointer::kHourglass);
    SetAccelerators(hWndMain, MainAccelerators());
    const Dib splash = ShowSplash(hWndMain);
    UpdateWindow(hWndMain);
    StartCamera(commandLine);
    HideSplash(splash, kSplashMs);

    CreateDockedPanel("PANEL", hWndMain, PanelProc);
    OpenFrameAccount();
    OpenColorScale();
    OpenSaturationOverlay();
    OpenRegions();
    OpenUndo();
    OpenKeepFitted();
    OpenPlayBar();
    SetPlayLoop(true);
    SetPointer(Pointer::kArrow);
    StatusString(kIdleHint, kLeftAligned);
    ShowMainWindow(hWndMain);
    UpdateWindow(hWndMain);
    if (!startOptions.viewFiles.empty()) PostMessage(hWndMain, kOpenStartFile, 0, 0);
    OpenBenchAtFirstStart();
    TakeHandovers();
    return RunMessageLoop(hWndMain);
}

int InitialSetup()
{
    StatusMessage("Wait - Vantir Loading initial setup", static_cast<int>(TextAlign::kCentre));
    write::trackball.TrackballMode = 0;
    EnterDefaultDirectory();
    write::windows.HelpMode = 0;
    ReadSetupKeys();
    BeginUserMenu();
    ReadActiveCamera();
    write::display.DisplayLow = 0;
    write::display.DisplayHigh = FullScaleCounts();

    LoadVideoSettings();
    LoadCalibrationSettings();
    ReadDisplaySettings();
    ReadGraphSettings();
    InitUserModules();
    write::fileChoice.FileDialogTemplate = kImageTemplate;
    FitMenuToCamera();
    ReadRecentFiles();
    StatusString(kStartHint, kCentred);
    InitExternalSignal();
    ReadRingMegabytes();
    BuildTiffHead();
    return 1;
}

int InitializeHardware()
{
    if (!IdentifyCameraHead()) return 0;
    write::frames.GrabberPresent = ActiveConfig.BufferCapture ? 1 : 0;
    FitMenuToCamera();
    const int ready = InitImageProcessor();  // sets GrabberPresent again
    if (ActiveConfig.BufferCapture && !GrabberPresent) {
        MessageBox(hWndMain,
                   "Current camera driver requires use of the image capture board which is not installed. Change the "
                   "camera configuration.",
                   "Kelvo configuration warning");
    }
    if (!CameraOn) {
        DrawMenuBar(hWndMain);
        StatusString(kStartHint, kCentred);
    }
    if (!ready) {
        MessageBox(hWndMain, "Initialize Image Processor Failure", "Recommend re-start!");
        EnableMenuItem(hWndMain, kCmdTurnOn, false);
        DrawMenuBar(hWndMain);
    }
    return ready;
}

int InitImageProcessor()
{
    StatusMessage("Wait - Vantir initializing Image Processor", static_cast<int>(TextAlign::kCentre));
    const Hourglass hourglass;
    write::frames.GrabberPresent = ResetBoardState();
    ReadNumGrayLevels();
    SetColorMap(ImageColor);
    BuildDisplayLut(Contrast, Brightness);
    RefreshPicture();
    StatusMessage("Wait - Kelvo start up procedure", static_cast<int>(TextAlign::kCentre));
    return 1;
}

}  // namespace kelvo

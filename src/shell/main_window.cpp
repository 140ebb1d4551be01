#include "shell/main_window.h"

#include "display/display_pipeline.h"
#include "grabber/board_state.h"
#include "grabber/copm2.h"
#include "grabber/frame_account.h"
#include "grabber/host_frames.h"
#include "head/camera_report.h"
#include "platform/dialog.h"
#include "platform/front.h"
#include "platform/menu.h"
#include "platform/picture_scroll.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "record/external_signal.h"
#include "record/recorder.h"
#include "record/recorder_run.h"
#include "record/replay.h"
#include "regions/region_editing.h"
#include "regions/regions_file.h"
#include "resources/ids.h"
#include "script/script.h"
#include "shell/color_scale.h"
#include "shell/commands.h"
#include "shell/menu_scripts.h"
#include "shell/second_start.h"
#include "shell/shutdown.h"
#include "shell/start_options.h"
#include "shell/undo.h"
#include "state/buffer_state.h"
#include "state/display_state.h"
#include "state/frame_state_write.h"
#include "state/state_registry.h"
#include "state/windows_write.h"
#include "ui/status.h"
#include "ui/undo.h"
#include "video/cursor_command.h"
#include "video/held_picture.h"
#include "video/image_cursor.h"
#include "video/live_rate.h"
#include "video/video.h"
#include "video/view_drag.h"
#include "video/zoom_pan.h"
#include "viewing/fitted_contrast.h"
#include "viewing/play_bar.h"
#include "viewing/playback.h"
#include "viewing/view_commands.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

std::int32_t DialogHelpArmed = 1;  // Shift+F10 may ask for a dialog's help again

const StateNames kStateNames{
    Named("DialogHelpArmed", DialogHelpArmed),
};

constexpr int kViewMargin = 60;          // what panel and status line take of the client height
constexpr std::int64_t kHeldOffMs = 10;  // how soon a live refresh that was held off is tried again

void OnCreate(HWND window)
{
    write::windows.TextHeight = static_cast<std::int16_t>(TextLineHeight(window));
    write::frames.LoadName.clear();
}

void OnSize(LPARAM lParam)
{
    write::windows.ClientWidth = static_cast<std::int16_t>(LowWord(static_cast<WPARAM>(lParam)));
    write::windows.ClientHeight = static_cast<std::int16_t>(HighWord(static_cast<WPARAM>(lParam)));
    if (hWndStatus) MoveWindow(hWndStatus, {0, ClientHeight - TextHeight, ClientWidth, ClientHeight});
    // Once the camera's record has set them, the limits of zoom and cursor follow the window.
    if (ViewWidth != 0) {
        write::windows.ViewWidth = ClientWidth;
        write::windows.ViewHeight = ClientHeight - kViewMargin;
    }
    PlacePlayBar();
    PlaceColorScale();
}

// Coming back from another program sets the pointer's clip again.
LRESULT OnSetFocus(HWND window, WPARAM wParam)
{
    if (wParam != 0 || window != hWndMain) return DefWindowProc(window, WM_SETFOCUS, wParam, 0);
    if (!TrackballMode) {
        TrackballToggle();
        TrackballToggle();
    }
    if (ImageCursorOn) {
        SendMessage(window, WM_COMMAND, kCmdImageCursor, 0);
        SendMessage(window, WM_COMMAND, kCmdImageCursor, 0);
    }
    return 0;
}

LRESULT OnKillFocus(HWND window, WPARAM wParam)
{
    if (wParam != 0) return DefWindowProc(window, WM_KILLFOCUS, wParam, 0);
    ReleasePicture();
    EndRegionDrag();
    ReleasePointerClip();
    SetPointer(Pointer::kArrow);
    return 0;
}

Point PointOf(LPARAM lParam)
{
    const auto at = static_cast<WPARAM>(lParam);
    return {SignedLowWord(at), SignedHighWord(at)};
}

LRESULT OnMouseMove(HWND window, WPARAM wParam, LPARAM lParam)
{
    if (DragPicture(PointOf(lParam)) || DragRegions(PointOf(lParam))) return 0;
    if (TrackballMode) {
        TrackballMotion();
        return 0;
    }
    if (!ImageCursorOn) return DefWindowProc(window, WM_MOUSEMOVE, wParam, lParam);
    FollowPointer();
    return 0;
}

void ShowRate(int rateHz)
{
    const std::string_view hint = SetupHint();
    StatusMessage(Format("  Displaying at %d Hz", rateHz) + (hint.empty() ? "" : "   " + std::string(hint)), 0);
}

// The heart of live video: a frame, and the timer again at once, so that the operator gets a turn between two frames.
void OnLiveTimer(HWND window)
{
    if (!DisplayEnabled || !(LiveVideo || CameraOn || ViewingFile)) {
        RestartLiveRate();
        return;
    }
    if (!PeriodicUpdates || PictureIsHeld()) {  // a long acquisition owns the board, or a measurement the picture
        AccountHeldUp();
        RestartLiveRate();
        SetTimer(window, kLiveTimer, kHeldOffMs);
        return;
    }
    if (ModalIsOpen()) AccountHeldUp();  // a dialog in front explains frames that passed by
    if (LiveVideo && CameraIsLost()) {   // the last frame stands until there is another one
        AccountHeldUp();
        RestartLiveRate();
        SetTimer(window, kLiveTimer, kHeldOffMs);
        return;
    }
    const int refreshed = RefreshLiveFrame();
    if (refreshed) NoteScriptFrame();
    if (!LiveVideo) {
        if (refreshed) RestartLiveRate();
        return;
    }
    if (!refreshed) {
        if (icp_report(IcpModule).link == CameraLink::kLost) {  // it goes on when the camera is back
            SetTimer(window, kLiveTimer, kHeldOffMs);
        } else {
            ToggleLiveVideo();  // so that the board's message doesn't repeat
        }
        return;
    }
    SetTimer(window, kLiveTimer, 0);
    const std::optional<int> rateHz = CountLiveFrame();
    if (rateHz && !StatusNoteStands()) ShowRate(*rateHz);
    if (!ModalIsOpen()) FollowCamera();
}

LRESULT OnTimer(HWND window, WPARAM wParam, LPARAM lParam)
{
    if (wParam == kPlayTimer) {
        if (!PictureIsHeld()) PlayNextFrame();
        return 0;
    }
    KillTimer(window, static_cast<std::uint32_t>(wParam));
    switch (wParam) {
        case kCursorTimer:
            OnCursorTimer();
            return 0;
        case kLiveTimer:
            OnLiveTimer(window);
            return 0;
        case kReplayTimer:
            if (PictureIsHeld()) {
                SetTimer(window, kReplayTimer, kHeldOffMs);
            } else {
                OnReplayTimer();
            }
            return 0;
        case kFitTimer:
            OnFitTimer();
            return 0;
        case kKeepRegionsTimer:
            KeepRegions();
            return 0;
        case kHandedTimer:
            OpenHandedFiles();
            return 0;
        case kRecorderTimer:
            TendRecorder();
            return 0;
        case kRecorderLampTimer:
            FollowRecorderRun();
            return 0;
        default:
            return DefWindowProc(window, WM_TIMER, wParam, lParam);
    }
}

// Help on what is in front: F1 in a dialog is its Help button, Shift+F10 or the middle button asks for the dialog's own
// page, F1 in a menu runs the highlighted item in help mode.
void OnEnterIdle(HWND window, WPARAM wParam, LPARAM lParam)
{
    constexpr WPARAM kDialogWaits = 0;
    constexpr WPARAM kMenuWaits = 2;
    if (wParam == kDialogWaits) {
        const bool helpKeys = (KeyIsDown(Key::kShift) && KeyIsDown(Key::kF10)) || KeyIsDown(Key::kMiddleButton);
        if (KeyIsDown(Key::kF1)) {
            const auto dialog = reinterpret_cast<HWND>(lParam);  // NOLINT(performance-no-int-to-ptr)
            PostMessage(dialog, WM_COMMAND, kIdHelp, 0);
        } else if (!helpKeys) {
            DialogHelpArmed = 1;
        } else if (DialogHelpArmed) {
            PostMessage(window, WM_COMMAND, kCmdDialogHelp, 0);
            DialogHelpArmed = 0;
        }
    }
    if (wParam == kMenuWaits && KeyIsDown(Key::kF1)) {
        write::windows.HelpMode = 1;
        PostMessage(window, WM_KEYDOWN, static_cast<WPARAM>(Key::kReturn), 0);
    }
}

LRESULT OnCommand(HWND window, WPARAM wParam, LPARAM lParam)
{
    if (LowWord(static_cast<WPARAM>(lParam)) != 0) return 0;  // from a control: its dialog has handled it
    const int id = LowWord(wParam);
    const CycleHoldUp holdUp;  // a dialog that it opens has live video behind it
    if (HelpMode) return ShowCommandHelp(window, id);
    if (RegionTakesCommand(id)) return 0;
    const CommandGesture gesture(id);
    return RunCommand(window, id);
}

void OnEscape()
{
    if (GiveUpRegionDrag()) return;
    if (TrackballMode) {
        ToggleTrackballMode();
    } else {
        StopScriptByEscape();
    }
}

// One drag of a thumb is one step to take back; clicks and turns of the wheel on a bar are a run.
void OnPictureScroll(PictureScroll what)
{
    if (what == PictureScroll::kEnds) {
        EndGesture();
    } else {
        BeginGesture({.repeats = what == PictureScroll::kStep});
    }
}

LRESULT Answer(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_CREATE:
            OnCreate(window);
            return 0;
        case WM_CLOSE:
            if (wParam != kCloseUnasked && !AgreeToEndWhatRuns()) return 0;
            return DefWindowProc(window, message, wParam, lParam);
        case WM_DESTROY:
            ShutDown();
            return 0;
        case WM_SIZE:
            OnSize(lParam);
            return 0;
        case WM_SETFOCUS:
            return OnSetFocus(window, wParam);
        case WM_KILLFOCUS:
            return OnKillFocus(window, wParam);
        case WM_PAINT:
            RepaintPicture();
            return 0;
        case WM_COMMAND:
            return OnCommand(window, wParam, lParam);
        case WM_TIMER:
            return OnTimer(window, wParam, lParam);
        case WM_ENTERIDLE:
            OnEnterIdle(window, wParam, lParam);
            return 0;
        case WM_MOUSEMOVE:
            return OnMouseMove(window, wParam, lParam);
        case WM_MOUSEWHEEL:
            ZoomAbout(SignedHighWord(wParam), PointOf(lParam));
            return 0;
        case WM_LBUTTONDOWN:
            if (PressRegions(PointOf(lParam))) return 0;
            SendMessage(window, WM_COMMAND, kCmdImageCursor, 0);
            return 0;
        case WM_LBUTTONUP:
            EndRegionDrag();
            return 0;
        case WM_LBUTTONDBLCLK:
            if (PressRegions(PointOf(lParam))) return 0;
            SendMessage(window, WM_COMMAND, kCmdSaveImage, 0);
            PostMessage(window, WM_COMMAND, kCmdImageCursor, 0);
            return 0;
        case WM_RBUTTONDOWN:
            ToggleTrackballMode();
            return 0;
        case WM_MOUSELEAVE:
            TrackballPointerLeft();
            return 0;
        case WM_KEYDOWN:
            if (static_cast<Key>(wParam) == Key::kEscape) OnEscape();
            return 0;
        case WM_DROPFILES:
            OpenStoredFiles(DroppedFiles());
            return 0;
        case kOpenStartFile:
            OpenStoredFiles(startOptions.viewFiles);
            return 0;
        case kOpenHandedFiles:
            OpenHandedFiles();
            return 0;
        case WM_PICTURESCROLL:
            OnPictureScroll(static_cast<PictureScroll>(wParam));
            return 0;
        case WM_MBUTTONDOWN:
            if (!TrackballMode) TakePicture(PointOf(lParam));
            return 0;
        case WM_MBUTTONUP:
            ReleasePicture();
            return 0;
        case WM_INITMENUPOPUP:
            if (wParam == kCmdScriptFirst) ListScriptsInMenu();
            return 0;
        case WM_INITDIALOG:
        case WM_MENUSELECT:
            return 0;
        default:
            return DefWindowProc(window, message, wParam, lParam);
    }
}

}  // namespace

LRESULT MainWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (message == ExternalSignalMessage && message != 0) {
        OnRecorderSignal();
        return 0;
    }
    const LRESULT result = Answer(window, message, wParam, lParam);
    if (message != WM_DESTROY) FollowPlayBar();
    return result;
}

void ResetMainWindow()
{
    DialogHelpArmed = 1;
}

}  // namespace kelvo

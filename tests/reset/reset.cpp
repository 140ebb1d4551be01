#include "reset/reset.h"

#include "analysis/frame_graph_settings_write.h"
#include "analysis/histogram_drawing.h"
#include "analysis/histogram_settings_write.h"
#include "analysis/image_math_dialog.h"
#include "analysis/line_plot_dialog.h"
#include "analysis/line_plot_view.h"
#include "analysis/line_settings.h"
#include "analysis/line_setup.h"
#include "analysis/noise_dialog.h"
#include "badpixel/geometry_dialog.h"
#include "badpixel/geometry_dialog_mark.h"
#include "calib/apply_dialog.h"
#include "calib/source_dialogs.h"
#include "calib/voltage_calibration.h"
#include "camera/configuration_dialog.h"
#include "config/display_settings.h"
#include "config/frame_rate_table.h"
#include "config/settings.h"
#include "display/color_map.h"
#include "display/difference_view.h"
#include "display/display_pipeline.h"
#include "export/export_dialog.h"
#include "export/export_script.h"
#include "fileboard/file_bench.h"
#include "fileboard/file_camera.h"
#include "genicam/genicam_camera.h"
#include "grabber/board.h"
#include "grabber/copm2.h"
#include "grabber/correction.h"
#include "grabber/frame_account.h"
#include "grabber/frame_read.h"
#include "grabber/host_frames.h"
#include "grabber/recording.h"
#include "head/advanced_dialog.h"
#include "head/camera_head.h"
#include "head/camera_report.h"
#include "head/comm_link.h"
#include "head/scope_frame.h"
#include "head/video_setup_dialog.h"
#include "imagefile/header_write.h"
#include "imagefile/tiff_file.h"
#include "output/print_image.h"
#include "output/print_page.h"
#include "pixel/bad_pixels.h"
#include "pixel/region_marks.h"
#include "pixel/unsaved_set.h"
#include "platform/reset.h"
#include "record/capture_sequence.h"
#include "record/continuous_save.h"
#include "record/contsave_dialog.h"
#include "record/external_signal.h"
#include "record/live_trace.h"
#include "record/recorder.h"
#include "record/recorder_run.h"
#include "record/recorder_window.h"
#include "record/sequence_library.h"
#include "record/trace_window.h"
#include "record/trigger_dialogs.h"
#include "record/triggered_save.h"
#include "record/triggered_save_dialog.h"
#include "regions/bad_detectors.h"
#include "regions/region_editing.h"
#include "regions/region_list.h"
#include "regions/region_view.h"
#include "regions/region_window.h"
#include "regions/regions_file.h"
#include "script/script.h"
#include "shell/color_scale.h"
#include "shell/frame_account_window.h"
#include "shell/main_window.h"
#include "shell/menu_scripts.h"
#include "shell/saturation_overlay.h"
#include "shell/script_recording.h"
#include "shell/script_window.h"
#include "shell/second_start.h"
#include "shell/shutdown.h"
#include "shell/start_options_write.h"
#include "shell/undo.h"
#include "simcam/bench_window.h"
#include "simcam/sim_camera.h"
#include "state/buffer_state_write.h"
#include "state/cal_settings_write.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/contrast_fit_write.h"
#include "state/display_state_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"
#include "state/windows_write.h"
#include "ui/file_lists.h"
#include "ui/gather.h"
#include "ui/recent_files.h"
#include "ui/select_file.h"
#include "ui/status.h"
#include "usermodule/user_menu.h"
#include "video/cursor_command.h"
#include "video/image_cursor.h"
#include "video/live_rate.h"
#include "video/video.h"
#include "video/view_drag.h"
#include "viewing/bitmap_command.h"
#include "viewing/fitted_contrast.h"
#include "viewing/play_bar.h"
#include "viewing/playback.h"
#include "viewing/recorded_view.h"
#include "viewing/save_dialog.h"
#include "viewing/saving.h"

#include <sys/resource.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <locale>
#include <string>
#include <system_error>
#include <vector>

namespace kelvo {

namespace {

// What records uses what all modules hold, and the clock that it began with.
void EndRuns()
{
    StopRecorder();
    if (SaveRuns()) EndSave();
    StopCapture();
}

constexpr void (*kModules[])() = {
    EndRuns,
    ResetMenuScripts,
    ResetScriptRecording,
    ResetScriptWindow,
    ResetScript,  // these are closed while there is an application
    ResetExternalSignal,
    ResetPlatform,
    ResetCameraReport,
    ResetWindows,
    ResetFrameState,
    ResetDisplayState,
    ResetCalState,
    ResetCalSettings,
    ResetHeadState,
    ResetBufferState,
    ResetContrastFit,
    ResetCameraState,

    ResetHeader,
    ResetTiffHead,
    ResetFileLists,
    ForgetRecentFiles,
    ResetSelectFile,
    ResetStatus,
    ResetGather,
    ResetDisplaySettings,
    ResetFrameRateTable,
    ResetSettings,
    ResetBadPixels,
    ResetRegionMarks,
    ResetLineSettings,
    ResetLinePlotView,
    ResetLinePlotDialog,
    ResetLineSetup,
    ResetColorMap,
    ResetDisplayPipeline,
    ResetContinuousSaveDialog,
    ResetContinuousSave,
    ForgetBoardTables,
    ForgetBoard,
    ResetCorrection,
    ResetRecorderWindow,
    ResetTraceWindow,
    ResetRecorderRun,
    ResetRecorder,
    ResetLiveTrace,
    ResetRecording,
    ResetFrameRead,
    ResetFrameAccount,
    ResetHostFrames,
    ForgetSimCameras,
    ResetSimBoard,
    ResetGenicam,
    ResetBenchWindow,
    ForgetFileCameras,
    ResetFileBoard,
    ResetFileBench,
    ResetImageCursor,
    RestartLiveRate,
    ResetVideo,
    ResetViewDrag,
    ResetKeepFitted,
    ResetCommLink,
    ResetCameraHead,
    ResetVideoSetupDialog,
    ResetAdvancedDialog,
    ResetScopeFrame,
    ResetSaveDialog,
    ResetBitmapCommand,
    ResetPrintImage,
    ResetPrintPage,
    ResetSaving,
    ResetGraphSettings,
    ResetUserMenu,
    ResetExportScript,
    ResetTriggeredSave,
    ResetTriggeredSaveDialog,
    ResetTriggerDialogs,
    ForgetUnsavedSet,
    ResetApplyDialog,
    ResetExportDialog,
    ResetImageMathDialog,
    ResetNoiseDialog,
    ResetDifferenceView,
    ResetVoltageCalibration,
    ResetGeometryDialog,
    ResetMark,
    [] { SetRestart({}); },
    [] { SetSourceBench({}); },
    [] { write::options.startOptions = {}; },
    ResetMainWindow,
    ResetUndo,
    ResetRegions,
    ResetRegionView,
    ResetRegionEditing,
    ResetRegionsWindow,
    ResetKeptRegions,
    ResetBadDetectors,
    FreeHistogram,
    ResetHistSettings,
    ResetPlayback,
    ResetRecordedView,
    ResetPlayBar,
    ResetSequenceLibrary,
    ResetCaptureSequence,
    ResetCursorCommand,
    ResetColorScale,
    ResetSaturationOverlay,
    ResetFrameAccountWindow,
    ResetShutDown,
    ForgetHandovers,
};

struct Process {
    std::filesystem::path directory;
    std::vector<std::string> environment;  // NAME=value
    std::string locale;
    std::locale streams;
    rlimit fileSize{};
};

Process ProcessNow()
{
    Process now;
    std::error_code ignored;
    now.directory = std::filesystem::current_path(ignored);
    for (char** entry = environ; *entry; ++entry) now.environment.emplace_back(*entry);
    now.locale = std::setlocale(LC_ALL, nullptr);
    getrlimit(RLIMIT_FSIZE, &now.fileSize);
    return now;
}

void PutEnvironment(const std::vector<std::string>& environment)
{
    clearenv();
    for (const std::string& entry : environment) {
        const std::size_t equals = entry.find('=');
        if (equals == std::string::npos) continue;
        setenv(entry.substr(0, equals).c_str(), entry.c_str() + equals + 1, 1);
    }
    tzset();
}

}  // namespace

void ResetModules()
{
    for (void (*const reset)() : kModules) reset();
}

void ResetProcess()
{
    static const Process atStart = ProcessNow();
    std::error_code ignored;
    std::filesystem::current_path(atStart.directory, ignored);
    PutEnvironment(atStart.environment);
    std::locale::global(atStart.streams);
    std::setlocale(LC_ALL, atStart.locale.c_str());
    setrlimit(RLIMIT_FSIZE, &atStart.fileSize);
    std::signal(SIGXFSZ, SIG_DFL);
}

}  // namespace kelvo

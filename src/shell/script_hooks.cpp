#include "shell/script_hooks.h"

#include "batch/batch.h"
#include "export/export_script.h"
#include "imagefile/header.h"
#include "record/external_signal.h"
#include "record/recorder.h"
#include "record/recorder_run.h"
#include "record/recorder_script.h"
#include "record/recorder_window.h"
#include "regions/region_script.h"
#include "regions/region_window.h"
#include "script/script.h"
#include "shell/benches.h"
#include "state/camera_config.h"
#include "state/frame_state.h"

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

std::span<const std::int16_t> FrameOnView()
{
    if (ViewingFile) return ImageBufferPixels(ImageHeader.ImageHeaderDataOffset);
    return LiveFrame;
}

std::optional<int> CountAt(int x, int y)
{
    const int width = ViewingFile ? ImageHeader.ImageWidth : ActiveConfig.Hroi;
    const int height = ViewingFile ? ImageHeader.ImageHeight : ActiveConfig.Vroi;
    if (x < 0 || y < 0 || x >= width || y >= height) return std::nullopt;
    const std::span<const std::int16_t> frame = FrameOnView();
    const auto index = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    if (index >= frame.size()) return std::nullopt;
    return frame[index];
}

std::optional<int> RawSampleAt(std::int64_t i)
{
    const std::span<const std::int16_t> frame = ViewingFile ? FrameOnView() : std::span<const std::int16_t>(RawFrame);
    if (i < 0 || i >= std::ssize(frame)) return std::nullopt;
    return frame[static_cast<std::size_t>(i)];
}

}  // namespace

void ConnectScripts()
{
    ScriptHooks hooks;
    hooks.pixel = CountAt;
    hooks.raw = RawSampleAt;
    hooks.source = PutSource;
    hooks.truth = TruthOf;
    hooks.registers = RegistersOfHead;
    hooks.trigger = PulseTrigger;
    hooks.lines = LinesOfBoard;
    hooks.signal = SendExternalSignal;
    hooks.recorderWindow = RecorderWindow;
    hooks.record = BeginScriptRecording;
    hooks.recorderDoes = RecorderWord;
    hooks.recorderRuns = [] {
        FollowRecorderRun();  // its end is told before the script hears of it
        return RecorderRuns();
    };
    hooks.recorderStatus = RecorderStatusFields;
    hooks.exportFrames = ExportByScript;
    hooks.exported = LastExportFields;
    hooks.batch = [](const std::vector<std::string>& words) { return RunBatch(words); };
    hooks.regionsWindow = RegionsWindow;
    hooks.regions = RegionsForScript;
    hooks.setRegions = SetRegionsFromScript;
    hooks.statsOfNamed = StatsOfNamed;
    hooks.stats = StatsOfTable;
    SetScriptHooks(std::move(hooks));
}

}  // namespace kelvo

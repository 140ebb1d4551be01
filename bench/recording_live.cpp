// Kelvo as the operator runs it, but for two words of its scripts: signal() begins a recording until it is stopped, and
// ends it, telling the verdict; sim.trigger() moves the main window by a little. Started by recording_live.sh.
//
//   recording_live DATA SCRIPT OUT [ARGUMENT...]
//
// OUT is the directory that the recordings go to. The exit code is the script's.
#include "grabber/capture.h"
#include "platform/application.h"
#include "platform/window.h"
#include "record/recorder.h"
#include "script/script.h"
#include "shell/start_options_write.h"
#include "shell/startup.h"
#include "simcam/sim_camera.h"
#include "state/windows.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

void TellRecording()
{
    const RecorderStatus status = CurrentRecorderStatus();
    const CaptureCounts& counts = status.counts;
    std::printf("recorded: %s; delivered %lld, lost %lld by the board and %lld by the ring, ring of %zu frames\n",
                status.verdict.c_str(), static_cast<long long>(counts.delivered),
                static_cast<long long>(counts.lostByBoard.value_or(-1)), static_cast<long long>(counts.lostByRing),
                status.ringFrames);
}

bool BeginOrEnd(const std::string& directory)
{
    if (RecorderRuns()) {
        StopRecorder();
        TellRecording();
        return CurrentRecorderStatus().exitCode == 0;
    }
    RecorderSettings settings;
    settings.directory = directory;
    std::string why;
    const bool began = StartRecorder(settings, why);
    if (!began) std::printf("%s\n", why.c_str());
    return began;
}

std::string MoveAside()
{
    static int step = 0;
    step = (step + 1) % 8;
    MoveWindow(hWndMain, {10 * step, 5 * step, 10 * step + 1000, 5 * step + 800});
    return {};
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 4) return 2;
    CommandLine commandLine;
    commandLine.offscreen = true;
    RegisterSimulatedHeads();
    RegisterSimulatedBoard();
    StartApplication(commandLine);
    write::options.startOptions.dataDirectory = argv[1];
    write::options.startOptions.staysInDirectory = true;
    ScriptHooks hooks;
    hooks.signal = [out = std::string(argv[3])] { return BeginOrEnd(out); };
    hooks.trigger = [](std::optional<double>) { return MoveAside(); };
    SetScriptHooks(std::move(hooks));
    std::string error;
    if (!StartScript(argv[2], std::vector<std::string>(argv + 4, argv + argc), error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    return FinishScript(WinMain(nullptr, nullptr, {}, 0));
}

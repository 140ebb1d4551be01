#include "batch/batch.h"
#include "fileboard/file_camera.h"
#include "genicam/genicam_camera.h"
#include "platform/application.h"
#include "platform/desktop_services.h"
#include "platform/end_request.h"
#include "platform/standard_streams.h"
#include "platform/transcript.h"
#include "script/script.h"
#include "shell/script_hooks.h"
#include "shell/second_start.h"
#include "shell/send_signal.h"
#include "shell/shutdown.h"
#include "shell/start_options_write.h"
#include "shell/startup.h"
#include "simcam/sim_camera.h"

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {
namespace {

// What can be wired in platform.ini: the heads at its ports, and the board.
struct Camera {
    void (*registerHeads)();
    void (*registerBoard)();
};
constexpr Camera kCameras[] = {
    {RegisterSimulatedHeads, RegisterSimulatedBoard},
    {RegisterFileHeads, RegisterFileBoard},
    {RegisterGenicamHeads, RegisterGenicamBoard},
};

int RunWithWindows(const CommandLine& commandLine)
{
    for (const Camera& camera : kCameras) {
        camera.registerHeads();
        camera.registerBoard();
    }
    StartApplication(commandLine);
    ShutDownWhenAsked();
    write::options.startOptions = {
        .dataDirectory = commandLine.dataDirectory,
        .keepsOneDirectory = !commandLine.dataDirectory.empty(),
        .staysInDirectory = !commandLine.dataDirectory.empty() || !commandLine.scriptFile.empty(),
        .viewFiles = commandLine.viewFiles,
        .theme = commandLine.theme};
    // Found once: it is held under this name for the life of the process.
    write::options.startOptions.dataDirectory = FindDefaultDirectory();
    if (const std::optional<int> exitCode = EndBesideAnotherStart(commandLine)) return *exitCode;
    const DataDirectoryHold hold;
    const DesktopServices services;
    if (!commandLine.transcriptFile.empty() && !OpenTranscript(commandLine.transcriptFile)) {
        std::fprintf(stderr, "kelvo: can't write the transcript %s\n", commandLine.transcriptFile.c_str());
        return 2;
    }
    ConnectScripts();
    if (!commandLine.scriptFile.empty()) {
        std::string error;
        if (!StartScript(commandLine.scriptFile, commandLine.scriptArguments, error)) {
            std::fprintf(stderr, "%s\n", error.c_str());
            return 1;
        }
    }
    return FinishScript(WinMain(nullptr, nullptr, commandLine.rest, 0));
}

}  // namespace
}  // namespace kelvo

int main(int argc, char** argv)
{
    using namespace kelvo;

    HoldStandardStreams();
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (const std::optional<int> exitCode = RunBatch(arguments)) return *exitCode;
    const CommandLine commandLine = ParseCommandLine(arguments);
    if (!commandLine.error.empty()) {
        std::fprintf(stderr, "kelvo: %s\n", commandLine.error.c_str());
        return 2;
    }
    if (commandLine.showHelp) {
        std::fputs((CommandLineHelp() + "\nWithout a window, kelvo WORD ...:\n" + BatchHelp()).c_str(), stdout);
        return 0;
    }
    if (commandLine.showVersion) {
        std::puts("Kelvo " KELVO_VERSION);
        return 0;
    }
    if (commandLine.sendSignal) {
        write::options.startOptions.dataDirectory = commandLine.dataDirectory;
        return SendSignalTo(FindDefaultDirectory());
    }
    const int exitCode = RunWithWindows(commandLine);
    EndBySignal();
    return exitCode;
}

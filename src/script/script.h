// Operator scripts: a Lua program that sits where the operator sits. docs/scripts.md is the reference of its calls.
//
// The script is a coroutine on the main thread. Each acting call queues its action and yields; the script goes on when
// the program next waits, inside modal dialogs and message boxes too. What only looks reads at once. Before the program
// has waited for the first time both wait for that moment, so that a script's first line finds the boxes of the start.
//
// main() calls it like this:
//
//     StartApplication(commandLine);
//     if (!commandLine.scriptFile.empty()) {
//         std::string error;
//         if (!StartScript(commandLine.scriptFile, commandLine.scriptArguments, error)) {
//             std::fprintf(stderr, "%s\n", error.c_str());
//             return 1;
//         }
//     }
//     return FinishScript(WinMain(...));
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kelvo {

// A value that goes between a script's table and a module, under its name there.
using ScriptValue = std::variant<std::monostate, bool, std::int64_t, double, std::string, std::vector<double>,
                                 std::vector<std::string>>;
using ScriptFields = std::vector<std::pair<std::string, ScriptValue>>;

// What scripts ask of modules above the platform. The shell sets them at the start; one that isn't set reads as "there
// is none".
struct ScriptHooks {
    // The count at column x, row y of the frame on view, image coordinates from 0. nullopt: no frame, or outside it.
    std::function<std::optional<int>(int x, int y)> pixel;
    // The i-th sample of the raw frame, in readout order from 0. nullopt: no frame, or outside it.
    std::function<std::optional<int>(std::int64_t i)> raw;

    // The simulated camera's bench. Puts a source ("low", "high", "scene") in front of the camera, at a temperature in
    // degrees Celsius if one is given, or "volts" at its inputs; empty, or why it can't be.
    std::function<std::string(std::string_view source, std::optional<double> value)> source;
    // What the detector at column x, row y really is, as named numbers ("gain", "offset", "dead"); empty outside it.
    std::function<std::vector<std::pair<std::string, double>>(int x, int y)> truth;
    // What the camera head's registers hold, as named numbers; empty without a simulated camera.
    std::function<std::vector<std::pair<std::string, double>>()> registers;
    // One pulse at the simulated board's trigger input, or with a period in ms pulses by themselves (0: none); empty,
    // or why it can't be.
    std::function<std::string(std::optional<double> periodMs)> trigger;
    // What comes in and goes out at that board's lines, as named numbers; empty without a simulated camera.
    std::function<std::vector<std::pair<std::string, double>>()> lines;

    // The external signal, as another application sends it; false where none can come.
    std::function<bool()> signal;

    // The recorder's window; null while it isn't open.
    std::function<HWND()> recorderWindow;
    // The recorder. Begins with a table of settings; empty, or why it can't be.
    std::function<std::string(const ScriptFields& settings)> record;
    // "stop", "trigger" or "mark"; empty, or why it can't be.
    std::function<std::string(std::string_view word)> recorderDoes;
    std::function<bool()> recorderRuns;
    // Its status: at least "exit_code", a whole number, and "verdict".
    std::function<ScriptFields()> recorderStatus;
    // Frames for other programs. Writes them by a table of settings; empty, or why it can't be.
    std::function<std::string(const ScriptFields& settings)> exportFrames;
    // What the last one wrote.
    std::function<ScriptFields()> exported;
    // A command without a window, "recover FILE": its exit code; nullopt: no such word.
    std::function<std::optional<int>(const std::vector<std::string>& words)> batch;
};
void SetScriptHooks(ScriptHooks hooks);

// Reads the script, compiles it and runs it up to its first call that acts or looks: what it does before that
// (sim.fault) holds for the whole start. arguments reach it as arg[1], arg[2], ... and as "...", the path as arg[0].
// Relative names in the calls that take a path mean the directory in which the process is now.
// False with a message (file, line and traceback for an error of the script) if it can't be read, doesn't compile or
// fails so early; then no script runs. After StartApplication, before the first window.
bool StartScript(const std::string& path, const std::vector<std::string>& arguments, std::string& error);

// True from StartScript to the end of the script.
bool ScriptRuns();

// After the program has ended: a script that isn't finished goes on once, so that it can read the transcript and module
// state; acting calls fail from here on. The exit code of the process: the script's (the number that it returned, 1
// after an error or with a dialog left open, otherwise the worst of its recordings, 0 where none lost anything), or
// programExitCode if there was no script.
//
// While the program runs, a script's end closes it: what is in front is dismissed, then the main window gets WM_CLOSE
// with wParam kCloseUnasked: nobody is there to be asked.
inline constexpr WPARAM kCloseUnasked = 1;
int FinishScript(int programExitCode);

// The live cycle calls it after each frame that it has shown: it counts for frames(n). Cheap where no script runs.
void NoteScriptFrame();

// Something that the script did didn't come out whole: where it returns no exit code of its own the process ends with
// that one at least, and why goes to the error stream. Nothing happens where no script runs.
void NoteScriptExitCode(int code, std::string_view why);

// No script and no hooks. Not from inside a script's call.
void ResetScript();

}  // namespace kelvo

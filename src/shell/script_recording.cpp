#include "shell/script_recording.h"

#include "platform/box.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/menu.h"
#include "resources/ids.h"
#include "script/script.h"
#include "script/script_recorder.h"
#include "shell/menu_scripts.h"
#include "shell/script_window.h"
#include "state/windows.h"

#include <optional>
#include <string>

namespace kelvo {

namespace {

std::string target;  // the script's file

// Empty: the operator cancelled.
std::string AskForFile()
{
    MakeDirectories(ScriptDirectory());
    const FileDialogResult chosen = RunFileDialog({.owner = hWndMain,
                                                   .mode = FileDialogMode::kSave,
                                                   .title = "Record a script",
                                                   .filters = {{"Scripts (*.lua)", "*.lua"}},
                                                   .directory = ScriptDirectory(),
                                                   .name = {},
                                                   .defaultExtension = "lua"});
    return chosen.paths.empty() ? std::string() : chosen.paths.front();
}

bool Write(const std::string& script)
{
    if (ReplaceFile(target, script)) return true;
    MessageBox(hWndMain, "Unable to write the script\n" + target, kMessageCaption);
    return false;
}

void Begin()
{
    if (ScriptRunsBeside()) {
        MessageBox(hWndMain, ScriptInWindow() + " is still running.\nA recording would take its acts for yours.",
                   kMessageCaption, BoxIcon::kInformation);
        return;
    }
    target = AskForFile();
    if (target.empty()) return;
    CheckMenuItem(hWndMain, kCmdScriptRecord, true);
    BeginScriptRecording();
}

}  // namespace

void ToggleScriptRecording()
{
    const std::optional<std::string> script = EndScriptRecording(kCmdScriptRecord);
    if (!script) {
        Begin();
        return;
    }
    CheckMenuItem(hWndMain, kCmdScriptRecord, false);
    while (!target.empty() && !Write(*script)) target = AskForFile();
}

void KeepScriptRecording()
{
    if (const std::optional<std::string> script = EndScriptRecording(kCmdScriptRecord)) Write(*script);
}

void ResetScriptRecording()
{
    EndScriptRecording(kCmdScriptRecord);
    target.clear();
}

}  // namespace kelvo

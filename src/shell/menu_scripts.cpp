#include "shell/menu_scripts.h"

#include "platform/box.h"
#include "platform/menu.h"
#include "platform/text.h"
#include "resources/ids.h"
#include "script/script.h"
#include "script/script_recorder.h"
#include "shell/script_window.h"
#include "state/windows.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

constexpr int kDigits = 9;  // letters for the first lines

std::vector<std::string> listed;  // names of files, in the menu's order

std::vector<std::string> ScriptNames()
{
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(ScriptDirectory(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code unknown;
        std::string name = entry->path().filename().string();
        const bool shown = name.ends_with(".lua") && !name.starts_with('.') && entry->is_regular_file(unknown);
        if (shown) names.push_back(std::move(name));
    }
    std::ranges::sort(names);
    return names;
}

// What the menu would take for its own marks is escaped.
std::string MenuText(std::size_t place, std::string_view name)
{
    std::string shown = place < kDigits ? Format("&%zu ", place + 1) : std::string();
    for (const char c : name.substr(0, name.rfind('.'))) {
        if (c == '&') shown += '&';
        shown += c == '\t' || c == '\n' ? ' ' : c;
    }
    return shown;
}

void TellNoScript()
{
    if (!listed.empty()) {
        MessageBox(hWndMain, "The menu has no script of that number.", kMessageCaption, BoxIcon::kInformation);
        return;
    }
    MessageBox(hWndMain, "There are no scripts. Files NAME.lua in\n" + ScriptDirectory() + "\nstand in this menu.",
               kMessageCaption, BoxIcon::kInformation);
}

void TellMoreScripts()
{
    MessageBox(hWndMain,
               Format("%zu scripts stand in\n%s\nThe menu shows the first %d by their names.", listed.size(),
                      ScriptDirectory().c_str(), kScriptCount),
               kMessageCaption, BoxIcon::kInformation);
}

void TellOtherRuns()
{
    if (ScriptRunsBeside()) {
        MessageBox(hWndMain, ScriptInWindow() + " is still running.\nStop it first: Esc, or Stop in its window.",
                   kMessageCaption, BoxIcon::kInformation);
    } else {
        MessageBox(hWndMain,
                   "The script of the start (--script) works this window until it ends.\nTwo would answer each "
                   "other's dialogs.",
                   kMessageCaption, BoxIcon::kInformation);
    }
}

// What a script of the menu does would stand in the recording twice: as itself, and as what it did.
void TellRecording()
{
    MessageBox(hWndMain, "A script is being recorded.\nEnd the recording before you run one.", kMessageCaption,
               BoxIcon::kInformation);
}

void Run(const std::string& name)
{
    BeginScriptText(name);
    const BesideListener listener{.printed = AddScriptText, .ended = EndScriptText};
    std::string error;
    if (!StartScriptBeside(ScriptDirectory() + "/" + name, listener, error)) EndScriptText(error);
}

}  // namespace

std::string ScriptDirectory()
{
    return DefaultDir + "/scripts";
}

void ListScriptsInMenu()
{
    listed = ScriptNames();
    std::vector<std::string> texts;
    const std::size_t shown = std::min<std::size_t>(listed.size(), kScriptCount);
    for (std::size_t i = 0; i < shown; ++i) texts.push_back(MenuText(i, listed[i]));
    if (listed.empty()) texts.emplace_back("(none)");
    if (listed.size() > shown) texts.push_back(Format("(%zu more)", listed.size() - shown));
    SetMenuList(hWndMain, kCmdScriptFirst, texts);
}

void RunMenuScript(int id)
{
    const auto place = static_cast<std::size_t>(id - kCmdScriptFirst);
    if (place >= listed.size()) ListScriptsInMenu();
    if (place >= listed.size()) {
        TellNoScript();
    } else if (place >= kScriptCount) {
        TellMoreScripts();
    } else if (ScriptIsRecorded()) {
        TellRecording();
    } else if (ScriptRuns()) {
        TellOtherRuns();
    } else {
        Run(std::string(listed[place]));
    }
}

void StopMenuScript()
{
    StopScriptBeside();
}

void ResetMenuScripts()
{
    listed.clear();
}

}  // namespace kelvo

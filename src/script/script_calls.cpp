// The calls of operator scripts, as docs/scripts.md describes them. Each acting call checks what it needs in its
// action, when the screen is as the operator would find it.

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/help.h"
#include "platform/menu.h"
#include "platform/transcript.h"
#include "platform/window.h"
#include "script/lua_values.h"
#include "script/script.h"
#include "script/script_engine.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status.h"

#include <lua.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <system_error>
#include <utility>

namespace kelvo::script {

namespace {

// --- Lua functions ------------------------------------------------------------------------------------------------

using Function = int (*)(lua_State* L);

template <Function function>
int Continued(lua_State* L, int /*status*/, lua_KContext /*context*/)
{
    return Guarded<function>(L);
}

// A call that looks at the program: it waits for the start, and never after that.
template <Function look>
int Look(lua_State* L)
{
    if (ProgramHasWaited() || ProgramHasEnded()) return Guarded<look>(L);
    return Await(L, {.name = "start", .act = nullptr}, Continued<look>);
}

// --- Values -------------------------------------------------------------------------------------------------------

void Push(lua_State* L, std::string_view bytes)
{
    lua_pushlstring(L, bytes.data(), bytes.size());
}

int Nil(lua_State* L)
{
    lua_pushnil(L);
    return 1;
}

void SetField(lua_State* L, const char* name, std::string_view text)
{
    PushText(L, text);
    lua_setfield(L, -2, name);
}

void SetField(lua_State* L, const char* name, bool value)
{
    lua_pushboolean(L, value);
    lua_setfield(L, -2, name);
}

void SetField(lua_State* L, const char* name, int number)
{
    lua_pushinteger(L, number);
    lua_setfield(L, -2, name);
}

std::string TextArgument(lua_State* L, int index)
{
    std::size_t length = 0;
    const char* text = luaL_checklstring(L, index, &length);
    return {text, length};
}

int IntArgument(lua_State* L, int index)
{
    const lua_Integer value = luaL_checkinteger(L, index);
    luaL_argcheck(L, value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max(), index,
                  "out of range");
    return static_cast<int>(value);
}

bool BoolArgument(lua_State* L, int index)
{
    luaL_checktype(L, index, LUA_TBOOLEAN);
    return lua_toboolean(L, index) != 0;
}

std::vector<std::string> PathArguments(lua_State* L)
{
    std::vector<std::string> paths;
    luaL_checkstring(L, 1);
    for (int i = 1; i <= lua_gettop(L); ++i) paths.push_back(FromStartDirectory(TextArgument(L, i)));
    return paths;
}

struct Name {
    std::string_view text;
    int number;
};

constexpr Name kButtons[] = {{"ok", 1}, {"cancel", 2}, {"yes", 6}, {"no", 7}, {"report", 100}};
constexpr Name kIcons[] = {{"none", 0}, {"information", 1}, {"exclamation", 2}, {"question", 3}, {"stop", 4}};
constexpr Name kDirections[] = {
    {"up", kDirectionUp}, {"right", kDirectionRight}, {"down", kDirectionDown}, {"left", kDirectionLeft}};
constexpr Name kMouseButtons[] = {{"move", 0},      {"left", 1},      {"right", 2},      {"middle", 3},
                                  {"double", 4},    {"wheel up", 5},  {"wheel down", 6}, {"middle down", 7},
                                  {"middle up", 8}, {"left down", 9}, {"left up", 10}};

template <std::size_t N>
std::string_view NameOf(const Name (&names)[N], int number)
{
    const auto* const found = std::ranges::find(names, number, &Name::number);
    return found == std::end(names) ? "?" : found->text;
}

// A name of the table or one of its numbers.
template <std::size_t N>
int NamedArgument(lua_State* L, int index, const Name (&names)[N])
{
    if (lua_isinteger(L, index)) {
        const int number = IntArgument(L, index);
        luaL_argcheck(L, std::ranges::find(names, number, &Name::number) != std::end(names), index, "no such number");
        return number;
    }
    const std::string text = TextArgument(L, index);
    const auto* const found = std::ranges::find(names, text, &Name::text);
    if (found != std::end(names)) return found->number;
    std::string known;
    for (const Name& name : names) known.append(known.empty() ? "" : ", ").append(name.text);
    return luaL_argerror(L, index, ("must be one of " + known).c_str());
}

std::string ButScreenShows(const std::string& missing)
{
    return missing + "; on screen: " + OnScreen();
}

bool SomethingModalInFront()
{
    return BoxInFront() || FileDialogInFront() || DialogInFront();
}

// --- The main window ----------------------------------------------------------------------------------------------

std::string SendCommand(int id)
{
    const std::string command = "command " + std::to_string(id);
    if (!hWndMain || SomethingModalInFront()) return ButScreenShows(command + " can't be reached");
    const auto item = GetMenuItem(hWndMain, id);
    if (item && !item->enabled) return command + " is disabled in the menu";
    OperateCommand(hWndMain, id);
    return {};
}

int Command(lua_State* L)
{
    const int id = IntArgument(L, 1);
    return Await(L, {.name = "command", .act = [id] { return SendCommand(id); }});
}

int Close(lua_State* L)
{
    const auto close = []() -> std::string {
        if (!hWndMain || SomethingModalInFront()) return ButScreenShows("the main window can't be closed");
        SendMessage(hWndMain, WM_CLOSE, 0, 0);
        return {};
    };
    return Await(L, {.name = "close", .act = close});
}

int Menu(lua_State* L)
{
    const int id = IntArgument(L, 1);
    if (ProgramHasEnded()) return Fail(L, "menu: the program has ended");
    const auto item = hWndMain ? GetMenuItem(hWndMain, id) : std::nullopt;
    if (!item) return Nil(L);
    lua_createtable(L, 0, 3);
    SetField(L, "text", item->text);
    SetField(L, "checked", item->checked);
    SetField(L, "enabled", item->enabled);
    return 1;
}

int Status(lua_State* L)
{
    PushText(L, StatusText);
    return 1;
}

int Title(lua_State* L)
{
    if (!ProgramHasEnded() && hWndMain) {
        PushText(L, GetWindowText(hWndMain));
        return 1;
    }
    // The window is gone: what it bore last.
    const auto& lines = TranscriptLines();
    const auto last = std::find_if(lines.rbegin(), lines.rend(), [](const auto& line) { return line.kind == "title"; });
    if (last == lines.rend()) return Nil(L);
    Push(L, std::get<std::string>(last->fields.front().second));
    return 1;
}

int Help(lua_State* L)
{
    const int context = ProgramHasEnded() ? 0 : CurrentHelpContext();
    if (context == 0) return Nil(L);
    lua_pushinteger(L, context);
    Push(L, CurrentHelpText());
    return 2;
}

int Mouse(lua_State* L)
{
    const Point place{IntArgument(L, 1), IntArgument(L, 2)};
    const int button = lua_isnoneornil(L, 3) ? 0 : NamedArgument(L, 3, kMouseButtons);
    const auto act = [place, button]() -> std::string {
        if (!hWndMain) return ButScreenShows("no main window");
        OperateMouse(place, button);
        return {};
    };
    return Await(L, {.name = "mouse", .act = act});
}

int Key(lua_State* L)
{
    const std::string key = TextArgument(L, 1);
    const auto act = [key] {
        return OperateKey(key) ? std::string() : ButScreenShows("the key \"" + key + "\" can't be pressed");
    };
    return Await(L, {.name = "key", .act = act});
}

int Drop(lua_State* L)
{
    const std::vector<std::string> paths = PathArguments(L);
    const auto act = [paths] {
        return OperateDrop(paths) ? std::string() : ButScreenShows("nothing takes what is dropped");
    };
    return Await(L, {.name = "drop", .act = act});
}

int Screen(lua_State* L)
{
    const Point place{IntArgument(L, 1), IntArgument(L, 2)};
    if (ProgramHasEnded() || !hWndMain) return Fail(L, "screen: there is no main window");
    const std::uint32_t color = ScreenColor(place);
    for (const int shift : {16, 8, 0}) lua_pushinteger(L, (color >> shift) & 0xFF);
    return 3;
}

int Screenshot(lua_State* L)
{
    const std::string given = TextArgument(L, 1);
    const std::string path = FromStartDirectory(given);
    if (ProgramHasEnded()) return Fail(L, "screenshot: the program has ended");
    const std::string directory = std::filesystem::path(path).parent_path().string();
    if (!directory.empty() && !MakeDirectories(directory)) return Fail(L, "screenshot: can't make " + directory);
    if (!SaveScreenshot(path)) return Fail(L, "screenshot: can't write " + path);
    Push(L, path);
    return 1;
}

// What stays open beside the dialog in front, by the word that a call has for it.
struct Beside {
    std::string_view word;
    std::string_view name;  // in messages
    HWND (*window)();
};
constexpr Beside kBeside[] = {
    {"panel", "control panel", [] { return hDlgPanel; }},
    {"player", "play bar", [] { return StripNamed("PLAYBAR"); }},
    {"recorder", "recorder's window", [] { return Hooks().recorderWindow ? Hooks().recorderWindow() : nullptr; }},
    {"regions", "window of the regions", [] { return Hooks().regionsWindow ? Hooks().regionsWindow() : nullptr; }},
};

const Beside* BesideOf(std::string_view word)
{
    const auto* const found = std::ranges::find(kBeside, word, &Beside::word);
    return found == std::end(kBeside) ? nullptr : found;
}

// The window that a word means: one of those, or a dialog that stays open by its name. Null: it isn't there.
HWND WindowBeside(const std::string& word)
{
    const Beside* const beside = BesideOf(word);
    return beside ? beside->window() : OpenDialogNamed(word);
}

std::string NameBeside(const std::string& word)
{
    const Beside* const beside = BesideOf(word);
    return beside ? std::string(beside->name) : "open dialog " + word;
}

// place(id), place(NAME, id), place("menu" | "item" | "button" | "window", text): where it stands on the screen.
int Place(lua_State* L)
{
    if (ProgramHasEnded()) return Nil(L);
    std::optional<Rect> place;
    if (lua_type(L, 1) != LUA_TSTRING) {
        place = PlaceOfControl(DialogInFront(), IntArgument(L, 1));
    } else if (const std::string kind = TextArgument(L, 1); const Beside* const beside = BesideOf(kind)) {
        place = PlaceOfControl(beside->window(), IntArgument(L, 2));
    } else if (kind == "menu") {
        place = PlaceOfMenu(TextArgument(L, 2));
    } else if (kind == "item") {
        place = PlaceOfMenuItem(TextArgument(L, 2));
    } else if (kind == "button") {
        place = PlaceOfButton(TextArgument(L, 2));
    } else if (kind == "window") {
        place = PlaceOfWindow(TextArgument(L, 2));
    } else {
        place = PlaceOfDialog(kind, IntArgument(L, 2));
    }
    if (!place) return Nil(L);
    lua_createtable(L, 0, 4);
    SetField(L, "x", place->left);
    SetField(L, "y", place->top);
    SetField(L, "width", place->Width());
    SetField(L, "height", place->Height());
    return 1;
}

// --- Message boxes and file dialogs -------------------------------------------------------------------------------

int Box(lua_State* L)
{
    const auto box = ProgramHasEnded() ? std::nullopt : BoxInFront();
    if (!box) return Nil(L);
    std::vector<std::string_view> buttons;
    for (const Button button : box->buttons) buttons.push_back(NameOf(kButtons, static_cast<int>(button)));
    lua_createtable(L, 0, 5);
    SetField(L, "text", box->text);
    SetField(L, "caption", box->caption);
    SetField(L, "icon", NameOf(kIcons, static_cast<int>(box->icon)));
    SetField(L, "default", NameOf(kButtons, static_cast<int>(box->defaultButton)));
    PushList(L, buttons);
    lua_setfield(L, -2, "buttons");
    return 1;
}

std::string PressInBox(Button button)
{
    if (!BoxInFront()) return ButScreenShows("no message box in front");
    if (PressBoxButton(button)) return {};
    return ButScreenShows("no button \"" + std::string(NameOf(kButtons, static_cast<int>(button))) + "\" in the box");
}

int Answer(lua_State* L)
{
    const auto button = static_cast<Button>(NamedArgument(L, 1, kButtons));
    return Await(L, {.name = "answer", .act = [button] { return PressInBox(button); }});
}

int FileDialog(lua_State* L)
{
    const auto file = ProgramHasEnded() ? std::nullopt : FileDialogInFront();
    if (!file) return Nil(L);
    lua_createtable(L, 0, 4);
    SetField(L, "title", file->title);
    SetField(L, "directory", file->directory);
    SetField(L, "name", file->name);
    PushList(L, file->filters);
    lua_setfield(L, -2, "filters");
    return 1;
}

int Choose(lua_State* L)
{
    const std::vector<std::string> paths = PathArguments(L);
    const auto act = [paths] { return ChooseFiles(paths) ? std::string() : ButScreenShows("no file dialog in front"); };
    return Await(L, {.name = "choose", .act = act});
}

std::string LeaveFrontDialog()
{
    if (CancelFileDialog()) return {};
    HWND dialog = DialogInFront();
    if (!dialog) return ButScreenShows("no dialog in front");
    OperateClose(dialog);
    return {};
}

int Cancel(lua_State* L)
{
    return Await(L, {.name = "cancel", .act = LeaveFrontDialog});
}

// --- Controls -----------------------------------------------------------------------------------------------------

int Dialog(lua_State* L)
{
    HWND dialog = ProgramHasEnded() ? nullptr : DialogInFront();
    if (!dialog) return Nil(L);
    PushText(L, DialogName(dialog));
    return 1;
}

// Which dialog a call means: the one in front, or with the word of another window as first argument that one.
struct Control {
    std::string beside;  // empty: the dialog in front
    int id = 0;
    int next = 2;  // index of the argument behind the id
};

Control ControlArgument(lua_State* L)
{
    const std::string word = lua_type(L, 1) == LUA_TSTRING ? TextArgument(L, 1) : "";
    const int index = word.empty() ? 1 : 2;
    return {word, IntArgument(L, index), index + 1};
}

struct Found {
    HWND dialog = nullptr;
    std::string failure;
};

Found FindControl(const Control& control, bool toAct)
{
    if (ProgramHasEnded()) return {nullptr, "the program has ended"};
    const bool inFront = control.beside.empty();
    HWND dialog = inFront ? DialogInFront() : WindowBeside(control.beside);
    if (!dialog) return {nullptr, ButScreenShows("no " + (inFront ? "dialog in front" : NameBeside(control.beside)))};
    // Strips lie in the main window, which a dialog blocks; what stays open beside it can be worked all the same.
    if (BesideOf(control.beside) && toAct && SomethingModalInFront()) {
        return {nullptr, ButScreenShows("the " + NameBeside(control.beside) + " can't be reached")};
    }
    if (!HasDlgItem(dialog, control.id)) {
        return {nullptr, "dialog " + DialogName(dialog) + " has no control " + std::to_string(control.id)};
    }
    return {dialog, {}};
}

using Operation = std::function<bool(HWND dialog, int id)>;

int Operate(lua_State* L, const char* name, const Control& control, Operation operate)
{
    const auto act = [control, operate = std::move(operate)]() -> std::string {
        const auto [dialog, failure] = FindControl(control, true);
        if (!dialog) return failure;
        const std::string where = "control " + std::to_string(control.id) + " of dialog " + DialogName(dialog);
        if (operate(dialog, control.id)) return {};
        return where + " is disabled, hidden or of another kind";
    };
    return Await(L, {.name = name, .act = act});
}

int Press(lua_State* L)
{
    const Control control = ControlArgument(L);
    const int direction = lua_isnoneornil(L, control.next) ? 0 : NamedArgument(L, control.next, kDirections);
    return Operate(L, "press", control,
                   [direction](HWND dialog, int id) { return OperatePress(dialog, id, direction); });
}

int Set(lua_State* L)
{
    const Control control = ControlArgument(L);
    const std::string text = TextArgument(L, control.next);
    return Operate(L, "set", control, [text](HWND dialog, int id) { return OperateText(dialog, id, text); });
}

int Check(lua_State* L)
{
    const Control control = ControlArgument(L);
    const bool on = BoolArgument(L, control.next);
    return Operate(L, "check", control, [on](HWND dialog, int id) { return OperateCheck(dialog, id, on); });
}

int Pick(lua_State* L)
{
    const Control control = ControlArgument(L);
    const int index = IntArgument(L, control.next);
    return Operate(L, "pick", control, [index](HWND dialog, int id) { return OperatePick(dialog, id, index); });
}

int Scroll(lua_State* L)
{
    const Control control = ControlArgument(L);
    const int position = IntArgument(L, control.next);
    return Operate(L, "scroll", control,
                   [position](HWND dialog, int id) { return OperateScroll(dialog, id, position); });
}

HWND ControlToRead(lua_State* L, int& id)
{
    const Control control = ControlArgument(L);
    id = control.id;
    const auto [dialog, failure] = FindControl(control, false);
    if (!dialog) Fail(L, failure);
    return dialog;
}

int Text(lua_State* L)
{
    int id = 0;
    HWND dialog = ControlToRead(L, id);
    PushText(L, GetDlgItemText(dialog, id));
    return 1;
}

int Checked(lua_State* L)
{
    int id = 0;
    HWND dialog = ControlToRead(L, id);
    lua_pushboolean(L, IsDlgButtonChecked(dialog, id));
    return 1;
}

int Picked(lua_State* L)
{
    int id = 0;
    HWND dialog = ControlToRead(L, id);
    const int index = ListSelection(dialog, id);
    if (index < 0) return Nil(L);
    lua_pushinteger(L, index);
    return 1;
}

int Items(lua_State* L)
{
    int id = 0;
    HWND dialog = ControlToRead(L, id);
    const int count = ListCount(dialog, id);
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) texts.push_back(ListItemText(dialog, id, i));
    PushList(L, texts);
    return 1;
}

int Enabled(lua_State* L)
{
    int id = 0;
    HWND dialog = ControlToRead(L, id);
    lua_pushboolean(L, DlgItemEnabled(dialog, id));
    return 1;
}

int Position(lua_State* L)
{
    int id = 0;
    HWND dialog = ControlToRead(L, id);
    lua_pushinteger(L, GetScrollPos(dialog, id));
    lua_pushinteger(L, GetScrollMin(dialog, id));
    lua_pushinteger(L, GetScrollMax(dialog, id));
    return 3;
}

// All controls of the dialog in front, or of a window beside it, by their numbers.
int Controls(lua_State* L)
{
    const std::string word = lua_isnoneornil(L, 1) ? "" : TextArgument(L, 1);
    const Beside* const beside = BesideOf(word);
    luaL_argcheck(L, word.empty() || beside, 1, R"(must be "panel", "player" or "recorder")");
    if (ProgramHasEnded()) return Fail(L, "controls: the program has ended");
    HWND dialog = beside ? beside->window() : DialogInFront();
    if (!dialog) return Fail(L, ButScreenShows("no " + std::string(beside ? beside->name : "dialog in front")));
    const std::vector<FrontControl> controls = ControlsOf(dialog);
    lua_createtable(L, static_cast<int>(controls.size()), 0);
    lua_Integer index = 0;
    for (const FrontControl& control : controls) {
        lua_createtable(L, 0, 3);
        SetField(L, "id", control.id);
        SetField(L, "kind", control.kind);
        SetField(L, "works", control.canBeWorked);
        lua_rawseti(L, -2, ++index);
    }
    return 1;
}

// --- State, frames, time ------------------------------------------------------------------------------------------

void PushState(lua_State* L, const StateValue& value)
{
    std::visit(Overloaded{
                   [L](std::monostate) { lua_pushnil(L); },
                   [L](std::int64_t number) { lua_pushinteger(L, number); },
                   [L](double number) { lua_pushnumber(L, number); },
                   [L](const std::string& text) { PushText(L, text); },
                   [L](const std::vector<double>& numbers) { PushList(L, numbers); },
               },
               value);
}

int WholeState(lua_State* L)
{
    lua_newtable(L);
    for (const std::string& name : AllStateNames()) {
        PushState(L, ReadState(name).value_or(StateValue{}));
        lua_setfield(L, -2, name.c_str());
    }
    return 1;
}

int State(lua_State* L)
{
    if (lua_gettop(L) == 0) return WholeState(L);
    const std::string name = TextArgument(L, 1);
    const auto value = ReadState(name);
    if (value) {
        PushState(L, *value);
        return 1;
    }
    std::string message = "no state \"" + name + "\"";
    std::string_view separator = "; near it: ";
    for (const std::string& near : NearStateNames(name)) {
        message.append(separator).append(near);
        separator = ", ";
    }
    return Fail(L, message);
}

int PushCount(lua_State* L, std::optional<int> count)
{
    if (!count) return Nil(L);
    lua_pushinteger(L, *count);
    return 1;
}

int Pixel(lua_State* L)
{
    const int x = IntArgument(L, 1);
    const int y = IntArgument(L, 2);
    return PushCount(L, Hooks().pixel ? Hooks().pixel(x, y) : std::nullopt);
}

int Raw(lua_State* L)
{
    const std::int64_t index = luaL_checkinteger(L, 1);
    return PushCount(L, Hooks().raw ? Hooks().raw(index) : std::nullopt);
}

int Frames(lua_State* L)
{
    return Await(L, FramesCall(luaL_checkinteger(L, 1)));
}

int Wait(lua_State* L)
{
    // Numbers with a fraction come from arithmetic; a thousandth of a second more or less is nothing here.
    const double milliseconds = luaL_checknumber(L, 1);
    luaL_argcheck(L, milliseconds >= 0 && milliseconds <= 1e9, 1, "must be 0 to 1e9 ms");
    return Await(L, WaitCall(static_cast<std::int64_t>(milliseconds)));
}

// --- The simulated camera and faults ------------------------------------------------------------------------------

// Faults of the start must hold before it: this one call neither acts nor looks.
int SimFault(lua_State* L)
{
    const std::string name = TextArgument(L, 1);
    if (lua_isinteger(L, 2)) {
        const int n = IntArgument(L, 2);
        luaL_argcheck(L, n >= 0, 2, "must be 0 or more");
        SetFaultOnce(name, n);
    } else {
        SetFault(name, lua_isnoneornil(L, 2) || BoolArgument(L, 2));
    }
    return 0;
}

int SimFaultToCome(lua_State* L)
{
    lua_pushinteger(L, QuestionsUntilFault(TextArgument(L, 1)));
    return 1;
}

int SimSource(lua_State* L)
{
    const std::string source = TextArgument(L, 1);
    std::optional<double> degreesC;
    if (!lua_isnoneornil(L, 2)) degreesC = luaL_checknumber(L, 2);
    if (!Hooks().source) return Fail(L, "no simulated camera");
    const std::string failure = Hooks().source(source, degreesC);
    return failure.empty() ? 0 : Fail(L, failure);
}

int PushNumbers(lua_State* L, const std::vector<std::pair<std::string, double>>& numbers)
{
    lua_createtable(L, 0, static_cast<int>(numbers.size()));
    for (const auto& [name, value] : numbers) {
        lua_pushnumber(L, value);
        lua_setfield(L, -2, name.c_str());
    }
    return 1;
}

int SimTruth(lua_State* L)
{
    const int x = IntArgument(L, 1);
    const int y = IntArgument(L, 2);
    if (!Hooks().truth) return Fail(L, "no simulated camera");
    const auto truth = Hooks().truth(x, y);
    return truth.empty() ? Nil(L) : PushNumbers(L, truth);
}

int SimRegisters(lua_State* L)
{
    if (!Hooks().registers) return Fail(L, "no simulated camera");
    const auto registers = Hooks().registers();
    return registers.empty() ? Fail(L, "no simulated camera") : PushNumbers(L, registers);
}

int SimTrigger(lua_State* L)
{
    std::optional<double> periodMs;
    if (!lua_isnoneornil(L, 1)) periodMs = luaL_checknumber(L, 1);
    if (!Hooks().trigger) return Fail(L, "no simulated camera");
    const std::string failure = Hooks().trigger(periodMs);
    return failure.empty() ? 0 : Fail(L, failure);
}

int SimLines(lua_State* L)
{
    if (!Hooks().lines) return Fail(L, "no simulated camera");
    const auto lines = Hooks().lines();
    return lines.empty() ? Fail(L, "no simulated camera") : PushNumbers(L, lines);
}

int Signal(lua_State* L)
{
    const auto act = []() -> std::string {
        return Hooks().signal && Hooks().signal() ? std::string() : "signal: no signal from outside can come";
    };
    return Await(L, {.name = "signal", .act = act});
}

// --- Transcript, print, files -------------------------------------------------------------------------------------

void PushTranscriptValue(lua_State* L, const TranscriptValue& value)
{
    std::visit(Overloaded{
                   [L](std::int64_t number) { lua_pushinteger(L, number); },
                   [L](bool flag) { lua_pushboolean(L, flag); },
                   [L](const std::string& text) { Push(L, text); },
                   [L](const std::vector<std::string>& texts) { PushList(L, texts); },
               },
               value);
}

int Transcript(lua_State* L)
{
    const std::vector<TranscriptLine>& lines = TranscriptLines();
    lua_createtable(L, static_cast<int>(lines.size()), 0);
    lua_Integer index = 0;
    for (const TranscriptLine& line : lines) {
        lua_createtable(L, 0, static_cast<int>(line.fields.size()) + 2);
        lua_pushinteger(L, line.timeMs);
        lua_setfield(L, -2, "t");
        Push(L, line.kind);
        lua_setfield(L, -2, "kind");
        for (const auto& [name, value] : line.fields) {
            PushTranscriptValue(L, value);
            lua_setfield(L, -2, name.c_str());
        }
        lua_rawseti(L, -2, ++index);
    }
    return 1;
}

int Print(lua_State* L)
{
    std::string text;
    for (int i = 1; i <= lua_gettop(L); ++i) {
        std::size_t length = 0;
        const char* part = luaL_tolstring(L, i, &length);
        if (i > 1) text += '\t';
        text.append(part, length);
        lua_pop(L, 1);
    }
    if (!TellPrinted(text)) {
        std::fprintf(stdout, "%s\n", text.c_str());
        std::fflush(stdout);
    }
    Transcribe("print", {{"text", text}});
    return 0;
}

int DataDirectory(lua_State* L)
{
    Push(L, DefaultDir);
    return 1;
}

int ListDirectory(lua_State* L)
{
    const std::string path = ResolvePath(FromStartDirectory(TextArgument(L, 1)));
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    if (error) return Fail(L, "listdir: " + path + ": " + error.message());
    std::ranges::sort(names);
    PushList(L, names);
    return 1;
}

int ReadFileWhole(lua_State* L)
{
    constexpr std::size_t kLimit = std::size_t{256} << 20;
    const NoFaults watching;
    const auto contents = ReadWholeFile(FromStartDirectory(TextArgument(L, 1)), kLimit);
    if (!contents) return Nil(L);
    Push(L, *contents);
    return 1;
}

constexpr luaL_Reg kCalls[] = {
    // what acts
    {"command", Guarded<Command>},
    {"close", Guarded<Close>},
    {"answer", Guarded<Answer>},
    {"choose", Guarded<Choose>},
    {"cancel", Guarded<Cancel>},
    {"press", Guarded<Press>},
    {"set", Guarded<Set>},
    {"check", Guarded<Check>},
    {"pick", Guarded<Pick>},
    {"scroll", Guarded<Scroll>},
    {"mouse", Guarded<Mouse>},
    {"key", Guarded<Key>},
    {"drop", Guarded<Drop>},
    {"frames", Guarded<Frames>},
    {"wait", Guarded<Wait>},
    {"signal", Guarded<Signal>},
    // what looks
    {"dialog", Look<Dialog>},
    {"box", Look<Box>},
    {"file", Look<FileDialog>},
    {"text", Look<Text>},
    {"checked", Look<Checked>},
    {"picked", Look<Picked>},
    {"items", Look<Items>},
    {"controls", Look<Controls>},
    {"enabled", Look<Enabled>},
    {"position", Look<Position>},
    {"status", Look<Status>},
    {"title", Look<Title>},
    {"menu", Look<Menu>},
    {"help", Look<Help>},
    {"state", Look<State>},
    {"pixel", Look<Pixel>},
    {"raw", Look<Raw>},
    {"screen", Look<Screen>},
    {"screenshot", Look<Screenshot>},
    {"place", Look<Place>},
    {"transcript", Look<Transcript>},
    {"datadir", Look<DataDirectory>},
    // what does neither
    {"print", Guarded<Print>},
    {"listdir", Guarded<ListDirectory>},
    {"readfile", Guarded<ReadFileWhole>},
};

constexpr luaL_Reg kSimCalls[] = {
    {"fault", Guarded<SimFault>}, {"fault_to_come", Guarded<SimFaultToCome>},
    {"head", Look<SimRegisters>}, {"source", Look<SimSource>},
    {"truth", Look<SimTruth>},    {"trigger", Look<SimTrigger>},
    {"lines", Look<SimLines>},
};

}  // namespace

void OpenCalls(lua_State* L)
{
    for (const luaL_Reg& call : kCalls) lua_register(L, call.name, call.func);
    lua_newtable(L);
    for (const luaL_Reg& call : kSimCalls) {
        lua_pushcfunction(L, call.func);
        lua_setfield(L, -2, call.name);
    }
    lua_setglobal(L, "sim");
}

}  // namespace kelvo::script

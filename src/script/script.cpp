#include "script/script.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/front.h"
#include "platform/interrupt.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "script/script_engine.h"
#include "script/script_recorder.h"
#include "state/windows.h"

#include <lua.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace kelvo {

namespace script {

namespace {

enum class Phase {
    kNone,          // no script
    kRunning,       // Lua code has the thread
    kCallWaiting,   // yielded; the call goes out when the program waits
    kCallPosted,    // its action is queued
    kCallBegun,     // the action has begun; over when the program waits again
    kResumePosted,  // the script goes on with the next event
    kBreathing,     // it runs beside the operator, who gets his turn before it goes on
    kFinished,      // the script is over; the program is being closed
};

struct Engine {
    lua_State* lua = nullptr;
    lua_State* thread = nullptr;
    int firstArguments = 0;
    Phase phase = Phase::kNone;
    Call call;
    lua_KFunction afterCall = nullptr;
    bool callTimeIsUp = false;  // of a call that takes time
    std::string callFailure;
    std::int64_t framesToGo = 0;
    HWND timerWindow = nullptr;
    bool programHasWaited = false;
    bool programHasEnded = false;
    int exitCode = 0;
    int notedExitCode = 0;
    int closingSteps = 0;
    HWND dialogAskedToLeave = nullptr;
    bool programAskedToClose = false;
    std::string startDirectory;
    ScriptHooks hooks;

    std::optional<IdleUser> waitsAs;       // its hook is set
    std::optional<BesideListener> beside;  // the script runs beside the operator's work
    std::size_t bytes = 0;                 // that its Lua state holds
    bool givesWay = false;                 // it yielded by itself, not by a call
    bool stopAsked = false;                // while its code has the thread
};
Engine engine;

constexpr std::size_t kScriptBytesLimit = std::size_t{16} << 20;
constexpr int kFailed = 1;
constexpr std::uint32_t kTimer = 1;
constexpr std::uint32_t kBreathTimer = 2;
constexpr int kInstructionsATurn = 100'000;
constexpr std::size_t kBesideBytesLimit = std::size_t{1} << 30;
// Live video that stands still that long has stopped.
constexpr std::int64_t kFrameLimitMs = 10'000;
// What is left open is dismissed in far fewer steps; beyond them something keeps coming back.
constexpr int kClosingStepsLimit = 200;

// --- What is in front ---------------------------------------------------------------------------------------------

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : ToUtf8(text)) {
        if (c == '\n') {
            quoted += "\\n";
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

// Empty: the operator can reach the main window.
std::string ModalInFront()
{
    if (const auto box = BoxInFront()) return "message box " + Quoted(box->text);
    if (const auto file = FileDialogInFront()) return "file dialog " + Quoted(file->title);
    if (HWND dialog = DialogInFront()) return "dialog " + DialogName(dialog);
    return {};
}

// --- The end ------------------------------------------------------------------------------------------------------

void Report(std::string_view text)
{
    std::fflush(stdout);
    std::fprintf(stderr, "kelvo: %.*s\n", static_cast<int>(text.size()), text.data());
    std::fflush(stderr);
}

void Fail(std::string_view text)
{
    engine.exitCode = kFailed;
    Report(text);
}

void FailIfSomethingIsOpen()
{
    const std::string open = ModalInFront();
    if (!open.empty()) Fail("the script ended with " + open + " in front");
}

// The way out of a box that changes least.
Button SafestButton(const FrontBox& box)
{
    for (const Button button : {Button::kCancel, Button::kNo}) {
        if (std::ranges::find(box.buttons, button) != box.buttons.end()) return button;
    }
    return box.defaultButton;
}

void LeaveDialog(HWND dialog)
{
    if (dialog == engine.dialogAskedToLeave) {
        EndDialog(dialog, kIdCancel);  // it didn't leave when it was asked to
        return;
    }
    engine.dialogAskedToLeave = dialog;
    PostMessage(dialog, WM_COMMAND, MakeLong(kIdCancel, kButtonClicked), 1);
}

void CloseProgram()
{
    if (hWndMain && !engine.programAskedToClose) {
        engine.programAskedToClose = true;
        PostMessage(hWndMain, WM_CLOSE, kCloseUnasked, 0);
    } else {
        PostQuitMessage(engine.exitCode);
    }
}

// One thing a step, each as an event of its own: what is dismissed may bring up the next.
void TakeClosingStep()
{
    if (++engine.closingSteps > kClosingStepsLimit) {
        Fail("the program doesn't close: " + OnScreen() + " keeps coming back");
        std::_Exit(engine.exitCode);
    }
    if (const auto box = BoxInFront()) {
        PressBoxButton(SafestButton(*box));
    } else if (FileDialogInFront()) {
        CancelFileDialog();
    } else if (HWND dialog = DialogInFront()) {
        LeaveDialog(dialog);
    } else {
        CloseProgram();
    }
}

// --- The course of a call -----------------------------------------------------------------------------------------

void BeginCall()
{
    if (engine.phase != Phase::kCallPosted) return;  // the program has ended in between
    engine.phase = Phase::kCallBegun;
    // The engine may be at the next call when this one's action comes back from the loop of a dialog.
    const auto act = std::exchange(engine.call.act, nullptr);
    if (!act) return;
    static std::uint64_t calls = 0;
    const std::uint64_t thisCall = ++calls;
    std::string failure = act();
    if (thisCall == calls && engine.phase == Phase::kCallBegun) engine.callFailure = std::move(failure);
}

bool CallIsOver()
{
    return !engine.call.takesTime || engine.callTimeIsUp || !engine.callFailure.empty();
}

void ProgramWaits();
std::string RunToNextCall();

void EndBeside(const std::string& failure);
void Breathe();

void ResumeBeside()
{
    const std::string failure = RunToNextCall();
    if (engine.phase == Phase::kFinished) EndBeside(failure);
    if (engine.phase == Phase::kBreathing) Breathe();
    if (engine.phase == Phase::kCallWaiting) ProgramWaits();  // it waits already
}

void Resume()
{
    if (engine.phase != Phase::kResumePosted) return;  // the program has ended in between
    if (engine.beside) {
        ResumeBeside();
        return;
    }
    const std::string failure = RunToNextCall();
    if (!failure.empty()) Fail(failure);
    if (engine.phase == Phase::kFinished && failure.empty()) FailIfSomethingIsOpen();
    if (engine.phase == Phase::kCallWaiting) ProgramWaits();  // it waits already
}

void ProgramWaits()
{
    const bool first = !std::exchange(engine.programHasWaited, true);
    switch (engine.phase) {
        case Phase::kCallWaiting:
            engine.phase = Phase::kCallPosted;
            PostAction(BeginCall);
            break;
        case Phase::kCallBegun:
            if (!CallIsOver()) break;
            engine.phase = Phase::kResumePosted;
            PostAction(Resume);
            break;
        case Phase::kFinished:
            if (first) FailIfSomethingIsOpen();  // the script was over before the program had started
            PostAction(TakeClosingStep);
            break;
        default:
            break;
    }
}

// --- Running the coroutine ----------------------------------------------------------------------------------------

int ToText(lua_State* L)
{
    luaL_tolstring(L, 1, nullptr);
    return 1;
}

// Of the value on top of the coroutine's stack. It may be anything, with a __tostring that fails in its turn.
std::string TextOfTop(lua_State* thread)
{
    lua_State* L = engine.lua;
    lua_pushcfunction(L, ToText);
    lua_pushvalue(thread, -1);
    lua_xmove(thread, L, 1);
    const bool made = lua_pcall(L, 1, 1, 0) == LUA_OK;
    std::string text = made ? lua_tostring(L, -1) : std::string("(a value without a text)");
    lua_pop(L, 1);
    return text;
}

std::string ErrorText(lua_State* thread)
{
    luaL_traceback(engine.lua, thread, TextOfTop(thread).c_str(), 0);
    std::string text = lua_tostring(engine.lua, -1);
    lua_pop(engine.lua, 1);
    return text;
}

// What the script returned becomes the exit code: 0 to 255 as a process can return them, for nothing what was noted.
// What is wrong with it, or empty.
std::string TakeResult(lua_State* thread, int count)
{
    lua_settop(thread, lua_gettop(thread) - count + std::min(count, 1));
    if (count == 0 || lua_isnil(thread, -1)) {
        engine.exitCode = std::max(engine.exitCode, engine.notedExitCode);
        return {};
    }
    int isInteger = 0;
    const lua_Integer code = lua_tointegerx(thread, -1, &isInteger);
    if (!isInteger || code < 0 || code > 255) {
        return "the script returned " + TextOfTop(thread) + ", which is no exit code from 0 to 255";
    }
    engine.exitCode = static_cast<int>(code);
    return {};
}

void CountInstructions();

// What the script holds with <close> is closed, as at its end, where it fails or is stopped: a process that it started
// must not outlive it. A closing function that lets the program go on fails, and one without an end is left by Escape.
void CloseVariables()
{
    engine.phase = Phase::kFinished;
    if (!engine.thread) return;
    engine.stopAsked = false;
    if (engine.beside) CountInstructions();
    lua_resetthread(engine.thread);
}

// Lets the script run until it yields or ends. What it failed with, or empty.
std::string RunToNextCall()
{
    engine.phase = Phase::kRunning;
    int results = 0;
    const int status = lua_resume(engine.thread, engine.lua, std::exchange(engine.firstArguments, 0), &results);
    if (engine.stopAsked) {
        CloseVariables();
        return std::string(kStoppedByOperator);
    }
    if (status == LUA_YIELD && std::exchange(engine.givesWay, false)) {
        engine.phase = Phase::kBreathing;
        return {};
    }
    if (status == LUA_YIELD) {
        lua_pop(engine.thread, results);
        engine.phase = Phase::kCallWaiting;
        return {};
    }
    engine.phase = Phase::kFinished;
    if (status == LUA_OK) return engine.beside ? std::string() : TakeResult(engine.thread, results);
    std::string failure = "script failed: " + ErrorText(engine.thread) + "\non screen: " + OnScreen();
    CloseVariables();
    return failure;
}

int ReturnNothing(lua_State* /*L*/, int /*status*/, lua_KContext /*context*/)
{
    return 0;
}

// Comes back from the yield of Await.
int AfterCall(lua_State* L, int status, lua_KContext /*context*/)
{
    if (!engine.callFailure.empty()) {
        const std::string failure = std::exchange(engine.callFailure, {});
        return luaL_error(L, "%s", failure.c_str());
    }
    return engine.afterCall(L, status, 0);
}

// --- Time ---------------------------------------------------------------------------------------------------------

// Its timer is the script's clock, so that waiting moves virtual time and is seen by the program's own timers.
LRESULT TimerWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_TIMER:
            KillTimer(window, static_cast<std::uint32_t>(wParam));
            if (wParam == kBreathTimer) {
                if (engine.phase == Phase::kBreathing) ResumeBeside();
                return 0;
            }
            if (engine.framesToGo > 0) {
                engine.callFailure =
                    Format("frames: %lld more didn't come within 10 s; on screen: %s",
                           static_cast<long long>(std::exchange(engine.framesToGo, 0)), OnScreen().c_str());
            }
            engine.callTimeIsUp = true;
            return 0;
        case WM_DESTROY:
            engine.timerWindow = nullptr;
            return 0;
        default:
            return DefWindowProc(window, message, wParam, lParam);
    }
}

HWND TimerWindow()
{
    if (engine.timerWindow || !hWndMain) return engine.timerWindow;
    if (RegisterWindowClass({.name = "ScriptWndClass", .procedure = TimerWndProc, .icon = {}}))
        engine.timerWindow = CreateChildWindow("ScriptWndClass", hWndMain, Rect{});
    if (engine.timerWindow) ShowWindow(engine.timerWindow, false);
    return engine.timerWindow;
}

std::string StartTimer(std::int64_t milliseconds)
{
    if (!TimerWindow()) return "there is no main window";
    SetTimer(engine.timerWindow, kTimer, milliseconds);
    return {};
}

// A timer that is due at once: timers of the program, its paint and the operator's input come between.
void Breathe()
{
    if (TimerWindow()) SetTimer(engine.timerWindow, kBreathTimer, 0);
}

}  // namespace

int Await(lua_State* L, Call call, lua_KFunction then)
{
    if (engine.programHasEnded) return luaL_error(L, "%s: the program has ended", call.name.c_str());
    if (engine.phase == Phase::kFinished) return luaL_error(L, "%s: the script is over", call.name.c_str());
    if (!lua_isyieldable(L)) {
        return luaL_error(L, "%s lets the program go on, which can't be from inside a C function (sort, gsub, require)",
                          call.name.c_str());
    }
    engine.call = std::move(call);
    engine.callTimeIsUp = false;
    engine.callFailure.clear();
    engine.afterCall = then ? then : ReturnNothing;
    return lua_yieldk(L, 0, 0, AfterCall);
}

Call WaitCall(std::int64_t milliseconds)
{
    return {.name = "wait", .act = [milliseconds] { return StartTimer(milliseconds); }, .takesTime = true};
}

Call FramesCall(std::int64_t count)
{
    if (count <= 0) return {.name = "frames", .act = nullptr};
    return {.name = "frames",
            .act =
                [count] {
                    std::string failure = StartTimer(kFrameLimitMs);
                    if (failure.empty()) engine.framesToGo = count;
                    return failure;
                },
            .takesTime = true};
}

bool TellPrinted(std::string_view text)
{
    if (!engine.beside) return false;
    engine.beside->printed(text);
    return true;
}

bool ProgramHasWaited()
{
    return engine.programHasWaited;
}

bool ProgramHasEnded()
{
    return engine.programHasEnded;
}

std::string OnScreen()
{
    if (engine.programHasEnded) return "nothing, the program has ended";
    std::string modal = ModalInFront();
    if (!modal.empty()) return modal;
    return hWndMain ? "the main window" : "nothing";
}

std::string FromStartDirectory(std::string_view path)
{
    const bool hasDrive = path.size() >= 2 && path[1] == ':';
    const bool absolute = !path.empty() && (path[0] == '/' || path[0] == '\\');
    if (path.empty() || hasDrive || absolute) return std::string(path);
    return engine.startDirectory + "/" + std::string(path);
}

const ScriptHooks& Hooks()
{
    return engine.hooks;
}

namespace {

// --- Making the state ---------------------------------------------------------------------------------------------

// Modules beside the script and in lib beside it; nothing of the machine's own, so that a script runs the same
// everywhere.
void SetModulePath(lua_State* L, const std::string& scriptPath)
{
    const std::string directory = std::filesystem::path(scriptPath).parent_path().string();
    const std::string path = directory + "/?.lua;" + directory + "/lib/?.lua";
    lua_getglobal(L, "package");
    lua_pushlstring(L, path.data(), path.size());
    lua_setfield(L, -2, "path");
    lua_pushliteral(L, "");
    lua_setfield(L, -2, "cpath");
    lua_pushnil(L);
    lua_setfield(L, -2, "loadlib");
    lua_pop(L, 1);
}

void OpenLibraries(lua_State* L, const std::string& scriptPath)
{
    // No coroutines: a call would yield to the script's own instead of to the program.
    constexpr luaL_Reg kLibraries[] = {
        {LUA_GNAME, luaopen_base},       {LUA_LOADLIBNAME, luaopen_package}, {LUA_TABLIBNAME, luaopen_table},
        {LUA_IOLIBNAME, luaopen_io},     {LUA_OSLIBNAME, luaopen_os},        {LUA_STRLIBNAME, luaopen_string},
        {LUA_MATHLIBNAME, luaopen_math}, {LUA_UTF8LIBNAME, luaopen_utf8},
    };
    for (const luaL_Reg& library : kLibraries) {
        luaL_requiref(L, library.name, library.func, 1);
        lua_pop(L, 1);
    }
    SetModulePath(L, scriptPath);

    // exit would end the process behind the program's back; the locale is the program's.
    lua_getglobal(L, LUA_OSLIBNAME);
    for (const char* name : {"exit", "setlocale"}) {
        lua_pushnil(L);
        lua_setfield(L, -2, name);
    }
    lua_pop(L, 1);
}

void SetArguments(lua_State* L, const std::string& path, const std::vector<std::string>& arguments)
{
    lua_createtable(L, static_cast<int>(arguments.size()), 1);
    lua_pushlstring(L, path.data(), path.size());
    lua_rawseti(L, -2, 0);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        lua_pushlstring(L, arguments[i].data(), arguments[i].size());
        lua_rawseti(L, -2, static_cast<lua_Integer>(i) + 1);
    }
    lua_setglobal(L, "arg");
}

void CloseEngine()
{
    if (engine.waitsAs) SetIdleHook(nullptr, *engine.waitsAs);
    CloseVariables();
    if (engine.lua) lua_close(engine.lua);
    if (engine.timerWindow) DestroyWindow(engine.timerWindow);
    ScriptHooks hooks = std::move(engine.hooks);
    engine = Engine{};
    engine.hooks = std::move(hooks);
}

// "#!" in the first line is for the shell.
std::string_view WithoutInterpreterLine(std::string_view source)
{
    if (!source.starts_with('#')) return source;
    const std::size_t end = source.find('\n');
    return end == std::string_view::npos ? std::string_view{} : source.substr(end);
}

// name: what errors call it.
bool Load(const std::string& path, const std::string& name, const std::vector<std::string>& arguments,
          std::string& error)
{
    std::error_code code;
    engine.startDirectory = std::filesystem::current_path(code).string();
    const std::string wholePath = FromStartDirectory(path);
    const std::optional<std::string> source = ReadWholeFile(wholePath, kScriptBytesLimit);
    if (!source) {
        error = "the script " + path + " can't be read";
        return false;
    }
    engine.lua = luaL_newstate();
    if (!engine.lua) {
        error = "no memory for a script";
        return false;
    }
    OpenLibraries(engine.lua, wholePath);
    OpenCalls(engine.lua);
    OpenRecordCalls(engine.lua);
    OpenRegionCalls(engine.lua);
    SetArguments(engine.lua, path, arguments);

    engine.thread = lua_newthread(engine.lua);  // stays on the state's stack: it is never collected
    const std::string_view chunk = WithoutInterpreterLine(*source);
    if (luaL_loadbufferx(engine.thread, chunk.data(), chunk.size(), ("@" + name).c_str(), "t") != LUA_OK) {
        error = lua_tostring(engine.thread, -1);
        return false;
    }
    luaL_checkstack(engine.thread, static_cast<int>(std::min<std::size_t>(arguments.size(), 1000)), nullptr);
    for (const std::string& argument : arguments) lua_pushlstring(engine.thread, argument.data(), argument.size());
    engine.firstArguments = static_cast<int>(arguments.size());
    return true;
}

void ListenAs(IdleUser user)
{
    engine.waitsAs = user;
    SetIdleHook(ProgramWaits, user);
}

// --- Beside the operator's work -----------------------------------------------------------------------------------

void* AllocateWithinLimit(void* used, void* block, std::size_t oldSize, std::size_t newSize)
{
    std::size_t& bytes = *static_cast<std::size_t*>(used);
    const std::size_t before = block ? oldSize : 0;  // without a block it tells a kind
    if (newSize == 0) {
        std::free(block);
        bytes -= before;
        return nullptr;
    }
    if (newSize > before && bytes + (newSize - before) > kBesideBytesLimit) return nullptr;
    void* const grown = std::realloc(block, newSize);
    if (grown) bytes = bytes - before + newSize;
    return grown;
}

void GiveWay(lua_State* L, lua_Debug* /*where*/)
{
    if (!engine.stopAsked && engine.phase == Phase::kRunning && lua_isyieldable(L)) {
        engine.givesWay = true;
        lua_yield(L, 0);
        return;
    }
    // Inside a function that C code calls back there is no way out but an error, again and again for one who catches
    // it.
    engine.stopAsked = engine.stopAsked || EscapeCame();
    if (!engine.stopAsked) return;
    lua_sethook(L, GiveWay, LUA_MASKCOUNT, 1);
    luaL_error(L, "%s", std::string(kStoppedByOperator).c_str());
}

void CountInstructions()
{
    lua_sethook(engine.thread, GiveWay, LUA_MASKCOUNT, kInstructionsATurn);
}

// Reading from a terminal would stop the program.
void EmptyStandardInput(lua_State* L)
{
    if (luaL_dostring(L, "io.input('/dev/null') io.stdin = nil") != LUA_OK) lua_pop(L, 1);
}

void Confine()
{
    lua_State* L = engine.lua;
    constexpr std::size_t kKilobyte = 1024;
    engine.bytes = static_cast<std::size_t>(lua_gc(L, LUA_GCCOUNT)) * kKilobyte +
                   static_cast<std::size_t>(lua_gc(L, LUA_GCCOUNTB));
    lua_setallocf(L, AllocateWithinLimit, &engine.bytes);
    EmptyStandardInput(L);
    CountInstructions();
}

void EndBeside(const std::string& failure)
{
    if (!engine.beside) return;
    const BesideListener listener = *engine.beside;
    CloseEngine();
    listener.ended(failure);
}

std::string NameOfFile(const std::string& path)
{
    return std::filesystem::path(path).filename().string();
}

}  // namespace

}  // namespace script

void SetScriptHooks(ScriptHooks hooks)
{
    script::engine.hooks = std::move(hooks);
}

bool StartScript(const std::string& path, const std::vector<std::string>& arguments, std::string& error)
{
    using namespace script;
    if (!Load(path, path, arguments, error)) {
        CloseEngine();
        return false;
    }
    error = RunToNextCall();
    if (!error.empty()) {
        CloseEngine();
        return false;
    }
    ListenAs(IdleUser::kInFront);
    return true;
}

bool ScriptRuns()
{
    return script::engine.phase != script::Phase::kNone && script::engine.phase != script::Phase::kFinished;
}

bool StartScriptBeside(const std::string& path, BesideListener listener, std::string& error)
{
    using namespace script;
    if (engine.phase != Phase::kNone) {
        error = "another script runs";
        return false;
    }
    if (!Load(path, NameOfFile(path), {}, error)) {
        CloseEngine();
        return false;
    }
    engine.beside = std::move(listener);
    Confine();
    engine.programHasWaited = true;
    engine.phase = Phase::kResumePosted;
    ListenAs(IdleUser::kBeside);
    PostAction(Resume);
    return true;
}

bool ScriptRunsBeside()
{
    return script::engine.beside.has_value();
}

void StopScriptBeside()
{
    using namespace script;
    if (!engine.beside) return;
    if (engine.phase == Phase::kRunning) {
        engine.stopAsked = true;
    } else {
        EndBeside(std::string(kStoppedByOperator));
    }
}

bool StopScriptByEscape()
{
    using namespace script;
    const bool itsOwn = engine.phase == Phase::kCallBegun && engine.call.name == "key";
    if (!engine.beside || itsOwn) return false;
    StopScriptBeside();
    return true;
}

int FinishScript(int programExitCode)
{
    using namespace script;
    if (engine.beside) CloseEngine();
    if (engine.phase == Phase::kNone) return programExitCode;

    SetIdleHook(nullptr);
    engine.programHasEnded = true;
    if (ScriptRuns()) {
        const bool begun = engine.phase == Phase::kCallBegun || engine.phase == Phase::kResumePosted;
        const bool nothingToDo = !engine.call.act && !engine.call.takesTime;
        if (!(begun && CallIsOver()) && !nothingToDo) engine.callFailure = engine.call.name + ": the program has ended";
        const std::string failure = RunToNextCall();
        if (!failure.empty()) Fail(failure);
    }
    const int exitCode = engine.exitCode;
    CloseEngine();
    return exitCode;
}

void NoteScriptFrame()
{
    using namespace script;
    NoteRecordedFrame();
    if (engine.framesToGo == 0) return;
    if (--engine.framesToGo > 0) {
        SetTimer(engine.timerWindow, kTimer, kFrameLimitMs);
        return;
    }
    KillTimer(engine.timerWindow, kTimer);
    engine.callTimeIsUp = true;
}

void NoteScriptExitCode(int code, std::string_view why)
{
    if (!ScriptRuns() || ScriptRunsBeside()) return;
    script::engine.notedExitCode = std::max(script::engine.notedExitCode, code);
    script::Report(why);
}

void ResetScript()
{
    script::CloseEngine();
    script::engine = {};
}

}  // namespace kelvo

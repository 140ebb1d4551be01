// Between the engine that runs an operator script (script.cpp) and the calls that it offers (script_calls.cpp).
#pragma once

#include <lua.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kelvo {
struct ScriptHooks;
}

namespace kelvo::script {

// One call that lets the program go on. It is over when the program next waits after act began: act itself may then
// still be running, in the loop of a dialog that it opened.
struct Call {
    std::string name;                  // for messages
    std::function<std::string()> act;  // from the event loop: why it couldn't be done, or empty. Null: nothing to do
    bool takesTime = false;            // act only begins it; EndTimedCall tells its end
};

// Queues the call and yields; to be used as the return expression of a Lua function. After the call, then runs on the
// same arguments (null: return nothing). A failure becomes a Lua error at the caller's line.
int Await(lua_State* L, Call call, lua_KFunction then = nullptr);

Call WaitCall(std::int64_t milliseconds);
Call FramesCall(std::int64_t count);

// A line of print, to who listens to a script that runs beside the operator's work; false where none does.
bool TellPrinted(std::string_view text);

bool ProgramHasWaited();  // it has come to its first wait for the operator
bool ProgramHasEnded();

// What is in front, for messages: "dialog DISPLAY", "the main window".
std::string OnScreen();

// A path as the script gave it, seen from where the process was started.
std::string FromStartDirectory(std::string_view path);

const ScriptHooks& Hooks();

// Puts the calls into the state's globals; those of the recorder stand in record_calls.cpp, those of
// regions in region_calls.cpp.
void OpenCalls(lua_State* L);
void OpenRecordCalls(lua_State* L);
void OpenRegionCalls(lua_State* L);

}  // namespace kelvo::script

// The calls of operator scripts that record, and those that work on what was recorded.

#include "platform/clock.h"
#include "script/lua_values.h"
#include "script/script.h"
#include "script/script_engine.h"

#include <lua.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace kelvo::script {

namespace {

constexpr std::int64_t kLookMs = 20;           // how often a recording that is waited for is looked at
constexpr const char* kDeadline = "deadline";  // of such a one, on the Lua stack
constexpr double kLongestMs = 1e9;

// --- Values -------------------------------------------------------------------------------------------------------

void PushValue(lua_State* L, const ScriptValue& value)
{
    std::visit(Overloaded{
                   [L](std::monostate) { lua_pushnil(L); },
                   [L](bool flag) { lua_pushboolean(L, flag); },
                   [L](std::int64_t number) { lua_pushinteger(L, number); },
                   [L](double number) { lua_pushnumber(L, number); },
                   [L](const std::string& text) { PushText(L, text); },
                   [L](const std::vector<double>& numbers) { PushList(L, numbers); },
                   [L](const std::vector<std::string>& texts) { PushList(L, texts); },
               },
               value);
}

std::string TextAt(lua_State* L, int index)
{
    std::size_t length = 0;
    const char* const text = lua_tolstring(L, index, &length);
    return {text, length};
}

// A list of numbers; monostate where it holds anything else.
ScriptValue NumbersAt(lua_State* L, int index)
{
    std::vector<double> numbers;
    for (lua_Integer i = 1; lua_rawgeti(L, index, i) != LUA_TNIL; ++i) {
        const bool isNumber = lua_type(L, -1) == LUA_TNUMBER;
        numbers.push_back(lua_tonumber(L, -1));
        lua_pop(L, 1);
        if (!isNumber) return {};
    }
    lua_pop(L, 1);
    return numbers;
}

ScriptValue ValueAt(lua_State* L, int index)
{
    switch (lua_type(L, index)) {
        case LUA_TBOOLEAN:
            return lua_toboolean(L, index) != 0;
        case LUA_TNUMBER:
            if (lua_isinteger(L, index)) return std::int64_t{lua_tointeger(L, index)};
            return lua_tonumber(L, index);
        case LUA_TSTRING:
            return TextAt(L, index);
        case LUA_TTABLE:
            return NumbersAt(L, lua_absindex(L, index));
        default:
            return {};
    }
}

// The table's fields by name, in order; those whose key isn't a text are called "[1]".
ScriptFields FieldsAt(lua_State* L, int table)
{
    ScriptFields fields;
    lua_pushnil(L);
    while (lua_next(L, table) != 0) {
        const bool named = lua_type(L, -2) == LUA_TSTRING;
        const std::string name = named ? TextAt(L, -2) : std::string("[") + luaL_typename(L, -2) + "]";
        fields.emplace_back(name, ValueAt(L, -1));
        lua_pop(L, 1);
    }
    std::ranges::sort(fields, {}, &ScriptFields::value_type::first);
    return fields;
}

int PushFields(lua_State* L, const ScriptFields& fields)
{
    lua_createtable(L, 0, static_cast<int>(fields.size()));
    for (const auto& [name, value] : fields) {
        PushValue(L, value);
        lua_setfield(L, -2, name.c_str());
    }
    return 1;
}

// Takes a field out; monostate where it isn't there.
ScriptValue TakeField(ScriptFields& fields, std::string_view name)
{
    const auto found = std::ranges::find(fields, name, &ScriptFields::value_type::first);
    if (found == fields.end()) return {};
    ScriptValue value = std::move(found->second);
    fields.erase(found);
    return value;
}

// --- The recorder -------------------------------------------------------------------------------------------------

int PushStatus(lua_State* L)
{
    return PushFields(L, Hooks().recorderStatus());
}

int GiveStatus(lua_State* L, int /*status*/, lua_KContext /*context*/)
{
    return PushStatus(L);
}

int LookAgain(lua_State* L, int /*status*/, lua_KContext /*context*/)
{
    if (!Hooks().recorderRuns()) return PushStatus(L);
    lua_getfield(L, 1, kDeadline);
    const std::int64_t leftMs = lua_tointeger(L, -1) - TickMs();
    lua_pop(L, 1);
    if (leftMs <= 0) {
        return Await(L, {.name = "record", .act = [] { return Hooks().recorderDoes("stop"); }}, GiveStatus);
    }
    Call wait = WaitCall(std::min(leftMs, kLookMs));
    wait.name = "record";
    return Await(L, std::move(wait), LookAgain);
}

std::optional<std::int64_t> LimitOf(const ScriptValue& value)
{
    const auto* const whole = std::get_if<std::int64_t>(&value);
    const auto* const number = std::get_if<double>(&value);
    const double milliseconds = whole ? static_cast<double>(*whole) : number ? *number : -1;
    if (milliseconds >= 0 && milliseconds <= kLongestMs) return static_cast<std::int64_t>(milliseconds);
    return std::nullopt;
}

// record{...}: begins, and comes back at the end, or with wait = false at once.
int RecordWith(lua_State* L)
{
    ScriptFields settings = FieldsAt(L, 1);
    const ScriptValue wait = TakeField(settings, "wait");
    const ScriptValue limit = TakeField(settings, "limit");
    const bool comesBackAtOnce = std::holds_alternative<bool>(wait) && !std::get<bool>(wait);
    const std::optional<std::int64_t> limitMs = LimitOf(limit);
    if (!comesBackAtOnce && !limitMs) return luaL_error(L, "record: give a limit in ms, or wait = false");
    lua_settop(L, 0);
    lua_createtable(L, 0, 1);
    lua_pushinteger(L, TickMs() + limitMs.value_or(0));
    lua_setfield(L, 1, kDeadline);
    const auto begin = [settings = std::move(settings)]() -> std::string {
        const std::string why = Hooks().record(settings);
        return why.empty() ? why : "record: " + why;
    };
    return Await(L, {.name = "record", .act = begin}, comesBackAtOnce ? GiveStatus : LookAgain);
}

int RecordWord(lua_State* L)
{
    const std::string word = TextAt(L, 1);
    const auto act = [word]() -> std::string {
        const std::string why = Hooks().recorderDoes(word);
        return why.empty() ? why : "record: " + why;
    };
    return Await(L, {.name = "record", .act = act}, GiveStatus);
}

int Record(lua_State* L)
{
    if (!Hooks().record) return Fail(L, "record: there is no recorder");
    if (lua_type(L, 1) == LUA_TSTRING) return RecordWord(L);
    luaL_checktype(L, 1, LUA_TTABLE);
    return RecordWith(L);
}

int Recorder(lua_State* L)
{
    if (!Hooks().recorderStatus) return Fail(L, "recorder: there is no recorder");
    return PushStatus(L);
}

// --- Exports ------------------------------------------------------------------------------------------------------

int GiveExported(lua_State* L, int /*status*/, lua_KContext /*context*/)
{
    return PushFields(L, Hooks().exported());
}

int Export(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TTABLE);
    if (!Hooks().exportFrames) return Fail(L, "export: there is nothing that exports");
    const auto act = [settings = FieldsAt(L, 1)]() -> std::string {
        const std::string why = Hooks().exportFrames(settings);
        return why.empty() ? why : "export: " + why;
    };
    return Await(L, {.name = "export", .act = act}, GiveExported);
}

// --- Commands without a window ------------------------------------------------------------------------------------

// Nothing of the program is touched by them: they may run between two events.
int Batch(lua_State* L)
{
    std::vector<std::string> words;
    for (int i = 1; i <= lua_gettop(L); ++i) {
        luaL_checkstring(L, i);
        words.push_back(TextAt(L, i));
    }
    const std::optional<int> code = Hooks().batch ? Hooks().batch(words) : std::nullopt;
    if (!code) return Fail(L, "batch: no such command: " + (words.empty() ? std::string() : words.front()));
    std::fflush(stdout);
    lua_pushinteger(L, *code);
    return 1;
}

}  // namespace

void OpenRecordCalls(lua_State* L)
{
    lua_register(L, "record", Guarded<Record>);
    lua_register(L, "recorder", Guarded<Recorder>);
    lua_register(L, "export", Guarded<Export>);
    lua_register(L, "batch", Guarded<Batch>);
}

}  // namespace kelvo::script

// The calls of operator scripts that set and measure regions.

#include "script/lua_fields.h"
#include "script/lua_values.h"
#include "script/script.h"
#include "script/script_engine.h"

#include <lua.hpp>

#include <string>
#include <utility>
#include <vector>

namespace kelvo::script {

namespace {

std::vector<ScriptFields> TablesAt(lua_State* L, int index)
{
    std::vector<ScriptFields> tables;
    for (lua_Integer i = 1; lua_rawgeti(L, index, i) != LUA_TNIL; ++i) {
        luaL_argexpected(L, lua_istable(L, -1), index, "list of tables");
        tables.push_back(FieldsAt(L, lua_gettop(L)));
        lua_pop(L, 1);
    }
    lua_pop(L, 1);
    return tables;
}

int GiveRegions(lua_State* L)
{
    const std::vector<ScriptFields> regions = Hooks().regions();
    lua_createtable(L, static_cast<int>(regions.size()), 0);
    lua_Integer index = 0;
    for (const ScriptFields& region : regions) {
        PushFields(L, region);
        lua_rawseti(L, -2, ++index);
    }
    return 1;
}

int GiveThem(lua_State* L, int /*status*/, lua_KContext /*context*/)
{
    return GiveRegions(L);
}

// regions(): those of the view. regions{{...}, ...}: these in their place.
int RegionsCall(lua_State* L)
{
    if (!Hooks().regions) return Fail(L, "regions: there are none");
    if (lua_gettop(L) == 0) return GiveRegions(L);
    luaL_checktype(L, 1, LUA_TTABLE);
    const auto set = [tables = TablesAt(L, 1)]() -> std::string {
        const std::string why = Hooks().setRegions(tables);
        return why.empty() ? why : "regions: " + why;
    };
    return Await(L, {.name = "regions", .act = set}, GiveThem);
}

// stats(name) or stats{shape = ...}: the figures in the frame on view.
int Stats(lua_State* L)
{
    if (!Hooks().stats) return Fail(L, "stats: there are no regions");
    std::string why;
    ScriptFields fields;
    if (lua_type(L, 1) == LUA_TSTRING) {
        std::size_t length = 0;
        const char* const name = lua_tolstring(L, 1, &length);
        fields = Hooks().statsOfNamed({name, length}, why);
    } else {
        luaL_checktype(L, 1, LUA_TTABLE);
        fields = Hooks().stats(FieldsAt(L, 1), why);
    }
    if (!why.empty()) return Fail(L, "stats: " + why);
    PushFields(L, fields);
    return 1;
}

}  // namespace

void OpenRegionCalls(lua_State* L)
{
    lua_register(L, "regions", Guarded<RegionsCall>);
    lua_register(L, "stats", Guarded<Stats>);
}

}  // namespace kelvo::script

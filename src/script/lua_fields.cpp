#include "script/lua_fields.h"

#include "script/lua_values.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kelvo::script {

namespace {

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

}  // namespace

void PushFields(lua_State* L, const ScriptFields& fields)
{
    lua_createtable(L, 0, static_cast<int>(fields.size()));
    for (const auto& [name, value] : fields) {
        PushValue(L, value);
        lua_setfield(L, -2, name.c_str());
    }
}

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

}  // namespace kelvo::script

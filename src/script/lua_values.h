// What the files of script calls share: Lua functions that may throw, and values on their way to the script.
#pragma once

#include "platform/text.h"

#include <lua.hpp>

#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::script {

// For std::visit.
template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

// A C++ exception must not cross Lua's frames as such: it becomes an error of the script. (Lua's own errors and yields
// aren't std::exception and pass.)
template <int (*function)(lua_State* L)>
int Guarded(lua_State* L)
{
    try {
        return function(L);
    } catch (const std::exception& failure) {
        lua_pushstring(L, failure.what());
    }
    return lua_error(L);
}

// An error at the caller's line.
inline int Fail(lua_State* L, const std::string& message)
{
    return luaL_error(L, "%s", message.c_str());
}

// Texts of the system are Latin-1 bytes; scripts are UTF-8.
inline void PushText(lua_State* L, std::string_view text)
{
    const std::string utf8 = ToUtf8(text);
    lua_pushlstring(L, utf8.data(), utf8.size());
}
inline void PushItem(lua_State* L, std::string_view text)
{
    PushText(L, text);
}
inline void PushItem(lua_State* L, double number)
{
    lua_pushnumber(L, number);
}

// A list of texts or numbers.
template <typename Items>
void PushList(lua_State* L, const Items& items)
{
    lua_createtable(L, static_cast<int>(items.size()), 0);
    lua_Integer index = 0;
    for (const auto& item : items) {
        PushItem(L, item);
        lua_rawseti(L, -2, ++index);
    }
}

}  // namespace kelvo::script

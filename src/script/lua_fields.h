// Tables of named values between a script and the modules above (script/script.h, ScriptFields).
#pragma once

#include "script/script.h"

#include <lua.hpp>

namespace kelvo::script {

// Pushes a table. Values that are none are left out.
void PushFields(lua_State* L, const ScriptFields& fields);

// The fields of the table at that index by name, in order; those whose key isn't a text are called "[number]". A value
// is a boolean, a number, a text or a list of numbers, anything else none.
ScriptFields FieldsAt(lua_State* L, int table);

}  // namespace kelvo::script

-- Each dialog that the program has (the arguments) has a row in lib/dialogs.lua or the reason why not, and no row is left over.
local check = require "check"
local dialogs = require "dialogs"
answer("ok")

local known = {}
for row in pairs(dialogs.rows) do known[row:match("^[^.]+")] = true end
known.TURN_OFF = nil  -- a box
for name in pairs(dialogs.without_row) do
  assert(not known[name], name)
  known[name] = true
end
for _, name in ipairs(arg) do
  assert(known[name], name .. " has no row")
  known[name] = nil
end
check.eq(next(known), nil, "a row without a dialog")

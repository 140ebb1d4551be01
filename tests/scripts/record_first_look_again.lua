-- The recorded session (record_first_look.lua) in a data directory as that one's was: each line that the operator is shown is the same, but for
-- its time.
local check = require "check"
press(2)
local session = require "session"  -- it asks for the data directory

local first = #transcript()
assert(loadfile(session.script))()
local shown = session.lines(first, #transcript())
local number = 0
for line in readfile(session.directory .. "/session.txt"):gmatch("(.-)\n") do
  number = number + 1
  check.eq(shown[number], line, "line " .. number)
end
check.eq(#shown, number)
assert(number > 200, number)

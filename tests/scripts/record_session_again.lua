-- A recorded session (record_first_look.lua, record_measuring.lua) in a data directory as that one's was: each line that the operator is shown is the
-- same, but for its time, and so are the files that were left.
local check = require "check"
press(2)
local session = require "session"  -- it asks for the data directory

-- Files stand with their whole paths: here they are this directory's own.
local here = datadir()
local script = readfile(session.script):gsub(session.directory:gsub("%p", "%%%0"), (here:gsub("%%", "%%%%")))
local first = #transcript()
assert(load(script, "@" .. session.script))()
local shown = session.lines(first, #transcript())
local number = 0
for line in readfile(session.directory .. "/session.txt"):gmatch("(.-)\n") do
  number = number + 1
  check.eq(shown[number], line, "line " .. number)
end
check.eq(#shown, number)
assert(number > 100, number)
-- Byte for byte, but for the directory's name and times of day.
local function contents(directory, name)
  local bytes = assert(readfile(directory .. "/" .. name), name):gsub(directory:gsub("%p", "%%%0"), "DATA")
  bytes = bytes:gsub("checksum: %x+", "checksum")  -- of the set, which has that name in it
  return (bytes:gsub("%d%d%d%d%-%d%d%-%d%dT%d%d:%d%d:[%d.]+Z", "UTC"))
end
for name in readfile(session.directory .. "/files.txt"):gmatch("[^\n]+") do
  assert(contents(here, name) == contents(session.directory, name), name)
end

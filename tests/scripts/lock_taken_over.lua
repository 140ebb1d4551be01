-- A Kelvo that calibrates (it is killed here): what it has laid aside is no other start's to put back while it lives, and is
-- the next one's to put back when it is dead. arg[1]: the program.
local check = require "check"
local files = require "files"
local another = require "another"
local program, work = arg[1], datadir() .. "/.."
answer("ok")  -- no camera
local data = work .. "/other"
assert(os.execute("mkdir -p '" .. data .. "' && cp '" .. datadir() .. "/platform.ini' '" .. data .. "'"))
-- Waits in real time, without end.
files.write(work .. "/waits.lua", [[
answer("ok")
local mark = assert(io.open(datadir() .. "/waiting", "w"))
mark:close()
while true do
  os.execute("sleep 0.05")
  wait(10)
end]])
files.write(work .. "/returns.lua", [[answer("ok"); return 9]])

local function bytes(name) return readfile(data .. "/" .. name) end

local owner = another.start(program, "owner", "--virtual-time", "--data", data, "--script", "waits.lua")
for _ = 1, 600 do
  if bytes("waiting") then break end
  os.execute("sleep 0.05")
end
assert(bytes("waiting"))
-- As it stands in the midst of a replacement: the former file aside, a new one at its place.
files.write(data .. "/.calibration.journal", "replacing .gai\n" .. data .. "/Last.cal")
files.write(data .. "/.Last.gai.former", "former")
files.write(data .. "/Last.gai", "half new")

local second = another.start(program, "second", "--virtual-time", "--data", data, "--script", "returns.lua")
check.eq(second.finish(), 3)
check.eq(bytes("Last.gai"), "half new")
check.eq(bytes(".Last.gai.former"), "former")
assert(bytes(".calibration.journal"))
check.eq(owner.code(), nil, "the first one runs on")

local process = bytes("kelvo.lock"):match("^%d+")
assert(os.execute("kill -9 " .. process))
owner.finish()
assert(bytes("kelvo.lock"), "a killed process leaves its lock")
local third = another.start(program, "third", "--virtual-time", "--data", data, "--script", "returns.lua")
check.eq(third.finish(), 9, "it is taken over")
check.eq(bytes("Last.gai"), "former")
check.eq(bytes(".calibration.journal"), nil)
check.eq(bytes("kelvo.lock"), nil, "gone with its process")

-- Of two at once on a directory that is free one runs its script, the other says that it is taken.
assert(os.remove(data .. "/waiting"))
local one = another.start(program, "one", "--virtual-time", "--data", data, "--script", "waits.lua")
local two = another.start(program, "two", "--virtual-time", "--data", data, "--script", "waits.lua")
for _ = 1, 600 do
  if one.code() or two.code() then break end
  os.execute("sleep 0.05")
end
local ended, runs = one.code() and one or two, one.code() and two or one
check.eq(ended.code(), 3)
check.eq(runs.code(), nil)
assert(os.execute("kill -9 " .. bytes("kelvo.lock"):match("^%d+")))
runs.finish()

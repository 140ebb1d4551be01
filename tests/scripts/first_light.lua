-- The example that run.sh shows where there is no display: it runs to its end and leaves its pictures and the head's byte log.
local check = require "check"
local top = assert(arg[0]:match("^(.*)/tests/scripts/"), arg[0])
assert(loadfile(top .. "/examples/first-light.lua"))()
for _, name in ipairs {
  "1-before", "2-live", "3-scene", "4-frozen", "5-zoom", "6-colour", "7-configuration", "8-large-array", "9-after",
} do
  check.eq(readfile("first-light/" .. name .. ".png"):sub(2, 4), "PNG", name)
end
check.eq(state("FramesLost"), 0)
check.seen("box", { text = "\nDo you wish to exit?" })

-- The log holds the identification, the first transaction of a turn-on and the clocks going off.
local log = readfile(datadir() .. "/CommLog.txt")
check.holds(log, "Write000=20 00 00 00 OK")
check.holds(log, "=90 30 00 00 OK  90 30 00 00 OK", "clocks on")
check.holds(log, "=90 10 00 00 OK  90 10 00 00 OK", "clocks off")

-- The first start with a simulated camera opens its bench beside the turn-on dialog, and a source can be put in front of the camera while a
-- dialog waits. The data directory says that the bench hasn't been shown: by themselves scripts start without it.
local check = require "check"

while box() do answer("ok") end
check.eq(dialog(), "CLOCK_ON")
local bench = check.seen("dialog", { name = "BENCH", text = "Simulated bench" })
check.seen("dialog", { name = "CLOCK_ON" }, bench.line)
press(1070)
press(1)
press(1)
check.eq(dialog(), "CAL_COLD")
sim.source("low", 20)
wait(1500)
check.eq(text(20404), "steady")
local mean = tonumber(text(20401):match("^([%d.]+) counts$"))
check.near(mean, 7500, 100)
local saturated = tonumber(text(20403):match("^([%d.]+) %%$"))
assert(saturated < 0.5, saturated)

-- The button brings the bench to the front, it doesn't open a second one.
local mark = check.mark()
check.eq(enabled(20405), true)
press(20405)
check.eq(dialog(), "CAL_COLD")
for i = mark + 1, #transcript() do assert(transcript()[i].kind ~= "dialog", "one bench") end

-- A drifting source: the mean moves.
for degrees = 20, 23 do
  sim.source("low", degrees)
  wait(300)
end
check.eq(text(20404), "not steady: the mean still moves")
press(2)

-- In real time: something records (arg[1]) until a signal ends the program; arg[2] is made when it does.
local video = require "video"
while box() do answer("ok") end
video.turn_on()

local function tell_that_it_runs() assert(io.open(arg[2], "w")):close() end
local ways = {
  nothing = tell_that_it_runs,
  continuous = function()
    command(110)
    set(1460, datadir() .. "/run.seq")
    set(1630, "0")
    press(124)
    while state("SaveFrameCount") < 5 do wait(20) end
    tell_that_it_runs()
  end,
  triggered = function()
    command(112)
    set(1460, datadir() .. "/run.seq")
    set(102, "9999")
    press(124)
    while state("TriggersLeft") > 9995 do wait(20) end
    tell_that_it_runs()
  end,
  burst = function()
    command(103)
    set(1342, "3")
    set(1344, "16383")  -- the second frame would come in some minutes
    pick(1340, 1)
    pick(1340, 0)
    tell_that_it_runs()
    press(1352)
  end,
}
ways[arg[1]]()
assert(not pcall(wait, 600000), "no signal came")

-- Something records (arg[1]) until awake_test.py has seen what the services were asked, and has made the file arg[2].
local check = require "check"
local files = require "files"
local video = require "video"
while box() do answer("ok") end
video.turn_on()
frames(2)
local mark = check.mark()

local function until_told()
  while not readfile(arg[2]) do wait(20) end
end
local function recorded(settings)
  settings.directory, settings.name, settings.wait = datadir(), "run", false
  record(settings)
end

local ways = {
  recorder = function()
    recorded { interval = 1 }
    until_told()
    record("stop")
    check.eq(recorder().state, "idle")
  end,
  -- Longer than a minute; in virtual time.
  long = function()
    recorded { interval = 10 }
    wait(61000)
    files.write(arg[2] .. ".long", "")
    until_told()
    record("stop")
    check.eq(recorder().state, "idle")
  end,
  continuous = function()
    command(110)
    set(1460, datadir() .. "/run.seq")
    set(1630, "1")
    press(124)
    check.eq(text(124), "&Stop acquisition")
    until_told()
    press(124)
    press(2)
  end,
  triggered = function()
    command(112)
    set(1460, datadir() .. "/run.seq")
    set(102, "9999")
    press(124)
    check.eq(state("AcquisitionRunning"), 1)
    until_told()
    press(124)
    check.eq(state("AcquisitionRunning"), 0)
    press(2)
  end,
  trace = function()
    regions { { name = "spot", shape = "point", x1 = 5, y1 = 5 } }
    command(2240)
    press("TRACES", 22401)
    check.eq(enabled("TRACES", 22402), true)
    until_told()
    press("TRACES", 22402)
    press("TRACES", 2)
  end,
  -- Until it is killed: the second frame would come in some minutes.
  burst = function()
    command(103)
    set(1342, "3")
    set(1344, "16383")
    pick(1340, 1)
    pick(1340, 0)
    press(1352)
    while true do wait(20) end
  end,
}
ways[arg[1]]()
-- The last word is the services': whoever watches has seen it before the program ends.
while not readfile(arg[2] .. ".end") do wait(20) end
check.eq(check.lines("box", mark + 1), {}, "nothing is told of the services")

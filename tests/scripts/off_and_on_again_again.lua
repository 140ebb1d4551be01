-- The start after off_and_on_again.lua: the last calibration, and with it the head as it was.
local check = require "check"
local calibration = require "calibration"

check.eq(dialog(), "CLOCK_ON")
press(1072)
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
local registers = sim.head()
local compared = 0
for name, value in readfile(datadir() .. "/registers.txt"):gmatch("([%w_]+)=([%d.]+)") do
  check.eq(registers[name], tonumber(value), name)
  compared = compared + 1
end
check.eq(compared, 20)
sim.source("high", 25)
frames(3)
local deviation, mean = calibration.unevenness()
assert(deviation < 8, deviation)
check.near(mean, state("IntensityHot"), 3)

-- The set-up opens with it and takes nothing away.
command(121)
check.eq({ picked(624), picked(626), text(641), text(655) }, { 6, 20, "133", "1" })
press(1)
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
check.eq(sim.head(), registers)
frames(2)

-- The start after off_and_on_again.lua: the last calibration, and with it the head as it was.
local check = require "check"
local calibration = require "calibration"
local registers = require "registers"

check.eq(dialog(), "CLOCK_ON")
press(1072)
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
local kept = registers.kept(datadir() .. "/registers.txt")
check.eq(sim.head(), kept)
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
check.eq(sim.head(), kept)
frames(2)

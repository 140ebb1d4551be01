-- The start after two_point.lua, with the last calibration loaded by itself: corrected, with no question asked.
local check = require "check"
local calibration = require "calibration"

check.eq(dialog(), "CLOCK_ON")
press(1072)
check.eq({ box(), dialog() }, {})
check.eq({ state("CameraOn"), state("LiveVideo"), state("CalType") }, { 1, 1, 2 })
sim.source("high", 25)
frames(3)
local deviation, mean = calibration.unevenness()
check.near(deviation, 5, 0.4)
check.near(mean, state("IntensityHot"), 2)

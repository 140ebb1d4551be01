-- A command line that names a start for which the camera doesn't turn on opens the turn-on dialog all the same.
sim.fault("a head answers", true)
local check = require "check"
check.eq(box().text, "This command is not available in this version of Kelvo.")
answer("ok")
check.eq(box(), nil)

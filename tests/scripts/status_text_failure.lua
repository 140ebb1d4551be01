-- A status line that can't be painted is told.
local check = require "check"
answer("ok")
sim.fault("text", true)
command(156)
check.eq(box().text, "Failure to output text in status window!")
check.eq(box().caption, "Kelvo message")
sim.fault("text", false)
answer("ok")

-- Without the status window's class the start ends.
sim.fault("register status class", true)
local check = require "check"
check.answer_box("Unable to register Status Window class!", "ok", "Kelvo message")
check.fails(function() command(190) end, "the program has ended")

-- Without the status window the start ends.
sim.fault("create status window", true)
local check = require "check"
check.answer_box("Unable to create Status Window.", "ok", "Kelvo message")
check.fails(function() command(190) end, "the program has ended")

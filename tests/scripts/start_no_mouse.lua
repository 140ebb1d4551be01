-- A machine without a mouse: the program says so and goes on.
sim.fault("no mouse", true)
local check = require "check"
check.answer_box("Vantir requires a trackball or mouse!", "ok", "Kelvo message")
check.answer_box("Initialize Hardware Failure", "ok")
check.eq(title(), "Kelvo - Frozen")

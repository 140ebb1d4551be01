-- The start after start_with_a_file.lua: the shipped levels stand, but for the one that the operator took in hand.
local check = require "check"
local text = readfile(datadir() .. "/kelvo.ini")
wait(2000)
check.eq(dialog(), "CLOCK_ON", "a start without a file asks")
check.eq(text:match("\nBrightness=(%d+)"), "478")
check.eq(text:match("\nContrast=(%d+)") == "30", arg[1] == "kept", text)
press(2)

-- The start after start_with_a_file.lua: the shipped levels stand, unless the operator took one in hand: then both are his.
local check = require "check"
local text = readfile(datadir() .. "/kelvo.ini")
wait(2000)
check.eq(dialog(), "CLOCK_ON", "a start without a file asks")
check.eq(text:match("\nBrightness=(%d+)") == "478", arg[1] == "kept", text)
check.eq(text:match("\nContrast=(%d+)") == "30", arg[1] == "kept", text)
press(2)

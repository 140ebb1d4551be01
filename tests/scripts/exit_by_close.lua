-- The window's own close button reaches the same end, without a question.
local check = require "check"
answer("ok")
press("panel", 315, "down")
local contrast = state("Contrast")
close()
check.holds(readfile(datadir() .. "/kelvo.ini"), "Contrast=" .. contrast)
check.eq(#check.lines("box"), 1, "only the box of the start")

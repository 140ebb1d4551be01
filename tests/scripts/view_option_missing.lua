-- A file of the command line that isn't there is told, and the program works on without a picture.
local check = require "check"
check.answer_box("Initialize Hardware Failure", "ok", "Kelvo message")
wait(1)
assert(box(), "the missing file is told")
check.holds(box().text, "missing.img")
answer("ok")
check.eq(box(), nil)
check.eq(title(), "Kelvo - Frozen")
check.eq(state("ViewingFile"), 0)
check.eq(menu(2100), nil, "no recent file")

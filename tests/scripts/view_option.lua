-- A file named on the command line, relative to where the program was started, is on view once the start is through.
local check = require "check"
check.answer_box("Initialize Hardware Failure", "ok", "Kelvo message")
wait(1)
check.eq(title(), "Kelvo - sample")
check.eq(state("ViewingFile"), 1)
check.eq(state("ViewingSequence"), 1)
check.eq(state("CurrentFrame"), 0)
check.holds(status(), "sample.seq")
check.eq(menu(2100).text, "&1 sample.seq")
-- The picture came after the line of a start that is through.
local ready = check.seen("status", { text = " Use Alt + underlined menu item or trackball to select menu item" })
assert(ready.line < check.seen("title", { text = "Kelvo - sample" }).line)

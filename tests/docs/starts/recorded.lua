-- A recorded sequence of four frames on view, two missing before the third; nothing in front.
while box() do answer("ok") end
if dialog() == "CLOCK_ON" then press(2) end
while box() do answer("ok") end
local journal = require "journal"
drop(journal.sequence(datadir() .. "/recorded.seq", journal.numbered { 1, 2, 5, 6 }, journal.closing(4, 0)))
assert(not dialog() and not box() and state("ViewingSequence") == 1)

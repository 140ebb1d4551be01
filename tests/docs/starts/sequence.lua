-- The sample sequence on view, nothing in front.
while box() do answer("ok") end
if dialog() == "CLOCK_ON" then press(2) end
while box() do answer("ok") end
command(113)
choose(datadir() .. "/sample.seq")
assert(not dialog() and not box() and state("ViewingSequence") == 1)

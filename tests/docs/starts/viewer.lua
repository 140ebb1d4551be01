-- No camera turned on, nothing in front.
while box() do answer("ok") end
if dialog() == "CLOCK_ON" then press(2) end
while box() do answer("ok") end
assert(not dialog())

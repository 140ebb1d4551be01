-- Live video with a two-point calibration in force, nothing in front.
while box() do answer("ok") end
press(1070)
press(1)
press(1213)
set(1216, "4")
press(1)
sim.source("low", 20); set(1224, "20"); press(1)
sim.source("high", 25); set(1226, "25"); press(1)
while box() do answer("ok") end
assert(not dialog() and state("CalType") == 2 and state("LiveVideo") == 1)

-- What an operator does is recorded: the camera turned on, calibrated against both sources of the bench, the scene looked at. A second start
-- (record_first_look_again.lua) does it by the recorded script, and is shown the same.
local check = require "check"
press(2)
local session = require "session"  -- it asks for the data directory

-- A data directory of its own for the second start, as this one was.
screenshot(session.again .. "/made.png")
local wiring = assert(io.open(session.again .. "/platform.ini", "wb"))
wiring:write(readfile(datadir() .. "/platform.ini"))
wiring:close()

command(2253)
check.eq(file().title, "Record a script")
choose(session.script)
assert(menu(2253).checked)
local first = #transcript()

command(169)
check.eq(dialog(), "CLOCK_ON")
press(1070)
check.eq(dialog(), "QVF1058")
press(1)
check.eq(dialog(), "CALIB")
press(1)
check.eq(dialog(), "CAL_COLD")
press(20405)  -- the bench
press("BENCH", 1001)
wait(1500)
set(1224, "20")
press(1)
check.eq(dialog(), "CAL_HOT")
press("BENCH", 1002)
wait(1500)
set(1226, "25")
press(1)
while box() do answer(box().default) end
check.eq(dialog(), nil)
press("BENCH", 1003)
press("BENCH", 2)
command(2004)
mouse(100, 200)
mouse(100, 200, "left")
wait(400)
mouse(120, 220)
wait(300)
mouse(120, 220, "left")
command(120)
scroll(1242, 600)
check.eq(text(1240), "600")
press(2)
check("panel", 1013, false)
check("panel", 1013, true)
key("Ctrl+F")
command(169)
while dialog() or box() do
  if box() then answer(box().default) else press(1) end
end
check.eq(state("CameraOn"), 0)

session.keep(first, #transcript())
command(2253)
assert(not menu(2253).checked)
assert(readfile(session.script):find("command(169)\n", 1, true))

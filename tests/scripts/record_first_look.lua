-- The first look of docs/first-look.md, recorded as an operator does it: the camera turned on, set up, calibrated against both sources of the bench, the
-- report, the scene, the pointer that reads degrees. A second start (record_session_again.lua) does it by the recorded script, and is shown the same.
local check = require "check"
press(2)
local session = require "session"  -- it asks for the data directory
local first = session.begin()

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
answer(box().default)
check.eq(box().caption, "Kelvo Calibration Statistics")
answer("report")
check.eq(dialog(), "CALREPORT")
press(1)
check.eq({ dialog(), box() }, {})
press("BENCH", 1003)
press("BENCH", 2)
key("Ctrl+F")  -- the contrast of the moving scene
key("F2")
key("F8")
mouse(300, 250)
check.holds(status(), "Temperature=")
key("F8")
key("F2")
key("F11")
key("F11")
pick("panel", 1256, 0)
pick("panel", 1256, 2)
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

session.finish(first)
local script = readfile(session.script)
for _, act in ipairs { 'command(169)', 'press(1070)', 'set(1224, "20")', 'press("BENCH", 1001)', 'answer("report")', 'command(151)', 'mouse(300, 250, "move")', 'mouse(100, 200, "left")',
  'scroll(1242, 600)', 'pick("panel", 1256, 2)', 'check("panel", 1013, true)' } do
  check.holds("\n" .. script, "\n" .. act .. "\n")
end

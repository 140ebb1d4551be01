-- Under Wayland, where no program moves the pointer: the window stands, a dialog is worked, a picture is shown, and the trackball mode goes
-- by the pointer's own way.
local check = require "check"
assert(os.getenv("QT_QPA_PLATFORM") == "wayland")

for _ = 1, 200 do
  if dialog() == "CLOCK_ON" then break end
  wait(20)
end
check.eq(dialog(), "CLOCK_ON")
press(2)
assert(state("ClientWidth") >= 640 and state("ClientHeight") >= 480)
drop(datadir() .. "/sample.seq")
check.eq(title(), "Kelvo - sample")
command(2004)
command(2040)
screenshot(datadir() .. "/../wayland.png")

local before = status()
local contrast, brightness = state("Contrast"), state("Brightness")
key("F10")
check.holds(status(), "Esc, F10 or the right button ends it")
mouse(400, 300)
mouse(450, 300)
check.eq(state("Brightness"), brightness + 10, "(50 + 2) / 5")
mouse(450, 275)
check.eq(state("Contrast"), contrast + 1)
key("Esc")
check.eq({ state("TrackballMode"), status() }, { 0, before })

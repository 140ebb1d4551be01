-- The camera's main switch with the simulated head behind it: each of the three ways on, and off again each time.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local video = require "video"

local function turn_off()
  command(169)
  check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes", "Turn off camera?")
  check.eq(dialog(), nil)
  check.eq(state("CameraOn"), 0)
  check.eq(state("LiveVideo"), 0)
  check.eq(state("GrabberPresent"), 0)
  check.eq(menu(169).text, "&Turn Vantir on")
end

local function is_live()
  check.eq(box(), nil)
  check.eq(dialog(), nil)
  check.eq(state("CameraOn"), 1)
  check.eq(state("LiveVideo"), 1)
  check.eq(menu(169).text, "&Turn Vantir off")
  frames(5)
end

-- The start asks; the video set-up's way.
video.turn_on()
is_live()
check.eq(state("CalType"), 0)
-- 48000000 / 12 Hz over 320 x 256 pixels at row 3 of the list.
check.near(state("FrameRate"), 48000000 / 12 / (320 * 256), 1e-4)

-- No leaves all as it is.
command(169)
check.answer_box("Do you wish to turn the Vantir camera OFF?", "no")
is_live()

-- The video set-up's command sends what is in force and leaves the camera on.
video.accept_set_up()
is_live()
turn_off()

-- The last calibration: first there is none, then one that can't be loaded. The camera stays on with the dialog open, and without
-- a video set-up the line says what to do.
command(169)
check.eq({ enabled(1070), enabled(1072), enabled(1074) }, { true, false, true })
press(2)
local last = files.write(state("DefaultDir") .. "/last.cal", "nothing")
command(169)
press(1072)
check.answer_box("Failed to get ActiveCamera from calibration file:\n" .. last, "ok")
check.eq(dialog(), "CLOCK_ON")
press(2)
is_live()
check.holds(status(), "not set up: Ctrl+V")
frames(110)
check.eq(status():gsub("%d+", "N"), "  Displaying at N Hz   not set up: Ctrl+V")
key("Ctrl+V")
check.eq(dialog(), "QVF1058")
press(1)
assert(not status():find("not set up"), status())
frames(110)
check.eq(status():gsub("%d+", "N"), "  Displaying at N Hz")
turn_off()

files.calibration(state("DefaultDir") .. "/last.cal", state("Hroi"), state("Vroi"), 1, 0)
command(169)
press(1072)
is_live()
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
turn_off()

-- A selected one.
command(169)
press(1074)
check.eq(dialog(), "CAL_OPEN")
calibration.choose(state("DefaultDir") .. "/last.cal")
is_live()

-- The same file by the menu.
command(133)
calibration.choose(state("DefaultDir") .. "/last.cal")
is_live()
turn_off()

-- A head that has gone: each way says what it says, and the dialog stays until the operator cancels.
sim.fault("head silent", true)
command(169)
press(1070)
check.answer_box("Unable to communicate with camera head!", "ok", "Load timing error!")
check.answer_box("Unable to turn camera head on!", "ok", "Camera Head Error!")
press(1072)
check.answer_box("Unable to communicate with camera head!", "ok")
check.eq(dialog(), "CLOCK_ON")
press(2)
check.eq(state("CameraOn"), 0)
sim.fault("head silent", false)

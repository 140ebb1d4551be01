-- One run: on, the video set up, off, on again, the video set up anew, calibrated, looked at on the oscilloscope, saved. The next start
-- (off_and_on_again_again.lua) loads that calibration: the head's registers are those of the calibration.
local check = require "check"
local calibration = require "calibration"
local registers = require "registers"
local scope = require "scope"

local kFirstSteps = {
  " Use video oscilloscope to set up Kelvo video parameters",
  "Initialize decommutation array",
  "Reorder decommutation memory",
  "Download decommutation memory to RAM",
  "Set unity gain and offset",
  "Start acquiring data",
  "Set valid units",
}

-- On, with settings of the operator's own; the calibration is put off.
press(1070)
check.eq(dialog(), "QVF1058")
pick(scope.kFrameRates, 6)
pick(scope.kIntegrations, 20)
scroll(scope.kOffsetBar, 255 - 133)
scroll(scope.kGainBar, 15 - 1)
press(1)
check.eq(dialog(), "CALIB")
press(2)
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 0 })
frames(3)
local on = sim.head()
check.eq({ on.clock, on.offset, on.gain, on.clocks_on, on.biases_on }, { 8, 133, 8, 1, 1 })

-- Off: the head is in its safe state, and what was chosen isn't forgotten.
command(169)
check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes", "Turn off camera?")
check.eq({ box(), dialog(), state("CameraOn"), state("GrabberPresent") }, { nil, nil, 0, 0 })
check.eq(menu(169).text, "&Turn Vantir on")
local off = sim.head()
check.eq({ off.clocks_on, off.biases_on, off.offset }, { 0, 0, 128 })

-- On again: the set-up starts from a clean state once more, with the settings as they were.
command(169)
check.eq(dialog(), "CLOCK_ON")
local mark = check.mark()
press(1070)
check.eq(dialog(), "QVF1058")
check.seen_in_order("status", kFirstSteps, mark)
check.eq({ picked(scope.kFrameRates), picked(scope.kIntegrations), text(scope.kOffsetText), text(scope.kGainText) }, { 6, 20, "133", "1" })
check.eq(sim.head(), on)
frames(3)
press(scope.kUnity)
check.eq({ box(), dialog() }, { nil, "QVF1058" })
press(1)

-- Calibrated between 20 and 25 degrees.
check.eq(dialog(), "CALIB")
calibration.two_point(20, 25, 30)
check.eq(box().caption, "Kelvo Calibration Statistics")
answer("ok")
check.eq({ box(), dialog(), state("CalType"), state("DisplayUnit") }, { nil, nil, 2, 2 })
check.eq(sim.head(), on, "the calibration sends nothing of its own")
frames(3)
local deviation, mean = calibration.unevenness()
assert(deviation < 8, deviation)
check.near(mean, state("IntensityHot"), 3)

-- The oscilloscope over a calibrated camera: green, in degrees from the straight line through both sources.
command(121)
check.eq(dialog(), "QVF1058")
check.eq(items(scope.kUnits)[picked(scope.kUnits) + 1], "Temperature (\xC2\xB0C)")
local slope = (25 - 20) / (state("IntensityHot") - state("IntensityCold"))
local shown = scope.labels()
for i, counts in ipairs(scope.mark_counts(0, 16383)) do
  check.near(tonumber(shown[i]), 20 + slope * (counts - state("IntensityCold")), 0.002, "label " .. i)
end
pick(scope.kUnits, scope.unit("Temperature (\xC2\xB0F)"))
check.near(tonumber(text(612)), (20 + slope * (0 - state("IntensityCold"))) * 1.8 + 32, 0.004)
pick(scope.kUnits, scope.unit("Temperature (\xC2\xB0C)"))
frames(2)
press(scope.kSave)
choose("calibrated.bmp")
local width, height, at = scope.bitmap("calibrated.bmp")
check.eq(at(width * 2 // 5, height // 4), 0x00FF00, "paper")
press(2)
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
check.eq(sim.head(), on)

-- Saved: the file holds the picture on the screen.
frames(3)
command(140)
check.eq(state("LiveVideo"), 0)
command(106)
check.eq(dialog(), "SAVE")
set(1460, "corrected")
set(1488, "1")
press(1)
check.eq({ box(), dialog() }, {})
local bytes = assert(readfile(datadir() .. "/corrected.img"))
check.eq(#bytes, 512 + 2 * 320 * 256)
for y = 0, 255, 5 do
  for x = 0, 319, 3 do check.eq((string.unpack("<i2", bytes, 513 + 2 * (y * 320 + x))), pixel(x, y), x .. ", " .. y) end
end
command(140)

registers.keep(datadir() .. "/registers.txt", on, {})

-- A two-point calibration on the simulated camera: the array becomes even, bad detectors vanish, the set stands on the disk, and the next
-- start (two_point_again.lua) comes up with it.
local check = require "check"
local calibration = require "calibration"

calibration.turn_on()
local mark = check.mark()
local bad = calibration.two_point(20, 25, 30)

-- 2 % of the 81920 detectors are bad; some of those blink, and may stand still for the moment.
check.near(bad["Total bad pixels"], 0.02 * 81920, 150)
assert(bad["Noisy"] > 50 and bad["Inoperable opens"] > 20)

check.seen_in_order("status", {
  " Press OK when LOW flux source is in front of camera",
  "Initializing variables...",
  "Setting pixel commutation order...",
  "Starting frame capture",
  " Press OK when HIGH flux source is in front of camera",
  "  Getting high flux calibration data...",
  "Calculating calibration coefficients...",
  "Saving pixel noise file...",
  "Calculating Means...",
  "Calculating Gains...",
  "Downloading Gains...",
  "Calculating Offsets...",
  "Calculating calibration statistics...",
  "Downloading Offsets...",
  "Saving offset calibration file...",
  "Performing bad pixel substitution...",
  "Saving gain calibration file",
  "Setting Image orientation...",
  "Saving Decommutation order in file...",
  "Saving calibration (.cal) file...",
  "Calculating more statistics...",
  "Calibration results",
}, mark)

-- The result, with one more button.
local result = box()
check.eq(result.caption, "Kelvo Calibration Statistics")
check.eq(result.buttons, { "ok", "report" })
check.eq(result.default, "ok")
check.eq(result.text:match("^Total bad pixels: +(%d+)"), tostring(bad["Total bad pixels"]))
for _, part in ipairs { "\nBad response pixels:", "\nBad noise pixels:", " counts @ 20.000", " counts @ 25.000", "\nSensitivity:  0.0",
                        "\xC2\xB0C/count", "\nGain Uniformity: \xC2\xB1 1.", "\nOffset Uniformity: \xC2\xB1 0." } do
  check.holds(result.text, part)
end
local low = tonumber(result.text:match("Mean Low Signal: +([%d.]+)"))
check.near(low, 7500, 30)
local high = tonumber(result.text:match("Mean High Signal: +([%d.]+)"))
local noise = tonumber(result.text:match("Mean noise: +([%d.]+)"))
assert(noise > 5 and noise < 8, "5 counts, and the noisy ones: " .. noise)
check.eq(state("CalType"), 2)
assert(high - low > 1200, high)
answer("report")
check.eq(dialog(), "CALREPORT")
wait(300)
screenshot("report.png")
check.holds(text(1001), "Residual non-uniformity")
check.holds(text(1001), "before  low source, 20.000")
check.holds(text(1001), "after   high source, 25.000")
press(1)
check.eq({ box(), dialog() }, {})
check.eq(check.lines("status")[#check.lines("status")].text,
         " Use Alt + underlined menu item or trackball to select menu item")

-- The report tells what the eye sees: uneven before, even after.
local report = readfile("data/Last.report.txt")
local before = tonumber(report:match("before  low source.-counts +([%d.]+) %%"))
local after = tonumber(report:match("after .-counts +([%d.]+) %%"))
assert(before > 0.8 and before < 1.5, before)
assert(after < 0.05, after)  -- what is left are the blinking ones

-- One frame carries its noise of 5 counts and next to nothing else; bad detectors are gone.
frames(3)
local deviation, mean = calibration.unevenness()
check.near(deviation, 5, 0.4)
check.near(mean, high, 2)
check.eq(state("DisplayUnit"), 2)

-- The set.
for name, size in pairs { gai = 81920 * 4, off = 81920 * 2, noi = 81920 * 2, dcm = 81920 * 4 } do
  check.eq(#readfile("data/Last." .. name), size, name)
end
local _, listed = readfile("data/Last.bad"):gsub("\n", "")
check.eq(listed, bad["Total bad pixels"])
local set = readfile("data/Last.cal")
for _, key in ipairs { "GainFile=Last.gai", "OffsetFile=Last.off", "DecomFile=Last.dcm", "BadDetFile=Last.bad", "CalType=2",
                       "DriverNumber=" .. state("ActiveCamera"), "TemperatureCold=20.000000", "TemperatureHot=25.000000",
                       "IndexFrameRate=3" } do
  check.holds(set, key)
end
check.eq(set, readfile(state("IniFilePath")))
screenshot("even.png")

-- Cancel at the low source leaves all as it is; at the high one the camera is left uncalibrated, and the set stands.
local gains = readfile("data/Last.gai")
command(130)
calibration.accept(2)
check.eq(dialog(), "CAL_COLD")
press(2)
check.eq({ box(), dialog() }, {})
check.eq(state("CalType"), 2)
command(130)
calibration.accept(2)
calibration.at_low(20, 20)
check.eq(dialog(), "CAL_HOT")
press(2)
check.eq({ box(), dialog() }, {})
check.eq(state("CalType"), 0)
frames(2)
deviation = calibration.unevenness()
assert(deviation > 50, deviation)
check.eq(readfile("data/Last.gai"), gains)

-- Two sources that are one: refused, and the former set comes back whole.
command(130)
calibration.accept(2)
calibration.at_low(20, 20)
calibration.at_high(20)
check.answer_box("Calibration failed due to too few good detectors in array.", "ok", "Kelvo message")
check.eq(state("CalType"), 0)
check.eq(readfile("data/Last.gai"), gains)
check.eq(readfile("data/Last.cal"), set)
check.eq(#readfile("data/Last.noi"), 81920 * 2)

-- Without substitution no list is written and none is named; one frame gives no noise.
command(130)
check(1306, false)
calibration.accept(2, 1)
calibration.at_low(20)
calibration.at_high(25)
calibration.bad_pixels()
check.eq(box().text:find("Mean noise", 1, true), nil)
check.eq(box().text:find("@", 1, true), nil)
answer("ok")
check.eq(io.open(datadir() .. "/Last.noi"), nil, "of one frame there is no noise, and the old file goes")
check.holds(readfile("data/Last.cal"), "BadDetFile=\n")

-- As the first one, for the next start.
command(130)
check(1306, true)
calibration.two_point(20, 25, 30)
answer("ok")

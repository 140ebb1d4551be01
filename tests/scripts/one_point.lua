-- One-point calibrations on the simulated camera: a new one, an update of it and of a two-point one, every cancel and refusal, and what the
-- next start (one_point_again.lua) makes of the set.
local check = require "check"
local calibration = require "calibration"

calibration.turn_on()
sim.source("low", 20)
local mark = check.mark()
calibration.accept(1, 30)
check.eq(dialog(), "CAL_COLD")
check.seen("dialog", { name = "CAL_COLD", text = "1 Point Calibration" }, mark)
calibration.at_low(20, 20)
local result = box()
check.eq(result.caption, "Calibration results")
check.eq(result.buttons, { "ok", "report" })
local bad = tonumber(result.text:match("^Total bad pixels = +(%d+) %("))
check.near(bad, 0.02 * 81920, 150)
local mean = tonumber(result.text:match("\n\nMean signal = +([%d.]+) counts @ 20.000"))
check.near(mean, 7500, 30)
check.near(tonumber(result.text:match("\n\nMean noise = +([%d.]+) counts$")), 5, 0.3)
check.seen_in_order("status", {
  " Perform 1 point calibration (determine offsets only)",
  "Getting calibration data...",
  "Setting all gains to identical value",
  "Calculating average of all pixels",
  "Replace bad pixels",
  "Downloading Gains...",
  "Calculating Offsets...",
  "Downloading Offsets...",
  "Performing bad pixel substitution...",
  "Setting Image orientation...",
}, mark)
answer("report")
check.eq(dialog(), "CALREPORT")
check.holds(text(1001), "1 Point Calibration")
press(1)
check.seen_in_order("status", { "Saving pixel noise file...", "Saving gain calibration file", "Saving offset calibration file" }, mark)
check.eq(state("CalType"), 1)
check.eq({ state("DisplayLow"), state("DisplayHigh") }, { 0, 16383 })
frames(3)
local deviation, shown = calibration.unevenness()
check.near(deviation, 5, 0.4)
check.near(shown, mean, 2)

-- A set of its own: all gains 1 or 0, and the table of the readout, before bad pixels are replaced.
local one = string.pack("<f", 1)
local gains = readfile("data/last.gai")
local zeroes = 0
for i = 1, #gains, 4 do
  local gain = gains:sub(i, i + 3)
  if gain ~= one then
    check.eq(gain, "\0\0\0\0")
    zeroes = zeroes + 1
  end
end
check.eq(zeroes, bad)
check.eq(#readfile("data/last.off"), 81920 * 2)
check.eq(#readfile("data/last.noi"), 81920 * 2)
local own_table = readfile("data/last.dcm")
check.eq(#own_table, 81920 * 4)
local seen = {}
for at = 1, #own_table, 4 do seen[string.unpack("<I4", own_table, at)] = true end
for detector = 0, 81919 do assert(seen[detector], detector) end
local set = readfile("data/last.cal")
for _, key in ipairs { "GainFile=last.gai", "OffsetFile=last.off", "DecomFile=last.dcm", "BadDetFile=last.bad", "CalType=1", "TemperatureCold=20.000000" } do
  check.holds(set, key)
end

-- An update at another temperature: new offsets in place, the gain file stays.
local offsets = readfile("data/last.off")
mark = check.mark()
command(131)
check.seen("dialog", { name = "CAL_COLD", text = "1 Point Update" }, mark)
calibration.at_low(22)
check.holds(box().text, "Total new bad pixels = ")
check.eq(box().text:find("noise", 1, true), nil, "an update measures none")
check.eq(box().text:find("@", 1, true), nil)
answer("ok")
check.seen("status", { text = " Perform 1 point update to current calibration (determine new offsets)" }, mark)
check.seen("status", { text = "Reading in gain list from file" }, mark)
check.eq(state("CalType"), 1)
assert(readfile("data/last.off") ~= offsets)
check.eq(readfile("data/last.gai"), gains)
frames(3)
deviation = calibration.unevenness()
check.near(deviation, 5, 0.5)

-- Cancel changes nothing.
command(131)
press(2)
check.eq(state("CalType"), 1)
check.eq({ box(), dialog() }, {})
-- So does that of a new calibration: nothing is loaded.
mark = check.mark()
command(130)
calibration.accept(1)
press(2)
check.eq({ box(), dialog() }, {})
check.eq(check.find("status", { text = "Loading gain list..." }, mark), nil)
check.eq(state("CalType"), 1)

-- An update whose gains are gone: a beep, and the camera is uncalibrated.
assert(os.rename(datadir() .. "/last.gai", datadir() .. "/kept.gai"))
mark = check.mark()
command(131)
calibration.at_low(20)
check.eq({ box(), dialog() }, {})
assert(#check.lines("beep", mark) >= 2)
check.eq(state("CalType"), 0)
assert(os.rename(datadir() .. "/kept.gai", datadir() .. "/last.gai"))

-- A two-point calibration in place of it.
command(130)
calibration.accept(2)
calibration.at_low(20, 20)
calibration.at_high(25, 25)
calibration.bad_pixels()
answer("ok")
check.eq(state("CalType"), 2)
-- The gains of a two-point calibration are kept by an update.
gains = readfile("data/last.gai")
command(131)
calibration.at_low(21, 21)
answer("ok")
check.eq(state("CalType"), 2)
check.eq(readfile("data/last.gai"), gains)
-- A blinking detector that is on spoils a frame, not all of them.
deviation = math.huge
for _ = 1, 8 do
  frames(3)
  local of_frame
  of_frame, shown = calibration.unevenness()
  deviation = math.min(deviation, of_frame)
end
assert(deviation < 12, "blinking ones aside, a frame carries its noise alone: " .. deviation)
check.near(shown, state("IntensityCold"), 2)

-- One point once more, for the next start.
command(130)
calibration.accept(1, 30)
calibration.at_low(20, 20)
answer("ok")
check.eq(state("CalType"), 1)

-- Calibrations that are given up or get no frames, on the simulated camera: the calibration in force, its lists and files, and what the
-- commands make of them afterwards.
local check = require "check"
local calibration = require "calibration"
local files = require "files"

local kPermanent, kReplaceBad, kReplaceNoisy, kFrames = 1200, 1306, 1208, 1216
local kColdC, kColdEmissivity = 1224, 1225
local kSet = { ".gai", ".off", ".noi", ".dcm", ".bad", ".cal" }
local data = datadir()

local function set_files(name)
  local contents = {}
  for _, extension in ipairs(kSet) do contents[extension] = readfile(data .. "/" .. name .. extension) or "none" end
  return contents
end
-- What a calibration works on, as a whole.
local kStates = {
  "CalType", "IntensityCold", "IntensityHot", "TemperatureCold", "TemperatureHot", "CalSettings.CalFile", "CalSettings.GainFile",
  "CalSettings.OffsetFile", "CalSettings.DecomFile", "CalSettings.BadDetFile", "CalSettings.ChosenType", "CalSettings.NumSources",
  "CalSettings.NumFrames", "CalSettings.EmissivityCold", "CalSettings.EmissivityHot", "ReplaceNoisy", "BadDetCount", "SubstBadPixels",
  "DisplayLow", "DisplayHigh", "DisplayUnit", "VoltsLow", "VoltsHigh", "IndexFrameRate", "FrameRate", "VideoGain", "VideoOffset",
  "CameraOn", "LiveVideo",
}
local function numbers(name)
  local list = state(name)
  if type(list) == "string" then return list end  -- a long one: its digest
  for i = 1, #list do list[i] = string.pack("<f", list[i]) end
  return table.concat(list)
end
local function everything()
  wait(1100)  -- what is pending reaches the disk
  local all = { ini = readfile(state("IniFilePath")), camera = readfile(state("CameraFilePath")), set = set_files("Last"),
    table_on_disk = readfile(data .. "/DECOM.TMP"), head = sim.head(), menu = menu(141).checked }
  for _, name in ipairs { "DecomList", "OffsetList", "GainList" } do all[name] = numbers(name) end
  for _, name in ipairs(kStates) do all[name] = state(name) end
  return all
end
local function unchanged(before, what)
  local now = everything()
  for name, value in pairs(before) do
    assert(check.same(value, now[name]), (what or "") .. ": " .. name .. " changed" .. (#tostring(value) < 200 and ": " .. check.show(value) .. ", " .. check.show(now[name]) or ""))
  end
end

calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
files.write(data .. "/Perm.bad", "   3,   4\n")
local before = everything()

-- A source's dialog: nothing before all is right, and nothing at all after Cancel. The picture goes on reading by what is in force.
command(131)
set(kColdC, "100")
set(kColdEmissivity, "7")
press(1)
check.eq({ dialog(), state("TemperatureCold"), state("CalSettings.EmissivityCold") }, { "CAL_COLD", 20, 1 })
press(2)
unchanged(before, "a refused update")

-- The dialog and Cancel at a source, and after an Ok that is refused.
local function choose_others(points)
  command(130)
  press(kPermanent)
  check(kReplaceNoisy, false)
  calibration.accept(points)
  check.eq({ dialog(), state("CalSettings.BadDetFile") }, { "CAL_COLD", data .. "/Perm.bad" })
end
for _, points in ipairs { 1, 2 } do
  choose_others(points)
  press(2)
  unchanged(before, points .. " points, Perm.bad")
  command(130)
  check(kReplaceBad, false)
  calibration.accept(points)
  check.eq({ dialog(), state("SubstBadPixels") }, { "CAL_COLD", 0 })
  press(2)
  unchanged(before, points .. " points, no replacement")
end
command(130)
press(kPermanent)
check(kReplaceNoisy, false)
press(1214)
set(kFrames, "1000")
press(1)
check.answer_box("Allowed number of frames must be between 1 & 999", "ok", "Data Entry Error!")
press(2)
unchanged(before, "a refused Ok")

-- What would have lost lists: F9 there and back, a save, the image set-up.
command(141)
command(141)
unchanged(before, "F9 twice")
command(132)
calibration.choose(data .. "/kept")
check.eq({ box(), dialog() }, {})
check.eq(readfile(data .. "/kept.bad"), readfile(data .. "/Last.bad"))
check.eq(readfile(data .. "/Perm.bad"), "   3,   4\n")
command(133)
calibration.choose(data .. "/Last.cal")
check.eq({ box(), state("CalType") }, { nil, 2 })
before = everything()

-- The board fails while a source is captured: the run's own box, and all is as it was, whichever run, whichever source.
local function no_frames(what, text, caption)
  while box() and box().text == "icp_read_area() Error" do answer("ok") end  -- of the capture, and of the live view
  check.answer_box(text, "ok", caption)
  sim.fault("icp_read_area", false)
  while box() and box().text == "icp_read_area() Error" do answer("ok") end
  check.eq({ box(), dialog() }, {}, what)
  if state("LiveVideo") == 0 then command(140) end  -- the live view met the same failure, and froze
  unchanged(before, what)
end
choose_others(2)
set(kColdC, "100")
sim.fault("icp_read_area")
press(1)
no_frames("the low source", "Video Data Acquisition Failed, Hardware error!", "Kelvo Calibration Error!")
choose_others(2)
calibration.at_low(20, 19)
check.eq(dialog(), "CAL_HOT")
sim.source("high", 25)
sim.fault("icp_read_area")
press(1)
no_frames("the high source", "Video Data Acquisition Failed, Hardware error!", "Kelvo Calibration Error!")
choose_others(1)
sim.fault("icp_read_area")
press(1)
no_frames("a new one-point run", "Video Data Acquisition Failed, Hardware error", "GetCalibData Error")
command(131)
set(kColdC, "100")
sim.fault("icp_read_area")
press(1)
no_frames("an update", "Video Data Acquisition Failed, Hardware error", "GetCalibData Error")

-- Loads that can't come to their end: the set in force can still be saved.
files.calibration(data .. "/other.cal", state("Hroi"), state("Vroi"), 1, 0)
assert(os.remove(data .. "/other.off"))
command(133)
calibration.choose(data .. "/other.cal")
check.answer_box("Failed to open file: " .. data .. "/other.off", "ok", "Kelvo message")
unchanged(before, "a set without offsets")
command(132)
calibration.choose(data .. "/again")
check.eq({ box(), dialog(), state("CalSettings.CalFile") }, { nil, nil, data .. "/again.cal" })
check.eq(readfile(data .. "/again.gai"), readfile(data .. "/Last.gai"))
command(133)
calibration.choose(data .. "/Last.cal")

-- A cancelled new one-point run in front of a frozen picture leaves the picture.
command(140)
before = everything()
local centre = pixel(160, 128)
command(130)
calibration.accept(1)
press(2)
check.eq({ box(), dialog(), pixel(160, 128), state("LiveVideo") }, { nil, nil, centre, 0 })
unchanged(before, "frozen")
command(140)

-- A set that can't be written: in force all the same, named, updated and saved from memory.
assert(os.remove(data .. "/Last.off"))
assert(os.execute("mkdir -p '" .. data .. "/Last.off/inside'"))
command(130)
calibration.two_point(22, 27, 4)
answer("ok")
local told
while box() do
  told = box().text
  answer("ok")
end
check.eq(told, "The calibration is in force, but its files couldn't be saved.\nThe former ones stand:\n" .. data .. "/Last.cal")
check.eq({ state("CalType"), state("CalSettings.CalFile"), state("TemperatureCold") }, { 2, data .. "/Last.cal", 22 })
local gains, offsets, readout = numbers("GainList"), numbers("OffsetList"), numbers("DecomList")
command(130)
calibration.accept(1)
press(2)
check.eq({ box(), state("CalType"), state("TemperatureCold") }, { nil, 2, 22 })
command(132)
calibration.choose(data .. "/rescued")
check.eq({ box(), dialog() }, {})
command(133)
calibration.choose(data .. "/rescued.cal")
check.eq({ box(), state("CalType"), state("TemperatureCold"), state("TemperatureHot") }, { nil, 2, 22, 27 })
assert(numbers("GainList") == gains and numbers("OffsetList") == offsets and numbers("DecomList") == readout, "the set is the one that was in force")

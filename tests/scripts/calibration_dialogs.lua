-- The five dialogs around calibrations on the simulated camera, with each refusal: CALIB, the two sources, opening a set, saving one.
local check = require "check"
local calibration = require "calibration"
local files = require "files"

local kPermanent, kLast, kNew, kUsers = 1200, 1201, 1202, 1203
local kMinOffset, kMaxOffset, kNoisy, kNoiseLabel, kNoise, kGain, kFrames = 1205, 1206, 1208, 1210, 1211, 1220, 1216
local kTwoPoint, kOnePoint, kLoad, kReplace = 1213, 1214, 1222, 1306
local kColdC, kColdEmissivity, kHotC, kHotEmissivity = 1224, 1225, 1226, 1227

local data = datadir()
local start_hint = " Use Alt + underlined menu item or trackball to select menu item"
local calib_hint = " Enter your choices & then OK to do new calibration, or load a previous calib"
local off_hint = "Warning: Bad Pixel Substitution is OFF"

local function beeps(mark) return #check.lines("beep", mark + 1) end
local function radio()
  for id = kPermanent, kUsers do
    if checked(id) then return id end
  end
end
local function key(section, name)
  wait(1100)  -- what is pending reaches the disk within a second
  return readfile(state("IniFilePath")):match("%[" .. section .. "%][^%[]-\n" .. name .. "=([^\r\n]*)")
end

calibration.turn_on()

-- --- CALIB ----------------------------------------------------------------------------------------------------------------

check.eq(status(), calib_hint)
check.eq(radio(), kNew)
check.eq({ text(kFrames), text(kNoise), text(kGain), text(kMaxOffset), text(kMinOffset) }, { "30", "9.00", "0.220", "400", "400" })
check.eq({ checked(kReplace), checked(kNoisy), checked(kTwoPoint), checked(kOnePoint) }, { true, true, true, false })

-- Lists that aren't there, and the operator's own file that isn't chosen.
press(kPermanent)
check.answer_box("Can't open permanent bad detector file!", "ok", "Kelvo message")
check.eq(radio(), kNew)
press(kLast)
check.answer_box("Can't open last bad detector file (try determining new file).", "ok", "Kelvo message")
check.eq(radio(), kNew)
press(kUsers)
check.eq({ file().title, file().filters }, { "Select bad detector file", { "Bad pixel files (*.bad)" } })
cancel()
check.eq(radio(), kNew)

-- Once they are there; a file that can't be closed is told, and taken.
files.write(data .. "/PERM.BAD", "   3,   4\n")
press(kPermanent)
check.eq({ box(), radio() }, { nil, kPermanent })
sim.fault("close bad detector file")
press(kPermanent)
check.answer_box("Unable to close `perm.bad' file.", "ok", "Kelvo message")
files.write(data .. "/Last.bad", "")
press(kLast)
check.answer_box("Unable to close `last.bad' file.", "ok", "Kelvo message")
sim.fault("close bad detector file", false)

-- Nothing is replaced: what finds bad pixels is off with it, and so is where their list comes from.
local mark = check.mark()
check(kReplace, false)
check.eq({ radio(), checked(kNoisy), status(), beeps(mark) }, { kNew, false, off_hint, 1 })
for _, id in ipairs { kNoisy, kNoiseLabel, kNoise, kGain, kMinOffset, kMaxOffset } do check.eq(enabled(id), false, id) end
for id = kPermanent, kUsers do check.eq(enabled(id), false, id) end
check(kReplace, true)
check.eq({ checked(kNoisy), status() }, { true, calib_hint })
check(kNoisy, false)
check.eq({ enabled(kNoiseLabel), enabled(kNoise), enabled(kGain) }, { false, false, true })
check(kNoisy, true)

-- Each field, in the order in which they are looked at; all before are right, and what was there is shown again.
local fields = {
  { kMinOffset, "few", "400", "Invalid offset acceptance value below mean." },
  { kMaxOffset, "", "400", "Invalid offset acceptance level above mean." },
  { kNoise, "2047.5", "9.00", "Allowed noise level must be between 0.0 & 2047.0" },
  { kGain, "1.61", "0.220", "Allowed gain acceptance value must be between 0.0 & 1.0" },
  { kFrames, "1000", "30", "Allowed number of frames must be between 1 & 999" },
}
for _, field in ipairs(fields) do set(field[1], field[2]) end
press(kOnePoint)
for _, field in ipairs(fields) do
  mark = check.mark()
  press(1)
  check.eq(beeps(mark), 1)
  check.answer_box(field[4], "ok", "Data Entry Error!")
  check.eq({ dialog(), text(field[1]) }, { "CALIB", field[3] })
end
check.eq(state("CalSettings.ChosenType"), 1, "kept before the fields are looked at")
check.eq(key("Calibration", "NumFrames"), nil)

-- --- Saving and opening without a calibration -----------------------------------------------------------------------------

press(kLoad)
check.eq({ dialog(), text(1462), text(1608) }, { "CAL_OPEN", data, state("Description") })
calibration.choose(data .. "/none.cal")
check.answer_box("Failed to open file: " .. data .. "/none.cal", "ok", "Kelvo message")
for name, text_of in pairs { ["other.cal"] = "[Setup]\nActiveCamera=2\n[Calibration]\nDriverNumber=3\n", ["bare.cal"] = "" } do
  files.write(data .. "/" .. name, text_of)
  mark = check.mark()
  calibration.choose(data .. "/" .. name)
  check.eq(beeps(mark), 1)
  check.answer_box("The calibration file selected is not for this camera", "ok", "Kelvo message")
  check.eq(dialog(), "CAL_OPEN")
end
files.write(data .. "/odd.cal", "[Calibration]\nDriverNumber=2\n")
calibration.choose(data .. "/odd.cal")
check.answer_box("Failed to get ActiveCamera from calibration file:\n" .. data .. "/odd.cal", "ok", "Kelvo message")
check.eq(dialog(), "CALIB")
files.write(data .. "/odd.cal", "[Setup]\nActiveCamera=3\n[Calibration]\nDriverNumber=2\n")
press(kLoad)
calibration.choose(data .. "/odd.cal")
check.answer_box("Can not load previous calibration\nCurrent camera driver is different from calibration requested", "ok",
  "Kelvo message")
check.eq(dialog(), "CALIB")
press(kLoad)
press(2)
check.eq(dialog(), "CALIB")
press(2)
check.eq({ dialog(), box() }, {})
command(132)
check.answer_box("A calibration must be loaded\nin order to save it.", "ok", "Kelvo Message")

-- --- The sources ----------------------------------------------------------------------------------------------------------

command(130)
check.eq(checked(kTwoPoint), true, "the cancel took back what the refused Ok had stored")
set(kMinOffset, "-350")
set(kGain, "1.6")
set(kFrames, "2")
mark = check.mark()
press(1)
check.eq(dialog(), "CAL_COLD")
check.seen("status", { text = " Press OK when LOW flux source is in front of camera" }, mark)
check.eq({ key("Calibration", "MinOffset"), key("Calibration", "GainAcceptanceRange"), key("Calibration", "NumFrames") },
  { "350", "1.600000", "2" })
check.eq({ text(kColdC), text(kColdEmissivity) }, { "", "1.0000" })
sim.source("low", 20)
for _, bad in ipairs { "-274.5", "2500.1", "warm", " " } do
  mark = check.mark()
  set(kColdC, bad)
  press(1)
  check.eq({ dialog(), box(), beeps(mark) }, { "CAL_COLD", nil, 1 }, bad)
end
set(kColdC, "20")
for _, bad in ipairs { "0", "1.0001", "-1", "grey" } do
  mark = check.mark()
  set(kColdEmissivity, bad)
  press(1)
  check.eq({ dialog(), text(kColdEmissivity), beeps(mark) }, { "CAL_COLD", "1.0", 1 }, bad)
end
set(kColdEmissivity, "0.98")
mark = check.mark()
press(1)
check.eq(dialog(), "CAL_HOT")
check.seen("status", { text = " Press OK when HIGH flux source is in front of camera" }, mark)
sim.source("high", 25)
set(kHotC, "2501")
mark = check.mark()
press(1)
check.eq({ dialog(), box(), beeps(mark) }, { "CAL_HOT", nil, 1 })
set(kHotC, "20")
press(1)
check.eq({ box().buttons, box().default }, { { "ok", "cancel" }, "cancel" })
check.answer_box("High temperature is <= Low temperature", "cancel", "Kelvo message")
check.eq(dialog(), "CAL_HOT")
set(kHotC, "25")
set(kHotEmissivity, "2")
mark = check.mark()
press(1)
check.eq({ dialog(), text(kHotEmissivity), beeps(mark) }, { "CAL_HOT", "1.0", 1 })
press(2)
check.eq({ dialog(), box(), status() }, { nil, nil, start_hint })
check.eq(state("CalType"), 0)

-- What was told stays for the next run, and this one goes through.
command(130)
calibration.accept(2)
check.eq({ text(kColdC), text(kColdEmissivity) }, { "  20.00", "0.9800" })
calibration.at_low(20, 20)
check.eq(text(kHotC), "", "nothing of what an Ok held that was refused")
calibration.at_high(25, 19)
check.answer_box("High temperature is <= Low temperature", "ok", "Kelvo message")
calibration.bad_pixels()
answer("ok")
check.eq({ state("CalType"), state("TemperatureCold"), state("TemperatureHot") }, { 2, 20, 19 })

-- --- Saving ---------------------------------------------------------------------------------------------------------------

command(132)
check.eq({ dialog(), text(1460), text(1608) }, { "CAL_SAVE", "*.cal", state("Description") })
calibration.choose(data .. "/Last.gai")
check.answer_box("The name of a calibration ends in .cal:\n" .. data .. "/Last.gai", "ok", "Kelvo message")
calibration.choose(data .. "/other.cal")
check.eq({ box().buttons, box().default }, { { "ok", "cancel" }, "cancel" })
check.answer_box("File already exists, replace it?", "cancel", "Kelvo message")
calibration.choose(data .. "/*.cal")
check.eq({ dialog(), box() }, { "CAL_SAVE" })
calibration.choose(data .. "/no such place/set")
check.answer_box(data .. "/no such place/set.cal\nPath does not exist.", "ok", "Kelvo message")
calibration.choose(data .. "/other")
check.answer_box("File already exists, replace it?", "ok", "Kelvo message")
check.eq({ box(), dialog(), state("CalSettings.CalFile"), status() }, { nil, nil, data .. "/other.cal", " Saved calibration other.cal in " .. data })
check.eq(readfile(data .. "/other.gai"), readfile(data .. "/Last.gai"))

-- Under the name that it has nothing is written.
files.write(data .. "/other.noi", "mark")
command(132)
calibration.choose(data .. "/OTHER.CAL")
check.answer_box("File already exists, replace it?", "ok", "Kelvo message")
check.eq({ box(), readfile(data .. "/other.noi") }, { nil, "mark" })

-- --- Loads that end half-way ----------------------------------------------------------------------------------------------

local function load_set(name)
  command(133)
  calibration.choose(data .. "/" .. name)
end
local gains = readfile(data .. "/other.gai")
files.write(data .. "/other.gai", gains:sub(1, -2))
load_set("other.cal")
check.answer_box("Failed to read file: " .. data .. "/other.gai", "ok", "Kelvo message")
os.remove(data .. "/other.gai")
load_set("other.cal")
check.answer_box("Failed to open file: " .. data .. "/other.gai", "ok", "Kelvo message")
check.eq({ box(), status(), state("CalType"), state("LiveVideo") }, { nil, start_hint, 2, 1 })
frames(2)
files.write(data .. "/other.gai", gains)
os.remove(data .. "/other.dcm")
load_set("other.cal")
check.answer_box("Failed to open file: " .. data .. "/other.dcm", "ok", "Kelvo message")
check.eq({ box(), state("CalType"), state("DisplayUnit") }, { nil, 2, 2 })
frames(2)
command(140)  -- frozen: a frame that is shown takes a block too
command(133)
sim.fault("memory", 1)
calibration.choose(data .. "/other.cal")
check.answer_box("Failure to allocate memory!", "ok", "Memory Error")
load_set("Last.cal")
check.eq({ box(), state("CalSettings.CalFile") }, { nil, data .. "/Last.cal" })
frames(2)

-- --- Dialogs that can't be shown ------------------------------------------------------------------------------------------

sim.fault("load dialog CALIB")
command(130)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog CALIB", false)
for _, name in ipairs { "CAL_COLD", "CAL_HOT" } do
  sim.fault("load dialog " .. name)
  command(130)
  calibration.accept(2)
  if name == "CAL_HOT" then calibration.at_low(20, 20) end
  check.answer_box("Unable to display dialog", "ok", "System Error")
  check.eq({ dialog(), box() }, {})
  sim.fault("load dialog " .. name, false)
end
sim.fault("load dialog CAL_OPEN")
command(133)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog CAL_OPEN", false)

-- That run was given up at the high source: there is no calibration to save any more, until one is loaded.
command(132)
check.answer_box("A calibration must be loaded\nin order to save it.", "ok", "Kelvo Message")
command(133)
calibration.choose(data .. "/Last.cal")
check.eq({ box(), state("CalType") }, { nil, 2 })
sim.fault("load dialog CAL_SAVE")
command(132)
check.answer_box("Unable to display dialog", "ok", "System Error")

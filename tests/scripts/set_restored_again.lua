-- The start after set_restored.lua, with "AUTOSTART last.cal" on the command line: corrected, with no question asked, and the head as
-- it was at the calibration. Then the set is carried to another machine and back, and loaded there as an old machine wrote it.
local check = require "check"
local calibration = require "calibration"
local registers = require "registers"

local data = datadir()
local head, figures = registers.kept(data .. "/expected.txt")

local function comes_up_corrected(what)
  check.eq({ box(), dialog() }, {}, what)
  check.eq({ state("CameraOn"), state("LiveVideo"), state("CalType") }, { 1, 1, 2 }, what)
  check.eq(sim.head(), head, what)
  check.near(state("FrameRate"), figures.rate, 1e-4, what)
  sim.source("high", 25)
  frames(3)
  local spread, middle = registers.spread()
  check.near(spread, figures.spread, 1, what)
  check.near(middle, figures.middle, 2, what)
  check.eq(state("DisplayUnit"), 2, what)
  check.eq({ state("TemperatureCold"), state("TemperatureHot") }, { 20, 25 }, what)
end
comes_up_corrected("by the command line")
check.eq(check.lines("box"), {})
check.eq(menu(169).text, "&Turn Vantir off")

-- The video set-up shows what is in force.
command(121)
check.eq({ picked(624), picked(626), text(641), text(655) }, { 7, 100, "133", "2" })
press(2)
if dialog() == "CALIB" then press(2) end

local function write(path, bytes)
  local file = assert(io.open(path, "wb"))
  assert(file:write(bytes))
  file:close()
end
local function turn_off()
  command(169)
  check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes")
end

-- The set as an old machine wrote it, on its own disk: CR LF, drive letters, capital letters, the row of the frame rate under its
-- older name, and the name of each file in another case than the one on this disk.
assert(os.execute("mkdir -p '" .. data .. "/OldSets'"))
local text = readfile(data .. "/Last.cal")
text = text:gsub("\nIndexFrameRate=[^\n]*", ""):gsub("\nFrameRate=[^\n]*", "\nFrameRate=7")
for _, name in ipairs { "Gain", "Offset", "Decom", "BadDet" } do
  text = text:gsub("\n" .. name .. "File=Last%.(%a+)", function(extension)
    return "\n" .. name .. "File=D:\\CALS\\WARM." .. extension:upper()
  end)
end
text = text:gsub("\nCalFile=[^\n]*", "\nCalFile=D:\\CALS\\WARM.CAL"):gsub("\n", "\r\n")
for _, part in ipairs { "FrameRate=7\r\n", "GainFile=D:\\CALS\\WARM.GAI\r\n", "BadDetFile=D:\\CALS\\WARM.BAD\r\n" } do check.holds(text, part) end
write(data .. "/OldSets/WARM.CAL", text)
write(data .. "/OldSets/Warm.gai", readfile(data .. "/Last.gai"))
write(data .. "/OldSets/WARM.OFF", readfile(data .. "/Last.off"))
write(data .. "/OldSets/warm.Dcm", readfile(data .. "/Last.dcm"))
write(data .. "/OldSets/WARM.BAD", (readfile(data .. "/Last.bad"):gsub("\n", "\r\n")))

-- Turned on by hand with other settings first, so that nothing is left over.
turn_off()
command(169)
press(1070)
pick(624, 2)
scroll(651, 255 - 140)
press(1)
check.eq(dialog(), "CALIB")
press(2)
assert(not check.same(sim.head(), head))
command(133)
calibration.choose("C:\\KELVO\\oldsets\\warm.cal")
comes_up_corrected("the old machine's")
check.eq(state("CalSettings.GainFile"), data .. "/OldSets/WARM.GAI")
local replaced = state("BadDetCount")
assert(replaced > 1000, replaced)

-- Saved here under a name of its own it keeps its line ends, and turns the camera on.
command(132)
calibration.choose(data .. "/warm now")
check.eq({ box(), dialog() }, {})
check.eq(listdir(data .. "/OldSets"), { "WARM.BAD", "WARM.CAL", "WARM.OFF", "Warm.gai", "warm.Dcm" })
local saved = readfile(data .. "/warm now.cal")
check.eq(saved:gsub("\r\n", ""):find("[\r\n]"), nil, "a line end of another kind")
check.holds(saved, "\r\nGainFile=warm now.gai\r\n")
for _, extension in ipairs { "gai", "off", "dcm" } do
  check.eq(readfile(data .. "/warm now." .. extension) == readfile(data .. "/Last." .. extension), true, extension)
end
turn_off()
command(169)
press(1074)
calibration.choose(data .. "/warm now.cal")
comes_up_corrected("saved under another name")
check.eq(state("BadDetCount"), replaced)

-- The dialog EXPORT: what it offers, what it writes, what it refuses, and that Escape leaves the frames up to there.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()
local kWhat, kFirst, kLast, kForm, kFormat, kName = 22001, 22002, 22003, 22004, 22005, 22006
local kRange = "Please enter frames from 0 to 3, the first one not behind the last one."

command(2200)
check.eq({ dialog(), box() }, { nil, nil })
check.eq(status(), "There is nothing to export: open an image or turn the camera on")

local function count(frame, x, y) return 1000 * frame + 30 * y + x - 200 end
drop(files.image(dir .. "/run.seq", { width = 9, height = 6, rate = 50 }, 4, count))
key("F7")
local function format_of(ending)
  for index, title in ipairs(items(kFormat)) do
    pick(kFormat, index - 1)
    if text(kName):sub(-#ending) == ending then return title end
  end
  error("no format with " .. ending)
end

-- What is offered.
key("Ctrl+E")
check.eq(dialog(), "EXPORT")
check.eq(items(kWhat), { "Frames of run.seq", "Picture on view" })
check.eq({ text(kFirst), text(kLast), enabled(kFirst) }, { "0", "3", true })
check.eq(items(kForm), { "Counts", "Corrected counts", "Volts", "Degrees Celsius", "Kelvin", "Degrees Fahrenheit" })
pick(kWhat, 1)
check.eq({ text(kLast), enabled(kFirst), enabled(kLast) }, { "0", false, false })
pick(kWhat, 0)
check.eq({ text(kLast), enabled(kFirst), enabled(kLast) }, { "3", true, true })
-- Name and format go together as long as the name's ending is that of a format.
local numpy = format_of(".npy")
check.eq(text(kName), "run.npy")
set(kName, "other.dat")
pick(kFormat, 0)
check.eq(text(kName), "other.dat")
set(kName, "other.NPY")
check.eq(items(kFormat)[picked(kFormat) + 1], numpy)

-- What is refused; nothing is written.
for field, wrong in pairs { [kFirst] = { "4", "-1", "", "x" }, [kLast] = { "4", "-1", "many" } } do
  for _, value in ipairs(wrong) do
    local before = text(field)
    set(field, value)
    press(1)
    check.answer_box(kRange, "ok")
    set(field, before)
  end
end
set(kFirst, "2")
set(kLast, "1")
press(1)
check.answer_box(kRange, "ok")
set(kFirst, "0")
set(kLast, "3")
set(kName, "")
press(1)
check.answer_box("Please enter the name of the file to write.", "ok")
set(kName, dir .. "/no such directory/run.npy")
press(1)
check.holds(box().text, "can't be written")
answer("ok")
pick(kForm, 3)
set(kName, dir .. "/run.npy")
press(1)
check.holds(box().text, "has no calibration with two temperatures")
answer("ok")
check.eq(dialog(), "EXPORT")
check.eq(readfile(dir .. "/run.npy"), nil)
pick(kForm, 0)

-- All frames as an array: sample after sample, frame after frame.
format_of(".npy")
set(kName, dir .. "/run")
press(1)
check.eq({ dialog(), box() }, { nil, nil })
check.holds(status(), " Saved run.npy: 4 frames, ")
local function samples(frames)
  local expected = {}
  for _, frame in ipairs(frames) do
    for y = 0, 5 do
      for x = 0, 8 do expected[#expected + 1] = string.pack("<i2", count(frame, x, y)) end
    end
  end
  return table.concat(expected)
end
local function data_of(path)
  local bytes = readfile(path)
  return bytes:sub(11 + string.unpack("<I2", bytes, 9))
end
check.eq(data_of(dir .. "/run.npy"), samples { 0, 1, 2, 3 })
check.holds(readfile(dir .. "/run.npy"), "'shape': (4, 6, 9)")
check.holds(readfile(dir .. "/run.json"), "run.seq")

-- A range. What stands is asked about, and stays at No; the format of the export before is offered.
key("Ctrl+E")
check.eq(text(kName), "run.npy")
set(kFirst, "1")
set(kLast, "2")
press(1)
check.answer_box(dir .. "/run.npy already exists.\nDo you want to replace it?", "no", "Export")
check.eq(dialog(), "EXPORT")
check.eq(data_of(dir .. "/run.npy"), samples { 0, 1, 2, 3 })
press(1)
answer("yes")
check.eq({ dialog(), box() }, { nil, nil })
check.eq(data_of(dir .. "/run.npy"), samples { 1, 2 })

-- The picture on view, by a name that is browsed for.
key("Ctrl+E")
pick(kWhat, 1)
press(20300)
check.eq(file().title, "Export")
choose(dir .. "/picture.npy")
check.eq(text(kName), dir .. "/picture.npy")
press(1)
check.eq(data_of(dir .. "/picture.npy"), samples { 1 })

-- Every format that holds counts comes back as it was.
for _, ending in ipairs { ".tif", ".fits", ".npy" } do
  drop(dir .. "/run.seq")
  key("Ctrl+E")
  format_of(ending)
  set(kName, dir .. "/back" .. ending)
  press(1)
  check.eq({ dialog(), box() and box().text }, { nil, nil }, ending)
  drop(dir .. "/back" .. ending)
  check.eq(box() and box().text, nil, ending)
  for frame = 0, 3 do
    check.eq({ state("CurrentFrame"), state("LastFrame") }, { frame, 3 }, ending)
    for y = 0, 5 do
      for x = 0, 8 do check.eq(pixel(x, y), count(frame, x, y), ending) end
    end
    key("F7")
  end
end

-- Escape: the frames up to there, or no file before the first.
drop(dir .. "/run.seq")
key("Ctrl+E")
format_of(".npy")
set(kName, dir .. "/stopped.npy")
sim.fault("escape", 1)
press(1)
sim.fault("escape", 0)
check.eq({ dialog(), box() }, { "EXPORT", nil })
check.eq(readfile(dir .. "/stopped.npy"), nil)
sim.fault("escape", 3)
press(1)
sim.fault("escape", 0)
check.eq({ dialog(), box() }, { nil, nil })
local had = status():match("^ Stopped: stopped.npy has (%d) of 4 frames$")
assert(had, status())
local frames = {}
for frame = 0, tonumber(had) - 1 do frames[#frames + 1] = frame end
check.eq(data_of(dir .. "/stopped.npy"), samples(frames))

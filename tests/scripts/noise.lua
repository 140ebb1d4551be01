-- Analysis > Noise...: live and of a file, held against what the detectors are told to deviate by, with each refusal, all that it saves, and nothing
-- changed by any of it.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local foreign = require "foreign"
local unchanged = require "unchanged"

local kLive, kFile, kName, kBrowse, kSet, kBrowseSet, kFrames, kShow = 22301, 22302, 22303, 22304, 22305, 22306, 22307, 22308
local kMedian, kRms, kWorst, kPixels, kBad, kTaken, kPixel, kSave = 22311, 22312, 22313, 22314, 22315, 22316, 22317, 1606
local kMeasure, kClose = 1, 2
local width, height = 320, 256

local function number(id) return tonumber(text(id):match("^(%-?[%d.]+)")) end

-- Fields of a file: the notes, and lines by "row,column".
local function read_csv(name)
  local notes, lines, count = {}, {}, 0
  for line in readfile(name):gmatch("([^\n]*)\n") do
    local key, value = line:match("^# (.-): (.*)$")
    if key then
      notes[key] = value
    elseif line ~= "row,column,mean,deviation,netd_mK" then
      local row, column, mean, deviation, netd = line:match("^(%d+),(%d+),([^,]*),([^,]*),([^,]*)$")
      assert(row, line)
      lines[row .. "," .. column] = { mean = tonumber(mean), deviation = tonumber(deviation), netd = tonumber(netd) }
      count = count + 1
    end
  end
  return notes, lines, count
end

local function median(values)
  table.sort(values)
  local n = #values
  return n % 2 == 1 and values[(n + 1) // 2] or (values[n // 2] + values[n // 2 + 1]) / 2
end

-- ---- Live without a calibration: deviations, and no NETD

calibration.turn_on()
press(2)
sim.source("low", 20)
frames(2)
command(2230)
check.eq({ dialog(), status() }, { "NOISE", "Put a uniform source in front of the camera, or choose a recording of one." })
check.eq({ checked(kLive), checked(kFile), text(kFrames), text(kTaken) }, { true, false, "64", "Nothing is measured yet." })
check.eq({ enabled(kName), enabled(kBrowse), enabled(kSet), enabled(kBrowseSet), enabled(kSave), enabled(kShow) }, { false, false, false, false, false, false })
for _, wrong in ipairs { "", "1", "65536", "many", "-3" } do
  set(kFrames, wrong)
  press(kMeasure)
  check.answer_box("Please enter 2 to 65535 frames.", "ok")
  check.eq(dialog(), "NOISE")
end
set(kFrames, "8")
press(kMeasure)
check.eq({ box(), text(kTaken), enabled(kShow), enabled(kSave) }, { nil, "8 raw frames", false, true })
check.holds(text(kMedian), " counts")
check.holds(status(), "No NETD")
press(kClose)
check.eq(dialog(), nil)

-- ---- With a calibration

command(130)
calibration.two_point(20, 25, 16)
answer("ok")
check.eq({ box(), state("CalType") }, { nil, 2 })
sim.source("low", 20)
frames(2)
command(2230)
press(kClose)  -- what the first dialog leaves
local before = unchanged.snapshot()
command(2230)
set(kFrames, "64")
press(kMeasure)
check.eq({ box(), text(kTaken), status() }, { nil, "64 raw frames", "The noise of 64 raw frames is measured." })
screenshot("noise.png")
local bad = number(kBad)
check.eq(number(kPixels) + bad, width * height)
assert(bad > 0.015 * width * height and bad < 0.03 * width * height, bad)
press(kSave)
choose(datadir() .. "/noise.csv")
check.eq(box(), nil)
local notes, lines, count = read_csv(datadir() .. "/noise.csv")
check.eq(count, width * height)
check.eq({ notes.source, notes.counts, notes.frames, notes["lost between them"], notes["bad pixels left out"] },
  { "live video", "raw", "64", "0", tostring(bad) })
check.eq(notes.calibration, datadir() .. "/Last.cal")

-- Each pixel's deviation against its detector's, its NETD against the counts that a degree is for it.
local a_degree = math.abs((state("IntensityHot") - state("IntensityCold")) / (state("TemperatureHot") - state("TemperatureCold")))
check.near(tonumber(notes["counts a degree"]), a_degree, 1e-3)
local measured, told, near, good, netds, squares = 0, 0, 0, 0, {}, 0
for y = 0, height - 1 do
  for x = 0, width - 1 do
    local at = lines[y .. "," .. x]
    if at.netd then
      netds[#netds + 1] = at.netd
      squares = squares + at.netd ^ 2
      local truth = sim.truth(x, y)
      if y % 4 == 0 and not (truth.noisy or truth.blinking) then
        good = good + 1
        measured, told = measured + at.deviation ^ 2, told + truth.deviation ^ 2
        if math.abs(at.deviation / truth.deviation - 1) <= 2.58 / math.sqrt(2 * 63) then near = near + 1 end
        check.near(at.netd, at.deviation / (truth.gain * a_degree) * 1000, at.netd * 0.03)
      end
    end
  end
end
assert(good > 19000, good)
check.near(math.sqrt(measured / told), 1, 0.005)
assert(near >= 0.985 * good, near / good)
check.near(number(kMedian), median(netds), 0.0006)
check.near(number(kRms), math.sqrt(squares / #netds), 0.0006)
check.near(tonumber(text(kWorst):match("^above ([%d.]+) mK")), netds[math.ceil(0.99 * #netds)], 0.0006)
check.near(tonumber(text(kWorst):match("up to ([%d.]+) mK$")), netds[#netds], 0.0006)
local netd_median = text(kMedian)

-- As an image of floats, in the unit shown; as the window in two kinds.
press(kSave)
choose(datadir() .. "/netd.img")
pick(kShow, 1)
check.holds(text(kMedian), " counts")
press(kSave)
choose(datadir() .. "/deviation.img")
for _, name in ipairs { "netd", "deviation" } do
  local bytes = readfile(datadir() .. "/" .. name .. ".img")
  check.eq(#bytes, 512 + 4 * width * height, name)
  local columns, rows, size = string.unpack("<i2i2i2", bytes, 3)
  check.eq({ columns, rows, size, (string.unpack("<i2", bytes, 125)) }, { width, height, 4, 8 }, name)
  for _, place in ipairs { { 0, 0 }, { 17, 3 }, { 319, 255 }, { 160, 128 } } do
    local value = string.unpack("<f", bytes, 513 + 4 * (place[2] * width + place[1]))
    local expected = lines[place[2] .. "," .. place[1]][name]
    if expected then check.near(value, expected, expected * 1e-6, name) else assert(value ~= value) end
  end
end
pick(kShow, 0)
check.eq(text(kMedian), netd_median)
press(kSave)
choose(datadir() .. "/noise.png")
check.eq(readfile(datadir() .. "/noise.png"):sub(2, 4), "PNG")
press(kSave)
cancel()
check.eq({ dialog(), text(kMedian) }, { "NOISE", netd_median })

-- ---- What can't be done is told, and what was measured stays

sim.fault("disk", true)
press(kSave)
choose(datadir() .. "/gone.img")
sim.fault("disk", false)
check.eq(box() and box().caption, "Error")
answer("ok")
check.eq(readfile(datadir() .. "/gone.img"), nil)
press(kFile)
check.eq({ enabled(kName), enabled(kSet), checked(kLive), checked(kFile) }, { true, true, false, true })
local function refused(name, cal, told_so)
  set(kName, name)
  set(kSet, cal)
  press(kMeasure)
  check.answer_box(told_so, "ok")
  check.eq({ dialog(), text(kMedian) }, { "NOISE", netd_median })
end
refused("", "", "Please name the file whose frames are to be measured.")
refused(datadir() .. "/none.seq", "", "none.seq can't be opened.")
refused(datadir() .. "/noise.csv", "", "noise.csv isn't an image file.")
refused(datadir() .. "/netd.img", "", "netd.img holds only 1 frame: one has no deviation.")
press(kBrowse)
cancel()
press(kBrowseSet)
cancel()

-- ---- A file of raw frames in the order of the readout, worked by hand: 4, 8 and so on deviate by sqrt(8), ...

local small = files.image(datadir() .. "/small.seq", { width = 4, height = 2, frames = 2 }, 2,
  function(frame, x, y) return 100 + frame * 4 * (x + 1) * (y + 1) end)
set(kFrames, "2")
set(kName, small)
set(kSet, "")
press(kMeasure)
check.eq({ box(), text(kTaken), text(kPixels), text(kBad), enabled(kShow) }, { nil, "2 raw frames", "8", "none known", false })
-- Factors 1, 2, 3, 4, 2, 4, 6, 8: the middle ones are 3 and 4.
check.eq(text(kMedian), ("%.3f counts"):format(3.5 * math.sqrt(8)))
check.eq(text(kRms), ("%.3f counts"):format(math.sqrt(150 / 8 * 8)))

set(kFrames, "64")
press(kMeasure)
check.answer_box("small.seq holds only 2 frames. Please enter 2 to 2.", "ok")
set(kFrames, "2")

files.calibration(datadir() .. "/larger.cal", 4, 3, 2.0, 0)
set(kSet, datadir() .. "/larger.cal")
press(kMeasure)
check.answer_box("larger.gai was made for frames of another size.", "ok")
files.calibration(datadir() .. "/small.cal", 4, 2, 2.0, 0)
local cal = readfile(datadir() .. "/small.cal")
files.write(datadir() .. "/small.cal", (cal:gsub("IntensityCold=[^\n]*", "IntensityCold=7000"):gsub("IntensityHot=[^\n]*", "IntensityHot=7400")
  :gsub("TemperatureCold=[^\n]*", "TemperatureCold=20.0"):gsub("TemperatureHot=[^\n]*", "TemperatureHot=25.0")))
set(kSet, datadir() .. "/none.cal")
press(kMeasure)
check.answer_box("none.cal can't be opened.", "ok")
set(kSet, datadir() .. "/small.cal")
press(kMeasure)
check.eq({ box(), text(kTaken), text(kBad) }, { nil, "2 raw frames", "0" })
check.eq(text(kMedian), ("%.3f mK"):format(3.5 * math.sqrt(8) / (2 * 80) * 1000))

-- Sources of one temperature tell no response; a set without a gain leaves no pixel.
files.write(datadir() .. "/small.cal", (readfile(datadir() .. "/small.cal"):gsub("TemperatureHot=[^\n]*", "TemperatureHot=20.0")))
press(kMeasure)
check.eq({ box(), text(kMedian), status() }, { nil, ("%.3f counts"):format(3.5 * math.sqrt(8)),
  "No NETD: it takes a two-point calibration with the temperatures of its sources." })
files.write(datadir() .. "/small.gai", ("\0"):rep(4 * 8))
press(kMeasure)
check.eq({ box(), text(kMedian), text(kPixels), text(kBad), status() }, { nil, "", "0", "8", "No pixel is left to measure: all are bad." })
press(kSave)
choose(datadir() .. "/none_left.csv")
check.eq({ read_csv(datadir() .. "/none_left.csv")["median (counts)"], box() }, { "", nil })

-- Counts at an end of the converter have lost of their noise, which is told; of another program's counts nobody knows.
local cut = files.image(datadir() .. "/cut.seq", { width = 4, height = 2, frames = 3 }, 3, function(frame, x) return x == 0 and 16383 or 16380 + frame end)
set(kFrames, "3")
set(kName, cut)
set(kSet, "")
press(kMeasure)
check.eq({ box(), text(kPixels), text(kMedian) }, { nil, "8, 2 of them saturated", "1.000 counts" })
set(kName, foreign.npy(datadir() .. "/high.npy", 3, 2, 4, function(frame, _, x) return x == 0 and 65535 or 32768 + frame end, "<u2", "<I2"))
press(kMeasure)
check.eq({ box(), text(kPixels), text(kMedian) }, { nil, "8", "1.000 counts" })
press(kSave)
choose(datadir() .. "/high.csv")
check.eq(read_csv(datadir() .. "/high.csv").counts, "raw, less 32768")
set(kFrames, "2")

-- Corrected frames bear their pair themselves, and no gain is taken off again.
files.image(datadir() .. "/corrected.seq", { width = 4, height = 2, frames = 2, cold = 7000, cold_c = 20, hot = 7400, hot_c = 25 }, 2,
  function(frame, x, y) return frame * 4 * (x + 1) * (y + 1) end)
set(kName, datadir() .. "/corrected.seq")
set(kSet, "")
press(kMeasure)
check.eq({ box(), text(kTaken), text(kMedian) }, { nil, "2 corrected frames", ("%.3f mK"):format(3.5 * math.sqrt(8) / 80 * 1000) })

-- ---- Memory that is refused is told each time, until it isn't

local refusals = 0
for n = 1, 40 do
  sim.fault("memory", n)
  press(kMeasure)
  local left = sim.fault_to_come("memory")
  sim.fault("memory", 0)
  if not box() then
    assert(left > 0, left)
    break
  end
  check.holds(box().text, "memory")
  answer("ok")
  check.eq(dialog(), "NOISE")
  refusals = refusals + 1
end
assert(refusals >= 5, refusals)

-- ---- Escape, and a picture that doesn't run

press(kLive)
set(kFrames, "60000")
local shown_before = text(kMedian)
sim.fault("escape", 3)
press(kMeasure)
sim.fault("escape", 0)
check.answer_box("Stopped by Esc. What was there before is as it was.", "ok")
check.eq({ dialog(), text(kMedian), state("LiveVideo") }, { "NOISE", shown_before, 1 })
press(kClose)
check.eq(dialog(), nil)
local written = { LastFileDirectory = "the folder of the last file dialog", SelectedPaths = "of the last file dialog" }
for _, name in ipairs { "noise.csv", "netd.img", "deviation.img", "noise.png", "small.seq", "small.cal", "small.gai", "small.off", "small.dcm", "corrected.seq",
  "larger.cal", "larger.gai", "larger.off", "larger.dcm", "none_left.csv", "cut.seq", "high.npy", "high.csv" } do
  written["file " .. name] = "written here"
end
unchanged.expect(before, unchanged.snapshot(), written, { StatusText = "the rate of live video" }, "noise")

command(140)
command(2230)
press(kMeasure)
check.answer_box("Live video doesn't run. Press F2 to resume it, or choose a file.", "ok")
press(kClose)
command(140)

-- The oscilloscope's picture, as it is saved, against a plot worked out here from the detector's own samples; labels in counts and volts.
-- arg[1]: device pixels a logical one.
local check = require "check"
local scope = require "scope"

local ratio = tonumber(arg[1])

local function frame()
  local counts = {}
  for i = 0, state("Hroi") * state("Vroi") - 1 do counts[i + 1] = raw(i) end
  return counts
end

-- The tick rests while the file is chosen, so that the samples are those that the plot shows.
local function check_saved(name)
  press(scope.kSave)
  check.eq(file().filters[1], "Bitmap Files (*.bmp)")
  local counts = frame()
  choose(name)
  check.eq({ box(), dialog() }, { nil, "QVF1058" })
  scope.check_picture(name:match("^[^.]+") .. ".bmp", counts, state("DisplayLow"), state("DisplayHigh"), 1, 0xFFFFFF, ratio)
  return counts
end

sim.source("low", 20)
press(1070)
frames(3)
check.eq({ state("DisplayLow"), state("DisplayHigh"), state("CalType"), state("DataOffset") }, { 0, 16383, 0, 0 })
local at_20 = check_saved("at_20.bmp")

-- A moved offset and another source: other samples, another picture.
scroll(scope.kOffsetBar, 100)
sim.source("high", 35)
frames(3)
local at_35 = check_saved("at_35.bmp")
local sum = 0
for i = 1, #at_20 do sum = sum + at_35[i] - at_20[i] end
assert(math.abs(sum / #at_20) > 100, "the mean moved by " .. sum / #at_20)

-- The plot stands where detectors do: the dead ones of the array are far from the good ones.
local good, dead = {}, {}
for y = 0, 99 do
  for x = 0, 99 do
    local truth = sim.truth(x, y)
    local list = truth.dead and dead or (not (truth.weak or truth.strong or truth.hot or truth.noisy or truth.blinking or truth.offset_bad)) and good
    if list then list[#list + 1] = at_35[y * 320 + x + 1] end
  end
end
table.sort(good)
assert(#dead > 10)
for _, count in ipairs(dead) do assert(count < good[1] - 500 or count > good[#good] + 500, count) end

-- Labels.
check.eq(scope.labels(), { "16383", "14744", "13106", "11468", "9829", "8191", "6553", "4914", "3276", "1638", "0" })
-- Volts a count by gain index, counts at 0 V, and volts a step of the offset, as camera.ini has them.
local kVoltsPerCount, kZero, kVoltsPerStep = { [0] = -0.000400, [10] = -0.000151 }, 8200, 0.01
local function check_volts()
  local gain, offset = tonumber(text(scope.kGainText)), tonumber(text(scope.kOffsetText))
  local function volts(counts) return (counts - kZero) * kVoltsPerCount[gain] - (offset - 128) * kVoltsPerStep end
  local low, high = volts(0), volts(16383)
  local shown = scope.labels()
  for i, counts in ipairs(scope.mark_counts(0, 16383)) do
    check.near(tonumber(shown[i]), (high - low) * counts / 16383 + low, 0.0006, "label " .. i)
  end
end
pick(scope.kUnits, scope.unit("Signal (V)"))
check_volts()
local before = text(602)
scroll(scope.kGainBar, 5)
assert(text(602) ~= before)
check_volts()
check_saved("volts")

-- A picture that stands is written over only when the operator says so; the scope goes on either way.
local before_asking = readfile("volts.bmp")
press(scope.kSave)
choose("volts.bmp")
assert(box(), "nothing was asked")
answer(box().buttons[#box().buttons])
if file() then cancel() end
check.eq({ box(), dialog() }, { nil, "QVF1058" })
check.eq(readfile("volts.bmp") == before_asking, true)
frames(3)
press(2)
if dialog() == "CALIB" then press(2) end
check.eq({ box(), dialog() }, {})

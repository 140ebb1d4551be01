-- Saturated counts and values outside of the two sources: each number is counted again here, pixel by pixel. Live, corrected and not, and of files.
local tick = check
local check = require "check"
local calibration = require "calibration"

local kReplaceBad = 1306
local columns, rows = 320, 256
local shapes = {
  whole = { x1 = 0, y1 = 0, x2 = columns - 1, y2 = rows - 1 },
  plate = { x1 = 20, y1 = 30, x2 = 83, y2 = 93 },
  edge = { x1 = 300, y1 = 240, x2 = 400, y2 = 300 },  -- half outside
}
local function measure(name)
  local place = shapes[name]
  return stats { shape = "rectangle", x1 = place.x1, y1 = place.y1, x2 = place.x2, y2 = place.y2 }, place
end
-- Without replacement the picture has its detectors in the order of the readout, as it is seen before a calibration.
local function raw_of(x, y) return raw(y * columns + x) end
local function is_saturated(count) return count <= 0 or count >= 16383 end
local function counted(place, is_counted)
  local n, pixels = 0, 0
  for y = place.y1, math.min(place.y2, rows - 1) do
    for x = place.x1, math.min(place.x2, columns - 1) do
      pixels = pixels + 1
      if is_counted(x, y) then n = n + 1 end
    end
  end
  return n, pixels
end
-- The hottest source that doesn't blind all of it.
local function source_at_the_end_of_the_converter()
  for degrees = 30, 120 do
    sim.source("high", degrees)
    frames(3)
    local figures = measure "plate"
    if figures.saturated > figures.pixels // 4 then
      assert(figures.saturated < figures.pixels, degrees)
      return degrees
    end
  end
  error("nothing saturates")
end

calibration.turn_on()
press(2)
sim.source("scene")
frames(2)
command(140)
for y = 0, rows - 1, 5 do
  for x = 0, columns - 1, 3 do check.eq(pixel(x, y), raw_of(x, y)) end
end
command(130)
tick(kReplaceBad, false)
calibration.two_point(20, 25, 4)
answer("ok")
local degrees = source_at_the_end_of_the_converter()
command(140)
check.eq(state("CalType"), 2)
local cold, hot = state("IntensityCold"), state("IntensityHot")
local function is_outside(x, y) return pixel(x, y) < cold or pixel(x, y) > hot end
for name in pairs(shapes) do
  local figures, place = measure(name)
  local saturated, pixels = counted(place, function(x, y) return is_saturated(raw_of(x, y)) end)
  check.eq({ figures.pixels, figures.saturated, figures.outside }, { pixels, saturated, (counted(place, is_outside)) }, name .. ", live")
end

-- Between the sources some of a noisy picture lies outside of them.
sim.source("low", 20)
command(140)
frames(3)
command(140)
for name in pairs(shapes) do
  local figures, place = measure(name)
  local outside, pixels = counted(place, is_outside)
  check.eq(figures.outside, outside, name)
  assert(outside > 0 and outside < pixels, outside)
end

-- Of files: counts of the converter tell what is saturated, corrected ones what lies outside.
sim.source("high", degrees)
command(140)
frames(3)
record { directory = datadir(), name = "hot", pixels = "both", frames = 2, limit = 5000 }
drop(datadir() .. "/hot.seq")
for name in pairs(shapes) do
  local figures, place = measure(name)
  check.eq({ figures.saturated, figures.outside }, { (counted(place, function(x, y) return is_saturated(pixel(x, y)) end)), nil }, name .. ", raw file")
end
drop(datadir() .. "/hot_cal.seq")
for name in pairs(shapes) do
  local figures, place = measure(name)
  check.eq({ figures.saturated, figures.outside }, { nil, (counted(place, is_outside)) }, name .. ", corrected file")
end

-- Bad pixels that are left out count in neither.
command(2210)
press("regions", 22116)
choose(datadir() .. "/Last.cal")
local gains, bad = readfile("data/Last.gai"), {}  -- without replacement a run makes no list, but gains of bad ones are 0
for i = 0, columns * rows - 1 do bad[i] = math.abs(string.unpack("<f", gains, 4 * i + 1)) <= 0.001 end
local figures, place = measure "plate"
local function is_bad(x, y) return bad[y * columns + x] end
assert(figures.left_out > 0)
check.eq(figures.left_out, (counted(place, is_bad)))
check.eq(figures.outside, (counted(place, function(x, y) return not is_bad(x, y) and is_outside(x, y) end)))
check.eq(figures.pixels, 64 * 64 - figures.left_out)
press("regions", 2)

-- Calibrations as an operator runs them, on the simulated camera.
local check = require "check"

local calibration = { kRanges = 1220 }

local kColdTemperature, kHotTemperature = 1224, 1226
local kTwoPoint, kOnePoint, kFrames = 1213, 1214, 1216

-- Turns the camera on through the video set-up; the calibration dialog is in front then.
function calibration.turn_on()
  assert(dialog() == "CLOCK_ON", dialog())
  press(1070)
  assert(dialog() == "QVF1058", dialog() or box() and box().text)
  press(1)
  assert(dialog() == "CALIB", dialog() or box() and box().text)
end

-- The calibration dialog in front is accepted: points 2 or 1, so many frames.
function calibration.accept(points, frames)
  assert(dialog() == "CALIB", dialog() or box() and box().text)
  press(points == 2 and kTwoPoint or kOnePoint)
  if frames then set(kFrames, tostring(frames)) end
  press(1)
end

-- The low source's dialog is in front: puts the source there, tells its temperature (nil: doesn't) and goes on.
function calibration.at_low(degrees, told)
  assert(dialog() == "CAL_COLD", dialog() or box() and box().text)
  sim.source("low", degrees)
  set(kColdTemperature, told and tostring(told) or "")
  press(1)
end

function calibration.at_high(degrees, told)
  assert(dialog() == "CAL_HOT", dialog() or box() and box().text)
  sim.source("high", degrees)
  set(kHotTemperature, told and tostring(told) or "")
  press(1)
end

-- The box of the bad pixels in front is read and left: counts by class.
function calibration.bad_pixels()
  local front = box()
  assert(front and front.caption == "Bad pixel count", front and front.text)
  local counts = {}
  for name, count in front.text:gmatch("([%a][^\n=]-) = +(%d+)") do counts[name] = tonumber(count) end
  answer("ok")
  return counts
end

-- From the calibration dialog to the result box, which is left in front.
function calibration.two_point(low, high, frames)
  calibration.accept(2, frames)
  calibration.at_low(low, low)
  calibration.at_high(high, high)
  return calibration.bad_pixels()
end

-- The dialog in front asks for a set's file: named, and accepted.
function calibration.choose(path)
  assert(dialog() == "CAL_OPEN" or dialog() == "CAL_SAVE", dialog() or box() and box().text)
  set(1460, path)
  press(1)
end

-- Deviation of the picture on view over its mean, in counts, and the mean.
function calibration.unevenness()
  local width, height = state("Hroi"), state("Vroi")
  local sum, squares, count = 0, 0, 0
  for y = 0, height - 1, 3 do
    for x = 0, width - 1, 5 do
      local value = pixel(x, y)
      sum, squares, count = sum + value, squares + value * value, count + 1
    end
  end
  local mean = sum / count
  return math.sqrt(squares / count - mean * mean), mean
end

return calibration

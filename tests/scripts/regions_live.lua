-- Regions of live video: the figures are those of the frame on view, ends of the converter included, and the window follows the frames.
local check = require "check"
local calibration = require "calibration"

calibration.turn_on()
press(2)  -- no calibration
check.eq(state("LiveVideo"), 1)
regions { { name = "middle", x1 = 100, y1 = 80, x2 = 119, y2 = 99 } }
command(2210)
frames(2)
wait(150)
local first = items("regions", 22101)[1]
frames(10)
wait(150)
assert(items("regions", 22101)[1] ~= first, "noise is new in each frame")

local function agrees()
  local n, sum, saturated = 0, 0, 0
  for y = 80, 99 do
    for x = 100, 119 do
      local count = pixel(x, y)
      n, sum = n + 1, sum + count
      if count <= 0 or count >= 16383 then saturated = saturated + 1 end
    end
  end
  local figures = stats("middle")
  check.eq({ figures.pixels, figures.saturated, figures.outside }, { n, saturated, nil })
  check.near(figures.mean, sum / n, 1e-9)
  return figures
end

command(140)
check.eq(state("LiveVideo"), 0)
local frozen = agrees()
wait(500)
check.eq(stats("middle"), frozen, "a frozen picture stays")

-- Too hot for the converter: without a correction a count is what it gave.
command(140)
sim.source("high", 150)
frames(3)
command(140)
assert(agrees().saturated > 0)
press("regions", 2)

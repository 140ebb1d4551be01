-- The camera that reads out over four channels: each detector shows at its own place, whichever way the picture is turned.
local check = require "check"
local video = require "video"

local columns, rows = 320, 256

local function turn_on()
  video.turn_on()
  check.eq(dialog(), nil)
  check.eq({ state("CameraOn"), state("LiveVideo"), state("CalType") }, { 1, 1, 0 })
end

-- Detectors that give no signal, as the array knows them.
local function dead_detectors()
  local dead = {}
  for y = 0, rows - 1 do
    for x = 0, columns - 1 do
      if sim.truth(x, y).dead then dead[#dead + 1] = { x = x, y = y } end
    end
  end
  return dead
end

local function mean_count()
  local sum, number = 0, 0
  for y = 3, rows - 1, 16 do
    for x = 5, columns - 1, 16 do
      sum, number = sum + pixel(x, y), number + 1
    end
  end
  return sum / number
end

-- How many of them are dark at the place that a turned picture gives them; moved by one column, next to none is.
local function dark_at(dead, place)
  local limit, dark = mean_count() / 2, 0
  for _, detector in ipairs(dead) do
    local x, y = place(detector.x, detector.y)
    if x >= 0 and x < columns and pixel(x, y) < limit then dark = dark + 1 end
  end
  return dark
end

local function expect_places(dead, place)
  frames(2)
  check.eq(dark_at(dead, place), #dead)
  local beside = dark_at(dead, function(x, y)
    local column, row = place(x, y)
    return column + 1, row
  end)
  assert(beside < #dead / 5, beside .. " of " .. #dead)
end

local function set_up(horizontal, vertical)
  command(122)
  check.eq(dialog(), "GEOMETRY")
  check.eq(text(1608), "InSb 320 x 256, four channels")
  check(1300, horizontal)
  check(1302, vertical)
  press(1604)
  check.eq(status(), " Adjust image readout sequence &/or change bad pixel list")
  press(1)
  check.eq({ dialog(), box() }, {})
end

turn_on()
sim.source("low", 25)
frames(3)
local dead = dead_detectors()
assert(#dead > 100, #dead)
expect_places(dead, function(x, y) return x, y end)

set_up(true, false)
check.eq({ state("MirrorVert"), state("MirrorHoriz") }, { 1, 0 })
expect_places(dead, function(x, y) return columns - 1 - x, y end)
set_up(true, true)
expect_places(dead, function(x, y) return columns - 1 - x, rows - 1 - y end)
set_up(false, true)
expect_places(dead, function(x, y) return x, rows - 1 - y end)
set_up(false, false)
expect_places(dead, function(x, y) return x, y end)

-- F9 keeps what is to be replaced; the menu tells it.
check.eq(state("SubstBadPixels"), 1)
key("F9")
check.eq({ state("SubstBadPixels"), menu(141).checked }, { 0, false })
key("F9")
check.eq({ state("SubstBadPixels"), menu(141).checked }, { 1, true })
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")

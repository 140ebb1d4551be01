-- What is on view is drawn again at once when its colours or levels change, be it a file, a frozen or a live frame; where nothing is on
-- view, nothing is painted. The array of this camera has no noise worth naming: a picture changes with its levels alone.
local check = require "check"
local files = require "files"
local video = require "video"

local top = state("PanelHeight")
local places = { { 5, 5 }, { 100, 60 }, { 300, 200 }, { 500, 400 } }
local function picture()
  local colors = {}
  for i, place in ipairs(places) do colors[i] = { screen(place[1], top + place[2]) } end
  return colors
end
local function inverted(colors)
  local result = {}
  for i, color in ipairs(colors) do result[i] = { 255 - color[1], 255 - color[2], 255 - color[3] } end
  return result
end
local function differs(one, other) return not check.same(one, other) end

-- A level that changes the picture, and back again.
local function expect_levels_redraw(what)
  command(2004)
  local before = picture()
  for _, direction in ipairs { "left", "up" } do
    for _ = 1, 8 do press("panel", 315, direction) end
    assert(differs(picture(), before), what .. ": " .. direction)
    for _ = 1, 8 do press("panel", 315, direction == "left" and "right" or "down") end
    check.eq(picture(), before, what .. ": back from " .. direction)
  end
  for _ = 1, 8 do press("panel", 315, "left") end
  key("Ctrl+F")
  check.eq(picture(), before, what .. ": Ctrl+F")
end

local function expect_maps_redraw(what)
  local before = picture()
  command(144)
  check.eq(picture(), inverted(before), what .. ": inverted gray")
  command(143)
  check.eq(picture(), before, what .. ": normal gray")
  key("F11")
  check.eq(picture(), inverted(before), what .. ": F11")
  key("F11")
  local colored = picture()
  assert(differs(colored, before) and differs(colored, inverted(before)), what .. ": colour")
  key("F11")
  check.eq(picture(), before, what .. ": round")
end

-- Nothing is on view yet.
press(2)
check.eq(state("CameraOn"), 0)
local empty = picture()
for _, id in ipairs { 144, 145, 143, 156 } do
  command(id)
  check.eq(picture(), empty, "nothing is painted by " .. id)
end
command(143)
press("panel", 315, "left")
press("panel", 315, "right")
check.eq(picture(), empty, "nor by brightness")

-- A file.
local ramp = files.image(datadir() .. "/ramp.img", { width = 200, height = 150 }, 1, function(_, x, y) return 6000 + 20 * x + 10 * y end)
drop(ramp)
assert(differs(picture(), empty))
expect_maps_redraw("a file")

-- Live video over it: the file's frame is gone, whatever the colours.
command(169)
video.turn_on()
sim.source("low", 20)
frames(5)
check.eq({ state("LiveVideo"), state("ViewingFile") }, { 1, 0 })
drop(ramp)
local stored = picture()
key("F2")
check.eq(state("LiveVideo"), 1)
frames(3)
command(2004)
frames(2)
local live = picture()
assert(differs(live, stored))
for _, id in ipairs { 144, 143 } do
  command(id)
  assert(differs(picture(), stored) and differs(picture(), inverted(stored)), "no stale frame by " .. id)
end

-- Live, with the display off so that no new frame comes in between: what stands on the screen takes the colours.
check("panel", 1013, false)
wait(100)
expect_maps_redraw("a live frame")
check("panel", 1013, true)
frames(2)

-- Frozen.
key("F2")
check.eq({ state("LiveVideo"), state("CameraOn") }, { 0, 1 })
expect_maps_redraw("a frozen frame")
expect_levels_redraw("a frozen frame")

-- Zoom and pan of a frozen picture show at once too.
local before = picture()
key("+")
assert(differs(picture(), before), "a frozen picture zooms")
key("-")
check.eq(picture(), before)

-- The image cursor on live video: cross and read-out, once a second and at each motion, zoom and pan while the grab starts again, the
-- trackball, a change of unit, a freeze with the cursor on. The camera of prepared/live_cursor gathers so many electrons that a count
-- stays the same from frame to frame, and its detectors differ: each read-out can only be that of its own pixel.
local check = require "check"
local video = require "video"

video.turn_on()
check.eq({ state("CameraOn"), state("LiveVideo") }, { 1, 1 })
sim.source("low", 20)
frames(5)

local columns, rows = state("Hroi"), state("Vroi")
check.eq({ columns, rows }, { 320, 256 })

-- The readout of this camera is line by line.
local function raw_at(x, y) return raw(y * columns + x) end

-- Place, quantity, value and unit of the read-out.
local function read_out()
  local x, y, name, value, unit = status():match("^x= *(%d+)  y= *(%d+)  (%a+)=(%S+) (%a+) +$")
  if not x then error("no read-out: " .. check.show(status()), 2) end
  return { x = tonumber(x), y = tonumber(y), name = name, value = tonumber(value), unit = unit }
end

-- The read-out stands at the cursor, its count is that of the pixel in the picture and of its detector.
local function expect_count(what)
  local shown = read_out()
  check.eq({ shown.x, shown.y }, { state("CursorX"), state("CursorY") }, what)
  check.eq({ shown.name, shown.unit }, { "Signal", "Counts" }, what)
  check.near(shown.value, pixel(shown.x, shown.y), 1, what)
  check.near(shown.value, raw_at(shown.x, shown.y), 1, what)
  return shown
end

-- The screen where the middle of a pixel lies; nil where that is out of sight.
local function seen_at(x, y)
  local view, zoom = state("ViewPosition"), state("Xzoom")
  local at_x = (x - state("Xpan")) * zoom + zoom // 2 - view[1]
  local at_y = state("PanelHeight") + y * zoom + zoom // 2 - view[2]
  local in_sight = at_x >= 0 and at_y >= state("PanelHeight") and at_x < state("ClientWidth") - 20 and
    at_y < state("ClientHeight") - state("TextHeight") - 20
  if in_sight and x < state("Hroi") and y < state("Vroi") then return { screen(at_x, at_y) } end
end

-- White arms of five pixels on the screen; those toward the left and upper border stop short of the first column and row. The frame
-- has nothing of them.
local function expect_cross(x, y, what)
  local white = { 255, 255, 255 }
  for reach = 1, 5 do
    for _, arm in ipairs { { x + reach, y }, { x, y + reach }, { x - reach, y }, { x, y - reach } } do
      local in_frame = arm[1] >= 0 and arm[2] >= 0
      local count, seen = in_frame and pixel(arm[1], arm[2]), in_frame and seen_at(arm[1], arm[2])
      if count then check.near(count, raw_at(arm[1], arm[2]), 1, string.format("%s: the count at %d, %d", what, arm[1], arm[2])) end
      local is_arm = (arm[1] > 0 or x == 0) and (arm[2] > 0 or y == 0)
      if count and seen and is_arm then check.eq(seen, white, string.format("%s: %d, %d", what, arm[1], arm[2])) end
    end
  end
end

local panel_height = state("PanelHeight")
local clip_width = state("ClientWidth")
local clip_height = state("ClientHeight") - panel_height - state("TextHeight")

-- The pixel under a place of the picture's area, from zoom and pan: the picture begins with the pan's column, and its rows stay where
-- they are. Beside the picture it is the nearest one.
local function pixel_under(px, py)
  local pan = { state("Xpan"), state("Ypan") }
  assert(pan[1] >= 0)
  return math.min(pan[1] + px // state("Xzoom"), columns - 1),
    math.min(py // state("Yzoom"), math.min(rows, rows - pan[2]) - 1)
end

local function expect_live(what)
  check.eq({ state("LiveVideo"), state("ViewingFile"), state("ImageCursorOn") }, { 1, 0, 1 }, what)
  check.eq(title(), "Kelvo", what)
  check.eq(box(), nil, what)
end

-- Cross and read-out.
frames(200)
check.seen("status", { align = 0, text = status() })
local before = status()
mouse(300, panel_height + 300)
key("F8")
expect_live("switched on")
check.eq(menu(151).checked, true)
for _, place in ipairs { { 300, 300 }, { 0, 0 }, { clip_width - 1, clip_height - 1 }, { 700, 40 }, { 12, 9 } } do
  local what = place[1] .. "," .. place[2]
  mouse(place[1], panel_height + place[2])
  local shown = expect_count(what)
  check.eq({ shown.x, shown.y }, { pixel_under(place[1], place[2]) }, what)
  expect_cross(shown.x, shown.y, what)
  frames(3)
  expect_cross(shown.x, shown.y, what .. ", three frames on")
end

-- The old cross is gone with the next frame.
mouse(500, panel_height + 500)
local old = expect_count("here")
mouse(800, panel_height + 200)
frames(1)
for reach = 0, 5 do check.near(pixel(old.x + reach, old.y), raw_at(old.x + reach, old.y), 1, "the old cross") end

-- Once a second it reads anew, whatever comes in front of the camera.
local function read_outs_since(mark)
  local found = {}
  for _, line in ipairs(check.lines("status", mark + 1)) do
    if line.text:match("^x=") then found[#found + 1] = line end
  end
  return found
end
local warmer = 0
for _, degrees in ipairs { 20, 26 } do
  sim.source("low", degrees)
  local mark = check.mark()
  mouse(801, panel_height + 200)
  wait(4200)
  local lines = read_outs_since(mark)
  check.eq(#lines, 5, "one at the motion and one a second")
  for i = 2, 5 do check.near(lines[i].t - lines[i - 1].t, 1000, 60, "a second apart, and the frame that it reads") end
  local shown = expect_count("at " .. degrees)
  assert(shown.value > warmer + 500, "a warmer source reads higher: " .. shown.value)
  warmer = shown.value
end
sim.source("low", 20)

-- Zoom and pan start the grab again: the pixel under the cursor stays, and so do read-out and video.
mouse(640, panel_height + 380)
local pivot = expect_count("before the zoom")
local shown_before = state("FramesShown")
local zoom = state("Xzoom")
for step = 1, 16 - zoom do
  key("+")
  expect_live("zoom " .. zoom + step)
  check.eq(state("Xzoom"), zoom + step)
  local shown = expect_count("zoom " .. zoom + step)
  check.eq({ shown.x, shown.y }, { pivot.x, pivot.y }, "the pixel stays")
  frames(2)
  expect_cross(shown.x, shown.y, "zoom " .. zoom + step)
end
key("+")
check.eq(state("Xzoom"), 16)
expect_live("beyond the largest zoom")
for _, name in ipairs { "Right", "Down", "Left", "Up", "Home", "PgDn", "End", "PgUp" } do
  local pan = state("Xpan") .. "," .. state("Ypan")
  key(name)
  expect_live(name)
  assert(state("Xpan") .. "," .. state("Ypan") ~= pan, name .. " pans")
  expect_count(name)
  check.eq({ state("CursorX"), state("CursorY") }, { pivot.x, pivot.y }, name)
  frames(2)
  expect_count(name .. ", two frames on")
end
press("panel", 312, "right")
expect_live("the panel's pan")
expect_count("the panel's pan")
for _ = 1, 15 do key("-") end
check.eq(state("Xzoom"), 1)
expect_count("zoom 1")
while state("Xzoom") < zoom do key("+") end
expect_live("back")
assert(state("FramesShown") > shown_before + 40, "video went on all the time")
check.eq(state("FramesLost"), 0)
while state("Xpan") > 0 do key("Left") end

-- The trackball: motion is brightness and contrast, video goes on, and the pointer comes back to its pixel.
mouse(400, panel_height + 300)
local held = expect_count("before the trackball")
local contrast, brightness = state("Contrast"), state("Brightness")
key("F10")
check.eq(state("TrackballMode"), 1)
mouse(340, 240)
check.eq({ state("Contrast"), state("Brightness") }, { contrast, brightness + 4 }, "(20 + 2) / 5")
mouse(320, 270)
check.eq({ state("Contrast"), state("Brightness") }, { contrast - 1, brightness + 4 })
mouse(320, 210)
check.eq({ state("Contrast"), state("Brightness") }, { contrast, brightness + 4 })
frames(5)
expect_live("with the trackball")
key("F10")
check.eq(state("TrackballMode"), 0)
mouse(400, panel_height + 300)
local again = expect_count("after the trackball")
check.eq({ again.x, again.y }, { held.x, held.y })

-- Volts: 0.0004 V a count down from 8200 counts at 0 V.
check.eq(items("panel", 1256), { "Signal (Counts)", "Signal (V)" })
pick("panel", 1256, 1)
wait(1100)
local volts = read_out()
check.eq({ volts.x, volts.y, volts.name, volts.unit }, { held.x, held.y, "Signal", "V" })
check.near(volts.value, (8200 - pixel(held.x, held.y)) * 0.0004, 0.001)
pick("panel", 1256, 0)
wait(1100)
expect_count("counts again")

-- Frozen with the cursor on: the read-out comes with the pointer only, and is the frozen frame's to the count.
key("F2")
check.eq({ state("LiveVideo"), state("ImageCursorOn") }, { 0, 1 })
check.eq(title(), "Kelvo - Frozen")
wait(2000)
local mark = check.mark()
wait(3000)
check.eq(#read_outs_since(mark), 0)
for _, place in ipairs { { 30, 40 }, { 900, 500 }, { 450, 333 } } do
  mouse(place[1], panel_height + place[2])
  local shown = read_out()
  check.eq({ shown.x, shown.y }, { pixel_under(place[1], place[2]) })
  check.eq(shown.value, pixel(shown.x, shown.y))
  check.eq(shown.value, raw_at(shown.x, shown.y))
  expect_cross(shown.x, shown.y, "frozen")
end
sim.source("low", 30)
mouse(451, panel_height + 333)
check.eq(read_out().value, raw_at(read_out().x, read_out().y), "the frozen frame stays")
local frozen = read_out().value
key("F2")
expect_live("going on")
frames(2)
mouse(450, panel_height + 333)
assert(expect_count("live again").value > frozen + 500, "what stands in front now")

-- Off: no cross, and the line is as it was.
key("F8")
check.eq({ state("ImageCursorOn"), menu(151).checked }, { 0, false })
check.eq(status(), before)
frames(1)
local x, y = state("CursorX"), state("CursorY")
for reach = -5, 5 do check.near(pixel(x + reach, y), raw_at(x + reach, y), 1, "no cross") end
check.eq(state("FramesLost"), 0)

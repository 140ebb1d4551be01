-- The camera's picture as a bitmap: a new frame of live video, or the frozen one, as it is seen, without the image cursor. The array
-- has no noise here, so that each frame is as the other.
local check = require "check"
local files = require "files"
local video = require "video"
local dir = datadir()

-- The bytes of a saved 8-bit bitmap: width, height, and the pixel at x, y from the top.
local function bitmap(path)
  local bytes = assert(readfile(path), "no file " .. path)
  local offset = string.unpack("<I4", bytes, 11)
  local width, height = string.unpack("<i4i4", bytes, 19)
  local row = (width + 3) // 4 * 4
  check.eq(#bytes, offset + row * height)
  return width, height, function(x, y) return bytes:byte(offset + (height - 1 - y) * row + x + 1) end
end

local function expect_seen(path)
  local width, height, at = bitmap(path)
  check.eq({ width, height }, { state("Hactive"), state("Vactive") })
  local look_up = state("DisplayLut")
  local grays = {}
  for y = 0, height - 1 do
    for x = 0, width - 1 do
      local shown = look_up[pixel(x, y) + 1]
      if at(x, y) ~= shown then check.eq(at(x, y), shown, path .. " pixel " .. x .. "," .. y) end
      grays[shown] = true
    end
  end
  assert(next(grays, next(grays)), "a picture, not one gray")
end

-- Without a camera there is no picture.
press(2)
while box() do answer("ok") end
command(116)
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
check.eq(file(), nil)
command(169)
video.turn_on()
frames(3)
command(2004)  -- a contrast at which the detectors' own pattern is seen

local function save(name)
  command(116)
  check.eq(file() and file().title, "Save File")
  choose(dir .. "/" .. name)
  check.eq(box() and box().text, nil)
  return dir .. "/" .. name
end
local live = save("live.bmp")
check.eq(state("LiveVideo"), 1)
frames(2)
expect_seen(live)

-- Turned and at another contrast.
command(122)
for id, on in pairs { [1300] = true, [1302] = true } do check(id, on) end
press(1604)
press(1)
frames(2)
expect_seen(save("turned.bmp"))

-- A new frame: the scene has changed since the last one that was drawn.
key("F2")
check.eq(state("LiveVideo"), 0)
local first = pixel(5, 5)
sim.source("scene", 60)
local frozen = save("frozen.bmp")
check.eq({ state("LiveVideo"), state("ViewingFile"), pixel(5, 5) }, { 0, 0, first })
expect_seen(frozen)

-- The cursor is on the screen and not in the file.
mouse(150, 200)
command(151)
local at_x = (state("CursorX") + 1) * state("Xzoom") + 1
local at_y = state("PanelHeight") + state("CursorY") * state("Yzoom") + 1
check.eq({ screen(at_x, at_y) }, { 255, 255, 255 }, "the cross")
local pointed = save("cursor.bmp")
check.eq(readfile(pointed), readfile(frozen))
check.eq({ screen(at_x, at_y) }, { 255, 255, 255 }, "the cross stays")
command(151)

-- Cancelled: nothing is written, and the line stays.
local line = status()
command(116)
cancel()
check.eq({ box(), status() }, { nil, line })

-- The camera's picture as TIFF files, live and frozen, 8 and 16 bits. The array stands in the dark and has no noise here, so that each frame is as
-- the other and what is saved can be held against what is seen, count for count.
local check = require "check"
local tiff = require "tiff"
local video = require "video"
local dir = datadir()

video.turn_on()
frames(3)

local function save(id, name)
  command(id)
  choose(dir .. "/" .. name)
  check.eq(box() and box().text, nil)
  check.holds(status(), " Saved " .. name)
  return tiff.read(dir .. "/" .. name)
end

local scale = (state("DisplayHigh") + 1 - state("DisplayLow")) // 256
assert(scale > 1, scale)

local function expect_picture(picture, bits)
  check.eq({ picture.width, picture.height, picture.bits }, { state("Hactive"), state("Vactive"), bits })
  local of = bits == 16 and 1 or scale
  local spread = {}
  for y = 0, picture.height - 1 do
    for x = 0, picture.width - 1 do
      local expected = pixel(x, y) // of
      local value = picture.at(x, y)
      if value ~= expected then check.eq(value, expected, ("%d bits, pixel %d, %d"):format(bits, x, y)) end
      spread[value] = true
    end
  end
  assert(next(spread, next(spread)), "a picture, not one value")
  check.eq({ picture.tags[280], picture.tags[281] }, { state("DisplayLow") // of, state("DisplayHigh") // of })
  local line = ("FrameRate=%.2fHz IntegrationTime=%.3fms"):format(state("FrameRate"), state("IntegrationMsecInForce"))
  check.holds(picture.description, line)
end

expect_picture(save(126, "live16.tif"), 16)
check.eq(state("LiveVideo"), 1)
expect_picture(save(125, "live8.tif"), 8)

-- Frozen: the frame that stands, whatever the scene does since, without the cursor.
key("F2")
check.eq(state("LiveVideo"), 0)
sim.source("scene", 60)
mouse(150, 200)
command(151)
check.eq(state("ImageCursorOn"), 1)
expect_picture(save(126, "frozen16.tif"), 16)
expect_picture(save(125, "frozen8.tif"), 8)
check.eq({ state("LiveVideo"), state("ImageCursorOn") }, { 0, 1 })
command(151)
key("F2")

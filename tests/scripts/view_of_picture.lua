-- The view over the picture: wheel, drag, Fit, 1:1 and Centre. Pan, and the keys' own rules, stay as they are.
local check = require "check"
local files = require "files"
answer("ok")
local width, height = 320, 256
drop(files.image(datadir() .. "/view.img", { width = width, height = height }, 1,
  function(_, x, y) return 6000 + 20 * x + 7 * y end))
command(2004)
local top, line = state("PanelHeight"), state("TextHeight")
local area_width, area_height = state("ClientWidth"), state("ClientHeight") - top - line
local pan = { state("Xpan"), state("Ypan") }
local lut = state("DisplayLut")

-- Whether a place of the screen shows a pixel of the picture, or the ground around it.
local function shows(at_x, at_y, x, y, what)
  local gray = lut[6000 + 20 * x + 7 * y + 1]
  check.eq({ screen(at_x, at_y) }, { gray, gray, gray }, what)
end
local ground = { 0x38, 0x38, 0x38 }
local function place(x, y)
  local view = state("ViewPosition")
  local zoom = state("Xzoom")
  return x * zoom - view[1], top + y * zoom - view[2]
end

check.eq(state("Xzoom"), 3)
check.eq(state("ViewPosition"), { 0, 0 })
shows(0, top, 0, 0)
check.eq({ screen(width * 3 + 1, top + 1) }, ground, "neutral ground beside it")

-- The wheel keeps the pixel under the pointer where it is, step by step, at any place of the picture.
for _, pixel in ipairs { { 0, 0 }, { 100, 80 }, { 319, 255 }, { 210, 30 } } do
  local x, y = place(pixel[1], pixel[2])
  x, y = math.min(x + 1, area_width - 40), math.min(y + 1, top + area_height - 40)
  local view = state("ViewPosition")
  local seen = { (x + view[1]) // state("Xzoom"), (y - top + view[2]) // state("Yzoom") }
  for _, notch in ipairs { "up", "up", "down", "up", "down", "down", "down", "up" } do
    mouse(x, y, "wheel " .. notch)
    shows(x, y, seen[1], seen[2], "zoom " .. state("Xzoom"))
  end
  check.eq(state("Xzoom"), 3)
end
check.eq({ state("Xpan"), state("Ypan") }, pan, "the wheel leaves the pan")
for _ = 1, 20 do mouse(300, 300, "wheel up") end
check.eq({ state("Xzoom"), state("Yzoom") }, { 16, 16 })
for _ = 1, 20 do mouse(300, 300, "wheel down") end
check.eq({ state("Xzoom"), state("Yzoom") }, { 1, 1 })

-- Fit: the largest zoom at which all of it is seen, in the middle.
command(2040)
local fit = math.min(area_width // width, area_height // height, 16)
check.eq({ state("Xzoom"), state("Yzoom") }, { fit, fit })
check.eq(text("panel", 311), tostring(fit))
local left, upper = place(0, 0)
check.eq(left, (area_width - width * fit) // 2)
check.near(upper - top, (area_height - height * fit) / 2, 1)
shows(left, upper, 0, 0)
shows(left + width * fit - 1, upper + height * fit - 1, width - 1, height - 1)
for _, at in ipairs { { left - 1, upper }, { left + width * fit, upper }, { left, upper - 1 }, { left, upper + height * fit } } do
  check.eq({ screen(at[1], at[2]) }, ground, "around it")
end
screenshot("fit.png")

-- Dragged with the middle button it follows the pointer, over the panel too, and a part of it always stays.
mouse(left + 50, upper + 50, "middle down")
mouse(left + 90, upper + 20)
check.eq({ place(0, 0) }, { left + 40, upper - 30 })
mouse(left + 60, top // 2)
check.eq({ place(0, 0) }, { left + 10, upper + top // 2 - upper - 50 })
mouse(left + 50, upper + 50)
mouse(left + 50, upper + 50, "middle up")
check.eq({ place(0, 0) }, { left, upper })
mouse(left + 99, upper + 99)
check.eq({ place(0, 0) }, { left, upper }, "nothing is held any more")
mouse(left, upper, "middle down")
mouse(left + 5000, upper - 5000)
mouse(left, upper, "middle up")
mouse(left + 20, upper + 20, "middle down")
mouse(-5000, 9000)
mouse(0, top, "middle up")
local x, y = place(0, 0)
assert(x + width * fit > 0 and y < top + area_height, "some of it stays in sight")
command(2042)
check.eq({ place(0, 0) }, { left, upper }, "Centre")

-- 1:1, about the middle of the view.
command(2041)
check.eq({ state("Xzoom"), state("Yzoom") }, { 1, 1 })
local at_x, at_y = place(0, 0)
check.near(at_x, (area_width - width) / 2, 1)
check.near(at_y - top, (area_height - height) / 2, 1)
check.eq({ state("Xpan"), state("Ypan") }, pan)

-- Larger than the window: in the middle it is cut off on all sides alike, with bars.
command(2040)
for _ = 1, 8 do mouse(area_width // 2, top + area_height // 2, "wheel up") end
command(2042)
local view = state("ViewPosition")
assert(view[1] > 0 and view[2] > 0)
check.near(2 * view[1] + area_width, width * state("Xzoom"), 24)
screenshot("large.png")

-- What the keys do is as it was: they pan, and a stored picture stands where it is.
key("Right")
check.eq(state("Xpan"), pan[1] + 1)
check.eq(state("ViewPosition"), view)

-- The image cursor reads what is seen, wherever the view stands.
command(2041)
mouse(area_width // 2 - 10, top + area_height // 2 + 20, "left")
local seen_x, seen_y = place(0, 0)
check.eq({ state("CursorX"), state("CursorY") }, { area_width // 2 - 10 - seen_x, top + area_height // 2 + 20 - seen_y })

-- The image cursor on a stored frame: place, count, cross, status line before and after.
local check = require "check"
local files = require "files"
answer("ok")
local width, height = 40, 30
local path = files.image(datadir() .. "/ramp.img", { width = width, height = height }, 1,
  function(_, x, y) return 1000 + 40 * y + x end)
drop(path)
local before = status()

mouse(100, 200)
key("F8")
check.eq(menu(151).checked, true)
check.eq(state("ImageCursorOn"), 1)
local function expected()
  return string.format("x=%3d  y=%3d  Signal=%d Counts     ", state("CursorX"), state("CursorY"),
    1000 + 40 * state("CursorY") + state("CursorX"))
end
check.eq(status(), expected(), "the first read-out is of the count under the cursor")

-- The place is the pixel under the pointer; beside the picture it is the nearest one, and the pointer stays in the picture.
local clip_width = state("ClientWidth")
local clip_height = state("ClientHeight") - state("PanelHeight") - state("TextHeight")
local zoom = state("Xzoom")
for _, place in ipairs { { 0, 0 }, { 57, 44 }, { 60, 45 }, { 119, 89 }, { 120, 90 }, { clip_width - 1, clip_height - 1 }, { 640, 10 } } do
  mouse(place[1], state("PanelHeight") + place[2])
  local x = math.min(place[1] // zoom, width - 1)
  local y = math.min(place[2] // zoom, height - 1)
  check.eq({ state("CursorX"), state("CursorY") }, { x, y }, place[1] .. "," .. place[2])
  check.eq(status(), expected())
end

-- The file's own counts are untouched by the cross.
mouse(60, state("PanelHeight") + 40)
check.eq(pixel(state("CursorX") + 1, state("CursorY")), 1000 + 40 * state("CursorY") + state("CursorX") + 1)

mouse(200, 300, "left")  -- a click switches it off
check.eq(state("ImageCursorOn"), 0)
check.eq(menu(151).checked, false)
check.eq(status(), before)

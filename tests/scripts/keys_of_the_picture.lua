-- The keys that zoom, pan and place the picture, and the wheel. The camera's region is 320 x 256, the zoom 3.
local check = require "check"
answer("ok")
key("Right")
check.eq(state("Xpan"), 0, "nothing on view, nothing to move")
drop(datadir() .. "/sample.seq")
check.eq({ state("Hroi"), state("Vroi"), state("Xzoom"), state("Yzoom") }, { 320, 256, 3, 3 })
local view_width, view_height = state("ViewWidth"), state("ViewHeight")
check.eq(view_width, state("ClientWidth"))

local function expect(what, name, value)
  key(what)
  check.eq(state(name), value, what)
end

expect("Right", "Xpan", 1)
expect("Home", "Xpan", 21)
expect("Left", "Xpan", 20)
expect("End", "Xpan", 0)
expect("End", "Xpan", -20)
expect("Home", "Xpan", 0)

-- At this zoom every row shows: down is at its limit. Up leaves the frame.
assert(view_height // 3 >= 256)
expect("Down", "Ypan", 0)
expect("PgDn", "Ypan", 0)
expect("Up", "Ypan", -1)
expect("PgUp", "Ypan", -17)
-- From there the way down ends at 0.
expect("PgDn", "Ypan", -1)
expect("PgDn", "Ypan", 0)

local free_x = (view_width - 320 * 3) // 4 * 4
local free_y = view_height - 256 * 3
assert(free_x >= 24 and free_y >= 17)
expect("Shift+Right", "Xoffset", 4)
expect("Shift+Left", "Xoffset", 4)  -- refused: not beyond the region's width
expect("Shift+End", "Xoffset", 24)
expect("Shift+Home", "Xoffset", 4)
expect("Shift+Home", "Xoffset", 0)
for _ = 1, free_x // 20 + 1 do key("Shift+End") end
check.eq(state("Xoffset"), free_x, "the offset ends where the picture meets the edge")
for _ = 1, free_x // 20 + 1 do key("Shift+Home") end
check.eq(state("Xoffset"), 0)
expect("Shift+Down", "Yoffset", 1)
expect("Shift+PgDn", "Yoffset", 17)
expect("Shift+PgUp", "Yoffset", 1)
expect("Shift+Up", "Yoffset", 0)
expect("Shift+Up", "Yoffset", 0)

expect("+", "Xzoom", 4)
check.eq(state("Yzoom"), 4)
check.eq(text("panel", 311), "4")
expect("-", "Xzoom", 3)
mouse(200, 300, "wheel up")
check.eq({ state("Xzoom"), state("Yzoom") }, { 4, 4 })
mouse(200, 300, "wheel down")
check.eq({ state("Xzoom"), state("Yzoom") }, { 3, 3 })
for _ = 1, 20 do key("+") end
check.eq(state("Xzoom"), 16)
for _ = 1, 20 do key("-") end
check.eq(state("Xzoom"), 1)

-- Zoomed in, rows can be panned until the last one shows.
for _ = 1, 9 do key("+") end
check.eq(state("Yzoom"), 10)
local last = 256 - view_height // 10
for _ = 1, 20 do key("PgDn") end
check.eq(state("Ypan"), last)
expect("Down", "Ypan", last)
check.eq(text("panel", 313), string.format("%d,%d", state("Xpan"), last))

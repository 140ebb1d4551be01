-- The switches of the View menu: frame account, colour scale, saturation overlay. What is on at the end is on at the next start.
local check = require "check"
local files = require "files"
while box() do answer("ok") end
if dialog() then press(2) end

for _, id in ipairs { 2006, 2007, 2008 } do check.eq(menu(id).checked, false) end
for _, name in ipairs { "FramesDelivered", "FramesShown", "FramesLost", "FramesMissed" } do
  check.eq(state(name), 0, name)
end

drop(files.image(datadir() .. "/ends.img", { width = 40, height = 30 }, 1, function(_, x, y)
  if x == 3 then return 0 end
  if y == 5 then return 16383 end
  return 2600 + 3 * x
end))
local top, zoom = state("PanelHeight"), state("Xzoom")
local function block(x, y) return { screen(zoom * x + 1, top + zoom * y + 1) } end
local plain = { block(2, 2), block(3, 2), block(4, 5) }

command(2008)
check.eq(menu(2008).checked, true)
check.eq(block(2, 2), plain[1], "other pixels stay")
local low, high = block(3, 2), block(4, 5)
assert(check.show(low) ~= check.show(plain[2]), "low end")
assert(check.show(high) ~= check.show(plain[3]), "high end")
assert(check.show(low) ~= check.show(high), "the ends differ")
key("+")
zoom = state("Xzoom")
local pan = { state("Xpan"), state("Ypan") }
check.eq(block(3, 2), low, "at another zoom")
check.eq(block(2, 2), plain[1])

-- A calibrated file has no raw counts to look at.
drop(files.image(datadir() .. "/calibrated.img", { width = 40, height = 30, cold = 7000, cold_c = 20, hot = 12000, hot_c = 40 }, 1,
  function() return 0 end))
check.eq(menu(2008).enabled, false)
check.eq(block(3, 2), { 0, 0, 0 })
drop(datadir() .. "/ends.img")
check.eq(menu(2008).enabled, true)
check.eq(block(3, 2), low)

command(2007)
local right = state("ClientWidth") - 1
check.eq(menu(2007).checked, true)
local ground = { screen(right - 1, top + 300) }
assert(ground[1] < 60 and ground[2] < 60 and ground[3] < 60, "the scale stands at the right edge")
command(2006)
check.eq(menu(2006).checked, true)
check.seen("dialog", { name = "ACCOUNT" })
command(2006)
check.eq(menu(2006).checked, false)
check.seen("close", { name = "ACCOUNT" })
command(2006)

-- The trackball mode: the status line says how it ends, Esc, F10 and the right button end it; where the window system lets nobody move the
-- pointer, the pointer's own way counts.
local check = require "check"
answer("ok")
drop(datadir() .. "/sample.seq")
local before = status()
local function levels() return { state("Contrast"), state("Brightness") } end

for _, way in ipairs { "Esc", "F10", "right" } do
  if way == "right" then mouse(400, 400, "right") else key("F10") end
  check.eq(state("TrackballMode"), 1)
  check.holds(status(), "Esc, F10 or the right button ends it")
  if way == "right" then mouse(400, 400, "right") else key(way) end
  check.eq(state("TrackballMode"), 0, way)
  check.eq(status(), before, way)
end
key("Esc")
check.eq({ state("TrackballMode"), status() }, { 0, before }, "Esc alone does nothing")

-- What others say stays until the pointer moves, and after the mode.
key("F10")
command(140)
mouse(340, 240)
check.holds(status(), "Esc, F10 or the right button ends it")
key("Esc")
check.eq(status(), before)

sim.fault("fixed pointer")
key("F10")
local contrast, brightness = state("Contrast"), state("Brightness")
mouse(600, 400)
check.eq(levels(), { contrast, brightness }, "where the pointer stands is no motion")
mouse(620, 400)
check.eq(levels(), { contrast, brightness + 4 }, "(20 + 2) / 5")
mouse(623, 400)
check.eq(levels(), { contrast, brightness + 4 })
mouse(626, 400)
check.eq(levels(), { contrast, brightness + 5 }, "small steps add up: (6 + 2) / 5")
for step = 1, 4 do mouse(626, 400 + 5 * step) end
check.eq(levels(), { contrast, brightness + 5 })
mouse(626, 421)
check.eq(levels(), { contrast - 1, brightness + 5 })
mouse(600, 395)
check.eq(levels(), { contrast, brightness }, "up and to the left: (26 + 2) / 5")
mouse(600, 380)
check.eq(levels(), { contrast, brightness })
key("Esc")
wait(1100)
check.holds(readfile(datadir() .. "/kelvo.ini"), "Brightness=" .. brightness)
mouse(700, 500)
check.eq(levels(), { contrast, brightness }, "ended")

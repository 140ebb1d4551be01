-- The regions and their window left without keeping anything: Escape in the midst of a drag, Cancel of each file dialog, a refused Apply, the window closed
-- with fields that were typed. State, settings files, other files and the regions are as they were.
local check = require "check"
local files = require "files"
local unchanged = require "unchanged"
answer("ok")

drop(files.image(datadir() .. "/plain.img", { width = 80, height = 60 }, 1, function(_, x, y) return 100 * y + x end))
check.eq(state("ViewingFile"), 1)
command(2041)
for _ = 1, 4 do key("+") end
regions { { name = "plate", x1 = 10, y1 = 10, x2 = 30, y2 = 30 }, { name = "spot", shape = "point", x1 = 50, y1 = 40 } }
command(2210)
local zoom, view = state("Xzoom"), state("ViewPosition")
local function at(x, y) return x * zoom + zoom // 2 - view[1], state("PanelHeight") + y * zoom + zoom // 2 - view[2] end
local function move(x, y) mouse(at(x, y)) end
local function down(x, y)
  local px, py = at(x, y)
  mouse(px, py, "left down")
end
local function up(x, y)
  local px, py = at(x, y)
  mouse(px, py, "left up")
end

-- The plate is selected, by a press that moves nothing.
pick("regions", 22103, 0)
down(20, 20)
up(20, 20)
check.eq({ regions()[1].selected, regions()[2].selected }, { true, false })

local function unchanged_by(what, act)
  wait(300)
  local before, undo = unchanged.snapshot(), menu(2050)
  act()
  wait(300)
  check.eq(menu(2050), undo, what)
  unchanged.expect(before, unchanged.snapshot(), {}, { StatusText = "what is under the pointer", LastFileDirectory = "the first file dialog's" }, what)
  check.eq({ dialog(), box(), file() }, {}, what)
end

unchanged_by("moved", function()
  down(20, 20)
  move(40, 35)
  check.eq(regions()[1].x1, 30)
  key("Escape")
  check.eq(regions()[1].x1, 10)
  move(45, 40)  -- the button is down still
  up(45, 40)
end)
unchanged_by("resized", function()
  down(31, 31)  -- its lower right corner
  move(40, 40)
  check.eq({ regions()[1].x1, regions()[1].x2 > 30 }, { 10, true })
  key("Escape")
  up(40, 40)
end)
unchanged_by("another one taken", function()
  down(50, 40)
  move(55, 45)
  check.eq({ regions()[2].selected, regions()[2].x1 }, { true, 55 })
  key("Escape")
  up(55, 45)
end)
for shape, name in ipairs { "rectangle", "ellipse", "line", "point" } do
  unchanged_by("drawn: " .. name, function()
    pick("regions", 22103, shape)
    down(60, 5)
    move(70, 15)
    check.eq({ #regions(), regions()[3].shape }, { 3, name })
    key("Escape")
    check.eq(#regions(), 2)
    up(70, 15)
    pick("regions", 22103, 0)
  end)
end
unchanged_by("loading", function()
  press("regions", 22118)
  cancel()
end)
unchanged_by("saving", function()
  press("regions", 22119)
  cancel()
end)
unchanged_by("the set", function()
  press("regions", 22116)
  cancel()
end)
unchanged_by("a refused Apply", function()
  set("regions", 22106, "spot")
  press("regions", 1)
  check.holds(text("regions", 22120), "two regions named spot")
end)
unchanged_by("typed and closed", function()
  set("regions", 22106, "another")
  set("regions", 22110, "1")
  press("regions", 2)
  command(2210)
end)
unchanged_by("closed in the midst of a drag", function()
  down(20, 20)
  press("regions", 2)
  move(40, 40)
  up(40, 40)
  command(2210)
end)

-- Afterwards a drag is one step, which is taken back.
down(20, 20)
move(25, 20)
up(25, 20)
check.eq(regions()[1].x1, 15)
command(2050)
check.eq(regions()[1].x1, 10)

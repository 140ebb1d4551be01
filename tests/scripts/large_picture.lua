-- A picture larger than the window: bars at its sides, between panel and status line; none where it fits.
local check = require "check"
local files = require "files"
answer("ok")
local width, height = 700, 600
drop(files.image(datadir() .. "/large.img", { width = width, height = height }, 1,
  function(_, x, y) return 7000 + 3 * x + 2 * y end))
command(2004)  -- contrast that shows all of it
while state("Xzoom") < 4 do key("+") end
local lut, top, zoom = state("DisplayLut"), state("PanelHeight"), state("Xzoom")
local function gray(x, y)
  local value = lut[7000 + 3 * x + 2 * y + 1]
  return { value, value, value }
end
local right, bottom = state("ClientWidth") - 1, state("ClientHeight") - state("TextHeight") - 1

check.eq({ screen(0, top) }, gray(0, 0))
check.eq({ screen(401, top + 402) }, gray(100, 100))

-- How many of a row of places along an edge of the window show the picture.
local function places_of_picture(x, y, dx, dy)
  local found = 0
  for i = 0, 9 do
    local column, row = x + i * dx, y + i * dy
    local red, green, blue = screen(column, row)
    local expected = gray(column // zoom, (row - top) // zoom)[1]
    if red == expected and green == expected and blue == expected then found = found + 1 end
  end
  return found
end
check.eq(places_of_picture(right - 40, top + 20, 0, 50), 10, "up to the bar at the right")
check.eq(places_of_picture(20, bottom - 40, 70, 0), 10, "up to the bar below")
local line = { screen(right - 100, bottom + 5) }
check.eq({ screen(right - 4, bottom + 5) }, line, "the status line is whole")
check.eq({ screen(right - 4, 4) }, { screen(right - 30, 4) }, "so is the panel")
assert(places_of_picture(right - 4, top + 20, 0, 50) < 5, "a bar stands at the right")
assert(places_of_picture(20, bottom - 4, 70, 0) < 5, "a bar stands below")

-- Where it fits the bars are gone, and beside it nothing is left of the larger picture.
while state("Xzoom") > 1 do key("-") end
zoom = 1
assert(right > width and bottom > top + height, "the window is large enough")
check.eq({ screen(width - 1, top + height - 1) }, gray(width - 1, height - 1))
local background = { screen(width, top) }
for _, place in ipairs { { width, top + height - 1 }, { right - 4, top + 200 }, { right - 4, bottom - 4 }, { 100, bottom - 4 },
  { width - 1, top + height } } do
  check.eq({ screen(place[1], place[2]) }, background, place[1] .. "," .. place[2])
end

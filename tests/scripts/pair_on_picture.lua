-- The image set-up while it is open: a press on the picture chooses the pair of the list that shows there, at every zoom, pan and turn of the picture; whatever
-- else is done to the main window does nothing.
local check = require "check"
local calibration = require "calibration"
local unchanged = require "unchanged"

local columns, rows = 320, 256
local find, class, list, set_button = 20210, 20211, 1308, 1604
local flip_horizontal, flip_vertical, rotate = 1300, 1302, 1304
local ratio = tonumber(arg[1])

calibration.turn_on()
calibration.two_point(20, 25, 10)
answer("ok")
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })

local function open()
  command(122)
  check.eq(dialog(), "GEOMETRY")
end
local function pair_of(line)
  local row, column = line:match("(%d+), *(%d+)")
  return tonumber(row), tonumber(column)
end

-- Where the main window shows a pixel of the picture: a block of whole device pixels.
local function whole(length) return math.floor(length + 0.5) end
local function place_of(x, y)
  local view, block = state("ViewPosition"), whole(state("Xzoom") * ratio)
  local left, top = (x - state("Xpan")) * block, whole(state("PanelHeight") * ratio) + y * block
  return math.ceil((left + (block - 1) // 2) / ratio) - view[1], math.ceil((top + (block - 1) // 2) / ratio) - view[2]
end
local function press_at(x, y)
  local left, top = place_of(x, y)
  mouse(left, top, "left")
end

-- A pair with no other within 7 pixels, and more than 20 from the edges.
open()
local lines = items(list)
press(2)
local alone, alone_line
local marked = {}
for _, line in ipairs(lines) do
  local row, column = pair_of(line)
  marked[row * columns + column] = true
end
local function is_alone(row, column)
  for r = row - 7, row + 7 do
    for c = column - 7, column + 7 do
      if (r ~= row or c ~= column) and marked[r * columns + c] then return false end
    end
  end
  return row > 60 and row < 160 and column > 100 and column < 160
end
for i, line in ipairs(lines) do
  local row, column = pair_of(line)
  if is_alone(row, column) then alone, alone_line = { row, column }, i - 1 break end
end
local row, column = table.unpack(alone)
local name = row .. "," .. column

-- What is chosen before is another line each time.
local function chosen(x, y, what)
  pick(list, 0)
  set(find, lines[2]:gsub(" ", ""))
  press_at(x, y)
  check.eq({ picked(list), text(find) }, { alone_line, "" }, what)
  assert(text(class):find(name, 1, true) == 1, what .. ": " .. text(class))
end
local function not_chosen(x, y, what)
  pick(list, 0)
  press_at(x, y)
  check.eq({ picked(list), text(class) }, { 0, ("No pair of the list at %d,%d of the picture"):format(y, x) }, what)
end

open()
chosen(column, row, "under the pointer")
screenshot("chosen.png")
chosen(column + 2, row, "two beside it")
chosen(column - 1, row - 1, "one across")
chosen(column + 3, row, "two beside the one that answers for it, on its right")
assert(text(class):find(("(%d,%d answers for it)"):format(row, column + 1), 1, true), text(class))
not_chosen(column - 3, row, "three beside it")
not_chosen(column - 2, row + 1, "more than two away")
set(find, name)
press_at(column, row)
check.eq(text(find), name, "a search that leads there stands")

-- The picture larger, panned, and dragged so that the pair lies in sight.
press(2)
local function drag_into_sight()
  local x, y = place_of(column, row)
  local left, top = state("ClientWidth") // 2, state("ClientHeight") // 2
  mouse(left, top, "middle down")
  mouse(left + (left - x), top + (top - y), "move")
  mouse(left + (left - x), top + (top - y), "middle up")
end
for _, zoom in ipairs { 1, 2, 3, 6 } do
  command(2041)
  for _ = 2, zoom do key("+") end
  check.eq(state("Xzoom"), zoom)
  for _, stroke in ipairs { "-", "Home" } do  -- as it is, then panned
    if stroke ~= "-" then key(stroke) end
    drag_into_sight()
    open()
    local what = ("zoom %d, pan %d"):format(zoom, state("Xpan"))
    chosen(column, row, what)
    not_chosen(column - 3, row, what)
    press(2)
  end
  assert(state("Xpan") > 0)
  key("End")
end
command(2041)

-- Turned: what shows is counted from the other side.
for orientation = 1, 3 do
  local horizontal, vertical = orientation & 1 ~= 0, orientation & 2 ~= 0
  open()
  check(flip_horizontal, horizontal)
  check(flip_vertical, vertical)
  press(set_button)
  frames(2)
  local x, y = column, row
  if horizontal then x = columns - 1 - x end
  if vertical then y = rows - 1 - y end
  chosen(x, y, "turned " .. orientation)
  press(2)
  check.eq(state("MirrorVert"), 0, "Cancel turns it back")
end

-- Beside the picture there is nothing to choose.
open()
pick(list, 0)
mouse(state("ClientWidth") - 30, state("PanelHeight") + 30, "left")
check.eq({ picked(list), text(class) }, { 0, "There is no picture there" })

-- All else stays blocked: it changes nothing, whatever it would do without the dialog.
local before = unchanged.snapshot()
local x, y = place_of(column, row)
for _, deed in ipairs { "wheel up", "wheel down", "right", "middle", "middle down", "move", "middle up" } do mouse(x, y, deed) end
for _, at in ipairs { 30, 90, 150, 300, 500 } do mouse(at, state("PanelHeight") // 2, "left") end  -- buttons of the panel
for _, stroke in ipairs { "F9", "F3", "F10", "+", "-", "Ctrl+Z", "Alt+F" } do key(stroke) end
check.eq((pcall(drop, datadir() .. "/sample.seq")), false, "nothing takes what is dropped")
check.eq({ dialog(), box() }, { "GEOMETRY" })
unchanged.expect(before, unchanged.snapshot())
press(2)
check.eq({ dialog(), box() }, {})

-- And acts again afterwards.
local zoom = state("Xzoom")
mouse(x, y, "wheel up")
check.eq(state("Xzoom"), zoom + 1)

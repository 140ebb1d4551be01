-- The image set-up under the real pointer: a click on the picture chooses the pair of the list there; menu, panel, wheel, keys and the close button of the main
-- window stay blocked, and the keyboard stays with the dialog.
local check = require "check"
local hands = require "hands"
local list, class, replace = 1308, 20211, 1306

local function in_front(name)
  hands.untilTrue(function() return dialog() == name end, name)
  wait(500)  -- until the window manager has put it where it stays
end

in_front("CLOCK_ON")
hands.click(1070)
in_front("QVF1058")
hands.click(1)
in_front("CALIB")
press(1213)
set(1216, "4")
hands.click(1)
in_front("CAL_COLD")
sim.source("low", 20)
hands.click(1)
in_front("CAL_HOT")
sim.source("high", 25)
hands.click(1)
for _ = 1, 2 do  -- the bad pixels, the result
  hands.untilTrue(function() return box() end, "a box")
  wait(300)
  hands.key("Return")
  wait(300)
end
hands.untilTrue(function() return not box() and not dialog() end, "the main window")
check.eq(state("CalType"), 2)

hands.key("ctrl+i")
in_front("GEOMETRY")
local lines = items(list)
local window = place("window", "Kelvo")
local dialog_place = place("window", "Image setup")
local corner_x, corner_y = window.x, window.y + window.height - state("ClientHeight")
-- The last line whose place lies in sight, beside the dialog.
local chosen, x, y
for i, line in ipairs(lines) do
  local row, column = line:match("(%d+), *(%d+)")
  local view, zoom = state("ViewPosition"), state("Xzoom")
  local at_x = column * zoom - view[1] + zoom // 2
  local at_y = row * zoom - view[2] + state("PanelHeight") + zoom // 2
  if at_x > 50 and at_y > state("PanelHeight") + 30 and at_y < state("ClientHeight") - 80 and corner_x + at_x < dialog_place.x - 30 then
    chosen, x, y = i - 1, at_x, at_y
  end
end
hands.clickAt(corner_x + x, corner_y + y)
hands.untilTrue(function() return picked(list) == chosen end, "the pair is chosen")
assert(text(class):find(lines[chosen + 1]:gsub(" ", ""), 1, true) == 1, text(class))
check.eq(dialog(), "GEOMETRY")
screenshot(datadir() .. "/../chosen.png")

-- The keyboard is the dialog's: the key of "Replace bad pixels" ticks.
local ticked = checked(replace)
hands.key("alt+r")
hands.untilTrue(function() return checked(replace) ~= ticked end, "a key of the dialog")
hands.key("alt+r")
hands.untilTrue(function() return checked(replace) == ticked end, "and back")

-- Nothing of the main window acts.
local names = { "LiveVideo", "Xzoom", "Yzoom", "ViewPosition", "Contrast", "Brightness", "SubstBadPixels", "ImageCursorOn", "TrackballMode" }
local function values()
  local all = {}
  for _, name in ipairs(names) do all[name] = state(name) end
  return all
end
local before = values()
hands.clickAt(corner_x + x, corner_y + y, 4)
hands.clickAt(corner_x + x, corner_y + y, 5)
hands.clickAt(corner_x + x, corner_y + y, 3)
hands.drag(corner_x + x, corner_y + y, corner_x + x - 60, corner_y + y + 20, 2)
for _, at in ipairs { 30, 90, 150, 210 } do hands.clickAt(corner_x + at, corner_y + state("PanelHeight") // 2) wait(50) end
hands.click("menu", "File")
wait(300)
check.eq(place("item", "Exit"), nil, "the menu stays closed")
hands.key("F9", "F10")
local close_x, close_y = window.x + window.width - 10, window.y - 10  -- the close button that the window manager draws
hands.clickAt(close_x, close_y)
wait(500)
check.eq({ dialog(), box() }, { "GEOMETRY" })
check.eq(values(), before)
check.eq(hands.stacking()[#hands.stacking()], "Image setup")

hands.key("Escape")
hands.untilTrue(function() return not dialog() end, "Cancel")
hands.clickAt(corner_x + x, corner_y + y, 4)
hands.untilTrue(function() return state("Xzoom") == before.Xzoom + 1 end, "the wheel acts again")
-- And so does the close button: nothing can be waited for any more.
hands.clickAt(close_x, close_y)
local open = true
for _ = 1, 1500 do
  open = open and pcall(wait, 20)
end
check.eq(open, false, "the program has ended")

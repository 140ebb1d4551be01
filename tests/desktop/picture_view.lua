-- The picture under the real pointer: Fit by the menu, the wheel about the pointer, a drag with the middle button, Escape out of the
-- trackball mode.
local check = require "check"
local hands = require "hands"

hands.untilTrue(function() return dialog() == "CLOCK_ON" end, "the question how to turn the camera on")
press(2)
hands.untilTrue(function() return not dialog() end, "Cancel of it")
drop(datadir() .. "/sample.seq")
local top = state("PanelHeight")
local window = hands.untilTrue(function() return place("window", "Kelvo - ") end, "the main window")
local client_height = state("ClientHeight")
-- The client area's corner on the screen: it ends where the window does.
local corner_x, corner_y = window.x, window.y + window.height - client_height

hands.menu("View", "Fit")
hands.untilTrue(function() return state("ViewPosition")[1] < 0 end, "in the middle")
local width, height = state("ImageHeader.ImageWidth") * state("Xzoom"), state("ImageHeader.ImageHeight") * state("Yzoom")
check.near(-state("ViewPosition")[1], (state("ClientWidth") - width) / 2, 1)
screenshot(datadir() .. "/../fit.png")

-- The place of a pixel in the client area, and back.
local function pixel_at(x, y)
  local view = state("ViewPosition")
  return (x + view[1]) // state("Xzoom"), (y - top + view[2]) // state("Yzoom")
end
local x, y = state("ClientWidth") // 2 + 77, top + height // 3
local before = { pixel_at(x, y) }
local zoom = state("Xzoom")
hands.clickAt(corner_x + x, corner_y + y, 4)
hands.untilTrue(function() return state("Xzoom") == zoom + 1 end, "the wheel zooms")
check.eq({ pixel_at(x, y) }, before, "about the pointer")
check.eq({ state("Xpan"), state("Ypan") }, { 0, 0 })

local view = state("ViewPosition")
hands.drag(corner_x + x, corner_y + y, corner_x + x - 120, corner_y + y + 40, 2)
hands.untilTrue(function() return state("ViewPosition")[1] == view[1] + 120 end, "the picture follows")
check.eq(state("ViewPosition")[2], view[2] - 40)
hands.moveTo(corner_x + x, corner_y + y)
wait(100)
check.eq(state("ViewPosition")[1], view[1] + 120, "and lets go")
screenshot(datadir() .. "/../dragged.png")

local status_before = status()
hands.key("F10")
hands.untilTrue(function() return state("TrackballMode") == 1 end, "the trackball mode")
check.holds(status(), "Esc, F10 or the right button ends it")
hands.key("Escape")
hands.untilTrue(function() return state("TrackballMode") == 0 end, "Escape ends it")
check.eq(status(), status_before)

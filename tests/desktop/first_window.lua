-- The window stands, the menu opens under the pointer, a dialog is worked with pointer and keys, and the window manager knows both windows.
local check = require "check"
local hands = require "hands"

hands.untilTrue(function() return dialog() == "CLOCK_ON" end, "the question how to turn the camera on")
hands.click(2)
hands.untilTrue(function() return not dialog() end, "Cancel of it")

hands.menu("Help", "About")
hands.untilTrue(function() return dialog() == "ABOUT" end, "the About box by its menu item")
local titles = hands.stacking()
check.holds(titles[1], "Kelvo - ", "the main window lies below")
assert(#titles == 2, #titles .. " windows")
hands.key("Return")
hands.untilTrue(function() return not dialog() end, "Return closes it")
hands.key("ctrl+d")
hands.untilTrue(function() return dialog() == "DISPLAY" end, "the key of Display setup")
screenshot(datadir() .. "/../display.png")
hands.key("Escape")
hands.untilTrue(function() return not dialog() end, "Escape leaves it")

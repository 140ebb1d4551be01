-- The help works by the keyboard alone, beside the window; the panel is reached by Tab; a grey item stays shut and tells why.
local check = require "check"
local hands = require "hands"
local video = require "video"

hands.untilTrue(function() return dialog() == "CLOCK_ON" end, "the question how to turn the camera on")
hands.untilTrue(function() return #hands.stacking() == 2 end, "its window")
hands.key("Escape")
hands.untilTrue(function() return not dialog() end, "Escape leaves it")

-- Search: the focus is in its field, Return opens the first page found, Escape gives the window back.
hands.key("F1")
hands.untilTrue(function() return help() == 768 end, "the search page by F1")
hands.untilTrue(function() return hands.stacking()[2] == "Search - Kelvo help" end, "a window of its own, in front")
hands.type("exit")
hands.key("Return")
hands.untilTrue(function() return help() == 268 end, "the first page found")
screenshot(datadir() .. "/../help.png")
hands.key("Escape")
hands.untilTrue(function() return not help() end, "Escape closes it")
hands.key("F1")
hands.untilTrue(function() return help() == 768 end, "the search page again")
hands.key("ctrl+w")
hands.untilTrue(function() return not help() end, "Ctrl+W closes it")
check.eq(#hands.stacking(), 1)

-- The panel: as many stops as there are buttons, the list and the box.
hands.key(table.unpack((function()
  local tabs = {}
  for stop = 1, 18 do tabs[stop] = "Tab" end
  return tabs
end)()))
hands.key("space")
hands.untilTrue(function() return state("DisplayEnabled") == 0 end, "Space on Display")
check.eq(status(), "Display off")
hands.key("space")
hands.untilTrue(function() return state("DisplayEnabled") == 1 end, "Space on it again")

-- While a recording runs the item tells why it is grey while the pointer rests on it, and a click does nothing.
command(169)
video.turn_on()
frames(2)
record{ directory = datadir(), name = "run", wait = false }
hands.untilTrue(function() return not menu(106).enabled end, "the recording has the board")
hands.click("menu", "File")
hands.moveTo(hands.middle("item", "Save image..."))
wait(1500)
screenshot(datadir() .. "/../grey.png")
hands.click("item", "Save image...")
wait(200)
check.eq({ box(), dialog() }, {})
hands.key("Escape", "Escape")
record("stop")

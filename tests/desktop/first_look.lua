-- README's first look with the pointer alone (with arg[1] "typed" the temperatures are typed, which reads degrees afterwards): turned on, set up, calibrated against the two sources of the bench, which
-- stays above the main window and usable beside each dialog, to the report and the moving scene.
local check = require "check"
local hands = require "hands"

local function in_front(name)
  hands.untilTrue(function() return dialog() == name end, name)
  wait(500)  -- until the window manager has put it where it stays
end
local function box_in_front(caption)
  return hands.untilTrue(function() local front = box() return front and front.caption == caption and front end, caption)
end
-- Above every window that isn't a dialog in front of it: the main one lies below.
local function bench_lies_above()
  local main, bench
  for place_from_below, title in ipairs(hands.stacking()) do
    if title:find("^Kelvo") then main = place_from_below end
    if title == "Simulated bench" then bench = place_from_below end
  end
  assert(main and bench and bench > main, check.show(hands.stacking()))
end
local source = { low = 1001, high = 1002, scene = 1003 }
-- A picture of each step, which tools/first_look.sh takes into the pages.
local steps = 0
local function picture(name)
  wait(300)
  steps = steps + 1
  screenshot(("%s/../%d-%s.png"):format(datadir(), steps, name))
end
-- Puts a source in front of the camera by the bench, waits until the dialog says that it is steady.
local function answer_source(name, edit, degrees)
  hands.tick("BENCH", source[name])
  wait(1500)  -- the dialog looks four times a second: what it says is of this source then
  hands.untilTrue(function() return text(20404) == "steady" end, "a steady source")
  local mean = tonumber(text(20401):match("[%d.]+"))
  if arg[1] == "typed" then
    hands.click(edit)
    hands.key("ctrl+a")
    hands.type(tostring(degrees))
  end
  picture(name .. "-source")
  hands.click(1)
  return mean
end

in_front("CLOCK_ON")
hands.untilTrue(function() return place("BENCH", 1001) end, "the bench beside it")
bench_lies_above()
picture "turn-on"
hands.click(1070)
in_front("QVF1058")
picture "video-setup"
hands.click(1)
in_front("CALIB")
picture "calibration"
hands.click(1)

-- The dialog's button opens the bench again.
in_front("CAL_COLD")
hands.click("BENCH", 2)
hands.untilTrue(function() return not place("BENCH", 1001) end, "Close of the bench")
hands.click(20405)
hands.untilTrue(function() return place("BENCH", 1001) end, "the bench by the dialog's button")
bench_lies_above()
local low = answer_source("low", 1224, 20)
in_front("CAL_HOT")
bench_lies_above()
local high = answer_source("high", 1226, 25)
assert(high > low + 1000, low .. " " .. high)

box_in_front("Bad pixel count")
hands.click("button", "OK")
box_in_front("Kelvo Calibration Statistics")
hands.click("button", "Report...")
in_front("CALREPORT")
picture "report"
hands.click(1)
hands.untilTrue(function() return not dialog() and not box() end, "live video")

-- The scene is uneven: counts along a row differ by more than the noise of an even source.
local function spread()
  local least, most = math.huge, -math.huge
  for column = 10, 310, 10 do
    local count = pixel(column, 128)
    least, most = math.min(least, count), math.max(most, count)
  end
  return most - least
end
hands.tick("BENCH", source.scene)
hands.untilTrue(function() return spread() > 300 end, "the scene of the bench")
hands.menu("View", "Fit contrast")
picture "scene"
hands.menu("View", "Frame account")
hands.untilTrue(function() return place("ACCOUNT", 2) end, "the frame account's window")
-- A click on the picture brings the main window to the front of other programs; what belongs to it stays above.
local window = place("window", "Kelvo")
hands.clickAt(window.x + 200, window.y + 300)
hands.untilTrue(function() local titles = hands.stacking() return titles[1]:find("^Kelvo") end, "the main window below its own")
bench_lies_above()
check.eq(hands.stacking()[#hands.stacking()]:find("^Kelvo"), nil)
hands.click("ACCOUNT", 2)
hands.untilTrue(function() return not place("ACCOUNT", 2) end, "Close of the frame account")
hands.click("BENCH", 2)
hands.untilTrue(function() return not place("BENCH", 2) end, "Close of the bench")

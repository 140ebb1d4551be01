-- What stands above the classic viewer: recent files, playing, going to a frame, fitting the contrast, copying.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()

command(2000)
check.answer_box("There is no sequence on view.", "ok")
command(2003)
check.answer_box("There is no picture to copy.", "ok")
command(2004)
check.answer_box("There is no stored frame on view.", "ok")

local sequence = files.image(dir .. "/run1.seq", { width = 8, height = 8, rate = 20 }, 5,
  function(frame, x, y) return 5000 + 100 * frame + 10 * y + x end)
drop(sequence)
check.eq(state("CurrentFrame"), 0)
check.eq(menu(2100).text, "&1 run1.seq")

-- 20 Hz: five frames in a quarter of a second, around and around.
command(2001)
wait(125)
check.eq(state("CurrentFrame"), 2)
wait(150)
check.eq(state("CurrentFrame"), 0)
command(2002)
wait(500)
check.eq(state("CurrentFrame"), 0)

command(2000)
check.eq(dialog(), "GOTOFRAME")
set(1001, "9")
press(1)
check.answer_box("Please enter a frame number from 0 to 4.", "ok")
set(1001, "3")
press(1)
check.eq(state("CurrentFrame"), 3)
check.eq(pixel(7, 7), 5377)

command(2004)
assert(state("DisplayLut")[5300 + 1] < 40, "dark end")
assert(state("DisplayLut")[5377 + 1] > 215, "bright end")
command(2003)

local image = files.image(dir .. "/two.img", { width = 4, height = 4, high = 4095 }, 1, function() return 1000 end)
drop(image)
check.eq(menu(2100).text, "&1 two.img")
check.eq(menu(2101).text, "&2 run1.seq")
command(2004)
assert(box(), "this range doesn't allow a fit, and it is said why")
answer("ok")
command(2101)
check.eq(title(), "Kelvo - run1")
check.eq(menu(2100).text, "&1 run1.seq")

-- Dialogs that can't be shown are told.
for id, name in pairs { [2000] = "GOTOFRAME", [116] = "FRAMES" } do
  sim.fault("load dialog " .. name, true)
  command(id)
  check.answer_box("Unable to display dialog", "ok", "System Error")
  check.eq(file(), nil)
end

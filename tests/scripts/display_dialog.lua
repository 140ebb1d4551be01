-- The display dialog: acts at once, Ok keeps and writes, Cancel takes back, Reset returns to the values of the start.
local set_check = check  -- the call of scripts, before the name is taken by the helpers
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()
drop(files.image(dir .. "/a.img", { width = 30, height = 20 }, 1, function(_, x, y) return 8000 + 20 * x + y end))
local ini = dir .. "/kelvo.ini"
local contrast, brightness = state("Contrast"), state("Brightness")

key("Ctrl+D")
check.eq(dialog(), "DISPLAY")
check.eq(status(), " Display values affect the viewed image but not raw data")
check.eq(text(1244), tostring(contrast))
check.eq(text(1240), tostring(brightness))
check.eq(checked(1230), true)
for _, id in ipairs { 1239, 1250, 1252, 1254 } do check.eq(enabled(id), false, "control " .. id) end

local top = state("PanelHeight")
local before = { screen(5, top + 5) }
scroll(1242, brightness - 100)
check.eq(text(1240), tostring(brightness - 100))
check.eq(state("Brightness"), brightness - 100)
assert(screen(5, top + 5) ~= before[1], "a scroll shows on the stored frame at once")
set_check(1231, true)
check.eq(menu(144).checked, true)
press(2)
check.eq(state("Brightness"), brightness)
check.eq(menu(143).checked, true)
check.eq({ screen(5, top + 5) }, before)

command(120)
scroll(1246, 40)
set_check(1232, true)
press(1)
check.eq(state("Contrast"), 40)
check.eq(state("ImageColor"), 1232)
check.holds(status(), "Viewing Image")
wait(1500)
check.holds(readfile(ini), "Contrast=40")
check.holds(readfile(ini), "ImageColor=1232")

command(120)
press(1248)
check.eq(text(1244), tostring(contrast))
check.eq(text(1240), tostring(brightness))
check.eq(checked(1230), true)
press(1)
check.eq(state("Contrast"), contrast)
check.eq(state("ImageColor"), 1230)

sim.fault("load dialog DISPLAY", true)
command(120)
check.answer_box("Unable to display dialog", "ok", "System Error")

-- User-written functions on the camera's picture, declared anew with another camera, and held while something records.
local check = require "check"
local video = require "video"
local dir = datadir()
video.turn_on()
frames(3)

command(900)
check.holds(box().text, "Mean of the picture:\n")
local shown = tonumber(box().text:match("([%d.]+) counts"))
answer("ok")
key("F2")
command(900)
local sum = 0
for y = 0, 255 do
  for x = 0, 319 do sum = sum + pixel(x, y) end
end
check.answer_box(("Mean of the picture:\n%.3f counts"):format(sum / 81920), "ok")
check.near(shown, sum / 81920, 5, "live")
key("F2")

record{ directory = dir, name = "run", wait = false }
for id = 900, 903 do
  check.eq(menu(id).enabled, false)
  check.fails(function() command(id) end, "disabled")
end
record("stop")
for id = 900, 903 do check.eq(menu(id).enabled, true) end

-- Another camera.
command(123)
check.eq(dialog(), "INITIAL")
pick(1598, 2)
press(1)
check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes")
check.eq({ dialog(), state("ActiveCamera"), state("UserMenuCount"), state("UserParmCount") }, { "CLOCK_ON", 3, 4, 4 })
press(2)
check.eq(menu(900).text, "&Mean of the picture")
command(901)
check.eq(dialog(), "USERDLG")
press(2)

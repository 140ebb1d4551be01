-- Exit asks first; No goes on, Yes saves what the display shows and ends.
local check = require "check"
answer("ok")

command(119)
check.eq(status(), " This will end your Kelvo session (the IR camera is now off)")
check.eq(box().text, "\nDo you wish to exit?")
check.eq(box().caption, "QVF Vantir")
check.eq(box().buttons, { "yes", "no" })
check.seen("beep", {})
answer("no")
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")

press("panel", 315, "up")  -- contrast
local contrast = state("Contrast")
local ini = datadir() .. "/kelvo.ini"
command(119)
answer("yes")
check.holds(readfile(ini), "Contrast=" .. contrast)
check.holds(readfile(ini), "Brightness=" .. state("Brightness"))
local camera = readfile(datadir() .. "/camera.ini")
check.holds(camera, "Xzoom=3")

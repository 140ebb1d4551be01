-- The start after theme_kept.lua. (Where the command line still names the dark theme, the file has the light one.)
local check = require "check"
answer("ok")
check.holds(readfile(datadir() .. "/window.ini"), "Theme=light")
check.holds(readfile(datadir() .. "/window.ini"), "Maximised=1")
check.eq(state("ClientWidth"), 1280)
check.eq(menu(2045).checked, not menu(2046).checked)
check.eq(({ screen(state("ClientWidth") - 20, 4) })[1] > 200, menu(2045).checked)

-- A theme that the command line names holds for one run and isn't kept.
local check = require "check"
answer("ok")
assert(({ screen(state("ClientWidth") - 20, 4) })[1] < 100, "dark")
check.eq({ menu(2044).checked, menu(2045).checked, menu(2046).checked }, { false, false, true })
check.holds(readfile(datadir() .. "/window.ini"), "Theme=light")

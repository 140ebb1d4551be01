-- The start after keep_fitted.lua: still switched on, and contrast and brightness are those that were chosen.
local check = require "check"
while box() do answer("ok") end
if dialog() then press(2) end
local contrast, brightness = readfile(datadir() .. "/chosen.txt"):match("(%d+) (%d+)")
check.eq({ state("Contrast"), state("Brightness") }, { tonumber(contrast), tonumber(brightness) })
check.eq(menu(2043).checked, true)
wait(600)
check.eq(state("Contrast"), tonumber(contrast), "nothing on view, nothing to fit")

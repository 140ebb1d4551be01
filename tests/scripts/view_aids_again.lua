-- After view_aids: all three are on again, and each goes off.
local check = require "check"
while box() do answer("ok") end
if dialog() then press(2) end

for _, id in ipairs { 2006, 2007, 2008 } do check.eq(menu(id).checked, true, "item " .. id) end
check.seen("dialog", { name = "ACCOUNT" })
check.eq(readfile(datadir() .. "/kelvo.ini"):find("[View]", 1, true), nil, "the operator's settings, which sets carry, have none of them")
check.holds(readfile(datadir() .. "/window.ini"), "ColorScale=1")
local right, top = state("ClientWidth") - 1, state("PanelHeight")
local scale = { screen(right - 1, top + 300) }
drop(datadir() .. "/ends.img")
local zoom = state("Xzoom")
local marked = { screen(3 * zoom + 1, top + 1) }
for _, id in ipairs { 2006, 2007, 2008 } do
  command(id)
  check.eq(menu(id).checked, false, "item " .. id)
end
assert(check.show { screen(right - 1, top + 300) } ~= check.show(scale), "the scale is gone")
assert(check.show { screen(3 * zoom + 1, top + 1) } ~= check.show(marked), "the marks are gone")

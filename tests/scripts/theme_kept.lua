-- The theme is chosen in the View menu, at once.
local check = require "check"
answer("ok")
local function panel_color() return ({ screen(state("ClientWidth") - 20, 4) })[1] end
local function checks() return { menu(2044).checked, menu(2045).checked, menu(2046).checked } end
local start = panel_color()
command(2046)
assert(panel_color() < 100, "dark")
check.eq(checks(), { false, false, true })
screenshot("dark.png")
command(2044)
check.eq(checks(), { true, false, false })
check.eq(panel_color(), start, "as it was found")
command(2046)
command(2045)
assert(panel_color() > 200, "light")
check.eq(checks(), { false, true, false })
check.eq(readfile(datadir() .. "/kelvo.ini"):find("Theme", 1, true), nil)
check.eq(state("ClientWidth"), 1280, "the first start is maximised")

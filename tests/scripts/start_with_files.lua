-- Several files of a start: the first is shown, the others that are there stand behind it in the recent files; their
-- endings count in any case, and beside --view a name needs none.
local check = require "check"
local files = require "files"
local made = datadir() .. "/.."
for i, name in ipairs { "one.IMG", "two.dat", "three.Sdv" } do
  files.image(made .. "/" .. name, { width = 4, height = 4 }, 1, function(_, x, y) return 4000 * i + 10 * y + x end)
end
answer("ok")  -- no camera
wait(1)
check.eq({ title(), pixel(2, 1) }, { "Kelvo - one", 4012 })
check.eq({ menu(2100).text, menu(2101).text, menu(2102).text }, { "&1 one.IMG", "&2 two.dat", "&3 three.Sdv" })
check.eq(menu(2103), nil, "what isn't there isn't offered")

-- A drop of several does the same.
drop(made .. "/three.Sdv", made .. "/two.dat")
check.eq({ title(), menu(2100).text, menu(2101).text }, { "Kelvo - three", "&1 three.Sdv", "&2 two.dat" })

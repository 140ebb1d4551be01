-- After a new start the files of the last one stand in the menu, and open.
local check = require "check"
answer("ok")
local expected = { "n3", "n12", "n11", "n10", "n9", "n8", "n7", "n6", "n5", "n4" }
for place, name in ipairs(expected) do
  local digit = place < 10 and "&" .. place or "1&0"
  check.eq(menu(2099 + place).text, digit .. " " .. name .. ".img")
end
check.eq(menu(2110), nil)
command(2101)
check.eq(title(), "Kelvo - n12")
check.eq(pixel(0, 0), 12)

-- One that is gone is told, and the picture stays.
assert(os.remove(datadir() .. "/n4.img"))
command(2109)
assert(box(), "the missing file is told")
check.holds(box().text, "n4.img")
answer("ok")
check.eq(title(), "Kelvo - n12")

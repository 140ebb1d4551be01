-- Ten files are remembered, the newest first; one that is opened again moves to the front.
local check = require "check"
local files = require "files"
answer("ok")
for number = 1, 12 do
  drop(files.image(datadir() .. "/n" .. number .. ".img", { width = 4, height = 4 }, 1, function() return number end))
end
check.eq(menu(2100).text, "&1 n12.img")
check.eq(menu(2108).text, "&9 n4.img")
check.eq(menu(2109).text, "1&0 n3.img")
check.eq(menu(2110), nil)
command(2109)
check.eq(title(), "Kelvo - n3")
check.eq(menu(2100).text, "&1 n3.img")
check.eq(menu(2109).text, "1&0 n4.img")

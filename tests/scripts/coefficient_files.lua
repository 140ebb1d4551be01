-- Coefficient files from the menu: statistics, and the message that follows the picture.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()

local offsets = {}
for i = 0, 320 * 256 - 1 do offsets[#offsets + 1] = string.pack("<i2", i % 500) end
files.write(dir .. "/c.off", table.concat(offsets))
files.write(dir .. "/c.cal", "[Setup]\r\nActiveCamera=2\r\n")

command(135)
check.eq(file().title, "View statistics of selected file")
check.eq(status(), "Select a calibration statistics file to view")
choose(dir .. "/c.off")
-- The list is then read as an image file: its second word is no width, its fourth no sample size.
check.eq(box().text, "Invalid data sample size: 3 bytes per sample")
answer("ok")
check.eq(title(), "Kelvo - c")
check.eq(pixel(100, 1), 420)
check.eq(items("panel", 1256), { "Offset" })

command(135)
cancel()
check.eq(box(), nil)

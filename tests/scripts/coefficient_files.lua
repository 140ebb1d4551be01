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

-- A set of keys, and a list of bad detectors: nothing comes on view; a line that names none is told.
local shown = { title(), pixel(100, 1) }
files.write(dir .. "/c.bad", "row,col\r\n1,2\r\n")
for name, told in pairs { ["c.cal"] = "", ["c.bad"] = 'Line #1 ignored,"row,col"' } do
  command(135)
  choose(dir .. "/" .. name)
  check.eq(box() and box().text or "", told, name)
  if box() then answer("ok") end
  check.eq({ box(), dialog(), title(), pixel(100, 1) }, { nil, nil, shown[1], shown[2] }, name)
end

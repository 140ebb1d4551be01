-- A stored frame on view is exported as it is seen, in the unit that its own sources give; without a picture nothing is.
local check = require "check"
local files = require "files"
local dir = datadir()
if dialog() == "CLOCK_ON" then press(2) end
while box() do answer("ok") end
check.fails(function() export { out = dir .. "/none.npy" } end, "export: There is no picture on view.")

local path = files.image(dir .. "/warm.seq", { width = 6, height = 4, cold = 3000, cold_c = 20, hot = 9000, hot_c = 25, rate = 50 }, 3,
  function(frame, x, y) return 1000 * (frame + 1) * (x + 1) + y end)
drop(path)
command(114)
check.eq({ state("CurrentFrame"), pixel(5, 3) }, { 1, 12003 })
check.eq(export { out = dir .. "/seen.csv", as = "celsius" }.unit, "°C")
local text, row = readfile(dir .. "/seen.csv"), 0
for line in text:gmatch("[^\n]+") do
  if line:sub(1, 1) ~= "#" then
    local column = 0
    for value in line:gmatch("[^,]+") do
      local single = string.unpack("<f", string.pack("<f", 5 * (pixel(column, row) - 3000) / 6000 + 20))
      check.eq(string.unpack("<f", string.pack("<f", tonumber(value))), single)
      column = column + 1
    end
    check.eq(column, 6)
    row = row + 1
  end
end
check.eq(row, 4)
check.holds(text, "# source: " .. path)
check.holds(text, "# frame: 1\n# seconds: 0.02\n")
check.holds(text, "# scale: 3000 counts are 20 °C\n# scale: 9000 counts are 25 °C\n")
check.eq({ state("CurrentFrame"), state("ViewingSequence") }, { 1, 1 })

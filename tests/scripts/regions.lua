-- Regions by window, keys, mouse and script: what they measure is worked out from pixel() alone.
local tick = check
local check = require "check"
local pixel_mouse = require "pixel_mouse"

local kRegions = 2210
local kTable, kDraw, kAdd, kRemove, kName, kEmissivity, kReflected = 22101, 22103, 22104, 22105, 22106, 22107, 22108
local kX1, kY1, kX2, kY2, kShow, kSave, kLoad, kMessage = 22110, 22111, 22112, 22113, 22114, 22119, 22118, 22120

answer("ok")

-- A plain image of 40 x 30 with a calibration from 1000 counts at 20 degrees to 3000 at 40: 100 counts a degree.
local columns, rows = 40, 30
local function image()
  local head = string.pack("<I2i2i2i2I2I2", 0xFFFF, columns, rows, 2, 0xFFFF, 0xFFFF) .. string.pack("<i2i2i2i2i2i2", 26, 1, 2, 3, 4, 5)
  head = head .. string.pack("<i2fi2ff", 1000, 20.0, 3000, 40.0, 1.0) .. string.pack("<i2I4i2i2i2i2i2ff", 8, 1, 0, 0, rows - 1, columns - 1, 1, 100.0, 1.0)
  head = head .. string.rep("\0", 48) .. string.pack("<i2i2", 0, 16383) .. string.rep("\0", 8) .. string.pack("<i2", 1)
  head = head .. string.rep("\0", 512 - #head)
  local counts = {}
  for y = 0, rows - 1 do
    for x = 0, columns - 1 do counts[#counts + 1] = string.pack("<i2", 900 + 37 * x + 53 * y + (x * y) % 7) end
  end
  return head .. table.concat(counts)
end
local path = datadir() .. "/plain.img"
local function put_file(name, bytes)
  local file = assert(io.open(name, "wb"))
  file:write(bytes)
  file:close()
end
put_file(path, image())
command(107)
choose(path)
check.eq(state("ViewingFile"), 1)

local function measured(left, top, right, bottom)
  local n, sum, squares, outside = 0, 0, 0, 0
  local least, most
  for y = top, bottom do
    for x = left, right do
      local c = pixel(x, y)
      n, sum, squares = n + 1, sum + c, squares + c * c
      if c < 1000 or c > 3000 then outside = outside + 1 end
      if not least or c < least[1] then least = { c, x, y } end
      if not most or c > most[1] then most = { c, x, y } end
    end
  end
  return { n = n, mean = sum / n, deviation = n > 1 and math.sqrt((n * squares - sum * sum) / (n * (n - 1))) or 0, least = least, most = most,
           outside = outside }
end

local function agrees(stats, expected)
  check.eq({ stats.pixels, stats.min, stats.min_x, stats.min_y, stats.max, stats.max_x, stats.max_y, stats.outside },
           { expected.n, expected.least[1], expected.least[2], expected.least[3], expected.most[1], expected.most[2], expected.most[3], expected.outside })
  check.near(stats.mean, expected.mean, 1e-9)
  check.near(stats.deviation, expected.deviation, 1e-9)
end

-- By script: set, asked for, measured.
check.eq(regions(), {})
regions { { name = "plate", shape = "rectangle", x1 = 3, y1 = 2, x2 = 20, y2 = 12 }, { shape = "point", x1 = 5, y1 = 6, x2 = 5, y2 = 6 } }
local listed = regions()
check.eq({ #listed, listed[1].name, listed[1].shape, listed[1].x2, listed[2].name, listed[2].shape }, { 2, "plate", "rectangle", 20, "R2", "point" })
agrees(stats "plate", measured(3, 2, 20, 12))
agrees(stats { shape = "rectangle", x1 = 0, y1 = 0, x2 = 39, y2 = 29 }, measured(0, 0, 39, 29))
agrees(stats "R2", measured(5, 6, 5, 6))
check.eq(stats("plate").saturated, nil, "a corrected file doesn't know")
check.fails(function() stats "none" end, "there is no region \"none\"")
check.fails(function() stats { shape = "circle" } end, "\"shape\" makes no sense")
check.fails(function() stats { shape = "line", colour = 3 } end, "there is no \"colour\"")
check.fails(function() regions { { name = "a" }, { name = "a" } } end, "two regions named a")
check.fails(function() regions { { emissivity = 2 } } end, "An emissivity lies between 0.001 and 1.")
check.eq(regions(), listed)

-- In degrees, and with an emissivity: (c - 0.2 x C(30)) / 0.8, with C(30) = 2000.
local unit = state("DisplayUnit")
pick("panel", 1256, 2)
check.eq(state("DisplayUnit"), 2)
local plate = stats "plate"
check.near(plate.unit_mean, 20 + (plate.mean - 1000) / 100, 1e-9)
check.near(plate.unit_deviation, plate.deviation / 100, 1e-12)
local gray = stats { shape = "rectangle", x1 = 3, y1 = 2, x2 = 20, y2 = 12, emissivity = 0.8, reflected = 30 }
check.eq(gray.mean, plate.mean)
check.near(gray.unit_mean, 20 + ((plate.mean - 0.2 * 2000) / 0.8 - 1000) / 100, 1e-9)
check.near(gray.unit_deviation, plate.deviation / 100 / 0.8, 1e-12)
check.eq({ plate.emissivity_applies, gray.emissivity_applies, plate.unit }, { false, true, "°C" })

-- The window: a line a region, with the same figures.
local function get(id) return text("regions", id) end
local function put(id, value) set("regions", id, value) end
local function push(id) press("regions", id) end
key("Ctrl+Shift+R")
check.seen("dialog", { name = "REGIONS" })
local function lines() return items("regions", kTable) end
check.eq(#lines(), 2)
check.holds(lines()[1], "plate")
check.holds(lines()[1], "3,2-20,12")
check.holds(lines()[1], string.format("%.4f", plate.unit_mean))
check.eq(enabled("regions", 1), false)
pick("regions", kTable, 0)
check.eq({ get(kName), get(kX1), get(kY2), get(kEmissivity), get(kReflected) }, { "plate", "3", "12", "1", "" })

-- What makes no sense is told in the window, and changes nothing.
local before = regions()
local function refused(fields, told)
  for id, value in pairs(fields) do put(id, value) end
  push(1)
  check.holds(get(kMessage), told)
  local now = regions()
  check.eq(now, before)
end
put(kEmissivity, "0") push(1)
check.holds(get(kMessage), "an emissivity from 0.001 to 1")
put(kEmissivity, "0.8") push(1)
check.holds(get(kMessage), "temperature of what is reflected")
refused({ [kReflected] = "30", [kX1] = "1.5" }, "whole number from -32768 to 32767")
refused({ [kX1] = "3", [kName] = "R2" }, "two regions named R2")
refused({ [kName] = "" }, "needs a name")
check.eq(box(), nil)

-- Applied, it is a step that is taken back.
put(kName, "hot plate") push(1)
check.eq({ get(kMessage), regions()[1].name, regions()[1].emissivity, regions()[1].reflected }, { "", "hot plate", 0.8, 30 })
check.near(stats("hot plate").unit_mean, gray.unit_mean, 1e-9)
check.holds(lines()[1], "*")
command(2050)
check.eq(status(), "Undone: regions")
check.eq(regions()[1].name, "plate")
command(2051)
check.eq(regions()[1].name, "hot plate")
command(2050)

-- Keys of the main window move, resize and remove what is selected.
local function of(n) local r = regions()[n] return { r.x1, r.y1, r.x2, r.y2 } end
check.eq(of(1), { 3, 2, 20, 12 })
key("Right") check.eq(of(1), { 4, 2, 21, 12 })
key("Shift+Down") check.eq(of(1), { 4, 12, 21, 22 })
key("Ctrl+Left") check.eq(of(1), { 4, 12, 20, 22 })
key("Ctrl+Right") key("Up") check.eq(of(1), { 4, 11, 21, 21 })
command(2050)
check.eq(of(1), { 3, 2, 20, 12 }, "keys that follow each other are one step")
key("Del")
check.eq(#regions(), 1)
command(2050)
check.eq(#regions(), 2)

-- The mouse: drawn, taken by its middle and by a corner. What the press means otherwise stays away from the picture meanwhile.
command(2041)
for _ = 1, 9 do key("+") end
check.eq(state("Xzoom"), 10)
local place_of, drag = pixel_mouse.place, pixel_mouse.drag
regions {}
pick("regions", kDraw, 2)
drag(10, 5, 20, 15)
check.eq({ #regions(), regions()[1].shape, of(1) }, { 1, "ellipse", { 10, 5, 20, 15 } })
check.eq(regions()[1].selected, true)
pick("regions", kDraw, 0)
drag(15, 10, 17, 9)
check.eq(of(1), { 12, 4, 22, 14 })
local edge_x, edge_y = place_of(23, 15)  -- its lower right corner is where this pixel's block begins
mouse(edge_x - 5, edge_y - 5, "left down")
mouse(edge_x + 15, edge_y + 15)
mouse(edge_x + 15, edge_y + 15, "left up")
check.eq(of(1), { 12, 4, 24, 16 })
command(2050)
check.eq(of(1), { 12, 4, 22, 14 }, "a drag is one step")
local x, y = place_of(35, 25)
mouse(x, y, "left")
check.eq({ regions()[1].selected, state("ImageCursorOn") }, { false, 0 })
pick("regions", kDraw, 1)
mouse(x, y, "left")
check.eq(#regions(), 1, "a press alone draws nothing")
pick("regions", kDraw, 4)
mouse(x, y, "left")
check.eq({ #regions(), regions()[2].shape, regions()[2].x1, regions()[2].y1 }, { 2, "point", 35, 25 })

-- Drawn over the picture: the screen shows them, a bitmap of it holds none.
local function bitmap(name)
  command(116)
  choose(datadir() .. "/" .. name)
  return readfile(datadir() .. "/" .. name)
end
local function tone(px, py)
  local left, top = place_of(px, py)
  return { screen(left, top + 1) }  -- a line runs where the lower half of its pixels begins
end
pick("regions", kDraw, 0)
regions { { name = "drawn", shape = "line", x1 = 2, y1 = 20, x2 = 30, y2 = 20 } }
check.eq(tone(16, 20), { 255, 255, 255 })
local with_regions = bitmap("with.bmp")
tick("regions", kShow, false)
assert(tone(16, 20)[1] ~= 255)
check.eq(bitmap("without.bmp") == with_regions, true)
tick("regions", kShow, true)

-- Files: read back as they were; what can't be read is told and changes nothing.
local drawn = regions()
push(kSave)
choose(datadir() .. "/one")
check.holds(get(kMessage), "Saved: ")
check.holds(readfile(datadir() .. "/one.regions"), '{"name": "drawn", "shape": "line", "x1": 2, "y1": 20, "x2": 30, "y2": 20}')
regions {}
push(kLoad)
choose(datadir() .. "/one.regions")
drawn[1].selected = false
check.eq(regions(), drawn)
push(kLoad)
cancel()
check.eq(regions(), drawn)
put_file(datadir() .. "/torn.regions", "{ torn")
push(kLoad)
choose(datadir() .. "/torn.regions")
check.holds(box().text, "line 1: ")
answer("ok")
check.eq(regions(), drawn)

-- The buttons, with nothing drawn by hand.
push(kAdd)
check.eq({ #regions(), regions()[2].shape }, { 2, "rectangle" })
push(kRemove)
check.eq(#regions(), 1)

press("regions", 2)
check.seen("close", { name = "REGIONS" })
mouse(x, y, "left")
check.eq(state("ImageCursorOn"), 1, "the press is the image cursor's again")
mouse(x, y, "left")

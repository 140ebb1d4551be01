-- Regions as an operator works them: half outside of the picture and quite outside, made small, many, oddly named, from files that are none; each
-- time the figures are those of the pixels that are there, and what is refused changes nothing.
local tick = check
local check = require "check"
local pixel_mouse = require "pixel_mouse"
local files = require "files"

local kTable, kDraw, kAdd, kRemove, kName, kMessage, kLoad, kSave = 22101, 22103, 22104, 22105, 22106, 22120, 22118, 22119
local columns, rows = 60, 40
local function at(name) return datadir() .. "/" .. name end
local function count(_, x, y) return 1000 + 7 * x + 11 * y end

answer("ok")  -- no camera
files.image(at("plain.img"), { width = columns, height = rows, cold = 1000, cold_c = 20, hot = 3000, hot_c = 40 }, 1, count)
drop(at("plain.img"))
command(2210)

local function pixels_of(place)
  local n, sum = 0, 0
  for y = math.max(place[2], 0), math.min(place[4], rows - 1) do
    for x = math.max(place[1], 0), math.min(place[3], columns - 1) do n, sum = n + 1, sum + pixel(x, y) end
  end
  return n, sum
end
local function of(n) local r = regions()[n] return { r.x1, r.y1, r.x2, r.y2 } end
local function expect(place, what)
  check.eq(of(1), place, what)
  local figures, n, sum = stats(regions()[1].name), pixels_of(place)
  check.eq(figures.pixels, n, what)
  if n > 0 then check.near(figures.mean, sum / n, 1e-9, what) else check.eq(figures.mean, nil, what) end
end
-- The line of a region, once the window shows it.
local function select(line)
  wait(150)
  pick("regions", kTable, line)
end
local function times(n, name) for _ = 1, n do key(name) end end

-- ---- Over the edge of the picture and back, by the arrow keys.

regions { { name = "plate", x1 = 40, y1 = 25, x2 = 49, y2 = 34 } }
select(0)
times(2, "Shift+Right")
expect({ 60, 25, 69, 34 }, "quite outside")
wait(200)
check.holds(items("regions", kTable)[1], " 0 ")
key("Left")
expect({ 59, 25, 68, 34 }, "a column of it is inside")
times(4, "Shift+Left")
times(4, "Shift+Left")
times(4, "Up")
expect({ -21, 21, -12, 30 }, "outside on the other side")
times(2, "Shift+Right")
expect({ -1, 21, 8, 30 })
command(2050)
check.eq(of(1), { 40, 25, 49, 34 }, "keys that follow each other are one step")
command(2051)
expect({ -1, 21, 8, 30 })

-- ---- Made small: a row and a column stay.

times(15, "Ctrl+Left")
times(15, "Ctrl+Up")
expect({ -1, 21, -1, 21 }, "a pixel outside of the picture")
times(1, "Right")
expect({ 0, 21, 0, 21 })
check.eq(stats("plate").deviation, 0)
times(3, "Ctrl+Right")
expect({ 0, 21, 3, 21 })

-- ---- By the mouse: drawn over the edge, pulled by a corner across the other one, let go outside, taken back in the middle.

command(2041)
for _ = 1, 9 do key("+") end
local place_of, drag = pixel_mouse.place, pixel_mouse.drag
regions {}
pick("regions", kDraw, 1)
drag(50, 30, 75, 10)
check.eq(#regions(), 1)
local drawn = of(1)
check.eq({ drawn[1], drawn[2] }, { 50, 30 })
assert(drawn[3] >= columns - 1 and drawn[4] == 10, table.concat(drawn, " "))
local n = pixels_of { 50, 10, drawn[3], 30 }
check.eq(stats("R1").pixels, n, "from either corner")
regions { { name = "R1", x1 = 10, y1 = 10, x2 = 19, y2 = 19 } }
pick("regions", kDraw, 0)
drag(15, 15, 15, 15)  -- taken, and nothing moved
check.eq({ of(1), regions()[1].selected }, { { 10, 10, 19, 19 }, true })
local block = state("Xzoom")
local x, y = place_of(20, 20)  -- its lower right corner is where this pixel begins
mouse(x - block // 2, y - block // 2, "left down")
x, y = place_of(4, 30)
mouse(x, y)
mouse(x, y, "left up")
local pulled = of(1)
check.eq({ pulled[1], pulled[2] }, { 10, 10 })
assert(pulled[3] < 10 and pulled[4] > 19, table.concat(pulled, " "))
local measured = pixels_of { pulled[3], 10, 10, pulled[4] }
check.eq(stats("R1").pixels, measured, "turned over")
command(2050)
check.eq(of(1), { 10, 10, 19, 19 })
x, y = place_of(15, 15)
mouse(x, y, "left down")
mouse(x + 5 * block, y)
key("Del")
check.eq(#regions(), 1, "not while it is held")
mouse(x + 5 * block, y, "left up")
check.eq(of(1), { 15, 10, 24, 19 })
key("Del")
key("Del")
check.eq(#regions(), 0, "nothing is left to remove")
command(2050)
check.eq(of(1), { 15, 10, 24, 19 })
command(2050)
check.eq(of(1), { 10, 10, 19, 19 })

-- ---- As many as there may be.

local many = {}
for i = 1, 256 do many[i] = { name = "n" .. i, shape = i % 2 == 0 and "ellipse" or "rectangle", x1 = i % 50, y1 = i % 30, x2 = i % 50 + 9, y2 = i % 30 + 9 } end
regions(many)
wait(300)
check.eq({ #regions(), #items("regions", kTable) }, { 256, 256 })
press("regions", kAdd)
check.eq({ #regions(), text("regions", kMessage) }, { 256, "There can be at most 256 regions." })
select(254)
key("Del")
check.eq(#regions(), 255)
press("regions", kAdd)
check.eq({ #regions(), regions()[256].name, regions()[256].selected }, { 256, "R1", true })
press("regions", kSave)
choose(at("many.regions"))
local written = regions()
regions {}
press("regions", kLoad)
choose(at("many.regions"))
written[256].selected = false
check.eq(regions(), written)

-- ---- Names with quotes, commas and letters of other tongues, from the field to the file and into the figures of a trace.

local odd = { 'Plättchen, "groß"', "a,b;c\\d/'e'", "  µ °C  ", "日本", "{}[]:#" }
for i, name in ipairs(odd) do
  regions { { name = "x", x1 = 0, y1 = 0, x2 = 3, y2 = 3 } }
  select(0)
  set("regions", kName, name)
  press("regions", 1)
  local taken = name:match("^%s*(.-)%s*$")
  check.eq({ regions()[1].name, text("regions", kMessage) }, { taken, "" })
  press("regions", kSave)
  choose(at("odd" .. i .. ".regions"))
  regions {}
  press("regions", kLoad)
  choose(at("odd" .. i .. ".regions"))
  check.eq({ #regions(), regions()[1].name, box() }, { 1, taken })
  check.eq(stats(taken).pixels, 16)
end
regions { { name = odd[1], x1 = 0, y1 = 0, x2 = 3, y2 = 3 } }
command(2240)
press("TRACES", 22403)
check.eq(items("TRACES", 22404), { odd[1] })
press("TRACES", 1606)
choose(at("odd.csv"))
check.holds(readfile(at("odd.csv")), ',"Plättchen, ""groß"" mean",')
check.holds(readfile(at("odd.csv")), '\n# Plättchen, "groß": 16 pixels\n')
press("TRACES", 2)

-- ---- Files that are none: told with the reason and the place, and the regions stay.

local kept = regions()
local head = '{"format": "Kelvo regions", "version": 1, "columns": 4, "rows": 4, "regions": ['
local function point(members) return head .. '{"shape": "point", "x1": 1, "y1": 1, ' .. members .. "}]}" end
local hostile = {
  { head .. '{"name": "a", "shape": "point", "x1": 1e999, "y1": 1}]}', "line 1: " },
  { head .. '{"name": "a", "shape": "point", "x1": 99999999999999999999, "y1": 1}]}', 'region 1: "x1" isn\'t a whole number from -32768 to 32767' },
  { head .. '{"name": "a", "shape": "point", "x1": NaN, "y1": 1}]}', "line 1: " },
  { point '"name": "a", "emissivity": 1e-320, "reflected": 20', "region 1: An emissivity lies between 0.001 and 1." },
  { point '"name": "a", "emissivity": 0.5, "reflected": 1e308', "region 1: The temperature of what is reflected lies between -273.15 and 10000 °C." },
  { point '"name": "a\255\254"', "line 1: " },
  { point '"name": "a\\u0000b"', "region 1: The name of a region holds a character that can't be shown." },
  { point('"name": "' .. ("n"):rep(64) .. '"'), "region 1: The name of a region has at most 63 characters." },
  { head .. ("["):rep(100000), "line 1: too deeply nested" },
  { head .. ('{"name": '):rep(50000), "line 1: too deeply nested" },
  { head .. ('{"name": "a", "shape": "point", "x1": 1, "y1": 1}, '):rep(256) .. '{"name": "b", "shape": "point", "x1": 1, "y1": 1}]}', "it holds more than 256 regions" },
  { head .. '{"name": "a", "shape": "point", "x1": 1, "y1": 1}, {"name": "a", "shape": "point", "x1": 2, "y1": 1}]}', 'two regions are named "a"' },
  { '{"format": "Kelvo regions", "format": "other", "version": 1}', "it isn't a file of regions" },
  { head .. "]} and more", "line 1: " },
  { ("\0\1\2\255"):rep(1000), "line 1: " },
  { "", "line 1: " },
  { (" "):rep((1 << 20) + 1), "it can't be read, or is no file of regions" },
}
for i, file in ipairs(hostile) do
  files.write(at("hostile.regions"), file[1])
  press("regions", kLoad)
  choose(at("hostile.regions"))
  check.holds(box().text, at("hostile.regions") .. "\n" .. file[2], i)
  answer("ok")
  check.eq(regions(), kept, i)
end
-- Of a key that stands twice the last counts; a mark of the byte order is none.
files.write(at("twice.regions"), "\xEF\xBB\xBF" .. point '"name": "a", "x1": 5, "name": "b"')
press("regions", kLoad)
choose(at("twice.regions"))
check.eq({ #regions(), regions()[1].name, regions()[1].x1 }, { 1, "b", 5 })
press("regions", 2)

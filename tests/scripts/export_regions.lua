-- Regions exported by the dialog EXPORT and by export{...}: which pixels they are and what is marked is worked out here from pixel() and the definition of
-- an ellipse; several go to a file each. What can't be is told, and changes nothing.
local check = require "check"
local files = require "files"
local dir = datadir()
local kWhat, kFirst, kLast, kForm, kFormat, kName, kPart = 22001, 22002, 22003, 22004, 22005, 22006, 22007
local kSources = { width = 12, height = 9, rate = 50, cold = 3000, cold_c = 20, hot = 9000, hot_c = 25 }
answer("ok")

local function count(frame, x, y) return 3000 + 1000 * frame + 37 * y + 3 * x end
drop(files.image(dir .. "/run.seq", kSources, 3, count))
check.eq(state("CurrentFrame"), 0)

-- Without regions there is the picture alone.
key("Ctrl+E")
check.eq({ items(kPart), picked(kPart), enabled(kPart) }, { { "Whole picture" }, 0, false })
press(2)

local oval = { x1 = 2, y1 = 1, x2 = 7, y2 = 5 }
regions { { name = "oval", shape = "ellipse", x1 = oval.x1, y1 = oval.y1, x2 = oval.x2, y2 = oval.y2 },
          { name = "edge", shape = "rectangle", x1 = 10, y1 = 7, x2 = 30, y2 = 8 }, { name = "a/b", shape = "point", x1 = 4, y1 = 4 } }

local function is_outside(x, y)
  local across, down = (oval.x2 - oval.x1 + 1) / 2, (oval.y2 - oval.y1 + 1) / 2
  return ((x - (oval.x1 + oval.x2) / 2) / across) ^ 2 + ((y - (oval.y1 + oval.y2) / 2) / down) ^ 2 > 1
end
local function data_of(path)
  local bytes = assert(readfile(path), path)
  return bytes:sub(11 + string.unpack("<I2", bytes, 9))
end
local function samples(frames, x1, y1, x2, y2)
  local expected = {}
  for _, frame in ipairs(frames) do
    for y = y1, y2 do
      for x = x1, x2 do expected[#expected + 1] = string.pack("<i2", count(frame, x, y)) end
    end
  end
  return table.concat(expected)
end
-- Columns 2 to 7 of the row, as the JSON tells of those that aren't the region's.
local function outside_of(path)
  local json, marked = readfile(path), {}
  for row, first, last in json:match('"outside_of_region": (%b[])'):gmatch("%[(%d+), (%d+), (%d+)%]") do
    for column = first, last do marked[row * 6 + column] = true end
  end
  return marked
end

-- One region: the rectangle around it in all frames, and which pixels aren't its own.
key("Ctrl+E")
check.eq(items(kPart), { "Whole picture", "oval", "edge", "a/b", "All regions, a file each" })
check.eq(enabled(kPart), true)
pick(kPart, 1)
set(kName, dir .. "/oval.npy")
press(1)
check.eq({ dialog(), box() and box().text }, { nil, nil })
check.holds(status(), " Saved oval.npy: 3 frames, ")
check.holds(readfile(dir .. "/oval.npy"), "'shape': (3, 5, 6)")
check.eq(data_of(dir .. "/oval.npy"), samples({ 0, 1, 2 }, 2, 1, 7, 5))
local marked = outside_of(dir .. "/oval.json")
for y = oval.y1, oval.y2 do
  for x = oval.x1, oval.x2 do
    check.eq(marked[(y - oval.y1) * 6 + x - oval.x1] or false, is_outside(x, y), "outside at " .. x .. "," .. y)
  end
end
check.holds(readfile(dir .. "/oval.json"), '"region": {"name": "oval", "shape": "ellipse", "x1": 2, "y1": 1, "x2": 7, "y2": 5}')

-- The picture on view in degrees: no numbers outside, inside those of the screen to the last bit.
key("F7")
check.eq(state("CurrentFrame"), 1)
local seen = export { out = dir .. "/seen.npy", as = "celsius", region = "oval" }
check.eq({ seen.columns, seen.rows, seen.files }, { 6, 5, { dir .. "/seen.npy" } })
local values = data_of(dir .. "/seen.npy")
for y = oval.y1, oval.y2 do
  for x = oval.x1, oval.x2 do
    local value = string.unpack("<f", values, 1 + 4 * ((y - oval.y1) * 6 + x - oval.x1))
    local expected = string.unpack("<f", string.pack("<f", 5 * (pixel(x, y) - 3000) / 6000 + 20))
    check.eq(value == value, not is_outside(x, y), "number at " .. x .. "," .. y)
    if value == value then check.eq(value, expected) end
  end
end

-- All of them, a range of frames; the one that lies partly outside of the frame is cut to it.
key("Ctrl+E")
check.eq(picked(kPart), 0)
pick(kPart, 4)
set(kFirst, "1")
set(kName, dir .. "/all.npy")
press(1)
check.eq({ dialog(), box() and box().text }, { nil, nil })
check.holds(status(), " Saved 3 files, all-oval.npy to all-a_b.npy: 2 frames each, ")
check.eq(data_of(dir .. "/all-oval.npy"), samples({ 1, 2 }, 2, 1, 7, 5))
check.eq(data_of(dir .. "/all-edge.npy"), samples({ 1, 2 }, 10, 7, 11, 8))
check.eq(data_of(dir .. "/all-a_b.npy"), samples({ 1, 2 }, 4, 4, 4, 4))
check.eq(readfile(dir .. "/all.npy"), nil)

-- What stands is asked about in one question; No changes nothing.
key("Ctrl+E")
pick(kPart, 4)
set(kName, dir .. "/all.npy")
press(1)
check.answer_box(dir .. "/all-oval.npy and 2 more already exist.\nDo you want to replace them?", "no", "Export")
check.eq(data_of(dir .. "/all-edge.npy"), samples({ 1, 2 }, 10, 7, 11, 8))
press(1)
answer("yes")
check.eq({ dialog(), box() }, { nil, nil })
check.eq(data_of(dir .. "/all-edge.npy"), samples({ 0, 1, 2 }, 10, 7, 11, 8))

-- Escape: all files have the same frames.
key("Ctrl+E")
pick(kPart, 4)
set(kName, dir .. "/stopped.npy")
sim.fault("escape", 3)
press(1)
sim.fault("escape", 0)
check.eq({ dialog(), box() }, { nil, nil })
local had = tonumber(status():match("^ Stopped: 3 files have ([12]) of 3 frames$"))
assert(had, status())
check.eq(data_of(dir .. "/stopped-edge.npy"), samples(had == 1 and { 0 } or { 0, 1 }, 10, 7, 11, 8))
check.eq(data_of(dir .. "/stopped-a_b.npy"), samples(had == 1 and { 0 } or { 0, 1 }, 4, 4, 4, 4))

-- A disk that refuses on the way leaves none of them.
for step = 1, 12 do
  sim.fault("disk", step)
  check.fails(function() export { of = "file", file = dir .. "/run.seq", out = dir .. "/refused.npy", regions = true } end, "can't be written")
  sim.fault("disk", 0)
  for _, name in ipairs { "oval", "edge", "a_b" } do check.eq(readfile(dir .. "/refused-" .. name .. ".npy"), nil, "step " .. step) end
end

-- By script: of a file of regions, all of the view, and what makes no sense.
files.write(dir .. "/two.regions", '{"format": "Kelvo regions", "version": 1, "columns": 12, "rows": 9, "regions": [\n'
  .. '{"name": "dot:dot", "shape": "point", "x1": 1, "y1": 2},\n{"name": "oval", "shape": "rectangle", "x1": 0, "y1": 0, "x2": 1, "y2": 1}]}\n')
check.eq(export { out = dir .. "/dot.npy", regions = dir .. "/two.regions", region = "dot:dot" }.columns, 1)
check.eq(data_of(dir .. "/dot.npy"), samples({ 1 }, 1, 2, 1, 2))
check.eq(export { out = dir .. "/file.npy", regions = dir .. "/two.regions" }.files, { dir .. "/file-dot_dot.npy", dir .. "/file-oval.npy" })
check.eq(data_of(dir .. "/file-oval.npy"), samples({ 1 }, 0, 0, 1, 1))
check.eq(#export { out = dir .. "/view.npy", regions = true }.files, 3)
for _, wrong in ipairs {
  { { out = dir .. "/no.npy", region = "tail" }, 'there is no region "tail"' }, { { out = dir .. "/no.npy", region = "" }, "\"region\" can't have that value" },
  { { out = dir .. "/no.npy", regions = dir .. "/two.regions", region = "edge" }, 'there is no region "edge"' },
  { { out = dir .. "/no.npy", regions = false }, "\"regions\" can't have that value" }, { { out = dir .. "/no.npy", regions = dir .. "/none.regions" }, "none.regions" },
  { { out = dir .. "/no.npy", region = "oval", rectangle = { 0, 0, 1, 1 } }, "\"rectangle\" doesn't go with regions" },
} do
  check.fails(function() export(wrong[1]) end, "export: ")
  check.fails(function() export(wrong[1]) end, wrong[2])
end

-- Frames that aren't there.
local none = "run.seq has 3 frames: there are none of that range"
for _, range in ipairs { { first = 3 }, { first = 1, count = 3 }, { first = -1 }, { first = 9, count = 1 } } do
  check.fails(function() export { of = "file", file = dir .. "/run.seq", out = dir .. "/no.npy", first = range.first, count = range.count } end, none)
end
for _, count_of in ipairs { 0, -1 } do
  check.fails(function() export { of = "file", file = dir .. "/run.seq", out = dir .. "/no.npy", count = count_of } end, "export: \"count\" can't have that value")
end
check.fails(function() export { out = dir .. "/no.npy", first = 1 } end, "The picture on view is one frame")
check.eq(readfile(dir .. "/no.npy"), nil)

-- A region outside of the frame is refused in the dialog, which stays.
regions { { name = "far", shape = "rectangle", x1 = 100, y1 = 0, x2 = 110, y2 = 4 } }
key("Ctrl+E")
check.eq(items(kPart), { "Whole picture", "far" })
pick(kPart, 1)
set(kName, dir .. "/no.npy")
press(1)
check.answer_box("Region far lies outside of the frame.", "ok")
check.eq(dialog(), "EXPORT")
press(2)
check.eq(readfile(dir .. "/no.npy"), nil)
regions {}
check.fails(function() export { out = dir .. "/no.npy", regions = true } end, "export: there is no region")

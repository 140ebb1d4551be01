-- Files of every kind that are cut, empty, of huge sizes or of any bytes, one after the other: each ends in a box or a
-- picture, none is changed, and the program works on.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()
local good = files.image(dir .. "/good.img", { width = 16, height = 8 }, 1, function(_, x, y) return 100 * y + x end)

local noise = files.noise(12345)

local image = readfile(good)
local function image_with(fields) return files.header(fields) .. noise(300) end
local image_variants = {
  empty = "", byte = "\1", cut_header = image:sub(1, 511), cut_frame = image:sub(1, -2), random = noise(2000),
  huge = image_with { width = 32767, height = 32767, sample_bytes = 4 },
  negative = image_with { width = -3, height = -5 }, flat = image_with { width = 0, height = 9 },
  prefix = image_with { width = 8, height = 8, prefix = 32767 }, backward = image_with { width = 8, height = 8, prefix = -32768 },
  spectrometer_cut = "\1" .. noise(600), spectrometer = "\1" .. noise(1400),
  floats = image_with { width = 8, height = 8, sample_bytes = 4, data_type = 8 },
}
local list_variants = { empty = "", byte = "7", cut = noise(1000), random = noise(200000), zeros = string.rep("\0", 700) }
local text_variants = { empty = "", words = "row,column\n1;2\n3\n-1,-1\n99999999999,2\n", long = string.rep("1,", 5000),
  nul = "1,1\0\n\0\0,2\n" }

local changed = {}
local function make(name, bytes)
  local path = files.write(dir .. "/" .. name, bytes)
  changed[path] = bytes
  return path
end

-- Answers whatever box comes; their number is bounded.
local function answer_all(what)
  local boxes = 0
  while box() do
    boxes = boxes + 1
    assert(boxes <= 30, what .. ": boxes without end, the last: " .. (box() and box().text or ""))
    assert(#box().text > 0, what .. ": a box says something")
    answer("ok")
  end
  check.eq(dialog(), nil, what)
  check.eq(file(), nil, what)
  return boxes
end

local function open_each(extension, variants, must_tell)
  for name, bytes in pairs(variants) do
    local path = make(name .. extension, bytes)
    drop(path)
    local boxes = answer_all(path)
    if must_tell and must_tell[name] then assert(boxes > 0, path .. " is told of") end
    drop(good)
    answer_all(good)
    check.eq(pixel(15, 7), 715, "a good file after " .. path)
  end
end

local told = { empty = true, byte = true, cut_header = true, cut_frame = true, huge = true, negative = true, flat = true,
  prefix = true, backward = true, spectrometer_cut = true }
for _, extension in ipairs { ".img", ".seq", ".buf", ".sdv", ".flt" } do open_each(extension, image_variants, told) end
for _, extension in ipairs { ".gai", ".off", ".noi", ".dcm" } do
  open_each(extension, list_variants, { empty = true, byte = true, cut = true, zeros = true })
end
open_each(".bad", text_variants, { words = true })
open_each(".bad", list_variants)

-- A companion that names no camera that exists, and sizes without sense in one that does.
make("strange.cal", "[Setup]\nActiveCamera=77777777777\n[Calibration]\nIntensityCold=x\nTemperatureHot=nan\n")
drop(make("strange.noi", noise(500)))
answer_all("strange.noi")

-- Colour maps: the map in force stays usable, and gray comes back.
local palette = readfile(dir .. "/MATROX.PAL")
for name, bytes in pairs { empty = "", random = noise(30000), words = "x\n" .. string.rep("a b c\n", 300), cut = palette:sub(1, 100) } do
  changed[files.write(dir .. "/MATROX.PAL", bytes)] = bytes
  drop(good)
  command(145)
  local boxes = 0
  while box() do
    boxes = boxes + 1
    assert(boxes <= 300, "MATROX.PAL, " .. name)
    answer("ok")
  end
  command(143)
  check.eq(box(), nil)
  check.eq(#state("ColorMap"), 768)
  check.eq(pixel(15, 7), 715)
end

for path, bytes in pairs(changed) do assert(readfile(path) == bytes, path .. " is as it was") end

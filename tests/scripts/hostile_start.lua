-- The start with settings, start picture and colour map that are empty, cut, of any bytes or full of huge numbers
-- (arg[1]): boxes at most, then a stored frame can be viewed.
-- Written before the first call: the start finds them, and puts no shipped file over them.
local kind = arg[1]
local noise = require("files").noise(99)
local sections = { "Setup", "Display", "Camera.1", "Camera.2", "Save", "Calibration", "Ports", "Sequences" }
local keys = { "ActiveCamera", "nCommPort", "ByteSwap", "Hroi", "Vroi", "Htotal", "Vtotal", "Hactive", "Vactive", "Xzoom", "Yzoom",
  "Xpan", "Ypan", "Xoffset", "Yoffset", "Contrast", "Brightness", "ImageColor", "GrayScale", "UnityGain", "UnityOffset",
  "numBufFrames", "NumOutputs", "NumChannels", "DecomScheme", "Board", "COM2" }
local function settings(value)
  local lines = {}
  for _, section in ipairs(sections) do
    lines[#lines + 1] = "[" .. section .. "]"
    for _, name in ipairs(keys) do lines[#lines + 1] = name .. "=" .. value end
  end
  return table.concat(lines, "\r\n")
end
local function bitmap(width, height, bits, colors, size)
  return "BM" .. string.pack("<I4I4I4 I4i4i4I2I2I4I4I4I4I4I4", 0, 0, 54, 40, width, height, 1, bits, 0, size, 0, 0, colors, 0)
end
local contents = {
  empty = { ini = "", bmp = "", pal = "" },
  cut = { ini = settings("1"):sub(1, 300) .. "\n[Setu", bmp = bitmap(220, 220, 8, 256, 0) .. "abc", pal = "colours\n1 2" },
  random = { ini = noise(5000), bmp = "BM" .. noise(3000), pal = noise(5000) },
  huge = { ini = settings("2147483647"), bmp = bitmap(2147483647, 2147483647, 32, 4294967295, 4294967295), pal = string.rep("9", 100000) },
  negative = { ini = settings("-2147483648"), bmp = bitmap(-5, -2147483648, 1, 0, 0), pal = "\n-1 -1 -1\n" },
}
local files_of_kind = assert(contents[kind], kind)
for _, name in ipairs { "kelvo.ini", "camera.ini", "buffbrd.ini", "a.seq", "kelvo220.bmp", "MATROX.PAL" } do
  local which = name:match("%.(%a+)$"):lower()
  local out = assert(io.open("data/" .. name, "wb"))
  out:write(files_of_kind[which] or files_of_kind.ini)
  out:close()
end

local check = require "check"
local files = require "files"
local function answer_all()
  local boxes = 0
  while box() do
    boxes = boxes + 1
    assert(boxes < 300, "boxes without end: " .. box().text)
    assert(#box().text > 0)
    answer("ok")
  end
end
answer_all()
drop(files.image(datadir() .. "/good.img", { width = 16, height = 8 }, 1, function(_, x, y) return 100 * y + x end))
answer_all()
check.eq(state("ViewingFile"), 1)
check.eq(pixel(15, 7), 715)
for _, id in ipairs { 143, 144, 145 } do
  command(id)
  answer_all()
end
check.eq(readfile(datadir() .. "/kelvo220.bmp"), files_of_kind.bmp)
check.eq(readfile(datadir() .. "/MATROX.PAL"), files_of_kind.pal)

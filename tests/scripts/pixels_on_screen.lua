-- Each image pixel is a block of device pixels of one colour, at every zoom and device ratio (arg[1]): never smoothed,
-- and of the gray or colour that contrast, brightness and map give its count.
local check = require "check"
local files = require "files"
answer("ok")
local ratio = tonumber(arg[1])

local function single(value) return (string.unpack("<f", string.pack("<f", value))) end
local function whole(value) return math.floor(value + 0.5) end

-- The table worked out here: a window of counts over a range of 0 to 16383, a ramp in single precision inside.
local contrast, brightness = state("Contrast"), state("Brightness")
check.eq({ state("DisplayLow"), state("DisplayHigh") }, { 0, 16383 })
local width_of_window = math.max(math.floor(0.93238053321369 ^ contrast * 17571.151923916), 16)
local first = math.floor((16383 - width_of_window) * (1000 - brightness) / 999.0)
local last = math.min(first + width_of_window, 16383)
local step = single(255.0 / (last - first))
local ramp, sum = {}, 0.0
for count = first, last - 1 do
  ramp[count] = math.floor(sum)
  sum = single(sum + step)
end
local function gray(count)
  if count < first then return 0 end
  return ramp[count] or 255
end

local width, height = 32, 24
local function count_at(x, y) return first - 20 + (x * 37 + y * 101) * (last - first + 40) // (31 * 37 + 23 * 101) end
drop(files.image(datadir() .. "/blocks.img", { width = width, height = height }, 1,
  function(_, x, y) return count_at(x, y) end))
check.eq(pixel(31, 23), count_at(31, 23))

-- The device pixel that is read at a logical place, and the image pixel that it belongs to.
local top = state("PanelHeight")
local function image_pixel(x, y, block)
  return math.floor(x * ratio) // block, (math.floor(y * ratio) - whole(top * ratio)) // block
end

local function check_blocks(color_of, what)
  local zoom = state("Xzoom")
  local block = whole(zoom * ratio)
  -- Both sides of each edge of a few blocks, and the last block.
  for _, place in ipairs { { 0, 0 }, { 1, 1 }, { 9, 13 }, { 16, 8 }, { 31, 23 } } do
    for _, inside in ipairs { 0, block - 1 } do
      local x = math.ceil((place[1] * block + inside) / ratio)
      local y = math.ceil((whole(top * ratio) + place[2] * block + inside) / ratio)
      local column, row = image_pixel(x, y, block)
      if column < width and row < height then
        check.eq({ screen(x, y) }, color_of(gray(count_at(column, row))),
          what .. ", zoom " .. zoom .. ", pixel " .. column .. "," .. row)
      end
    end
  end
end

local function normal(value) return { value, value, value } end
while state("Xzoom") > 1 do key("-") end
for zoom = 1, 16 do
  check.eq({ state("Xzoom"), state("Yzoom") }, { zoom, zoom })
  check_blocks(normal, "normal gray")
  if zoom < 16 then key("+") end
end
key("+")
check.eq(state("Xzoom"), 16, "the largest")

command(144)
check.eq(menu(144).checked, true)
check_blocks(function(value) return { 255 - value, 255 - value, 255 - value } end, "inverted gray")

-- The colours of the file: its first line is a title, then red, green, blue.
local colors = {}
for line in io.lines(datadir() .. "/MATROX.PAL") do
  local red, green, blue = line:match("^%s*(%d+)%s+(%d+)%s+(%d+)")
  colors[#colors + 1] = { tonumber(red), tonumber(green), tonumber(blue) }
end
table.remove(colors, 1)
check.eq(#colors, 256)
command(145)
check.eq(menu(145).checked, true)
check_blocks(function(value) return colors[value + 1] end, "colour")
command(143)
check_blocks(normal, "normal gray again")

-- A picture file's pixels, as ImageMagick reads them.
local picture_file = {}

-- A function that gives red, green and blue of a place, and the picture's width and height.
function picture_file.read(path)
  local tool = assert(io.popen("identify -format '%w %h' '" .. path .. "' && stream -map rgb -storage-type char '" .. path .. "' '" .. path .. ".rgb'"))
  local width, height = tool:read("a"):match("(%d+) (%d+)")
  assert(tool:close(), path)
  local bytes = readfile(path .. ".rgb")
  assert(os.remove(path .. ".rgb"))
  width, height = tonumber(width), tonumber(height)
  assert(#bytes == 3 * width * height, path)
  return function(x, y) return bytes:byte(3 * (y * width + x) + 1, 3 * (y * width + x) + 3) end, width, height
end

-- Fails where a pixel of the picture on the screen, at zoom 1 and whole in sight, has another color. It lies in the screenshot where a few rows
-- of the frame are found, below the menu and the panel. left_out(x, y): pixels that aren't looked at; none where it isn't given.
function picture_file.expect_screen(path, columns, rows, left_out)
  assert(state("Xzoom") == 1 and state("Yzoom") == 1)
  local shot = path .. ".shot.png"
  screenshot(shot)
  local color, width, height = picture_file.read(path)
  local shown, seen_width, seen_height = picture_file.read(shot)
  assert(width >= columns and height >= rows)
  local function same(left, top, x, y)
    if left_out and left_out(x, y) then return true end
    local r, g, b = color(x, y)
    local red, green, blue = shown(left + x, top + y)
    return r == red and g == green and b == blue
  end
  local function lies_at(left, top)
    for y = 0, rows - 1, 37 do
      for x = 0, columns - 1, 5 do
        if not same(left, top, x, y) then return false end
      end
    end
    return true
  end
  local left, top
  for y = 0, math.min(300, seen_height - rows) do
    for x = 0, math.min(20, seen_width - columns) do
      if not top and lies_at(x, y) then left, top = x, y end
    end
  end
  assert(top, path .. " isn't what the screen shows")
  os.remove(shot)
  for y = 0, rows - 1 do
    for x = 0, columns - 1 do
      if not same(left, top, x, y) then error(("%s: pixel %d, %d is another one on the screen"):format(path, x, y)) end
    end
  end
end

return picture_file

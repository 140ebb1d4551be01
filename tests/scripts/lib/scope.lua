-- The oscilloscope as an operator's own plot would show it: the saved bitmap against dots worked out here.
local check = require "check"

local scope = { kFrameRates = 624, kIntegrations = 626, kUnits = 1256, kOffsetText = 641, kOffsetBar = 651, kGainText = 655,
                kGainBar = 660, kUnity = 670, kAdvanced = 1020, kPrint = 339, kSave = 1606, kFirstLabel = 602 }

local kBlack, kWhite = 0x000000, 0xFFFFFF
local kLeftMarks, kRightMarks, kMarks = 3, 4, 11

-- A bitmap of 24 bits a pixel: columns, rows, and the colour at a place from the top left.
function scope.bitmap(path)
  local bytes = assert(readfile(path), path)
  check.eq(bytes:sub(1, 2), "BM")
  local pixels = string.unpack("<I4", bytes, 11)
  local width, height = string.unpack("<i4i4", bytes, 19)
  check.eq(string.unpack("<I2", bytes, 29), 24, "bits a pixel")
  local row_bytes = (width * 3 + 3) // 4 * 4
  local function at(x, y)
    local blue, green, red = bytes:byte(pixels + (height - 1 - y) * row_bytes + x * 3 + 1, pixels + (height - 1 - y) * row_bytes + x * 3 + 3)
    return red << 16 | green << 8 | blue
  end
  return width, height, at
end

-- The rectangle around a place in which all is paper, dots and marks.
local function plot_around(at, width, height, x, y, paper)
  local function belongs(column, row)
    local colour = at(column, row)
    return colour == paper or colour == kBlack or colour == kWhite
  end
  local left, right, top, bottom = x, x, y, y
  while left > 0 and belongs(left - 1, y) do left = left - 1 end
  while right < width - 1 and belongs(right + 1, y) do right = right + 1 end
  while top > 0 and belongs(x, top - 1) do top = top - 1 end
  while bottom < height - 1 and belongs(x, bottom + 1) do bottom = bottom + 1 end
  return left, top, right + 1 - left, bottom + 1 - top
end

-- The dots of a frame: set[row * columns + column] for a plot of columns (a multiple of 16) x rows.
function scope.dots(frame, columns, rows, low, high, resolution)
  local set, at = {}, 0
  for column = 0, columns - 1 do
    local share = math.max(#frame // columns, 1)
    if column >= columns - 8 then share = (#frame - (#frame // columns) * (columns - 8)) // 8 end
    for i = 0, share - 1, resolution do
      local value = math.min(math.max(frame[at + i + 1], low), high)
      set[(high - value) * (rows - 1) // (high - low) * columns + column] = true
    end
    at = at + share
  end
  return set
end

-- The saved window shows these counts, and marks at the tenths on both sides. ratio: device pixels a logical one.
function scope.check_picture(path, frame, low, high, resolution, paper, ratio)
  local width, height, at = scope.bitmap(path)
  local left, top, across, down = plot_around(at, width, height, width * 2 // 5, height * 3 // 5, paper)
  check.eq({ across % ratio, down % ratio }, { 0, 0 })
  local columns, rows = (across // ratio - kLeftMarks - kRightMarks) // 16 * 16, down // ratio
  assert(columns >= 480 and rows >= 320, columns .. " x " .. rows)
  local dots = scope.dots(frame, columns, rows, low, high, resolution)
  local marks = {}
  for mark = 0, kMarks - 1 do marks[mark * (rows - 1) // (kMarks - 1)] = true end

  local first, last = kLeftMarks, across // ratio - kRightMarks
  for y = 0, down - 1 do
    local row = y // ratio
    for x = 0, across - 1 do
      local place = x // ratio
      local expected = paper
      if place < first or place >= last then
        expected = marks[row] and kBlack or kWhite
      elseif place - first < columns and dots[row * columns + place - first] then
        expected = kBlack
      end
      if at(left + x, top + y) ~= expected then
        error(string.format("%s at %d, %d of the plot: %06X, expected %06X", path, place, row, at(left + x, top + y), expected))
      end
    end
  end
end

-- The counts at the marks, top down.
function scope.mark_counts(low, high)
  local counts = {}
  for tenth = 10, 0, -1 do counts[#counts + 1] = low + (high - low) * tenth // 10 end
  return counts
end

-- The texts beside the marks, top down.
function scope.labels()
  local texts = {}
  for id = scope.kFirstLabel, scope.kFirstLabel + kMarks - 1 do texts[#texts + 1] = text(id) end
  return texts
end

-- The index of a unit in the list in front.
function scope.unit(name)
  for index, item in ipairs(items(scope.kUnits)) do
    if item == name then return index - 1 end
  end
  error(name .. " is not offered")
end

return scope

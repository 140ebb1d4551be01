-- Reads a TIFF file by its tags, without regard to how Kelvo lays it out: one gray image in strips.
local tiff = {}

local kSizes = { [1] = 1, [2] = 1, [3] = 2, [4] = 4, [5] = 8 }
local kFormats = { [1] = "<I1", [3] = "<I2", [4] = "<I4", [5] = "<I4" }

local function values(bytes, at)
  local kind, count = string.unpack("<I2I4", bytes, at + 3)
  local size = kSizes[kind] * count
  local place = size <= 4 and at + 8 or string.unpack("<I4", bytes, at + 9)
  if kind == 2 then return bytes:sub(place + 1, place + count) end
  local found = {}
  for i = 1, kind == 5 and 2 * count or count do
    found[i] = string.unpack(kFormats[kind], bytes, place + 1 + (i - 1) * math.min(kSizes[kind], 4))
  end
  return found
end

-- width, height, bits, tags (number or text by tag; lists where there are several), description, at(x, y) unsigned
function tiff.read(path)
  local bytes = assert(readfile(path), "no file " .. path)
  local order, version, directory = string.unpack("<c2I2I4", bytes)
  assert(order == "II" and version == 42, "no TIFF file")
  local picture = { tags = {}, bytes = #bytes }
  for i = 0, string.unpack("<I2", bytes, directory + 1) - 1 do
    local at = directory + 2 + 12 * i
    local found = values(bytes, at)
    picture.tags[string.unpack("<I2", bytes, at + 1)] = type(found) == "table" and #found == 1 and found[1] or found
  end
  local tags = picture.tags
  picture.width, picture.height, picture.bits = tags[256], tags[257], tags[258]
  picture.description = tags[270]:match("^[^\0]*")
  assert(tags[259] == 1 and tags[262] == 1 and tags[277] == 1, "gray and plain")
  local format = picture.bits == 16 and "<I2" or "<I1"
  local offsets, counts, rows = tags[273], tags[279], tags[278]
  local row_bytes = picture.width * picture.bits // 8
  for strip = 0, (picture.height - 1) // rows do
    local needed = math.min(rows, picture.height - strip * rows) * row_bytes
    assert(counts[strip + 1] >= needed and offsets[strip + 1] + needed <= #bytes, "strip " .. strip)
  end
  function picture.at(x, y)
    return (string.unpack(format, bytes, 1 + offsets[y // rows + 1] + y % rows * row_bytes + x * picture.bits // 8))
  end
  return picture
end

return tiff

-- Files as other programs store frames, made byte by byte: count(frame, row, column), all from 0.
local files = require "files"
local foreign = {}

local function samples(format, frames, rows, columns, count)
  local parts = {}
  for frame = 0, frames - 1 do
    for row = 0, rows - 1 do
      for column = 0, columns - 1 do parts[#parts + 1] = string.pack(format, count(frame, row, column)) end
    end
  end
  return table.concat(parts)
end

-- NumPy's .npy of '<i2', or of another kind with its pack format.
function foreign.npy(path, frames, rows, columns, count, descr, format)
  local head = ("{'descr': '%s', 'fortran_order': False, 'shape': (%d, %d, %d), }"):format(descr or "<i2", frames, rows, columns)
  head = head .. (" "):rep(64 - (#head + 11) % 64) .. "\n"
  return files.write(path, "\x93NUMPY\1\0" .. string.pack("<I2", #head) .. head
    .. samples(format or "<i2", frames, rows, columns, count))
end

-- A FITS cube of BITPIX 16; cards: lines more.
function foreign.fits(path, frames, rows, columns, count, cards)
  local head = {}
  local function card(text) head[#head + 1] = text .. (" "):rep(80 - #text) end
  for _, line in ipairs { "SIMPLE  =                    T", "BITPIX  =                   16", "NAXIS   =                    3",
    ("NAXIS1  = %20d"):format(columns), ("NAXIS2  = %20d"):format(rows), ("NAXIS3  = %20d"):format(frames) } do card(line) end
  for _, line in ipairs(cards or {}) do card(line) end
  card("END")
  local text = table.concat(head)
  local bytes = samples(">i2", frames, rows, columns, count)
  return files.write(path, text .. (" "):rep(-#text % 2880) .. bytes .. ("\0"):rep(-#bytes % 2880))
end

-- A TIFF file of one page, one strip, 16 bits without sign; more: entries of tag, type, value in place of those.
function foreign.tiff(path, rows, columns, count, more)
  local entries = { [256] = { 3, columns }, [257] = { 3, rows }, [258] = { 3, 16 }, [259] = { 3, 1 }, [262] = { 3, 1 },
    [277] = { 3, 1 }, [278] = { 3, rows }, [279] = { 4, 2 * rows * columns } }
  for tag, entry in pairs(more or {}) do entries[tag] = entry end
  entries[273] = { 4, 0 }
  local tags = {}
  for tag in pairs(entries) do tags[#tags + 1] = tag end
  table.sort(tags)
  entries[273][2] = 8 + 2 + 12 * #tags + 4
  local bytes = "II" .. string.pack("<I2I4I2", 42, 8, #tags)
  for _, tag in ipairs(tags) do bytes = bytes .. string.pack("<I2I2I4I4", tag, entries[tag][1], 1, entries[tag][2]) end
  return files.write(path, bytes .. string.pack("<I4", 0) .. samples("<I2", 1, rows, columns, function(_, y, x) return count(y, x) end))
end

return foreign

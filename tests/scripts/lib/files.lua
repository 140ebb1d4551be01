-- Image files for scripts that test, made byte by byte.
local files = {}

local function i16(value) return string.pack("<i2", value) end
local function u16(value) return string.pack("<I2", value) end
local function f32(value) return string.pack("<f", value) end

-- 512 bytes; fields: width, height, and what differs from a plain 16-bit file of version 8.
function files.header(fields)
  local bytes = u16(fields.swap or 0xFFFF) .. i16(fields.width) .. i16(fields.height) .. i16(fields.sample_bytes or 2)
    .. u16(0xFFFF) .. u16(0xFFFF)
    .. i16(26) .. i16(11) .. i16(21) .. i16(12) .. i16(34) .. i16(5)
    .. i16(fields.cold or -10000) .. f32(fields.cold_c or -999) .. i16(fields.hot or -10000) .. f32(fields.hot_c or -999)
    .. f32(1) .. i16(fields.version or 8) .. string.pack("<I4", fields.frames or 1)
    .. i16(0) .. i16(0) .. i16(fields.height - 1) .. i16(fields.width - 1) .. i16(1)
    .. f32(fields.rate or 0) .. f32(0) .. string.rep("\0", 48)
    .. i16(fields.low or 0) .. i16(fields.high or 16383) .. string.rep("\0", 8) .. i16(fields.data_type or 1)
    .. string.rep("\0", 18) .. i16(fields.prefix or 0)
  return bytes .. string.rep("\0", 512 - #bytes)
end

function files.write(path, bytes)
  local file = assert(io.open(path, "wb"))
  assert(file:write(bytes))
  file:close()
  return path
end

-- Frames of 16-bit counts: count(frame, x, y), all from 0.
function files.image(path, fields, frames, count)
  local parts = { files.header(fields) }
  for frame = 0, frames - 1 do
    for y = 0, fields.height - 1 do
      for x = 0, fields.width - 1 do parts[#parts + 1] = i16(count(frame, x, y)) end
    end
  end
  return files.write(path, table.concat(parts))
end

-- A calibration set of camera 2 beside calPath: every gain and offset as given, the plain readout order, no bad detectors.
function files.calibration(calPath, width, height, gain, offset)
  local stem = calPath:match("^(.*)%.%w+$")
  local name = stem:match("([^/]+)$")
  local count = width * height
  files.write(stem .. ".gai", f32(gain):rep(count))
  files.write(stem .. ".off", i16(offset):rep(count))
  local table_of_readout = {}
  for i = 0, count - 1 do table_of_readout[#table_of_readout + 1] = string.pack("<I4", i) end
  files.write(stem .. ".dcm", table.concat(table_of_readout))
  return files.write(calPath, ([[
[Setup]
ActiveCamera=2
IndexFrameRate=4
IntTime=12
VideoGain1=5
VideoOffset1=150
[Calibration]
DriverNumber=2
CalType=2
DecomFile=NAME.dcm
GainFile=NAME.gai
OffsetFile=NAME.off
BadDetFile=
CalFile=NAME.cal
TemperatureCold=20.0
TemperatureHot=25.0
IntensityCold=3000
IntensityHot=9000
]]):gsub("NAME", name))
end

-- A source of bytes that no format means; the same seed gives the same bytes.
function files.noise(seed)
  return function(length)
    local bytes = {}
    for i = 1, length do
      seed = (seed * 1103515245 + 12345) % 2147483648
      bytes[i] = string.char(seed // 65536 % 256)
    end
    return table.concat(bytes)
  end
end

return files

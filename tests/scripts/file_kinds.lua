-- Files of floats, byte-swapped files, files of the spectrometer's averages, calibrated files: counts and read-outs.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()
local width, height = 20, 10
local function floats(value)
  local parts = {}
  for i = 0, width * height - 1 do parts[#parts + 1] = string.pack("<f", value(i)) end
  return table.concat(parts)
end
local function read_out() return (status():gsub("^x=%s*%d+  y=%s*%d+  ", "")) end
local function pick_unit(text)
  for index, item in ipairs(items("panel", 1256)) do
    if item == text then return pick("panel", 1256, index - 1) end
  end
  error(text .. " isn't offered: " .. check.show(items("panel", 1256)))
end

-- A half is added, then the fraction goes: toward zero.
local stored = { [0] = 1.5, 1.49, -0.7, -1.6, 16383.25, 40000, -40000 }
local shown = { [0] = 2, 1, 0, -1, 16383, 32767, -32768 }
drop(files.write(dir .. "/average.flt", files.header { width = width, height = height, sample_bytes = 4, data_type = 8 }
  .. floats(function(i) return stored[i] or i end)))
for i, count in pairs(shown) do check.eq(pixel(i, 0), count, "float " .. stored[i]) end
check.eq(pixel(19, 9), 199)
check.eq(state("DisplayUnit"), 21)
check.eq(items("panel", 1256), { "Value (Counts)" })
command(151)
mouse(100, state("PanelHeight") + 200)
check.eq(read_out(), string.format("Value=%.3f Counts     ", pixel(state("CursorX"), state("CursorY"))))
command(151)

-- Samples whose bytes are exchanged, behind a header that says so in a word which reads the same both ways.
drop(files.image(dir .. "/swapped.img", { width = width, height = height, swap = 0 }, 1,
  function(_, x, y)
    return (string.unpack(">i2", string.pack("<i2", 300 * y + x)))
  end))
check.eq(state("ImageHeader.ByteSwap"), 0)
check.eq(pixel(7, 3), 907)
check.eq(pixel(19, 9), 2719)

-- The same with the header exchanged too: its sample size is no size then.
local bytes = readfile(dir .. "/swapped.img"):gsub("(.)(.)", "%2%1")
drop(files.write(dir .. "/all-swapped.img", bytes))
check.answer_box("Invalid data sample size: 512 bytes per sample", "ok",
  "Use different function to read this image file.")
check.eq(pixel(7, 3), 907, "the picture stays")

-- A header of 1024 bytes that holds the image header at an odd offset, then frames of floats.
local inner = files.header { width = width, height = height, sample_bytes = 4, data_type = 8, frames = 9 }
local outer = "\1" .. string.rep("\0", 110) .. inner .. string.rep("\0", 401)
check.eq(#outer, 1024)
local spectrum = files.write(dir .. "/spectrum.seq", outer .. floats(function(i) return i end)
  .. floats(function(i) return 1000.25 + i end) .. floats(function(i) return 2000.5 + i end))
command(113)
choose(spectrum)
check.eq(state("ImageHeader.FrameCount"), 3, "by the length, whatever was planned")
check.eq(pixel(19, 9), 199)
command(114)
check.eq(pixel(0, 0), 1000)
check.eq(pixel(19, 9), 1199)
command(114)
check.eq(pixel(0, 0), 2001)

-- 1000 counts are 20 degrees, 3000 are 30: 5 thousandths of a degree a count.
drop(files.image(dir .. "/warm.img",
  { width = width, height = height, cold = 1000, cold_c = 20, hot = 3000, hot_c = 30 }, 1,
  function(_, x, y) return 1000 + 100 * y + 10 * x end))
check.eq(items("panel", 1256), { "Signal (Counts)", "Signal (V)", "Temperature (°C)", "Temperature (°K)",
  "Temperature (°F)" })
command(151)
for _, place in ipairs { { 40, 60 }, { 333, 222 }, { 640, 400 } } do
  mouse(place[1], state("PanelHeight") + place[2])
  local celsius = 20 + (pixel(state("CursorX"), state("CursorY")) - 1000) * 10 / 2000
  for unit, value in pairs { ["Temperature (°C)"] = celsius, ["Temperature (°K)"] = celsius + 273.15,
    ["Temperature (°F)"] = celsius * 1.8 + 32 } do
    pick_unit(unit)
    mouse(place[1] + 1, state("PanelHeight") + place[2])
    mouse(place[1], state("PanelHeight") + place[2])
    local text, letter = status():match("Temperature=([%d.]+) ([CKF])     $")
    assert(text, unit .. ": not " .. status())
    check.near(tonumber(text), value, 0.0006, unit)
    check.eq(letter, unit:match("([CKF])%)$"))
  end
end
command(151)

-- A file without a calibration offers no temperature, and the unit falls back to counts.
drop(files.image(dir .. "/plain.img", { width = width, height = height }, 1, function(_, x) return x end))
check.eq(items("panel", 1256), { "Signal (Counts)", "Signal (V)" })
check.eq(state("DisplayUnit"), 0)

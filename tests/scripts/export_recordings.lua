-- Recordings of the simulated camera, raw and corrected, exported as they are on view: counts are those of pixel(), volts and degrees the ones that the
-- screen gives for them, (T2 - T1) (count - I1) / (I2 - I1) + T1 and its like worked out here in double, rounded to a single once. A file of raw frames is
-- corrected with the calibration in force where its degrees are asked for.
local check = require "check"
local calibration = require "calibration"
local dir = datadir()

local function single(value) return (string.unpack("<f", string.pack("<f", value))) end
local function array(path, code)
  local bytes = assert(readfile(path), path)
  local frames, rows, columns = bytes:sub(11, 128):match("'shape': %((%d+), (%d+), (%d+)%)")
  local size = string.packsize(code)
  check.eq(#bytes, 128 + size * frames * rows * columns)
  return function(x, y, frame) return (string.unpack(code, bytes, 129 + size * (((frame or 0) * rows + y) * columns + x))) end,
    tonumber(columns), tonumber(rows), tonumber(frames)
end
-- Each pixel of the first frame but those that are no number, whose count is given back.
local function compare(value, columns, rows, expected, what)
  local none = 0
  for y = 0, rows - 1 do
    for x = 0, columns - 1 do
      local here = value(x, y)
      if here ~= here then
        none = none + 1
      elseif here ~= expected(x, y) then
        check.eq(here, expected(x, y), what .. " at " .. x .. "," .. y)
      end
    end
  end
  return none
end

calibration.turn_on()
calibration.two_point(20, 25, 4)
while box() do answer("ok") end
frames(2)
local pair = { state("IntensityCold"), state("IntensityHot"), state("TemperatureCold"), state("TemperatureHot") }
assert(pair[1] < pair[2] and pair[3] < pair[4])
local function celsius(count) return (pair[4] - pair[3]) * (count - pair[1]) / (pair[2] - pair[1]) + pair[3] end
local kForms = {
  celsius = celsius,
  kelvin = function(count) return celsius(count) + single(273.15) end,
  fahrenheit = function(count) return celsius(count) * single(1.8) + 32 end,
  volts = function(count)
    local low, high = state("DisplayLow"), state("DisplayHigh")
    return (state("VoltsHigh") - state("VoltsLow")) * (count - low) / (high - low) + state("VoltsLow")
  end,
}

for _, pixels in ipairs { "raw", "corrected" } do
  local recorded = record { directory = dir, name = pixels, frames = 3, pixels = pixels, limit = 20000 }
  check.eq({ recorded.frames, #recorded.files }, { 3, 1 })
  drop(recorded.files[1])
  key("F7")
  check.eq({ state("ViewingFile"), state("CurrentFrame"), box() }, { 1, 1, nil })
  local written = export { out = dir .. "/" .. pixels .. ".npy" }
  local count, columns, rows = array(written.file, "<i2")
  check.eq({ written.columns, written.rows }, { columns, rows })
  check.eq(compare(count, columns, rows, pixel, pixels .. " counts"), 0)
  check.holds(readfile(dir .. "/" .. pixels .. ".json"), '"pixels": "' .. pixels .. '"')
  for form, value_of in pairs(kForms) do
    local out = ("%s/%s_%s.npy"):format(dir, pixels, form)
    if pixels == "raw" and form ~= "volts" then
      -- Its header names no sources: the screen has no degrees for it either.
      check.fails(function() export { out = out, as = form } end, "The picture on view has no calibration with two temperatures")
      check.eq(readfile(out), nil)
    else
      local told = export { out = out, as = form }
      check.eq({ told.columns, told.rows }, { columns, rows })
      local none = compare(array(out, "<f"), columns, rows, function(x, y) return single(value_of(pixel(x, y))) end, pixels .. " " .. form)
      check.eq(none, told.bad_detectors or 0)
      -- Those that the set is known to have; frames in readout order have no list.
      check.eq(told.bad_detectors ~= nil, pixels == "corrected", pixels .. " " .. form)
    end
  end
  key("F2")
end

-- The dialog's frames of the raw file are corrected with the lists in force: degrees are those of the screen with the same frames corrected by the set.
check.eq(batch("apply", "--set", state("CalSettings.CalFile"), dir .. "/raw.seq", dir .. "/applied.seq"), 0)
local kPlace = { celsius = 3, kelvin = 4, fahrenheit = 5 }
for form, place in pairs(kPlace) do
  drop(dir .. "/raw.seq")
  key("Ctrl+E")
  check.eq(items(22001)[1], "Frames of raw.seq")
  pick(22004, place)
  set(22006, ("%s/even_%s.npy"):format(dir, form))
  press(1)
  check.eq({ dialog(), box() and box().text }, { nil, nil })
  drop(dir .. "/applied.seq")
  check.eq({ state("CurrentFrame"), state("LastFrame") }, { 0, 2 })
  local value, columns, rows, count = array(("%s/even_%s.npy"):format(dir, form), "<f")
  check.eq(count, 3)
  local function on_screen(x, y) return single(kForms[form](pixel(x, y))) end
  local none = compare(value, columns, rows, on_screen, "frame 0 in " .. form)
  assert(none > 0, "the array has bad ones")
  key("F7")
  check.eq(state("CurrentFrame"), 1)
  check.eq(compare(function(x, y) return value(x, y, 1) end, columns, rows, on_screen, "frame 1 in " .. form), none)
end

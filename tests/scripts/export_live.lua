-- The picture on view for other programs: frozen with a calibration in force it is what is seen, count for count, and degrees on the line through the two
-- sources, bad detectors no numbers. Live, of a file on view, of a burst in host memory; and what can't be.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local dir = datadir()

local function array(path, code)
  local bytes = readfile(path)
  local rows, columns = bytes:sub(11, 128):match("'shape': %(%d+, (%d+), (%d+)%)")
  local size = string.packsize(code)
  check.eq(#bytes, 128 + size * rows * columns)
  return function(x, y) return (string.unpack(code, bytes, 129 + size * (y * columns + x))) end, tonumber(columns), tonumber(rows)
end

calibration.turn_on()
calibration.two_point(20, 25, 4)
while box() do answer("ok") end
check.eq({ state("CalType"), state("LiveVideo") }, { 2, 1 })
frames(2)
key("F2")
check.eq(state("LiveVideo"), 0)

local written = export { out = dir .. "/counts.npy" }
check.eq({ written.format, written.form, written.unit, written.frames, written.stopped }, { "npy", "counts", "Counts", 1, false })
check.eq({ written.columns, written.rows }, { state("Hactive"), state("Vactive") })
local count, columns, rows = array(dir .. "/counts.npy", "<i2")
check.eq({ columns, rows }, { written.columns, written.rows })
for y = 0, rows - 1 do
  for x = 0, columns - 1 do
    if count(x, y) ~= pixel(x, y) then check.eq(count(x, y), pixel(x, y), "pixel " .. x .. "," .. y) end
  end
end

-- (T2 - T1) (count - I1) / (I2 - I1) + T1 in double, rounded to a single once.
local cold, hot, tcold, thot = state("IntensityCold"), state("IntensityHot"), state("TemperatureCold"), state("TemperatureHot")
local degrees = export { out = dir .. "/degrees.npy", as = "celsius" }
check.eq(degrees.unit, "°C")
assert(degrees.bad_detectors > 0, "the array has bad ones")
local celsius, bad = array(dir .. "/degrees.npy", "<f"), 0
for y = 0, rows - 1 do
  for x = 0, columns - 1 do
    local expected = string.unpack("<f", string.pack("<f", (thot - tcold) * (pixel(x, y) - cold) / (hot - cold) + tcold))
    local value = celsius(x, y)
    if value ~= value then
      bad = bad + 1
    elseif value ~= expected then
      check.eq(value, expected, "degrees at " .. x .. "," .. y)
    end
  end
end
check.eq(bad, degrees.bad_detectors)

-- A rectangle, and the other formats by their names' ends.
local part = export { out = dir .. "/part.npy", rectangle = { 10, 20, 14, 22 } }
check.eq({ part.columns, part.rows }, { 5, 3 })
check.eq(array(dir .. "/part.npy", "<i2")(4, 2), pixel(14, 22))
for _, name in ipairs { "tif", "fits", "h5", "csv" } do
  check.eq(export { out = dir .. "/x." .. name, as = "kelvin" }.unit, "K")
  assert(#readfile(dir .. "/x." .. name) > 0)
end

-- What stands is left alone, unless that is said.
check.fails(function() export { out = dir .. "/part.npy" } end, "export: " .. dir .. "/part.npy stands already")
export { out = dir .. "/part.npy", replace = true }
check.eq(#readfile(dir .. "/part.npy"), 128 + 2 * columns * rows)

-- Live it is the newest frame; the video goes on.
key("F2")
check.eq(export { out = dir .. "/live.npy" }.frames, 1)
check.eq(state("LiveVideo"), 1)
-- Regions are parts of one frame, however many there are.
regions { { name = "one", x1 = 5, y1 = 7, x2 = 60, y2 = 50 }, { name = "same", x1 = 5, y1 = 7, x2 = 60, y2 = 50 } }
local both = export { out = dir .. "/live.npy", regions = true }.files
check.eq(#readfile(both[1]), 128 + 2 * 56 * 44)
check.eq(readfile(both[1]) == readfile(both[2]), true)
check.eq(state("LiveVideo"), 1)
regions {}

-- A raw file with the lists in force: image order, (count - offset) / gain; without them it stays as it is stored.
local width, height = state("Hroi"), state("Vroi")
files.image(dir .. "/raw.seq", { width = width, height = height }, 3, function(frame, x, y) return 4000 + 100 * frame + x + y end)
local raw = export { of = "file", file = dir .. "/raw.seq", out = dir .. "/raw.npy", first = 1, count = 2 }
check.eq({ raw.frames, raw.columns, raw.bad_detectors }, { 2, width, nil })
local even = export { of = "file", file = dir .. "/raw.seq", out = dir .. "/even.npy", as = "corrected", in_force = true }
check.eq({ even.frames, even.form }, { 3, "corrected" })
check.fails(function() export { of = "file", file = dir .. "/raw.seq", out = dir .. "/no.npy", as = "celsius" } end, "no calibration with two temperatures")

-- Escape finishes the frame and closes the file.
sim.fault("escape", 2)
local stopped = export { of = "file", file = dir .. "/raw.seq", out = dir .. "/stopped.npy" }
check.eq({ stopped.stopped, stopped.frames }, { true, 1 })
check.eq(#readfile(dir .. "/stopped.npy"), 128 + 2 * width * height)

-- A disk that refuses leaves nothing.
for step = 1, 4 do
  sim.fault("disk", step)
  check.fails(function() export { out = dir .. "/refused.fits" } end, "can't be written")
  sim.fault("disk", 0)
  check.eq(readfile(dir .. "/refused.fits"), nil)
end

-- Settings that make no sense.
for _, wrong in ipairs {
  { {}, '"out" names the new file' }, { { out = "x" }, '"to" says which format' }, { { out = "x.npy", as = "watts" }, "\"as\" can't have that value" },
  { { out = "x.npy", colour = 1 }, 'no setting "colour"' }, { { out = "x.npy", file = "y.seq" }, '"file" goes with of = "file"' },
  { { out = "x.npy", rectangle = { 1, 2, 3 } }, "\"rectangle\" can't have that value" }, { { out = "x.npy", of = "host frames" }, "There are no frames in host memory." },
  { { out = "x.npy", rectangle = { 9000, 0, 9001, 1 } }, "The region lies outside of the frame." },
} do
  check.fails(function() export(wrong[1]) end, "export: " .. wrong[2])
end

-- Without a picture.
check.eq(box(), nil)

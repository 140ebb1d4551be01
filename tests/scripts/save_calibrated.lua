-- What two calibrations of the camera itself make of the picture is what is saved of it: frozen and on view, count for count; live, the
-- frames differ by their noise alone.
local check = require "check"
local calibration = require "calibration"
local dir = datadir()
local width, height = 320, 256

local function save_image(name, frames)
  command(106)
  set(1460, name)
  set(1488, frames or "1")
  press(1)
  check.eq({ box() and box().text, dialog() }, {})
  local bytes = readfile(dir .. "/" .. name .. ".img")
  check.eq(#bytes, 512 + 2 * width * height)
  return function(x, y) return (string.unpack("<i2", bytes, 513 + 2 * (y * width + x))) end
end

local function expect_screen(count)
  for y = 0, height - 1 do
    for x = 0, width - 1 do
      if count(x, y) ~= pixel(x, y) then check.eq(count(x, y), pixel(x, y), "pixel " .. x .. "," .. y) end
    end
  end
end

-- The read-out of the image cursor tells the same count.
local function expect_read_out(count)
  mouse(130, 220)
  command(151)
  local x, y, value = status():match("^x= *(%d+)  y= *(%d+)  .-= *([-%d.]+)")
  assert(x, status())
  check.eq(tonumber(value), count(tonumber(x), tonumber(y)), "read-out at " .. x .. "," .. y)
  command(151)
end

-- Deviation of the difference of a saved frame and the one on the screen.
local function difference(count)
  local sum, squares, n = 0, 0, 0
  for y = 0, height - 1, 3 do
    for x = 0, width - 1, 5 do
      local d = count(x, y) - pixel(x, y)
      if math.abs(d) < 100 then sum, squares, n = sum + d, squares + d * d, n + 1 end
    end
  end
  return sum / n, math.sqrt(squares / n)
end

local function in_counts()
  command(120)
  check.eq(dialog(), "DISPLAY")
  pick(1256, 0)
  press(1)
  check.eq({ box() and box().text, dialog() }, {})
end

local function expect_saved_as_seen(name)
  frames(3)
  local count = save_image(name .. "live")
  local mean, deviation = difference(count)
  check.near(mean, 0, 0.3)
  check.near(deviation, 5 * math.sqrt(2), 0.5, "two frames of 5 counts of noise each")

  key("F2")
  check.eq(state("LiveVideo"), 0)
  count = save_image(name .. "still")
  expect_screen(count)
  expect_read_out(count)
  local header = readfile(dir .. "/" .. name .. "still.img")
  check.eq((string.unpack("<i2", header, 25)), state("IntensityCold"))

  drop(dir .. "/" .. name .. "still.img")
  check.eq({ state("ViewingFile"), box() }, { 1 })
  expect_screen(count)
  expect_screen(save_image(name .. "again"))
  key("F2")
  check.eq(state("LiveVideo"), 1)
end

calibration.turn_on()
calibration.two_point(20, 25, 30)
answer("ok")
check.eq({ state("CalType"), state("SubstBadPixels") }, { 2, 1 })
sim.source("low", 22)
in_counts()
expect_saved_as_seen("two")

-- Turned, then with the bad pixels as they are.
command(122)
check(1300, true)
check(1302, true)
press(1604)
press(1)
expect_saved_as_seen("turned")
key("F9")
check.eq(state("SubstBadPixels"), 0)
key("F2")
expect_screen(save_image("bad"))
-- Replaced while it is frozen: the screen follows, and so does the file.
local before = {}
for i = 0, width * height - 1 do before[i] = pixel(i % width, i // width) end
key("F9")
local changed = 0
for i = 0, width * height - 1 do
  if before[i] ~= pixel(i % width, i // width) then changed = changed + 1 end
end
check.near(changed, 0.02 * width * height, 200, "the bad ones are replaced on the screen")
expect_screen(save_image("replaced"))
key("F2")

command(130)
calibration.accept(1, 30)
calibration.at_low(20, 20)
answer("ok")
check.eq(state("CalType"), 1)
in_counts()
expect_saved_as_seen("one")

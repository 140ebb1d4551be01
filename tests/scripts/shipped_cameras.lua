-- The simulated cameras as they ship, each turned on through its own section: frame rate, working point, noise, range, and what the bench's
-- truth says of the detectors.
local check = require "check"
local video = require "video"

-- Index in the configuration dialog's list; size; frames a second from crystal, divider and window; spread of response.
local cameras = {
  { index = 1, columns = 320, rows = 256, hertz = 48000000 / 12 / (320 * 256), spread = 0.012 },
  { index = 0, columns = 640, rows = 512, hertz = 100, spread = 0.012 },
  { index = 2, columns = 64, rows = 64, hertz = 48000000 / 12 / 4 / (64 * 64), spread = 0.006 },
}

local kinds = { "dead", "weak", "strong", "offset_bad", "hot", "noisy", "blinking" }

-- Every detector of a small array; of a larger one as many, all over it.
local function chosen_pixels(camera)
  local good, bad, step = {}, 0, camera.columns // 64
  for y = 0, camera.rows - 1, camera.rows // 64 do
    for x = y // 8 % step, camera.columns - 1, step do
      local truth = sim.truth(x, y)
      local is_bad = false
      for _, kind in ipairs(kinds) do is_bad = is_bad or truth[kind] == 1 end
      if is_bad then bad = bad + 1 else good[#good + 1] = { x, y } end
    end
  end
  return good, bad
end

local function read(places)
  local counts = {}
  for i, place in ipairs(places) do counts[i] = pixel(place[1], place[2]) end
  return counts
end

local function mean(values)
  local sum = 0
  for _, value in ipairs(values) do sum = sum + value end
  return sum / #values
end

local function rms(values)
  local middle, sum = mean(values), 0
  for _, value in ipairs(values) do sum = sum + (value - middle) ^ 2 end
  return math.sqrt(sum / #values)
end

local function difference(a, b)
  local result = {}
  for i = 1, #a do result[i] = a[i] - b[i] end
  return result
end

-- The mean of a few frames of a source.
local function at(source, degrees, places)
  sim.source(source, degrees)
  frames(2)
  local sum = read(places)
  for _ = 2, 4 do
    frames(1)
    for i, count in ipairs(read(places)) do sum[i] = sum[i] + count end
  end
  for i = 1, #sum do sum[i] = sum[i] / 4 end
  return sum
end

local function expect_rate(camera)
  local delivered = state("FramesDelivered")
  wait(3000)
  check.near((state("FramesDelivered") - delivered) / 3, camera.hertz, 0.7)
  check.eq(state("FramesLost"), 0)
end

local function expect_working_point(camera)
  local places, bad = chosen_pixels(camera)
  check.near(bad / (bad + #places), 0.02, 0.009, "the bad part")

  local low = at("low", 20, places)
  check.near(mean(low), 7500, 30, "counts at 20 degrees")
  assert(rms(low) <= 95, "spread at the low source: " .. rms(low))
  for i, count in ipairs(low) do
    -- Four frames: a noise of 2.5 counts, which stays within 4.5 times that.
    check.near(count, mean(low), 312, places[i][1] .. ", " .. places[i][2])
  end
  local slope = mean(difference(at("low", 21, places), at("low", 19, places))) / 2
  check.near(slope, 250, 5, "counts a degree")

  sim.source("low", 20)
  frames(2)
  local one = read(places)
  frames(1)
  local noise = rms(difference(read(places), one)) / math.sqrt(2)
  check.near(noise, 5, 0.25, "noise of a frame")

  local high = at("high", 40, places)
  for _, count in ipairs(high) do assert(count < 16383, "40 degrees is in range") end
  local response = difference(high, low)
  check.near(rms(response) / mean(response), camera.spread, 0.0012, "spread of response")
  for _, each in ipairs(response) do check.near(each / mean(response), 1, 0.15, "response") end
end

for number, camera in ipairs(cameras) do
  if number > 1 then
    command(123)
    pick(1598, camera.index)
    press(1)
    answer("yes")
  end
  video.turn_on()
  check.eq({ state("Hroi"), state("Vroi"), state("LiveVideo") }, { camera.columns, camera.rows, 1 })
  frames(10)
  expect_rate(camera)
  expect_working_point(camera)
end
check.eq(sim.truth(64, 0), nil, "beyond the small array")

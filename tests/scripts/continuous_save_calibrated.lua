-- Continuous save with a calibration in force: calibrated frames; raw ones; raw ones that are corrected when the run has ended. The set's lists are
-- read from its files, and what is expected follows from them count by count.
local check = require "check"
local calibration = require "calibration"

local kName, kUpdate, kHeaders, kCalibrated, kCorrect, kStart = 1460, 1630, 1785, 1395, 1397, 124
local kValues = 320 * 256

local function at(name) return datadir() .. "/" .. name end
local function list(name, format, size)
  local bytes, values = readfile(at(name)), {}
  for i = 0, kValues - 1 do values[i] = string.unpack(format, bytes, 1 + size * i) end
  return values
end
local function run(name, headers, calibrated, correct, frame_count)
  check(kHeaders, headers)
  check(kCalibrated, calibrated)
  check(kCorrect, correct)
  set(kName, at(name))
  set(kUpdate, "0")
  press(kStart)
  if box() then answer("yes") end
  check.eq(text(kStart), "&Stop acquisition")
  frames(frame_count)
  press(kStart)
  return state("SaveFrameCount")
end
local function pixel_of(bytes, prefix, frame, i)
  return (string.unpack("<i2", bytes, 512 + frame * (prefix + 2 * kValues) + prefix + 2 * i + 1))
end
local kProbes = {}
for n = 1, 60 do kProbes[n] = (n * 7919) % kValues end

calibration.turn_on()
calibration.two_point(20, 25, 2)
answer("ok")
command(132)
calibration.choose(at("set.cal"))
if box() then answer("ok") end
check.eq({ dialog(), box(), state("CalType") }, { nil, nil, 2 })
local decom, offset, gain = list("set.dcm", "<I4", 4), list("set.off", "<i2", 2), list("set.gai", "<f", 4)

-- A source that is even, so that two frames differ by noise alone.
sim.source("low", 22)
frames(3)

command(110)
check.eq({ checked(kCalibrated), checked(kCorrect) }, { true, false }, "they exclude each other")
check.eq({ enabled(kCalibrated), enabled(kCorrect) }, { true, true })

-- Calibrated frames are marked as such, and lie in the picture's order: near to what is on the screen.
check(kCorrect, true)
set(kName, at("calibrated.seq"))
set(kUpdate, "0")
press(kStart)
check.eq(checked(kCorrect), false, "both at once: no second correction")
frames(3)
press(kStart)
local calibrated = readfile(at("calibrated.seq"))
local cold, hot = string.unpack("<i2", calibrated, 25), string.unpack("<i2", calibrated, 31)
check.eq({ cold, hot }, { math.tointeger(state("IntensityCold")), math.tointeger(state("IntensityHot")) })
assert(cold > 0 and hot > cold)

-- Raw frames, and the same run corrected afterwards: first without the correction, the raw counts.
local raw_frames = run("raw.seq", false, false, false, 2)
local raw = readfile(at("raw.seq"))
check.eq(#raw, 512 + raw_frames * 2 * kValues)
check.eq(string.unpack("<i2", raw, 25), -10000, "raw frames are marked as uncalibrated")

-- The camera repeats nothing, so what a corrected run was made of isn't there any more. Its values are near to the calibrated run's.
for _, headers in ipairs { false, true } do
  local prefix, name = headers and 80 or 0, headers and "with.seq" or "without.seq"
  run(name, headers, false, false, 1)
  local before = readfile(at(name))
  local first = state("SaveFrameCount")
  local all = run(name, headers, false, true, 2)
  local after = readfile(at(name))
  check.eq(#after, 512 + all * (prefix + 2 * kValues))
  check.eq(after:sub(513, #before), before:sub(513), "frames of the run before stay as they are")
  check.seen("status", { text = (" Applying calibration to %d frames"):format(all - first) })
  local away = 0
  for _, i in ipairs(kProbes) do
    if gain[decom[i]] ~= 0 then
      away = away + math.abs(pixel_of(after, prefix, all - 1, i) - pixel_of(calibrated, 0, 0, i))
      local raw_count = pixel_of(before, prefix, 0, decom[i])
      local from_raw = (raw_count - offset[decom[i]]) / gain[decom[i]]
      assert(math.abs(from_raw - pixel_of(after, prefix, all - 1, i)) < 60, ("pixel %d: %g"):format(i, from_raw))
    end
  end
  assert(away / #kProbes < 20, away / #kProbes)
end

-- What fails is told.
check(kCorrect, true)
set(kName, at("gone.seq"))
press(kStart)
frames(2)
os.remove(at("gone.seq"))
press(kStart)
check.answer_box("Unable to open file!", "ok", "Filename Error!")
check.eq(text(kStart), "&Start acquisition")

-- The choice is kept, and the second box follows the first.
press(1)
command(110)
check.eq({ checked(kCalibrated), checked(kCorrect) }, { false, true })
press(2)
check.eq(dialog(), nil)

-- The frames that the start before kept are the camera now: the calibration comes out byte for byte as it did live, and the gap of the recording is a
-- loss again.
local check = require "check"
local calibration = require "calibration"
local recordings = require "recordings"

local kColdTemperature, kHotTemperature = 1224, 1226

calibration.turn_on()
calibration.accept(2, 12)
check.eq(dialog(), "CAL_COLD")
sim.source("low")
set(kColdTemperature, "20")
press(1)
check.eq(dialog(), "CAL_HOT")
sim.source("high")
set(kHotTemperature, "25")
press(1)
calibration.bad_pixels()
answer("ok")
check.eq(state("CalType"), 2)
for _, extension in ipairs { ".gai", ".off", ".noi", ".dcm", ".bad", ".cal" } do
  assert(readfile("data/live" .. extension) == readfile("data/Last" .. extension), extension)
end

-- What the recording doesn't have is told, in a box the first time.
wait(500)
check.answer_box("kept2.seq doesn't tell its integration time: that of the head's settings is shown.", "ok")
check.eq({ state("CameraRate"), state("CameraColumns"), state("CameraRows"), state("CameraLost") }, { state("CameraRate"), 320, 256, 0 })
check.near(state("CameraRate"), state("FrameRate"), 1e-5)
local refused, why = pcall(sim.source, "low", 20)
check.eq(refused, false)
check.holds(why, "a recording has the temperature that it was made at")

-- A whole round of the scene has the frame that is missing in it, wherever it begins.
local kept = recordings.journal(datadir() .. "/scene.seq")
sim.source("scene")
wait(300)
local told = false
for _, line in ipairs(transcript()) do told = told or line.kind == "status" and line.text:find("scene.seq", 1, true) ~= nil end
check.eq({ box(), told }, { nil, false }, "its times and its integration time are those that are set")
local run = record{ name = "played", pixels = "raw", frames = #kept.records, limit = 20000 }
check.eq({ run.frames, run.lost_by_board, run.lost_by_ring, run.exit_code }, { #kept.records, 1, 0, 1 })
local played = recordings.journal(run.files[1])
check.holds(played.head, "as scene.seq was played again")

-- Each frame is one of the recording, in order.
local kPixels = 2 * 320 * 256
local function frames_of(path)
  local bytes, frames = readfile(path), {}
  for at = 512 + 80, #bytes - kPixels, kPixels + 80 do frames[#frames + 1] = bytes:sub(at + 1, at + kPixels) end
  return frames
end
local source, copy = frames_of(datadir() .. "/scene.seq"), frames_of(run.files[1])
check.eq(#copy, #source)
local shift
for i = 1, #source do if source[i] == copy[1] then shift = i - 1 end end
assert(shift, "the first frame is none of the recording")
for i = 1, #copy do assert(copy[i] == source[(i + shift - 1) % #source + 1], "frame " .. i) end

-- What the head is set to otherwise stays the recording's, and is told on the status line from now on.
local rate = state("FrameRate")
command(121)
check.eq(dialog(), "QVF1058")
pick(624, 2)
press(1)
if dialog() == "CALIB" then press(2) end
wait(500)
check.eq(box(), nil)
check.eq(state("FrameRate"), rate)
told = false
for _, line in ipairs(transcript()) do told = told or line.kind == "status" and line.text:find("scene.seq is played at", 1, true) ~= nil end
check.eq(told, true)

-- The bench of recorded frames, and the next start's camera, which ends.
command(2009)
check.eq(text("FILEBENCH", 1013), "scene.seq")
check.eq(text("FILEBENCH", 1011), "kept1.seq")
check.eq(checked("FILEBENCH", 1003), true)
press("FILEBENCH", 1001)
frames(2)
check.holds(text("FILEBENCH", 1031), "320 x 256 at ")
screenshot("bench.png")
press("FILEBENCH", 2)
local settings = readfile("data/recorded.cnf")
local file = assert(io.open(datadir() .. "/recorded.cnf", "w"))
file:write((settings:gsub("%[Bench%]\nSource=low", "End=once\n[Bench]\nSource=scene")))
file:close()

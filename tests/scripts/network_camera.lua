-- A camera on the loopback, with the real clock: turned on, seen, recorded, switched off and on while it is recorded, turned off.
-- network_camera_test.py gives the camera and does to it what the files ask that are written here.
local check = require "check"
local recordings = require "recordings"

local function read_boxes()
  while box() do
    print("box: " .. box().text)
    answer("ok")
  end
end

local function ask(what) assert(io.open(datadir() .. "/" .. what, "w")):close() end

local function wait_for(what, that)
  for _ = 1, 300 do
    if that() then return end
    wait(100)
    read_boxes()
  end
  error(what .. " didn't come")
end

read_boxes()
check.eq(dialog(), "CLOCK_ON")
press(1070)
read_boxes()
check.eq(dialog(), "QVF1058")
screenshot("network_camera_set_up.png")
press(1)
read_boxes()
if dialog() == "CALIB" then press(2) end
read_boxes()
check.eq({ state("CameraOn"), state("LiveVideo"), state("Hroi"), state("Vroi") }, { 1, 1, 512, 512 })

-- Live: frames come, and they are the camera's ramp, in which each line differs from the one above.
frames(10)
screenshot("network_camera_live.png")
assert(pixel(100, 100) ~= pixel(100, 110), "a ramp")
check.eq(state("FramesLostByTransport"), 0)

-- A freeze holds what is seen.
command(140)
read_boxes()
check.eq(state("LiveVideo"), 0)
local held = pixel(200, 300)
wait(300)
check.eq(pixel(200, 300), held)
command(140)
read_boxes()
check.eq(state("LiveVideo"), 1)

-- A recording in which nothing is lost.
local run = record{ name = "whole", frames = 100, limit = 60000 }
check.eq({ run.frames, run.lost, run.exit_code }, { 100, 0, 0 }, run.verdict)
recordings.kFrameBytes = 80 + 512 * 512 * 2
recordings.expect_steps(recordings.numbers(run.files[1]), 100, 1)

-- The camera is switched off and on while it is recorded: the gap is told, and the recording goes on.
record{ name = "gap", wait = false }
wait(1000)
ask("off")
wait_for("the standstill", function()
  local before = recorder().frames
  wait(1000)
  return recorder().frames == before
end)
local stood = recorder().frames
check.eq(recorder().state, "recording")
screenshot("network_camera_lost.png")
ask("on")
wait_for("the camera", function() return recorder().frames > stood + 10 end)
run = record("stop")
read_boxes()
assert(run.lost_by_transport > 0, run.verdict)
check.eq({ run.lost, run.lost_by_board, run.lost_by_ring }, { run.lost_by_transport, 0, 0 }, run.verdict)
check.holds(run.verdict, " by the transport, 0 by the board, 0 by the ring)")
local numbers = recordings.numbers(run.files[1])
check.eq(numbers[#numbers] - numbers[1] + 1, #numbers + run.lost, "each number is a frame or a lost one")

-- The same without a recording: the last frame stands, and live video goes on by itself.
ask("off")
wait_for("the loss", function() return state("CameraLost") == 1 end)
local last = pixel(200, 300)
wait(2000)
check.eq({ state("LiveVideo"), pixel(200, 300) }, { 1, last })
local before = state("FramesLostByTransport")
ask("on")
wait_for("the camera", function() return state("CameraLost") == 0 end)
frames(10)
assert(state("FramesLostByTransport") > before, "the standstill is told")
check.eq(state("LiveVideo"), 1)

command(169)
answer("yes")
read_boxes()
check.eq(state("CameraOn"), 0)
return 0

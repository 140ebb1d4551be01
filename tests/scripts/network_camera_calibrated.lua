-- A camera on the loopback behind which the simulated camera's detectors stand: calibrated as that one, within the limits that hold there, and
-- 1000 frames of it recorded at 50 Hz, none lost.
local check = require "check"
local calibration = require "calibration"
local recordings = require "recordings"

local data = datadir()
local front = data .. "/front"
local camera <close> = setmetatable({}, { __close = function(self) if self.pid then os.execute("kill " .. self.pid) end end })

local function put(word)
  local file <close> = assert(io.open(front, "w"))
  file:write(word, "\n")
end

local function read_boxes()
  while box() do
    print("box: " .. box().text)
    answer("ok")
  end
end

put("scene")
-- It ends by itself where this script doesn't come to its end.
local pipe = assert(io.popen(("timeout 300 '%s' --serial KCAL --rate 50 --front '%s' '%s/insb320.cnf' & echo $!; wait"):format(arg[1], front, data)))
camera.pid = pipe:read("l")
check.eq(pipe:read("l"), "KCAL at 127.0.0.1")

check.eq(dialog(), "CLOCK_ON")
press(2)
command(2260)
wait(500)
for index, line in ipairs(items(22601)) do
  if line:find("KCAL", 1, true) then pick(22601, index - 1) end
end
for index, format in ipairs(items(22605)) do
  if format == "Mono14" then pick(22605, index - 1) end
end
press(1)
answer("yes")
read_boxes()
check.eq(dialog(), "CLOCK_ON")
press(1070)
read_boxes()
check.eq(dialog(), "QVF1058")
press(1)
read_boxes()
check.near(state("CameraRate"), 50, 0.5)
check.eq({ state("CameraBits"), state("Hroi"), state("Vroi") }, { 14, 320, 256 })

calibration.accept(2, 30)
for _, source in ipairs { { "CAL_COLD", "low", 20, 1224 }, { "CAL_HOT", "high", 25, 1226 } } do
  check.eq(dialog(), source[1])
  put(source[2])
  wait(500)
  set(source[4], tostring(source[3]))
  press(1)
end
-- 2 % of the 81920 detectors are bad; some of those blink, and may stand still for the moment.
local bad = calibration.bad_pixels()
check.near(bad["Total bad pixels"], 0.02 * 81920, 150)
local result = box().text
print(result)
answer("ok")
read_boxes()

-- One frame of the source carries its noise of 5 counts and next to nothing else.
frames(3)
local deviation = calibration.unevenness()
check.near(deviation, 5, 0.4)
check.eq(state("CalType"), 2)

local run = record{ name = "fifty", frames = 1000, limit = 120000 }
check.eq({ run.frames, run.lost, run.exit_code }, { 1000, 0, 0 }, run.verdict)
-- The camera is a process beside this one, which a busy machine lets send late now and then.
check.near(recordings.middle_step(run.files[1]), 20, 1)
recordings.expect_steps(recordings.numbers(run.files[1]), 1000, 1)
check.eq(state("FramesLostByTransport"), 0)

command(169)
answer("yes")
read_boxes()
check.eq(state("CameraOn"), 0)
return 0

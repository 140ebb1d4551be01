-- A recording that is played once: its end is told, the last frame stands, and it can be begun again.
local check = require "check"
local video = require "video"

video.turn_on()
wait(3000)
if box() then answer("ok") end
check.eq(state("CameraLost"), 1)
check.eq(state("LiveVideo"), 1)
local told = 0
for _, line in ipairs(transcript()) do
  if line.kind == "status" and line.text == "scene.seq has ended: no more frames come" then told = told + 1 end
end
check.eq(told, 1)
check.eq(box(), nil, "no time-out is told")
local last = pixel(160, 128)
wait(1000)
check.eq(pixel(160, 128), last)
sim.source("scene")
frames(2)
check.eq(state("CameraLost"), 0)

-- Off, nothing is told any more.
command(169)
answer("yes")
check.eq(state("CameraRate"), 0)

-- Live video for a minute: what became of the frames, and how soon a command is answered meanwhile. Started by live_bench.sh.
-- The second argument "any": the result is 0 whatever was measured.
local seconds = tonumber(arg and arg[1]) or 60
local any = arg and arg[2] == "any"
local allowedMs = 50

local function in_front(name)
  assert(dialog() == name, dialog() or box() and box().text)
end
in_front("CLOCK_ON")
press(1070)  -- by the video set-up
in_front("QVF1058")
press(1)
in_front("CALIB")
press(2)  -- it needn't be calibrated
assert(dialog() == nil and box() == nil and state("LiveVideo") == 1)
frames(100)  -- windows, plan and caches have settled

local function account()
  return {
    delivered = state("FramesDelivered"), shown = state("FramesShown"),
    lost = state("FramesLost"), missed = state("FramesMissed"),
  }
end

local function last_line()
  local lines = transcript()
  return #lines, lines[#lines].t
end

-- From the end of one command to the first that is seen of the next, in ms.
local function answer_ms()
  command(145)
  local count, before = last_line()
  command(143)
  return transcript()[count + 1].t - before
end

local start = account()
local _, startMs = last_line()
local slowest, commands, nowMs = 0, 0, startMs
repeat
  wait(1000)
  slowest = math.max(slowest, answer_ms())
  commands = commands + 1
  _, nowMs = last_line()
until nowMs - startMs >= seconds * 1000
local stop = account()

local delivered = stop.delivered - start.delivered
local lost = stop.lost - start.lost
print(string.format("%d x %d, %.1f s: %d frames delivered (%.1f Hz), %d shown, %d lost, %d missed during commands",
                    state("Hroi"), state("Vroi"), (nowMs - startMs) / 1000, delivered,
                    delivered * 1000 / (nowMs - startMs), stop.shown - start.shown, lost, stop.missed - start.missed))
print(string.format("%d commands, the slowest answered after %d ms (at most %d)", commands, slowest, allowedMs))
return (any or lost == 0 and slowest <= allowedMs) and 0 or 1

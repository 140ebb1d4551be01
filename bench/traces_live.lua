-- Sixteen regions of 64 x 64 traced on every frame of live video, corrected by a two-point calibration: the processor's time of the whole program with and
-- without them, in turn. Started by traces_live.sh. The third argument "any": the result is 0 whatever was measured.
local rounds, seconds, any = tonumber(arg[1]) or 5, tonumber(arg[2]) or 4, arg[3] == "any"
local allowed = 10  -- percent of a core at 100 Hz

local kTraces, kLive, kStop, kFrames = 2240, 22401, 22402, 22408

local function in_front(name) assert(dialog() == name, dialog() or box() and box().text) end
in_front("CLOCK_ON")
press(1070)  -- by the video set-up
in_front("QVF1058")
press(1)
in_front("CALIB")
press(1213)  -- two points
set(1216, "4")
press(1)
in_front("CAL_COLD")
sim.source("low", 20)
set(1224, "20")
press(1)
in_front("CAL_HOT")
sim.source("high", 25)
set(1226, "25")
press(1)
while box() do answer("ok") end
assert(dialog() == nil and state("LiveVideo") == 1 and state("CalType") == 2)
local places = {}
for i = 0, 15 do
  local x, y = 17 + i % 4 * 150, 11 + i // 4 * 120
  places[#places + 1] = { name = "R" .. i + 1, x1 = x, y1 = y, x2 = x + 63, y2 = y + 63 }
end
regions(places)
frames(100)  -- windows, plan and caches have settled

-- Percent of a core over so many seconds, and the frames that came meanwhile.
local function cost()
  local processor, delivered = os.clock(), state("FramesDelivered")
  wait(1000 * seconds)
  return (os.clock() - processor) / seconds * 100, state("FramesDelivered") - delivered
end
local function median(values)
  table.sort(values)
  return values[(#values + 1) // 2]
end

command(kTraces)
local without, with, more, traced, delivered = {}, {}, {}, 0, 0
for round = 1, rounds do
  without[round] = cost()
  press("TRACES", kLive)
  local percent, frames_seen = cost()
  press("TRACES", kStop)
  with[round] = percent
  more[round] = percent - without[round]
  traced = traced + tonumber((text("TRACES", kFrames):match("%d+")))
  delivered = delivered + frames_seen
end
press("TRACES", 2)
local share = median(more)
print(("%d x %d, %d rounds of %g s: %.1f %% of a core without, %.1f %% with 16 regions of 64 x 64 traced, %.1f %% more (less than %d); %d frames traced of %d delivered"):format(
  state("Hroi"), state("Vroi"), rounds, seconds, median(without), median(with), share, allowed, traced, delivered))
return (any or share < allowed) and 0 or 1

-- Live video of the simulated camera, and a recording of it, in real time. Started by recording_live.sh.
-- The second argument: "busy", the operator works while it records; "cost", nobody does, with and without a recording in
-- turn, which costs processor time. The third argument "any": the result is 0 whatever was measured.
local seconds = tonumber(arg[1])
local busy = arg[2] == "busy"
local any = arg[3] == "any"

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

-- Something else each time, as an operator would.
local steps = {
  function() command(120) in_front("DISPLAY") wait(100) press(2) end,
  function() command(145) end,           -- colours
  function() command(200) end,           -- zoom in
  function() for _ = 1, 5 do command(202) end end,  -- pan
  function() command(196) in_front("ABOUT") wait(100) press(1) end,
  function() for _ = 1, 10 do sim.trigger() end end,  -- the window moves
  function() for i = 1, 20 do mouse(100 + 10 * i, 100 + 7 * i) end end,
  function() command(201) end,           -- zoom out
  function() command(156) end,           -- the next colours
  function() command(2006) wait(50) end, -- the frame account
  function() command(2007) wait(50) end, -- the color scale
  function() command(143) end,
  function() command(151) end,           -- the cursor
}

local function work()
  local turns, stop = 0, os.time() + seconds
  while os.time() < stop do
    steps[turns % #steps + 1]()
    turns = turns + 1
    wait(20)
  end
  return turns
end

if busy then
  signal()
  local turns = work()
  local kept = pcall(signal)
  print(string.format("%d s, %d things done meanwhile", seconds, turns))
  return (any or kept) and 0 or 1
end

-- Percent of a core, of this whole process.
local function cost()
  local cpu, shown = os.clock(), state("FramesShown")
  wait(seconds * 1000)
  return 100 * (os.clock() - cpu) / seconds, (state("FramesShown") - shown) / seconds
end
local without, with = {}, {}
for _ = 1, 3 do
  without[#without + 1] = string.format("%.1f %% (%.0f shown a second)", cost())
  signal()
  with[#with + 1] = string.format("%.1f %% (%.0f shown a second)", cost())
  pcall(signal)
end
print("live video:      " .. table.concat(without, ", ") .. " of a core")
print("and a recording: " .. table.concat(with, ", ") .. " of a core")

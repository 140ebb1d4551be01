-- The triggered save with each of its triggers, from the menu and from the panel, and what an operator does in the midst of a run.
local check = require "check"
local triggers = require "triggers"
local video = require "video"
local dir = datadir()
local kStart, kProgress = triggers.kStart, triggers.kProgress

video.turn_on()
frames(2)

-- ---- The dialog as it opens

press("panel", 1016)
check.eq(dialog(), "BIORAD_SAVE")
check.eq({ text(102), text(109), text(kStart), text(20810), text(20812) }, { "1", "1", "&Start acquisition", "Software", "at once" })
press(2)
check.eq(dialog(), nil)

-- ---- Software, at once: three images as fast as the averaging allows

triggers.open(dir .. "/soft", 3, 2)
local mark = check.mark()
triggers.start()
triggers.completed()
check.eq(text(kProgress), "3 of 3")
check.seen_in_order("status", { " Acquisition in progress", " Wait...Gathering data...", " Wait...Gathering data...", " Wait...Gathering data...",
                                " Ready for new acquisition sequence" }, mark)
check.eq(#triggers.frames(dir .. "/soft.seq"), 3)
local header = readfile(dir .. "/soft.seq")
check.eq({ header:byte(1), (string.unpack("<i2", header, 10)), (string.unpack("<i2", header, 112 + 54)) }, { 1, 3, 2 })

-- It is viewed as any other sequence.
press(2)
drop(dir .. "/soft.seq")
check.eq({ box() and box().text, state("ViewingFile"), state("LastFrame") }, { nil, 1, 2 })

-- A file on view gives way to the camera; what is there already is replaced only when asked.
triggers.open(dir .. "/soft.seq", 1)
triggers.start()
check.answer_box("soft.seq\nFile already exists!\nReplace it?", "cancel", "Replace File?")
check.eq({ dialog(), state("AcquisitionRunning"), text(kStart) }, { "BIORAD_SAVE", 0, "&Start acquisition" })
check.eq(readfile(dir .. "/soft.seq"), header)
triggers.start()
check.answer_box("soft.seq\nFile already exists!\nReplace it?", "ok")
triggers.completed()
check.eq({ #triggers.frames(dir .. "/soft.seq"), state("LiveVideo"), state("ViewingFile") }, { 1, 1, 0 })
press(2)

-- ---- The controls during a run; Stop; Escape and the window's own button

triggers.keys { Type1 = 3 }
triggers.open(dir .. "/never", 2)
check.eq(text(20810), "RS-232")
triggers.start()
check.eq({ state("AcquisitionRunning"), text(kStart), status() }, { 1, "Stop acquisition", " Acquisition in progress" })
for _, id in ipairs { 1, 2, 9, 102, 109, 1460, 20300 } do assert(not enabled(id), id) end
frames(20)  -- the display runs on
wait(3000)
check.eq({ state("AcquisitionRunning"), state("TriggersLeft"), readfile(dir .. "/never.seq") }, { 1, 2, nil })
press(kStart)
check.eq({ state("AcquisitionRunning"), text(kStart), status(), state("PeriodicUpdates") }, { 0, "Start acquisition", " Acquisition stopped", 1 })
for _, id in ipairs { 1, 2, 9, 102, 109, 1460, 20300 } do assert(enabled(id), id) end
triggers.start()
check.eq(state("AcquisitionRunning"), 1)
cancel()  -- the window's own button
check.eq({ dialog(), state("AcquisitionRunning"), status() }, { "BIORAD_SAVE", 0, " Acquisition stopped" })
cancel()
check.eq(dialog(), nil)

-- ---- The trigger input

triggers.keys { Type1 = 2 }
triggers.open(dir .. "/extern", 3)
check.eq(text(20810), "ExtSync,-")
triggers.start()
triggers.until_true("the arming", function() return sim.lines().trigger_on == 1 end)
wait(2000)
check.eq({ state("TriggersLeft"), state("TrigFirstPass"), readfile(dir .. "/extern.seq") }, { 3, 0, nil })
for step = 1, 3 do
  check.eq(sim.lines().triggers, step - 1)
  sim.trigger()
  if step < 3 then
    triggers.until_true("step " .. step, function() return state("TriggersLeft") == 3 - step and sim.lines().trigger_on == 1 end)
    check.eq(#triggers.frames(dir .. "/extern.seq"), step, "closed after each step")
  end
end
triggers.completed()
check.eq({ #triggers.frames(dir .. "/extern.seq"), sim.lines().trigger_on, state("LiveVideo") }, { 3, 0, 1 })
frames(3)

-- By a period; Stop at once, and the board grabs on.
sim.trigger(500)
set(102, "4")
set(1460, dir .. "/period")
triggers.start()
triggers.completed()
check.eq(#triggers.frames(dir .. "/period.seq"), 4)
sim.trigger(0)
set(1460, dir .. "/stopped")
triggers.start()
wait(100)
press(kStart)
check.eq({ state("AcquisitionRunning"), sim.lines().trigger_on, status() }, { 0, 0, " Acquisition stopped" })
press(2)
frames(3)

-- ---- The mean of a rectangle: it fires when the warm source comes

sim.source("low", 20)
frames(3)
local sum = 0
for y = 0, 128 do for x = 0, 128 do sum = sum + pixel(x, y) end end
local cold = sum // (129 * 129)
triggers.keys { Type1 = 1, IntensityLo1 = cold + 500, IntensityHi1 = 16383 }
triggers.open(dir .. "/warm", 2)
check.eq(text(20810), "Intensity")
triggers.start()
wait(500)
check.eq({ state("TriggersLeft"), readfile(dir .. "/warm.seq") }, { 2, nil })
sim.source("high", 30)
triggers.completed()
for _, mean in ipairs(triggers.frames(dir .. "/warm.seq")) do assert(mean > cold + 500, mean) end
sim.source("low", 20)
press(2)

-- ---- The delay

local function run_with_delay(delay)
  triggers.keys { TriggerDelay = delay }
  triggers.open(dir .. "/delay" .. delay, 1)
  local began = check.mark()
  triggers.start()
  triggers.completed()
  press(2)
  return check.lines("status", began + 1)
end
local function told(lines, words)
  for _, line in ipairs(lines) do
    if line.text == words then return line.t end
  end
end
local short, long = run_with_delay(900), run_with_delay(901)
check.eq(told(short, " Waiting 900 msec"), nil)
assert(told(short, " Wait...Gathering data...") - told(short, " Acquisition in progress") >= 900)
assert(told(long, " Wait...Gathering data...") - told(long, " Waiting 901 msec") >= 901)

-- Stop during the delay.
triggers.keys { TriggerDelay = 5000 }
triggers.open(dir .. "/stopped", 1)
triggers.start()
wait(100)
check.eq({ state("TriggersLeft"), status() }, { 0, " Waiting 5000 msec" })
press(kStart)
check.eq(status(), " Acquisition stopped")
wait(6000)
check.eq({ box(), readfile(dir .. "/stopped.seq"), state("AcquisitionRunning") }, { nil, nil, 0 })
press(2)

-- ---- Ok keeps the numbers, Cancel doesn't; bad ones become 1

triggers.keys { NumTriggers = 5, NumFramesToAverage = 7 }
command(112)
check.eq({ text(102), text(109) }, { "5", "7" })
set(102, "6")
set(109, "8")
press(2)
wait(1100)
assert(readfile(dir .. "/kelvo.ini"):find("NumTriggers=5\n", 1, true))
check.eq({ state("Trigger.NumTriggers"), state("Trigger.NumFramesToAverage") }, { 5, 7 })
command(112)
for _, bad in ipairs { "0", "10000", "-1", "many", "", "3x" } do
  set(102, bad)
  local heard = check.mark()
  press(1)
  check.eq({ dialog(), text(102), #check.lines("beep", heard + 1) }, { "BIORAD_SAVE", "1", 1 }, bad)
  set(102, bad)
  press(kStart)
  check.eq({ state("AcquisitionRunning"), text(102) }, { 0, "1" }, bad)
end
for _, bad in ipairs { "0", "1000", "x" } do
  set(109, bad)
  local heard = check.mark()
  press(1)
  check.eq({ dialog(), text(109), #check.lines("beep", heard + 1) }, { "BIORAD_SAVE", bad, 1 }, bad)
  press(kStart)
  check.eq({ state("AcquisitionRunning"), text(109) }, { 0, "1" }, bad)
end
set(102, "9999")
set(109, "999")
press(1)
check.eq(dialog(), nil)
wait(1100)
for _, line in ipairs { "NumTriggers=9999\n", "NumFramesToAverage=999\n", "VgaOffDuringSave=0\n" } do
  check.holds(readfile(dir .. "/kelvo.ini"), line)
end

-- ---- A name is asked for, and one that can't be written is refused before anything begins

triggers.keys {}
triggers.open("", 1)
triggers.start()
check.answer_box("Please enter the name of a file.", "ok", "Kelvo message")
set(1460, dir .. "/none/scan")
triggers.start()
check.answer_box("scan.seq\nSave Error: Open file failure", "ok", "Kelvo message")
check.eq({ dialog(), state("AcquisitionRunning") }, { "BIORAD_SAVE", 0 })

-- Browse puts a name there.
press(20300)
check.eq({ file().title, file().filters[1] }, { "Save File", "Sequence Files (*.seq)" })
cancel()
press(20300)
choose(dir .. "/chosen")
check.eq(text(1460), "chosen.seq")
triggers.start()
triggers.completed()
check.eq(#triggers.frames(dir .. "/chosen.seq"), 1)
press(2)
check.eq({ dialog(), box() }, {})

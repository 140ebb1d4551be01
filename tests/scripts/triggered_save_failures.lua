-- What goes wrong in a triggered save, and each answer to each question: the file keeps what was saved whole.
local check = require "check"
local triggers = require "triggers"
local video = require "video"
local dir = datadir()

-- Without a camera it doesn't begin.
assert(dialog() == "CLOCK_ON", dialog())
press(2)
triggers.open(dir .. "/none", 1)
triggers.start()
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
check.eq({ dialog(), state("AcquisitionRunning"), readfile(dir .. "/none.seq") }, { "BIORAD_SAVE", 0 })
press(2)
sim.fault("load dialog BIORAD_SAVE")
command(112)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog BIORAD_SAVE", false)

command(169)
video.turn_on()
frames(2)

-- Memory.
for n, words in ipairs { "INTEGER", "FLOAT" } do
  triggers.open(dir .. "/memory", 1)
  sim.fault("memory", n)
  local heard = check.mark()
  triggers.start()
  check.eq(#check.lines("beep", heard + 1), 1)
  check.answer_box("Failure to allocate && lock " .. words .. " global memory!", "ok")
  check.eq({ dialog(), state("AcquisitionRunning"), readfile(dir .. "/memory.seq") }, { nil, 0 })
end

-- Frames that don't come: asked for each step; yes tries again, no leaves it to Stop.
triggers.open(dir .. "/frames", 2)
sim.fault("icp_read_area")
triggers.start()
-- The live view and the run each tell of the board.
local function past_the_board()
  triggers.until_true("another box", function()
    if box() and box().caption == "ITEX Board Error!" then answer("ok") end
    return box() and box().caption ~= "ITEX Board Error!"
  end)
end
local function retry(button, number)
  past_the_board()
  check.answer_box("Retry getting data:\nTriggerNumber = " .. number, button, "Unable to get data!")
end
retry("yes", 1)
retry("yes", 1)
sim.fault("icp_read_area", false)
past_the_board()
triggers.completed()
check.eq({ #triggers.frames(dir .. "/frames.seq"), state("LiveVideo") }, { 2, 1 })

set(1460, dir .. "/given_up")
sim.fault("icp_read_area")
triggers.start()
retry("no", 1)
sim.fault("icp_read_area", false)
wait(1000)
check.eq({ state("AcquisitionRunning"), text(triggers.kStart), readfile(dir .. "/given_up.seq") }, { 1, "Stop acquisition" })
press(triggers.kStart)
check.eq({ state("AcquisitionRunning"), status() }, { 0, " Acquisition stopped" })

-- The intensity trigger asks likewise, not for each frame.
press(2)
triggers.keys { Type1 = 1, IntensityLo1 = 0, IntensityHi1 = 16383 }
triggers.open(dir .. "/intensity", 1)
sim.fault("icp_read_area")
triggers.start()
retry("yes", 1)
sim.fault("icp_read_area", false)
past_the_board()
triggers.completed()
check.eq(#triggers.frames(dir .. "/intensity.seq"), 1)
press(2)

-- A board that won't be armed, and one that won't grab on.
triggers.keys { Type1 = 2 }
triggers.open(dir .. "/armed", 1)
sim.fault("icp_trig_snap")
triggers.start()
triggers.until_true("the warning", function() return box() end)
check.answer_box("Unable to start triggered acquisiton", "ok", "Frame Grabber Warning")
sim.fault("icp_trig_snap", false)
wait(200)
check.eq(state("AcquisitionRunning"), 1)
press(triggers.kStart)
triggers.start()
wait(100)
sim.fault("icp_grab")
sim.trigger()
triggers.until_true("the error", function() return box() end)
check.answer_box("Error starting grab after trigger to image processing board", "ok", "Frame Grabber Error!")
sim.fault("icp_grab", false)
triggers.until_true("more of it", function() return box() end)
while box() do answer(box().caption == "Unable to get data!" and "no" or "ok") wait(50) end
if state("AcquisitionRunning") == 1 then press(triggers.kStart) end
press(2)
command(140)  -- the picture goes on
if state("LiveVideo") == 0 then command(140) end
frames(2)

-- The disk. A first step that is cut leaves no file; yes goes on, and the next step begins it.
triggers.keys {}
local kQuestion = "Unable to save\n%s\n  Continue sequence?"
triggers.open(dir .. "/cut", 2)
sim.fault("disk full", 2)
triggers.start()
triggers.until_true("the question", function() return box() end)
check.answer_box(kQuestion:format("cut.seq"), "yes", "File Save Error!")
triggers.completed()
check.eq(#triggers.frames(dir .. "/cut.seq"), 1)

-- A later step that is cut is taken out again; no ends the dialog, and what was saved stays.
triggers.start()
check.answer_box("cut.seq\nFile already exists!\nReplace it?", "ok")
triggers.completed()
press(2)
triggers.open(dir .. "/cut", 3)
sim.fault("disk full", 3)
triggers.start()
check.answer_box("cut.seq\nFile already exists!\nReplace it?", "ok")
triggers.until_true("the question", function() return box() end)
check.answer_box(kQuestion:format("cut.seq"), "no", "File Save Error!")
check.eq({ dialog(), state("AcquisitionRunning"), #triggers.frames(dir .. "/cut.seq") }, { nil, 0, 1 })

-- The header.
triggers.open(dir .. "/header", 1)
sim.fault("disk full", 1)
triggers.start()
triggers.until_true("the box", function() return box() end)
check.answer_box("Failure writing header for image file\nDisk Full ??", "ok", "File Error")
check.eq({ dialog(), state("AcquisitionRunning"), readfile(dir .. "/header.seq") }, { nil, 0 })

-- A file that has gone between two steps.
triggers.keys { TriggerDelay = 2000 }
triggers.open(dir .. "/gone", 2)
triggers.start()
triggers.until_true("the first step", function() return readfile(dir .. "/gone.seq") end)
os.remove(dir .. "/gone.seq")
triggers.until_true("the box", function() return box() end)
check.answer_box("gone.seq\nSave Error: Open file failure", "ok", "Kelvo message")
check.eq({ dialog(), box(), state("AcquisitionRunning"), state("PeriodicUpdates") }, { nil, nil, 0, 1 })
frames(2)

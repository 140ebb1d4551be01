-- The recorder's window as its operator works it: opening, the outlook, fields that are refused, a recording with mark and trigger, closing it
-- while it records, opening it again, what stays.
local check = require "check"
local recordings = require "recordings"
local video = require "video"

local kRecord, kTrigger, kMark, kExit = 2060, 2061, 2062, 119
local kLamp, kStart, kStop, kTriggerNow, kMarkNow, kMessage = 21000, 21001, 21002, 21003, 21004, 21005
local kFrames, kLost, kEvent, kMarks, kRing, kFile = 21010, 21011, 21013, 21014, 21015, 21017
local kDirectory, kBrowse, kName, kExample, kSample, kComment, kPixels = 21020, 21021, 21022, 21023, 21024, 21025, 21026
local kSplitGb, kSplitMinutes, kSync, kLength, kUnit, kInterval, kStartTime = 21027, 21028, 21029, 21030, 21031, 21032, 21033
local kBy, kPre, kPreUnit, kEvents, kLeft, kTop, kRight, kBottom = 21040, 21041, 21042, 21043, 21044, 21045, 21046, 21047
local kLow, kHigh, kMeanNow, kRingSize, kRingHolds = 21048, 21049, 21050, 21060, 21061
local kRate, kMeasure, kNeeded, kRoom, kWarning, kPanel = 21062, 21063, 21064, 21065, 21066, 21090

local function at(name) return datadir() .. "/" .. name end
local function get(id) return text("recorder", id) end
local function put(id, value) set("recorder", id, value) end
local function key_of(name)
  wait(1100)
  return (readfile(at("recorder.ini")) or ""):match("\n" .. name .. "=([^\r\n]*)")
end
local function opened() return #check.lines("dialog") end

-- Without a camera the window opens; recording refuses.
assert(dialog() == "CLOCK_ON", dialog())
press(2)
check.fails(function() get(kLamp) end, "no recorder's window")
command(kRecord)
check.eq({ dialog(), get(kLamp), get(kMessage) }, { nil, "○ Idle", "" })
press("recorder", kStart)
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
check.eq(get(kMessage), "Not started. No camera is on.")
check.eq({ get(kNeeded), get(kRoom), get(kRingHolds) }, { "-", "-", "-" })
press("recorder", 2)
check.fails(function() get(kLamp) end, "no recorder's window")
command(kTrigger)
check.eq(status(), " The recorder isn't armed for a trigger by hand")
command(kMark)
check.eq(status(), " A mark needs a recording that runs")

command(169)
video.turn_on()
frames(2)

-- Opened twice it is one window, by the menu, the key and the panel.
local count = opened()
press("panel", kPanel)
command(kRecord)
key("Ctrl+R")
check.eq(opened(), count + 1)
check.seen("dialog", { name = "RECORDER", text = "Record" })

-- --- Before -------------------------------------------------------------------------------------------------------------------

put(kDirectory, datadir())
press("recorder", kMeasure)
local frame = 2 * 320 * 256 + 80 + 64
check.eq(get(kNeeded), ("%.1f MB/s"):format(state("FrameRate") * frame / 1e6))
assert(tonumber(get(kRate):match("^([%d.]+) MB/s$")) > 0, get(kRate))
assert(tonumber(get(kRoom):match("^([%d.]+) min$")), get(kRoom))
pick("recorder", kPixels, 2)
check.eq(get(kNeeded), ("%.1f MB/s"):format(2 * state("FrameRate") * frame / 1e6))
pick("recorder", kPixels, 0)
put(kInterval, "0.1")
check.eq(get(kNeeded), ("%.1f MB/s"):format(10 * frame / 1e6))
put(kInterval, "0")

put(kDirectory, at("none"))
check.eq(get(kWarning), "The directory of the recordings isn't there.")
put(kDirectory, datadir())
sim.fault("little disk space")
wait(300)
check.eq(get(kWarning), "The disk has room for 0 s only.")
pick("recorder", kUnit, 2)
put(kLength, "90")
check.eq(get(kWarning), "The disk has room for 0 s only. The recording takes 1.5 min.")
sim.fault("little disk space", false)
pick("recorder", kUnit, 0)

-- The ring's size holds at once, and is kept: 64 MB hold 409 frames, of which 4 are the thread's own.
put(kRingSize, "64")
local holds = (64 << 20) // (2 * 320 * 256) - 4
check.eq(get(kRingHolds), ("%.1f s, %d frames"):format(holds / state("FrameRate"), holds))
pick("recorder", kBy, 1)
put(kPre, "60")
check.holds(get(kWarning), "The pre-trigger is too long. The ring holds at most ")
press("recorder", kStart)
check.holds(get(kMessage), "Not started. The ring holds at most ")
put(kPre, "0.2")
-- (a disk of a busy machine may be too slow, which is said too)
assert(not get(kWarning):find("pre-trigger", 1, true), get(kWarning))

put(kName, "{date}_{sample}_{n:03}")
put(kSample, "die/4")
assert(get(kExample):find("^20%d%d%d%d%d%d_die_4_001%.seq$"), get(kExample))
put(kName, "{when}")
check.eq(get(kExample), "This makes no file name.")
press("recorder", kStart)
check.holds(get(kMessage), "Not started. The name pattern makes no file name.")

-- The mean of the rectangle stands beside its window, before anything is armed.
pick("recorder", kBy, 3)
put(kRight, "9")
put(kBottom, "0")
key("F2")
wait(300)
check.eq(get(kMeanNow), "-", "no live picture")
key("F2")
frames(3)
wait(300)
assert(tonumber(get(kMeanNow)), get(kMeanNow))

-- --- What can't be read -------------------------------------------------------------------------------------------------------

put(kName, "window_{n:03}")
local function refused(id, typed, why, good)
  put(id, typed)
  press("recorder", kStart)
  check.eq({ get(kMessage), get(kLamp) }, { why, "○ Idle" }, typed)
  put(id, good)
end
refused(kSplitGb, "big", "A new file at GB: please enter a number from 0 to 1e+06.", "0")
refused(kSplitMinutes, "-1", "A new file at minutes: please enter a number from 0 to 1e+06.", "0")
refused(kSync, "0.01", "On the disk each: please enter a number from 0.1 to 60.", "2")
refused(kSync, "nan", "On the disk each: please enter a number from 0.1 to 60.", "2")
refused(kInterval, "1 s", "One frame each: please enter a number from 0 to 1e+09.", "0")
refused(kPre, "", "Before the trigger: please enter a number from 0 to 1e+09.", "0")
refused(kEvents, "1.5", "Events: please enter a whole number from 0 to 1000000000000.", "1")
refused(kLeft, "1024", "Left column: please enter a whole number from 0 to 1023.", "0")
refused(kTop, "x", "Top row: please enter a whole number from 0 to 1023.", "0")
refused(kRight, "-1", "Right column: please enter a whole number from 0 to 1023.", "9")
refused(kBottom, "1e3", "Bottom row: please enter a whole number from 0 to 1023.", "0")
refused(kLow, "low", "Mean from: please enter a number from -32768 to 32768.", "0")
refused(kHigh, "40000", "Mean to: please enter a number from -32768 to 32768.", "0")
refused(kRingSize, "2048", "Ring: please enter a whole number from 0 to 2047 MB.", "64")
pick("recorder", kUnit, 1)
refused(kLength, "0", "Length in frames: please enter a whole number from 1 to 1000000000000.", "30")
pick("recorder", kUnit, 2)
refused(kLength, "0", "Length in seconds: please enter a number from 0.001 to 1e+09.", "3")
refused(kStartTime, "noon", "Not started. The start time isn't a time of day like 14:30:00.", "")
refused(kLow, "5", "Not started. The window of the mean has its low end above its high one.", "0")
refused(kRight, "400", "Not started. The rectangle of the mean lies outside the picture.", "9")
check.eq(recordings.sequences(datadir()), { "sample.seq" }, "no refusal leaves a file")
-- A dialog that is open may need the camera.
command(120)
check.fails(function() press("recorder", kStart) end, "the recorder's window can't be reached")
press(2)

-- --- Browse -------------------------------------------------------------------------------------------------------------------

press("recorder", kBrowse)
check.eq({ file().title, file().directory, file().name }, { "Record to", datadir(), "window_{n:03}" })
cancel()
check.eq({ get(kDirectory), get(kName) }, { datadir(), "window_{n:03}" })
press("recorder", kBrowse)
choose(at("browsed_{n:03}.seq"))
check.eq({ get(kDirectory), get(kName) }, { datadir(), "browsed_{n:03}" })
put(kName, "window_{n:03}")

-- --- A recording --------------------------------------------------------------------------------------------------------------

local fields = { kDirectory, kBrowse, kName, kSample, kComment, kPixels, kSplitGb, kSplitMinutes, kSync, kLength, kUnit, kInterval, kStartTime,
  kBy, kPre, kPreUnit, kEvents, kRingSize, kMeasure }
local function all(expected)
  for _, id in ipairs(fields) do check.eq(enabled("recorder", id), expected, "control " .. id) end
end
pick("recorder", kBy, 1)
pick("recorder", kPreUnit, 1)
put(kPre, "20")
pick("recorder", kUnit, 1)
put(kLength, "300")
put(kComment, "by hand")
all(true)
check.eq({ enabled("recorder", kLeft), enabled("recorder", kStop) }, { false, false })
check.eq(text("panel", kPanel), "Record")
press("recorder", kStart)
check.eq({ get(kLamp), get(kMessage), text("panel", kPanel) }, { "◎ Armed", "", "Armed" })
all(false)
check.eq({ enabled("recorder", kStart), enabled("recorder", kStop), enabled("recorder", kTriggerNow), enabled("recorder", kMarkNow) },
  { false, true, true, false })
check.eq({ menu(106).enabled, menu(kRecord).enabled }, { false, true })
wait(1000)
check.eq(get(kEvent), "1 of 1, 20 before it")
press("recorder", kTriggerNow)
wait(500)
check.eq({ get(kLamp), get(kFile), text("panel", kPanel) }, { "● Recording", "window_001.seq", "● REC" })
check.holds(state("StatusField"), "● REC  ")
press("recorder", kMarkNow)
wait(300)
check.eq({ get(kMarks), get(kLost) }, { "1", "none" })
check.holds(get(kRing), " of " .. holds .. " frames (")

-- Closing the window leaves it recording; the window that is opened again finds it.
press("recorder", 2)
wait(200)
check.eq({ recorder().state, text("panel", kPanel) }, { "recording", "● REC" })
command(kRecord)
check.eq({ get(kLamp), get(kComment), get(kLength) }, { "● Recording", "by hand", "300" })
all(false)
wait(320 / state("FrameRate") * 1000)
check.eq({ get(kLamp), get(kFrames), text("panel", kPanel), state("StatusField") }, { "○ Idle", "320", "Record", "" })
check.eq(get(kMessage), ("320 frames, none lost, %.1f s"):format(320 / state("FrameRate")))
check.eq(menu(106).enabled, true)
all(true)
recordings.expect_steps(recordings.numbers(at("window_001.seq")), 320, 1)
check.holds(recordings.journal(at("window_001.seq")).head, "Comment=by hand\n")

-- Stop, while it is armed and while it records.
press("recorder", kStart)
press("recorder", kStop)
check.eq({ get(kMessage), get(kLamp) }, { "0 frames, none lost, 0.0 s", "○ Idle" })
pick("recorder", kBy, 0)
pick("recorder", kUnit, 0)
press("recorder", kStart)
check.eq(get(kLamp), "● Recording")
wait(500)
press("recorder", kStop)
check.holds(get(kMessage), " frames, none lost, ")
check.eq(#recordings.sequences(datadir()), 3, "sample.seq, the trigger's, this one")

-- --- What is kept -------------------------------------------------------------------------------------------------------------

put(kSync, "never")
put(kComment, "kept")
press("recorder", 2)
check.eq({ key_of("Comment"), key_of("SyncSeconds"), key_of("RingMegabytes"), key_of("PreTriggerFrames"), key_of("NamePattern") },
  { "kept", "2", "64", "20", "window_{n:03}" })
command(kRecord)
check.eq({ get(kComment), get(kSync), get(kRingSize) }, { "kept", "2", "64" })
check.eq(help(), nil)
press("recorder", 9)
check.eq(help(), 2023)
press("recorder", 2)

-- The window that can't be made.
sim.fault("load dialog RECORDER")
command(kRecord)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog RECORDER", false)

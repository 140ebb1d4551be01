-- The continuous save as its operator works it: opening, refusals, a run at an interval, one of every frame, a second run that adds, the second
-- integration time, Ok and Cancel. 320 x 256 pixels, no calibration in force.
local check = require "check"
local video = require "video"

local kName, kUpdate, kMulti, kHeaders, kShow, kCalibrated, kCorrect, kSync = 1460, 1630, 1784, 1785, 1030, 1395, 1397, 1346
local kTimes, kSwitch, kStart, kFigures, kBrowse = 626, 1038, 124, 20700, 20701
local kFrameBytes = 2 * 320 * 256

local function at(name) return datadir() .. "/" .. name end
local function field(bytes, format, place) return (string.unpack("<" .. format, bytes, place + 1)) end
local function key_of(name)
  wait(1100)  -- what is pending reaches the disk
  return readfile(at("kelvo.ini")):match("%[ContSave%].-" .. name .. "=([^\r\n]*)")
end
-- One of the file's frame headers: index, camera frames, integration time, seconds of the stamp.
local function frame_header(bytes, frame)
  local place = 512 + frame * (80 + kFrameBytes)
  return field(bytes, "i4", place + 30), field(bytes, "i4", place + 34), field(bytes, "f", place + 38), tonumber(bytes:sub(place + 18, place + 23))
end
local function open()
  command(110)
  check.eq(dialog(), "CONTSAVE")
end

-- Without a camera and without a file on view there is nothing to save, and nothing to show.
assert(dialog() == "CLOCK_ON", dialog())
press(2)
command(110)
check.eq({ dialog(), box() }, {})

-- A file on view without a camera: the dialog opens, and Start refuses.
command(107)
choose(at("sample.seq"))
local on_view = state("ImageHeader")
open()
check.eq({ enabled(kTimes), enabled(kSwitch) }, { false, false })
press(kStart)
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
check.eq(text(kStart), "&Start acquisition")
press(2)
check.eq({ state("ViewingFile"), state("ImageHeader") }, { 1, on_view })

command(169)
video.turn_on()
frames(2)

-- --- Opening ------------------------------------------------------------------------------------------------------------------

local name_before = state("SeqFilePath")
command(140)
check.eq(state("LiveVideo"), 0)
open()
check.eq(status(), " Continous SAVE operations")
check.eq(state("LiveVideo"), 1, "the preview is live")
check.eq(text(kUpdate), "0.500")
check.eq(text(kName), name_before)
check.eq({ checked(kMulti), enabled(kMulti) }, { true, false })
check.eq({ checked(kHeaders), checked(kShow), checked(kSync) }, { false, true, false })
check.eq({ enabled(kCalibrated), enabled(kCorrect) }, { false, false }, "without a calibration")
local rate, primary = state("FrameRate"), state("FrameIntegrationTime")
check.seen("dialog", { name = "CONTSAVE", text = ("Continuous Save: %.1f Hz, %.3f msec"):format(rate, primary) })
check.eq(text(kSwitch), ("Set &integration to %.3f msec"):format(primary))
check.eq(text(kStart), "&Start acquisition")
local shown = state("FramesShown")
frames(5)
assert(state("FramesShown") >= shown + 5, "frames are seen before a run")

-- --- Refusals -----------------------------------------------------------------------------------------------------------------

local function refused_time(typed, told, button)
  set(kUpdate, typed)
  press(button)
  check.answer_box(told, "ok", "Kelvo message")
  check.eq({ dialog(), text(kUpdate), text(kStart) }, { "CONTSAVE", "0.500", "&Start acquisition" }, typed)
end
refused_time("often", "Update time must be in range: 0.0 to 2000.0 seconds", kStart)
refused_time("", "Update time must be in range: 0.0 to 2000.0 seconds", kStart)
refused_time("3000", "Update rate must be in range: 0.0 to 2000.0 seconds", kStart)
refused_time("-0.1", "Update rate must be in range: 0.0 to 2000.0 seconds", kStart)
refused_time("nan", "Update time must be in range: 0.0 to 2000.0 seconds", kStart)
refused_time("4000.5", "Update time must be in range: 0.0 to 4000.0 seconds", 1)
refused_time("often", "Update time must be in range: 0.0 to 4000.0 seconds", 1)

set(kName, at("none/run.seq"))
press(kStart)
check.answer_box("Unable to save to this filename!", "ok", "Filename Error!")
check.eq(text(kName), name_before, "the old name is back")
check.eq(state("SeqFilePath"), name_before)

-- Too little room is asked about once; No leaves everything.
set(kName, at("run.seq"))
sim.fault("little disk space")
press(kStart)
check.holds(box().text, "The disk has room for 0.0 s of frames.")
answer("no")
check.eq({ text(kStart), readfile(at("run.seq")) }, { "&Start acquisition" })
sim.fault("little disk space", false)

-- --- One frame an interval ----------------------------------------------------------------------------------------------------

local function grey() return { enabled(kName), enabled(kBrowse), enabled(kUpdate), enabled(kHeaders), enabled(kShow), enabled(kSync), enabled(kTimes), enabled(1), enabled(2), enabled(9) } end
local all, none = {}, {}
for i = 1, 10 do all[i], none[i] = true, false end

check.eq(grey(), all)
check(kHeaders, true)
press(kStart)
check.eq(text(kStart), "&Stop acquisition")
check.eq(grey(), none, "a run")
check.eq({ enabled(kStart), enabled(kSwitch) }, { true, true })
check.eq(menu(106).enabled, false, "what needs the board is grey")
check.eq(status(), " Saving to " .. at("run.seq"))
wait(5300)
check.eq(text(kFigures), "Frames in the file: 10   lost: 0")
press(kStart)
check.eq(status(), " 10 frames saved to " .. at("run.seq") .. ", none lost")
check.eq(grey(), all)
check.eq({ enabled(kMulti), menu(106).enabled }, { false, true })
local bytes = readfile(at("run.seq"))
check.eq(#bytes, 512 + 10 * (80 + kFrameBytes))
check.eq({ field(bytes, "I2", 0), field(bytes, "i2", 2), field(bytes, "i2", 4), field(bytes, "I4", 42), field(bytes, "i2", 144) }, { 0xFFFF, 320, 256, 10, 80 })
check.eq({ field(bytes, "i2", 24), field(bytes, "i2", 30) }, { -10000, -10000 }, "uncalibrated")
local _, _, _, before = frame_header(bytes, 0)
for frame = 0, 9 do
  local index, camera, integration, seconds = frame_header(bytes, frame)
  check.eq(index, frame)
  check.near(integration, primary, 1e-5)
  if frame == 0 then check.eq(camera, 0) end
  if frame > 0 then
    -- 0.5 s from the end of one save, then up to the next frame: less than two periods more.
    local step = (seconds - before) % 60
    assert(step > 0.499 and step < 0.5 + 2 / rate + 0.002, step)
    check.near(camera, frame * math.floor(step * rate + 0.5), frame * 1.01)
  end
  before = seconds
end
local account = {}
for _, name in ipairs { "Delivered", "Shown", "Used", "Lost", "Missed" } do account[name] = state("Frames" .. name) end
check.eq(account.Lost, 0)

-- --- Every frame, added to the same file --------------------------------------------------------------------------------------

set(kUpdate, "0")
check(kHeaders, false)
press(kStart)
check.eq({ box().text, box().caption }, { "File already exists: Add to it?", "File Exists" })
answer("no")
check.eq({ text(kStart), #readfile(at("run.seq")) }, { "&Start acquisition", #bytes })
local used = state("FramesUsed")
press(kStart)
answer("yes")
frames(20)
press(kStart)
local added = state("SaveFrameCount")
assert(added >= 30 and added <= 33, added)
local more = readfile(at("run.seq"))
check.eq(#more, 512 + added * (80 + kFrameBytes), "the file's own layout")
check.eq(more:sub(513, #bytes), bytes:sub(513), "what was there stays")
check.eq(field(more, "I4", 42), added)
check.eq(state("FramesUsed") - used, added - 10)
for frame = 10, added - 1 do
  local index, camera = frame_header(more, frame)
  check.eq({ index, camera - select(2, frame_header(more, 10)) }, { frame, frame - 10 }, "every frame of the camera")
end

-- Another file of another size is refused, and one that is too short.
local files = require "files"
files.image(at("small.seq"), { width = 40, height = 30, frames = 1 }, 1, function() return 7 end)
set(kName, at("small.seq"))
press(kStart)
answer("yes")
check.answer_box(at("small.seq") .. "\nholds frames of another size or kind: none can be added to it.", "ok", "Filename Error!")
files.write(at("short.seq"), "short")
set(kName, at("short.seq"))
press(kStart)
answer("yes")
check.answer_box("Error reading Image File Header\n" .. at("short.seq"), "ok", "Kelvo message")
check.eq({ readfile(at("short.seq")), state("SeqFilePath"), text(kStart) }, { "short", at("run.seq"), "&Start acquisition" })

-- --- The second integration time ----------------------------------------------------------------------------------------------

set(kName, at("two.seq"))
check(kHeaders, true)
pick(kTimes, 100)
local second = state("AltIntegrationTime")
assert(second < primary / 1.5, second)
check.eq(text(kSwitch), ("Set &integration to %.3f msec"):format(second))
local head_before = sim.head()
press(kStart)
frames(5)
press(kSwitch)
check.eq(text(kSwitch), ("Set &integration to %.3f msec"):format(primary))
check.eq({ state("SavePrimaryActive"), state("FrameIntegrationTime") }, { 0, second })
assert(not check.same(sim.head(), head_before), "the head has it")
frames(5)
press(kSwitch)
frames(5)
press(kStart)
check.eq(sim.head(), head_before)
local times, changes, last = readfile(at("two.seq")), 0, nil
for frame = 0, state("SaveFrameCount") - 1 do
  local _, _, integration = frame_header(times, frame)
  check.near(integration, math.abs(integration - primary) < 1 and primary or second, 1e-4)
  if last and last ~= integration then changes = changes + 1 end
  last = integration
end
check.eq(changes, 2)

-- --- Ok and Cancel ------------------------------------------------------------------------------------------------------------

-- The file selection, and out of it again; then a name.
press(kBrowse)
assert(file(), "the file selection")
cancel()
check.eq(text(kName), at("two.seq"))
press(kBrowse)
choose(at("run.seq"))
check.eq(text(kName), at("run.seq"))
set(kUpdate, "3000")
check(kShow, false)
check(kSync, true)
press(1)
check.eq({ dialog(), status() }, { nil, " Use Alt + underlined menu item or trackball to select menu item" })
check.eq({ key_of("UpdateRate"), key_of("HeaderStoredEachFrame"), key_of("VgaOnDuringSave"), key_of("SyncOut") }, { "3000.000", "1", "0", "1" })
check.eq({ key_of("DisplayWithCalib"), key_of("ApplyCalibAfterSave") }, {}, "not without a calibration")
check.eq(state("SeqFilePath"), at("two.seq"), "the file of the last run")

-- Cancel: the name and the primary time come back, and no key is written. The next opening deletes what stands there.
open()
check.eq({ text(kUpdate), checked(kHeaders), checked(kShow), checked(kSync) }, { "3000.000", true, false, true })
set(kUpdate, "0.25")
set(kName, at("two.seq"))
pick(kTimes, 100)
press(kSwitch)
press(kStart)
check.eq({ box().text, box().caption }, { "File already exists: Delete it?", "File Exists" })
answer("no")
check.eq(readfile(at("two.seq")), times)
set(kName, at("three.seq"))
press(kStart)
wait(1000)
press(kStart)
check.eq(state("SeqFilePath"), at("three.seq"))
shown = state("FramesShown")
press(2)
check.eq({ state("SeqFilePath"), key_of("UpdateRate") }, { at("two.seq"), "3000.000" })
check.eq(sim.head(), head_before, "the primary time is back")

-- The window's own button during a run stops it as Stop does.
open()
set(kUpdate, "0")
set(kName, at("three.seq"))
press(kStart)
answer("yes")
frames(4)
press(kSwitch)
cancel()
check.eq({ dialog(), box(), state("LiveVideo") }, { nil, nil, 1 })
local three = readfile(at("three.seq"))
check.eq(#three, 512 + field(three, "I4", 42) * (80 + kFrameBytes))
assert(field(three, "I4", 42) >= 4)
check.eq(sim.head(), head_before)
check.eq(menu(110).enabled, true)
frames(3)

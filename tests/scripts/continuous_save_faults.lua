-- What goes wrong with a continuous save: told, each kind once a run, and the run goes on behind the box; all that stands in the file is whole.
local check = require "check"
local video = require "video"

local kName, kUpdate, kHeaders, kSync, kStart, kSwitch, kFigures = 1460, 1630, 1785, 1346, 124, 1038, 20700
local kFrameBytes = 2 * 320 * 256

local function at(name) return datadir() .. "/" .. name end
local function start(name, interval)
  set(kName, at(name))
  set(kUpdate, interval)
  press(kStart)
end
local function frames_in(name)
  local bytes = readfile(at(name))
  local whole = (#bytes - 512) / kFrameBytes
  check.eq(whole, whole // 1, "no part of a frame")
  check.eq(string.unpack("<I4", bytes, 43), math.tointeger(whole), "the header's count")
  return math.tointeger(whole)
end

video.turn_on()
frames(2)

-- --- Opening ------------------------------------------------------------------------------------------------------------------

sim.fault("load dialog CONTSAVE")
command(110)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog CONTSAVE", false)
check.eq({ dialog(), state("LiveVideo"), state("PeriodicUpdates") }, { nil, 1, 1 })

sim.fault("memory", 1)
command(110)
check.answer_box("Unable to allocate memory to store data to disk!", "ok", "Kelvo Warning")
check.eq({ dialog(), state("LiveVideo") }, { nil, 1 })

command(110)
check.eq(dialog(), "CONTSAVE")
sim.fault("memory", 1)
start("run.seq", "0.1")
check.answer_box("Unable to allocate memory to store data to disk!", "ok", "Kelvo Warning")
check.eq({ text(kStart), readfile(at("run.seq")) }, { "&Start acquisition" })

-- A frame of the preview that doesn't come is told once; the run that is started then shows whether they come again.
sim.fault("icp_read_area")
wait(300)
check.answer_box("icp_read_area() Error", "ok", "ITEX Board Error!")
wait(1000)
check.eq(box(), nil)
sim.fault("icp_read_area", false)

-- --- Frames that don't come ---------------------------------------------------------------------------------------------------

start("run.seq", "0.1")
wait(550)
local saved = state("SaveFrameCount")
assert(saved >= 4, saved)
sim.fault("icp_read_area")
wait(300)
check.eq({ box().text, box().caption }, { "icp_read_area() Error", "ITEX Board Error!" })
sim.fault("icp_read_area", false)
wait(1000)
assert(state("SaveFrameCount") >= saved + 8, "the run goes on behind the box")
answer("ok")
check.answer_box("Unable to get data from frame grabber!", "ok", "File Save Error!")
sim.fault("icp_read_area")
wait(500)
check.eq(box(), nil, "told once a run")
sim.fault("icp_read_area", false)
local not_read = tonumber(status():match("^ Frames not read: (%d+)   not written: 0$"))
assert(not_read and not_read >= 3, status())

sim.fault("icp_wait_vb")
wait(2500)
check.answer_box("Timeout waiting for vertical blank!", "ok", "icp_wait_vb() Error!")
check.eq(box(), nil, "the save's own box has been seen")
sim.fault("icp_wait_vb", false)
wait(500)
press(kStart)
check.holds(status(), " failed")
check.eq(frames_in("run.seq"), state("SaveFrameCount"))

-- Another run tells again.
start("run.seq", "0")
answer("yes")
frames(3)
sim.fault("icp_read_area")
wait(200)
check.answer_box("icp_read_area() Error", "ok", "ITEX Board Error!")
check.answer_box("Unable to get data from frame grabber!", "ok", "File Save Error!")
sim.fault("icp_read_area", false)
frames(3)
press(kStart)
frames_in("run.seq")

-- --- A disk that is full ------------------------------------------------------------------------------------------------------

start("full.seq", "0")
frames(5)
sim.fault("disk full")
wait(200)
check.eq({ box().text, box().caption }, { "Unable to save to file!", "File Save Error!" })
saved = state("SaveFrameCount")
local whole = readfile(at("full.seq"))
check.eq((#whole - 512) % kFrameBytes, 0, "the part of a frame is cut off")
sim.fault("disk full", false)
frames(5)
assert(state("SaveFrameCount") >= saved + 5, "the run goes on behind the box")
answer("ok")
sim.fault("disk full")
frames(0)
wait(200)
check.eq(box(), nil, "told once a run")
assert(tonumber(status():match("^ Frames not read: 0   not written: (%d+)$")) > 3, status())
sim.fault("disk full", false)
frames(2)
press(kStart)
assert(frames_in("full.seq") >= saved + 7)

-- The header at the end.
start("full.seq", "0")
answer("yes")
frames(2)
sim.fault("disk full")
wait(100)
answer("ok")
press(kStart)
check.answer_box("Unable to save to file!", "ok", "File Save Error!")
sim.fault("disk full", false)
check.eq({ text(kStart), enabled(1) }, { "&Start acquisition", true })

-- A new file whose header the disk doesn't take isn't there.
local name_before = state("SeqFilePath")
sim.fault("disk full")
start("none.seq", "0")
check.answer_box("Unable to save to this filename!", "ok", "Filename Error!")
sim.fault("disk full", false)
check.eq({ readfile(at("none.seq")), text(kName) }, { nil, name_before })

-- --- A head that doesn't hear -------------------------------------------------------------------------------------------------

sim.fault("head silent")
pick(626, 100)
press(kSwitch)
press(1)
check.holds(box().text, "The camera head didn't answer to all that was sent.")
check.holds(box().text, "The integration time may not be as it is set.")
answer("ok")
sim.fault("head silent", false)
check.eq(dialog(), nil)
frames(3)

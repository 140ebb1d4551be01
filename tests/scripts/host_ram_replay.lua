-- Replay of stored frames: it begins, pauses, moves by the bar, outlives the dialog, and is ended by whatever takes its picture away.
local check = require "check"
local video = require "video"
local files = require "files"

local kFrame, kBar, kReplay, kRate, kStart, kPause = 1016, 1011, 1348, 1350, 1352, 1353
local kSave, kLoad, kClear, kStored = 1354, 1356, 1360, 1332

-- Six frames in the store, each a flat picture of its own: from a file.
local width, height = 320, 256
video.turn_on()
files.image(datadir() .. "/flat.buf", { width = width, height = height, frames = 6 }, 6, function(frame) return 1000 + 100 * frame end)
command(103)
press(kLoad)
choose(datadir() .. "/flat.buf")
check.eq(dialog(), "BUF_LOAD")
press(1)
check.eq({ dialog(), box(), text(kStored), state("FramesInBuffer"), state("HostFrameNext") }, { "BUFFER", nil, "6", 6, 6 })

local function shown()
  local value = pixel(5, 5)
  check.eq(pixel(300, 200), value)
  return (value - 1000) // 100
end

local function expect_running()
  check.eq({ enabled(kStart), enabled(kClear), enabled(kLoad), enabled(kSave), enabled(1358), enabled(kPause) }, { false, false, false, false, false, true })
  check.eq({ state("ReplayActive"), state("BufferStale"), state("LiveVideo"), checked(kReplay) }, { 1, 1, 0, true })
end

-- ---- On, at 1 Hz

pick(kRate, 7)
check.eq({ state("ReplayRateIndex"), state("ReplayPeriodMs") }, { 7, 1000 })
check(kReplay, true)
expect_running()
wait(500)
for frame = 0, 7 do
  check.eq(shown(), frame % 6, "second " .. frame)
  check.eq(text(kFrame), tostring(frame % 6))
  check.eq(position(kBar), frame % 6)
  wait(1000)
end

-- What isn't shown can't be moved either.
local at = state("ReplayCurrent")
scroll(kBar, 0)
check.eq(state("ReplayCurrent"), at)

-- ---- Paused

press(kPause)
check.eq({ text(kPause), state("ReplayPaused"), state("ReplayActive") }, { "&Play", 1, 1 })
local stands = shown()
wait(5000)
check.eq(shown(), stands)
for _, frame in ipairs { 0, 5, 3 } do
  scroll(kBar, frame)
  check.eq({ shown(), text(kFrame), state("ReplayCurrent") }, { frame, tostring(frame), frame })
end
-- A picture that is drawn again is the one on view.
press(2)
check.eq({ state("ReplayActive"), state("ReplayPaused") }, { 1, 1 })
key("F11")
key("+")
key("-")
check.eq(shown(), 3)

-- ---- The dialog finds it as it was

command(103)
expect_running()
check.eq({ text(kPause), box(), picked(kRate) }, { "&Play", nil, 7 })
press(kPause)
check.eq({ text(kPause), state("ReplayPaused") }, { "&Pause", 0 })
wait(1500)
check.eq(shown(), 4)

-- ---- Off: live video goes on, and the next burst begins with an empty store

check(kReplay, false)
check.eq({ state("ReplayActive"), state("LiveVideo"), state("ReplayCurrent"), text(kFrame) }, { 0, 1, 0, "0" })
check.eq({ enabled(kStart), enabled(kClear), enabled(kLoad), enabled(kSave), enabled(kPause) }, { true, true, true, true, false })
frames(2)
set(1342, "2")
press(kStart)
check.eq({ state("FramesInBuffer"), state("HostFrameNext"), state("BufferStale"), box() }, { 2, 2, 0 })

-- ---- It goes on behind the closed dialog, and is ended

press(1)

local function replay_behind()
  command(103)
  if box() then answer("yes") end
  if not checked(kReplay) then check(kReplay, true) end
  press(1)
  wait(300)
  check.eq({ state("ReplayActive"), state("LiveVideo"), dialog() }, { 1, 0 })
end

replay_behind()
command(103)
expect_running()
press(2)

key("F2")
check.eq({ state("ReplayActive"), state("LiveVideo") }, { 0, 1 }, "F2")

replay_behind()
files.image(datadir() .. "/one.img", { width = 40, height = 30 }, 1, function() return 7 end)
drop(datadir() .. "/one.img")
check.eq({ state("ReplayActive"), state("ViewingFile") }, { 0, 1 }, "a file")
wait(3000)
check.eq(pixel(5, 5), 7)

-- A file on view makes way for it.
command(103)
answer("no")
check(kReplay, true)
wait(300)
check.eq({ state("ViewingFile"), state("ReplayActive"), box() }, { 0, 1 })
press(2)

command(169)
answer("yes")
check.eq({ state("ReplayActive"), state("FramesInBuffer"), state("CameraOn") }, { 0, 0, 0 }, "the camera off")
wait(3000)
command(103)
check.eq({ dialog(), box() }, {})

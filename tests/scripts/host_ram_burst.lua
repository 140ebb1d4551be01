-- Host RAM capture: the library, a burst into the store, one more behind it, the ring that wraps, a calibration, and what lies in the file.
local check = require "check"
local calibration = require "calibration"
local video = require "video"

local kStored, kSequence, kComposition, kTotal, kSubSequence = 1332, 1334, 1336, 1338, 1340
local kFrames, kSkip, kTrigger, kReplay, kStart, kPause = 1342, 1344, 1346, 1348, 1352, 1353
local kSave, kLoad, kGraph, kClear, kRoom = 1354, 1356, 1358, 1360, 20600

local function burst_line(mark)
  for _, line in ipairs(check.lines("status", mark + 1)) do
    if line.text:find("^ Captured ") then return line.text end
  end
end

video.turn_on()
frames(3)

-- ---- As it opens

local mark = check.mark()
command(103)
check.eq({ dialog(), box() }, { "BUFFER" })
check.seen("dialog", { name = "BUFFER", text = "Host RAM Capture" }, mark)
check.eq(status(), " Set up buffer board to capture, save, load, &/or replay data")
check.eq({ text(kStored), text(kComposition), text(kTotal), text(kFrames), text(kSkip) }, { "0", "A", "1", "1", "0" })
check.eq({ picked(kSequence), picked(kSubSequence), picked(kTrigger), picked(1350) }, { 0, 0, 0, 1 })
check.eq(items(kTrigger), { "None", "InFirst", "InAll", "OutFirst", "OutAll", "InFirst/OutFirst", "InAll/OutFirst", "InFirst/OutAll", "InAll/OutAll" })
check.eq(items(1350), { "50", "24", "20", "15", "10", "5", "2", "1", "0.5", "0.2", "0.1" })
check.eq({ #items(kSequence), items(kSequence)[10], #items(kSubSequence), items(kSubSequence)[26] }, { 10, "SeqName9", 26, "Z" })
check.eq({ enabled(kStart), enabled(kLoad), enabled(kClear), enabled(kSave), enabled(kReplay), enabled(kPause), enabled(kGraph) },
  { true, true, true, false, false, false, false })
check.eq(text(kPause), "&Pause")
check.eq({ state("numBufFrames"), state("BufferStale"), state("ReplayActive") }, { 64, 0, 0 })
local rate = state("FrameRate")
check.eq(text(kRoom), ("64 frames, %.1f s at %.3f Hz"):format(64 / rate, rate))

-- ---- The library

set(kFrames, "3")
check.eq(status(), "# of Frames to capture: 1 to 64")
set(kSkip, "2")
check.eq(status(), "Frames to skip range: 0-16383")
check.eq(text(kTotal), "3")
pick(kSubSequence, 1)
check.eq({ text(kFrames), text(kSkip) }, { "1", "0" })
set(kFrames, "2")
set(kComposition, "a b")
pick(kSequence, 0)
check.eq({ text(kComposition), text(kTotal) }, { "A B", "5" })

-- The row "InFirst" puts "InAll" on and off.
pick(kTrigger, 1)
check.eq(picked(kTrigger), 2)
pick(kTrigger, 1)
check.eq(picked(kTrigger), 0)

-- ---- A burst: 3 + 2 x 2 frame times of A, 2 of B

mark = check.mark()
press(kStart)
check.eq(box() and box().text, nil)
check.seen("status", { text = " Starting capture of 5 frames to Host RAM." }, mark)
local line = burst_line(mark)
local seconds, rate_told = line:match("^ Captured 5 frames to Host RAM in +(%d+%.%d%d%d) seconds %( *(%d+%.%d%d%d) MB/s%)%.$")
check.near(tonumber(seconds), 9 / rate, 1.5 / rate, line)
check.near(tonumber(rate_told), 320 * 256 * 2.0 * 5 / (seconds * 1e6), 0.001, line)
check.eq({ state("FramesInBuffer"), state("HostFrameNext"), text(kStored), state("PeriodicUpdates") }, { 5, 5, "5", 1 })
check.eq({ state("BufferFirstFrame"), state("BufferLastFrame"), state("BufferRectTop"), state("BufferRectLeft") }, { 0, 4, 0, 0 })
check.eq({ state("BufferRectBottom"), state("BufferRectRight") }, { 255, 319 })
check.eq({ enabled(kSave), enabled(kReplay), enabled(kGraph), enabled(kStart), checked(kReplay) }, { true, true, true, true, false })
check.eq({ state("LiveVideo"), state("CalType") }, { 1, 0 })
wait(1500)
check.eq(status(), line, "it stands")

-- ---- One more behind it, also after the dialog was closed

press(1)
check.eq(dialog(), nil)
command(103)
check.eq({ text(kStored), state("FramesInBuffer"), enabled(kSave) }, { "5", 5, true })
press(kStart)
check.eq({ state("FramesInBuffer"), state("HostFrameNext"), box() }, { 10, 10 })

-- ---- The ring: the store has 64 slots

pick(kSubSequence, 2)
set(kFrames, "60")
set(kComposition, "C")
check.eq(text(kTotal), "5", "taken when the box is left")
mark = check.mark()
press(kStart)
check.eq({ #check.lines("beep", mark + 1), #check.lines("status", mark + 1) }, { 1, 0 })
check.answer_box("Probable buffer board memory overflow.\n\nContinue?", "no", "Warning")
check.eq(text(kTotal), "60")
check.eq({ state("FramesInBuffer"), state("HostFrameNext") }, { 10, 10 })
press(kStart)
answer("yes")
check.answer_box("Probable loss of data!", "ok", "Buffer Board Memory Overflow")
check.eq({ state("FramesInBuffer"), state("HostFrameNext"), text(kStored) }, { 64, 6, "64" })
check.holds(status(), " Captured 60 frames to Host RAM in ")
check.holds(status(), " Frame 6 is the oldest.")

-- ---- Cleared

press(kClear)
check.eq({ state("FramesInBuffer"), state("HostFrameNext"), state("BufferStale"), text(kStored) }, { 0, 0, 0, "0" })
check.eq({ enabled(kSave), enabled(kReplay), enabled(kGraph), enabled(kStart) }, { false, false, false, true })

-- ---- What is kept: Cancel in memory, Ok in the file

local path = datadir() .. "/buffbrd.ini"
local before = readfile(path)
press(2)
wait(1500)
check.eq(readfile(path), before)
command(103)
check.eq({ text(kComposition), picked(kSubSequence), text(kFrames) }, { "C", 2, "60" })
press(1)
wait(1500)
local after = readfile(path)
check.holds(after, "SeqName0=C")
check.holds(after, "SubSeqNameA=3 2 0")
check.holds(after, "SubSeqNameB=2 0 0")
check.holds(after, "SubSeqNameC=60 0 0")
check.holds(after, "SubSeqNum=2")

-- ---- With live video frozen it is asked for, and a burst starts it

key("F2")
check.eq(state("LiveVideo"), 0)
command(103)
local question = "You must restart the display to view buffer board images.\nRestart image display?"
check.answer_box(question, "no", "Restart Image Display?")
check.eq(state("LiveVideo"), 0)
set(kFrames, "4")
press(kStart)
check.eq({ state("LiveVideo"), state("FramesInBuffer"), box() }, { 1, 4 })
press(2)
key("F2")
command(103)
check.answer_box(question, "yes")
check.eq({ state("LiveVideo"), dialog() }, { 1, "BUFFER" })
press(kClear)
press(2)

-- ---- A calibration in force is applied when the burst is over: the quiet array shows its source in every pixel

command(130)
calibration.two_point(20, 25, 4)
answer("ok")
check.eq(state("CalType"), 2)
sim.source("low", 22)
frames(3)
command(103)
press(kStart)
check.eq({ state("CalType"), state("FramesInBuffer"), box() }, { 2, 4 })
check(kReplay, true)
wait(200)
press(kPause)
local spread = {}
for _, place in ipairs { { 3, 3 }, { 100, 50 }, { 160, 128 }, { 300, 250 } } do spread[#spread + 1] = pixel(place[1], place[2]) end
check(kReplay, false)
frames(2)
for i, place in ipairs { { 3, 3 }, { 100, 50 }, { 160, 128 }, { 300, 250 } } do
  check.near(spread[i], pixel(place[1], place[2]), 60, "as the live picture, within its noise")
end

-- ---- An average leaves the burst alone

press(2)
local kept = state("FramesInBuffer")
command(106)
set(1460, "mean")
set(1488, "20")
press(1)
check.eq({ box() and box().text, state("FramesInBuffer"), state("HostFrameNext") }, { nil, kept, kept })

-- Host RAM capture: each box that refuses something, and what goes wrong in a burst or a transfer.
local check = require "check"
local video = require "video"

local kComposition, kTotal, kFrames, kSkip, kTrigger, kReplay, kStart = 1336, 1338, 1342, 1344, 1346, 1348, 1352

local function stored() return { state("FramesInBuffer"), state("HostFrameNext"), state("PeriodicUpdates") } end

video.turn_on()
command(103)

-- ---- Numbers: the old one comes back

local function refuse(id, typed, text_of, beeps)
  local before, mark = text(id), check.mark()
  set(id, typed)
  press(kStart)
  check.answer_box(text_of, "ok", "Kelvo message")
  check.eq(text(id), before, typed)
  check.eq(#check.lines("beep", mark + 1), beeps, typed)
  check.eq({ box(), stored() }, { nil, { 0, 0, 1 } }, "nothing is captured")
end
for _, typed in ipairs { "-1", "65", "many", "" } do refuse(kFrames, typed, "Number of frames to capture\n must be in range: 1 to 64", 1) end
for _, typed in ipairs { "few", "" } do refuse(kSkip, typed, "Unable to Skip number!", 0) end
for _, typed in ipairs { "-1", "16384" } do refuse(kSkip, typed, "Number of frames to skip must be 0 to 16383", 0) end
set(kSkip, "16383")
set(kFrames, "64")
check.eq(box(), nil)
set(kSkip, "0")

-- ---- A composition: digits go, and so does what the store can't hold

local mark = check.mark()
set(kComposition, "1b2")
set(kSkip, "0")
check.eq({ text(kComposition), text(kTotal), #check.lines("beep", mark + 1) }, { "B", "1", 1 })
set(kComposition, "bA")
mark = check.mark()
set(kSkip, "0")
check.answer_box("Unable to store # of frames requested into buffer.", "ok", "Kelvo message")
check.eq({ text(kComposition), text(kTotal) }, { "B", "1" })
set(kComposition, "abcdefghijk")
set(kSkip, "0")
check.answer_box("Unable to store # of frames requested into buffer.", "ok")
check.eq({ text(kComposition), text(kTotal) }, { "A", "64" })

-- ---- Nothing to capture

set(kFrames, "0")
set(kSkip, "0")
check.eq(text(kTotal), "0")
mark = check.mark()
press(kStart)
check.answer_box("Define a sequence composed of subsequences with non-zero number of frames to capture.", "ok", "Nothing to capture!")
check.eq({ #check.lines("beep", mark + 1), stored() }, { 1, { 0, 0, 1 } })

-- ---- A burst that goes wrong has one box, and the frames before it stay

local function expect_error() check.answer_box("ICP-PCI frame grabber error", "ok", "Buffer Board Error") end
set(kFrames, "3")
pick(1340, 1)
pick(kTrigger, 4)
set(kComposition, "AB")
press(kStart)
expect_error()
check.eq({ box(), stored(), text(1332) }, { nil, { 3, 3, 1 }, "3" })
check.eq(enabled(1354), true)
pick(kTrigger, 0)

-- The camera's own fault: the burst tells its one box, and live video, which goes on behind it, its own.
for fault, live in pairs { icp_wait_vb = "Timeout waiting for vertical blank!", icp_read_area = "icp_read_area() Error" } do
  sim.fault(fault)
  mark = check.mark()
  press(kStart)
  sim.fault(fault, false)
  while box() do answer("ok") end
  local told = {}
  for _, line in ipairs(check.lines("box", mark + 1)) do told[line.text] = (told[line.text] or 0) + 1 end
  check.eq(told["ICP-PCI frame grabber error"], 1, fault)
  told["ICP-PCI frame grabber error"], told[live] = nil, nil
  check.eq(told, {}, fault)
  check.eq({ dialog(), stored() }, { "BUFFER", { 3, 3, 1 } }, fault)
end

-- ---- While replay is on, keys of grey buttons do nothing, and the dialog can be left

if state("LiveVideo") == 0 then
  press(2)
  command(103)
  answer("yes")
end
check(kReplay, true)
for _, id in ipairs { kStart, 1354, 1356, 1360 } do check.eq(enabled(id), false) end
check(kReplay, false)

-- ---- Transfers

press(1356)
cancel()
check.eq({ dialog(), stored() }, { "BUFFER", { 3, 3, 1 } })
press(1356)
local file_path = datadir() .. "/short.buf"
local file_handle = assert(io.open(file_path, "wb"))
file_handle:write(("x"):rep(100))
file_handle:close()
choose(file_path)
check.answer_box("Error reading Image File Header\n" .. file_path, "ok", "Kelvo message")
check.eq({ dialog(), box(), stored() }, { "BUFFER", nil, { 3, 3, 1 } })

press(1354)
cancel()
check.eq(dialog(), "BUFFER")
press(1354)
choose(datadir() .. "/all.buf")
sim.fault("disk full")
press(1)
sim.fault("disk full", false)
expect_error()
check.eq({ dialog(), stored(), readfile(datadir() .. "/all.buf") }, { "BUFFER", { 3, 3, 1 } })
press(2)

-- ---- The dialog itself

sim.fault("load dialog BUFFER")
command(103)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog BUFFER", false)
check.eq({ dialog(), state("FramesInBuffer") }, { nil, 3 })

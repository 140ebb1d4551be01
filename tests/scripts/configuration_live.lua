-- A change of camera with live video running and the image cursor on: from the small camera to the large one and back in one process, with
-- colour scale, saturation overlay and frame account open.
local check = require "check"
local video = require "video"

local function turn_on()
  check.eq(dialog(), "CLOCK_ON")
  video.turn_on()
  check.eq(box(), nil)
  check.eq(dialog(), nil)
  check.eq({ state("CameraOn"), state("LiveVideo"), state("ViewingFile") }, { 1, 1, 0 })
end

-- The read-out is the count of the frame on view under the cursor.
local function expect_live_readout()
  mouse(100, 300)
  mouse(state("ClientWidth") - 150, state("ClientHeight") - state("TextHeight") - 40)
  frames(3)
  local x, y = state("CursorX"), state("CursorY")
  assert(x < state("Hroi") and y < state("Vroi"), x .. "," .. y)
  check.holds(status(), string.format("x=%3d  y=%3d  Signal=", x, y))
  return x, y
end

local function restart(index, columns, rows)
  command(123)
  check.eq(dialog(), "INITIAL")
  pick(1598, index)
  local mark = check.mark()
  press(1)
  check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes")
  check.eq(box(), nil, "no failure")
  check.eq(check.seen("close", { name = "INITIAL" }, mark).result, 1)
  check.eq({ state("Hroi"), state("Vroi"), state("CameraOn") }, { columns, rows, 0 })
  check.seen_in_order("status", {
    "Wait - Vantir Loading initial setup",
    "Wait - Vantir initializing Image Processor",
    "Wait - Kelvo start up procedure",
    " Use Alt + underlined menu item or trackball to select menu item",
  }, mark)
  turn_on()
  frames(20)
  assert(raw(columns * rows - 1), "the raw frame has the camera's size")
  check.eq(raw(columns * rows), nil)
  check.eq({ state("FramePitch"), state("FrameRows"), state("DataOffset") }, { math.ceil(columns / 32) * 32, rows, 0 })
  check.eq({ state("HostFramesAllocated"), state("HostFrameNext"), state("PeriodicUpdates") }, { 1, 0, 1 })
  assert(state("numBufFrames") >= 8, "frames counted, not the section's wish")
  check.eq({ state("HostFrameBytes"), state("AveragingCapacity") }, { 0, 0 }, "worked out by the first averaging")
end

turn_on()
for id = 2006, 2008 do command(id) end
key("F8")
frames(20)
expect_live_readout()

restart(0, 640, 512)
local x, y = expect_live_readout()
assert(x >= 320 or y >= 256, "outside the small camera's frames: " .. x .. "," .. y)
assert(pixel(639, 511), "the live frame has the large size")

restart(1, 320, 256)
expect_live_readout()
check.eq(pixel(320, 0), nil)

restart(2, 64, 64)
expect_live_readout()

-- Frames were delivered and counted all the way.
assert(state("FramesDelivered") > 60 and state("FramesShown") > 60)
assert(state("FramesDelivered") >= state("FramesShown"))

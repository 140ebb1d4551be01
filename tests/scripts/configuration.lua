-- The configuration dialog without a head: its values, a change of camera in the running program, from a small camera to a large one and
-- back with the image cursor on.
local check = require "check"
local files = require "files"

-- Answers what is in front; the boxes' texts and captions in order.
local function answer_all(button)
  local seen = {}
  while box() do
    seen[#seen + 1] = box().caption .. ": " .. box().text
    answer(button or "ok")
  end
  return seen
end
answer_all()

local small = files.image(datadir() .. "/small.img", { width = 320, height = 256 }, 1,
  function(_, x, y) return 20 * y + x end)
local large = files.image(datadir() .. "/large.img", { width = 640, height = 512 }, 1,
  function(_, x, y) return 20 * y + x end)

local function expect_readout()
  local x, y = state("CursorX"), state("CursorY")
  check.eq(status(), string.format("x=%3d  y=%3d  Signal=%d Counts     ", x, y, 20 * y + x))
end
local function far_corner()
  mouse(100, 300)  -- a pointer that doesn't move tells nothing
  mouse(state("ClientWidth") - 40, state("ClientHeight") - state("TextHeight") - 40)  -- clear of scroll bars
end

drop(small)
key("F8")
far_corner()
expect_readout()

-- The cursor is off while the dialog is open and comes back with its end.
command(123)
check.eq(dialog(), "INITIAL")
check.eq(state("ImageCursorOn"), 0)
check.eq(status(), " Enter parameters to be stored for this and subsequent sessions")
check.eq(#items(1598), 40)
check.eq({ items(1598)[4], items(1598)[5] }, { "InSb 320 x 256, four channels", "N/A" })
check.eq(picked(1598), 1)
check.eq({ checked(1262), checked(1273), checked(1046) }, { true, true, true })
check.eq({ enabled(1046), enabled(1047), enabled(1048) }, { true, false, false })
pick(1598, 0)
check.eq({ checked(1261), checked(1272) }, { true, true }, "the large camera's zoom")
press(1)
check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "no", "Kelvo configuration change")
check.eq(dialog(), "INITIAL", "no keeps it open")
check.eq(state("ActiveCamera"), 1)
press(2)
check.eq(dialog(), nil)
check.eq(state("ImageCursorOn"), 1)
check.eq(state("Hroi"), 320, "the settings weren't read again")
local function ini(name)
  wait(1500)
  local file = assert(io.open(datadir() .. "/" .. name))
  local contents = file:read("a")
  file:close()
  return contents
end
check.holds(ini("kelvo.ini"), "ActiveCamera=2")

-- Yes runs the set-up again: the settings of the other camera are in force, the head's failure is told, the program goes on.
local function restart(index, columns, rows)
  command(123)
  pick(1598, index)
  local mark = check.mark()
  press(1)
  check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes")
  local boxes = answer_all()
  check.eq(boxes[#boxes], "Recommend re-start!: Initialize Hardware Failure")
  check.eq(dialog(), nil)
  check.eq({ state("Hroi"), state("Vroi") }, { columns, rows })
  check.eq({ state("ActiveCamera"), state("ViewingFile"), state("CameraOn") }, { index + 1, 0, 0 })
  check.eq(state("ImageCursorOn"), 1)
  check.eq(title(), "Kelvo - Frozen")
  check.seen_in_order("status", { "Wait - Vantir Loading initial setup", "Wait - Kelvo start up procedure" }, mark)
  check.holds(ini("kelvo.ini"), "ActiveCamera=" .. index + 1)
  check.holds(ini("kelvo.ini"), "MonitorSetup=0")
end

restart(2, 64, 64)  -- from a camera of 320 x 256 to a smaller one
restart(0, 640, 512)
drop(large)
far_corner()
expect_readout()
assert(state("CursorX") >= 320 or state("CursorY") >= 256, "outside the small camera's frames: " .. status())
restart(1, 320, 256)
check.eq({ state("Xzoom"), state("Yzoom") }, { 3, 3 })
drop(small)
far_corner()
expect_readout()
assert(state("CursorX") < 320 and state("CursorY") < 256)
key("F8")
check.eq(state("ImageCursorOn"), 0)

-- Texts for numbers: a corner keeps what is stored, a pan is 0; nothing is told.
command(123)
set(1293, "none")
set(1290, "none")
set(1294, "12")
press(1)
check.eq(box(), nil)
check.eq({ state("Xoffset"), state("Yoffset"), state("Xpan") }, { 0, 12, 0 })

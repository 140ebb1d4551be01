-- The start with no camera head, in its order: what the status line says, the one box, no turn-on dialog, and a viewer that works.
local check = require "check"

check.answer_box("Initialize Hardware Failure", "ok", "Kelvo message")
check.eq(dialog(), nil, "no turn-on dialog opens")
check.eq(box(), nil)
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
check.eq(title(), "Kelvo - Frozen")

check.seen_in_order("status", {
  "Wait - Vantir Loading initial setup",
  "Wait - Kelvo start up procedure",
  "Wait - Kelvo start up procedure",
  " Use Alt + underlined menu item or trackball to select menu item",
})
check.eq(check.seen("status", { text = "Wait - Kelvo start up procedure" }).align, 6)
check.eq(#check.lines("box"), 1)

-- The picture of the start stands for 1500 ms after the head has answered or not.
local box_line = check.lines("box")[1]
local ready = check.seen("status", { text = status() })
assert(ready.t - box_line.t >= 1500, "the start picture stands for 1500 ms")

-- The panel is there and shows what was read.
check.eq(text("panel", 311), "3")
check.eq(text("panel", 316), tostring(state("Brightness")))
check.eq(text("panel", 317), tostring(state("Contrast")))
check.eq(checked("panel", 1013), true)

-- No board was opened, no camera is on.
check.eq(state("CameraOn"), 0)
check.eq(state("LiveVideo"), 0)
check.eq(state("ViewingFile"), 0)
check.eq(state("DisplayLow"), 0)
check.eq(state("DisplayHigh"), 16383)
assert(state("ViewHeight") == state("ClientHeight") - 60)

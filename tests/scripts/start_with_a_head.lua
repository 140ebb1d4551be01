-- A head that answers: the display side comes up, and command 169 is queued unless the command line turns the camera on. The argument
-- after -- names the command line: fewer than five characters count as none.
sim.fault("a head answers", true)
sim.fault("the camera turns on", true)
local check = require "check"

if arg[1] == "abcde" then
  check.eq(box(), nil, "the camera is on, nothing is asked")
else
  -- The request was queued: panel and idle status line stand before the turn-on dialog's place in the loop.
  check.eq(box().text, "This command is not available in this version of Kelvo.")
  check.seen("status", { text = " Use Alt + underlined menu item or trackball to select menu item" })
  check.eq(text("panel", 317), tostring(state("Contrast")))
  answer("ok")
end
check.eq(state("GrabberPresent"), 1)
check.eq(#state("ColorMap"), 768)
check.eq(#state("DisplayLut"), 65535)
check.seen_in_order("status", {
  "Wait - Vantir Loading initial setup",
  "Wait - Vantir initializing Image Processor",
  "Wait - Kelvo start up procedure",
  " Use Alt + underlined menu item or trackball to select menu item",
})

-- A command line that doesn't turn the camera on leaves the choice to the operator.
local asked = 0
for _, line in ipairs(check.lines("box")) do
  if line.text:find("not available", 1, true) then asked = asked + 1 end
end
check.eq(asked, arg[1] == "abcde" and 0 or 1)

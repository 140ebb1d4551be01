-- A head that answers: the display side comes up, and command 169 is queued unless the command line turns the camera on. The argument
-- after -- names the command line: fewer than five characters count as none; "abcde" names a calibration that isn't there, which
-- leaves the choice to the operator with the camera on; AUTOSTART turns the camera on and asks nothing.
local check = require "check"
local line = arg[1]

if line == "AUTOSTART" then
  check.eq(box(), nil, "the camera is on, nothing is asked")
  check.eq(dialog(), nil)
  check.eq(state("CameraOn"), 1)
  check.eq(state("LiveVideo"), 1)
  check.eq(menu(169).text, "&Turn Vantir off")
elseif line == "abcde" then
  check.answer_box("Failed to get ActiveCamera from calibration file:\n" .. state("DefaultDir") .. "/abcde.cal", "ok", "Kelvo message")
  -- The camera came on before the calibration failed: command 169 asks whether to turn it off.
  check.answer_box("Do you wish to turn the Vantir camera OFF?", "no", "Turn off camera?")
  check.eq(state("CameraOn"), 1)
else
  -- The request was queued: panel and idle status line stand before the dialog opens.
  check.eq(dialog(), "CLOCK_ON")
  check.seen("status", { text = " Use Alt + underlined menu item or trackball to select menu item" })
  check.eq(text("panel", 317), tostring(state("Contrast")))
  check.eq(status(), " Choose one of the Kelvo turn-on procedures or Cancel")
  press(2)
  check.eq(dialog(), nil)
  check.eq(state("CameraOn"), 0)
end
check.eq(state("GrabberPresent"), 1)
check.eq(#state("ColorMap"), 768)
check.eq(#state("DisplayLut"), 65535)
check.seen_in_order("status", {
  "Wait - Vantir Loading initial setup",
  "1 Ch. 14-bit QVF119/125 InSb Camera Head found",
  "Wait - Vantir initializing Image Processor",
  "Wait - Kelvo start up procedure",
  " Use Alt + underlined menu item or trackball to select menu item",
})
for _, each in ipairs(check.lines("box")) do assert(each.text ~= "Initialize Hardware Failure", "the head answered") end

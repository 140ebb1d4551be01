-- A change of camera where the new one's head answers: the set-up ends with the question how the camera is to come on.
local check = require "check"
while box() do answer("ok") end
if dialog() then press(2) end
sim.fault("a head answers", true)

command(123)
pick(1598, 2)
local mark = check.mark()
press(1)
check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes")
check.eq({ state("ActiveCamera"), state("Hroi"), state("Vroi") }, { 3, 64, 64 })
check.seen_in_order("status", {
  "Wait - Vantir Loading initial setup",
  "Wait - Vantir initializing Image Processor",
  "Wait - Kelvo start up procedure",
  " Use Alt + underlined menu item or trackball to select menu item",
}, mark)
-- The request was queued: it comes once the dialog is gone.
assert(check.seen("close", { name = "INITIAL" }, mark).result == 1)
if dialog() then
  check.eq(dialog(), "CLOCK_ON")
  press(2)
else
  check.answer_box("This command is not available in this version of Kelvo.", "ok")
end
check.eq(check.find("box", { text = "Initialize Hardware Failure" }, mark), nil)

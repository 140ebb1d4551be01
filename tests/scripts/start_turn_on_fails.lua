-- A command line that names a start for which the camera doesn't turn on opens the turn-on dialog all the same: here the section
-- holds a size that no image can have. The head itself is found.
local check = require "check"
check.answer_box("The camera can't be turned on with these settings.\nCamera.2: Hactive=5000 must lie between 1 and 1024.", "ok",
  "Kelvo configuration warning")
check.eq(dialog(), "CLOCK_ON")
check.eq(state("CameraOn"), 0)
-- The operator who tries is told the same, and that the head isn't on; the dialog stays.
press(1070)
check.answer_box("The camera can't be turned on with these settings.\nCamera.2: Hactive=5000 must lie between 1 and 1024.", "ok")
check.answer_box("Unable to turn camera head on!", "ok", "Camera Head Error!")
check.eq(dialog(), "CLOCK_ON")
press(2)
check.eq(dialog(), nil)

-- A turn-on whose calibration is cancelled at the question about the second camera ends there: nothing behind it is done.
local check = require "check"
local files = require "files"
local file = state("CameraFilePath")
files.write(file, (readfile(file):gsub("%[Camera%.2%]", "%0\nDualCamera=1", 1)))
press(2)
-- The section is read anew by going to another camera and back.
for _, number in ipairs { 3, 2 } do
  command(123)
  pick(1598, number - 1)
  press(1)
  answer("yes")
  if number == 3 then press(2) end
end
check.eq(state("DualCamera"), 1)
press(1070)
press(1)
check.eq(dialog(), "CALIB")
press(1)
check.holds(box().text, "About to start calibration of camera:\n\n")
local mark = check.mark()
answer("cancel")
check.eq(dialog(), nil)
check.eq(box(), nil)
check.eq(state("CameraOn"), 1)
check.eq(#check.lines("status", mark + 1), 0, "no hint is set: the command ended at the question")

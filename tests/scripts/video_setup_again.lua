-- The next start after video_setup.lua: offset, frame rate and window stand.
local check = require "check"
check.eq({ state("Hroi"), state("Vroi") }, { 160, 128 })
check.eq(dialog(), "CLOCK_ON")
press(1070)
check.eq(dialog(), "QVF1058")
check.eq({ text(641), picked(624), text(1377) }, { "148", 9, "20480" })
frames(5)
press(1020)
check.eq({ text(314), text(316), text(9110) }, { "160", "128", "10" })
-- Cancel gives back what stood at its opening.
check(9113, true)
set(314, "200")
wait(1100)
check.eq(state("Hroi"), 200)
press(2)
check.eq({ state("Hroi"), state("Vroi") }, { 160, 128 })
frames(5)
press(1)
if dialog() == "CALIB" then press(2) end
frames(5)

-- A change to a camera on another port while the link is open: each set-up asks the head of its own camera.
-- Written before the first call: the start finds it, and puts no shipped file over it.
local out = assert(io.open("data/kelvo.ini", "wb"))
out:write("[Setup]\nActiveCamera=2\nCommPortAlwaysOpen=1\n")
out:close()

local check = require "check"
local video = require "video"

local function restart(index)
  command(123)
  pick(1598, index)
  local mark = check.mark()
  press(1)
  check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes")
  check.eq(box(), nil, "no failure")
  check.eq(dialog(), "CLOCK_ON")
  return mark
end

video.turn_on()
check.eq({ state("CameraOn"), state("nCommPort"), state("CommPortOpen") }, { 1, 2, 1 })

local mark = restart(2)
check.seen("status", { text = "1 Ch. 14-bit 64x64 HgCdTe Camera Head found" }, mark)
check.eq({ state("nCommPort"), state("CommPortOpen") }, { 3, 1 })
press(1070)
check.eq(box(), nil, "head and section fit")
video.pass_set_up()
check.eq(state("CameraOn"), 1)

mark = restart(0)
check.seen("status", { text = "1 Ch. 14-bit QVF119/125 InSb Camera Head found" }, mark)
check.eq(state("nCommPort"), 1)
press(2)

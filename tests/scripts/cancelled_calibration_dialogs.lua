-- A set's dialog that is cancelled ends its command and leaves the status line, here the cursor's read-out, as it was.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local video = require "video"

video.turn_on()
command(133)
calibration.choose(files.calibration(datadir() .. "/set.cal", 320, 256, 1, 0))
check.eq({ box() and box().text, state("CalType") }, { nil, 2 })
key("F2")
mouse(150, 200)
command(151)
local read_out = status()
check.holds(read_out, "Temperature=")
for id, name in pairs { [132] = "CAL_SAVE", [133] = "CAL_OPEN" } do
  command(id)
  check.eq(dialog(), name)
  press(2)
  check.eq({ box() and box().text, dialog() }, {})
  check.eq(status(), read_out, "command " .. id)
  check.eq(state("CalType"), 2)
end

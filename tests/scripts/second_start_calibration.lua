-- Another start names a calibration in one quoted argument (arg[1]: the program): with the camera on it comes into force here.
local check = require "check"
local files = require "files"
local another = require "another"
local video = require "video"
local program, data = arg[1], datadir()
assert(os.execute("mkdir -p '" .. data .. "/../sets'"))
video.turn_on()
check.eq(state("CalType"), 0)
files.calibration(data .. "/../sets/q.cal", state("Hroi"), state("Vroi"), 1, 0)
local start = another.start(program, "start", "--data", data, "AUTOSTART sets/q.cal")
check.eq(start.finish(), 0)
wait(500)
check.eq(box(), nil)
check.eq(state("CalType"), 2)
check.eq({ state("CameraOn"), state("LiveVideo") }, { 1, 1 })
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
frames(3)

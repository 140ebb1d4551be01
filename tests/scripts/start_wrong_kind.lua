-- A start by the command line with a section made for the other kind of head: the operator stops the turn-on and gets the turn-on
-- dialog; going on against the warning turns the camera on.
-- Written before the first call: the start finds it, and puts no shipped file over it.
local out = assert(io.open("data/camera.ini", "wb"))
out:write("[Camera.2]\nDescription=64 x 64 (J108)\nHactive=320\nVactive=256\nHroi=320\nVroi=256\nDecomScheme=2\nUnityGain=16384\n",
  "UnityOffset=8192\ncnfFile=insb320.cnf\nIndexFrameRate=3\nIndexIntegrationTime=10,10,10,10\n")
out:close()

local check = require "check"
local video = require "video"
local question = "Your camera head has an InSb focalplane.  Your software configuration may be incorrect!"
check.answer_box(question, "yes", "Stop startup procedure?")
check.eq(dialog(), "CLOCK_ON")
check.eq(state("CameraOn"), 0)
press(1070)
check.answer_box(question, "yes")
check.answer_box("Unable to turn camera head on!", "ok", "Camera Head Error!")
check.eq(dialog(), "CLOCK_ON")
press(1070)
check.answer_box(question, "no")
check.eq(box(), nil)
video.pass_set_up()
check.eq({ state("CameraOn"), state("LiveVideo") }, { 1, 1 })
frames(3)

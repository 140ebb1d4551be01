-- First light: the simulated camera comes alive. Turns it on by each of the three ways, watches live video, freezes, reads
-- values, zooms, changes colours, changes the camera and back, turns it off and on again; leaves pictures in the directory
-- named after "--". With CommLog=1 in kelvo.ini the bytes that went to the camera head stand in CommLog.txt.

local out = arg and arg[1] or "first-light"
local data = datadir()

local kExit, kConfiguration, kFreeze, kImageCursor, kTurnOn = 119, 123, 140, 151, 169
local kGray, kColour, kFitContrast = 143, 145, 2004
local kByVideoSetup, kByLastCalibration, kBySelectedCalibration = 1070, 1072, 1074

local function say(...)
    print(string.format(...))
end

local function picture(name)
    screenshot(out .. "/" .. name .. ".png")
    say("  picture: %s.png", name)
end

-- Presses one of the turn-on dialog's buttons and tells what came of it.
local function turnOn(button)
    press(button)
    if dialog() == "QVF1058" then press(1) end -- the oscilloscope, accepted as it opens
    if dialog() == "CALIB" then press(2) end
    assert(state("CameraOn") == 1 and state("LiveVideo") == 1, "the camera is on and live")
    say("camera on: %s", menu(kTurnOn).text)
end

local function turnOff()
    command(kTurnOn)
    say("asked: %s", box().text)
    answer("yes")
    assert(state("CameraOn") == 0)
    say("camera off: %s", menu(kTurnOn).text)
end

-- Chooses a camera in the configuration dialog and restarts the set-up; the turn-on dialog is in front afterwards.
local function changeCamera(index)
    command(kConfiguration)
    say("cameras: %s", table.concat(items(1598), "; ", 1, 3))
    pick(1598, index)
    picture("7-configuration")
    press(1)
    say("asked: %s", box().text)
    answer("yes")
    assert(dialog() == "CLOCK_ON", dialog())
end

-- Two of the three ways load a calibration. There is none yet: its settings file alone stands in for it.
local function writeSet(name)
    local file = assert(io.open(data .. "/" .. name, "wb"))
    file:write("[Calibration]\nDriverNumber=2\n")
    file:close()
end

-- The start: the head has answered, and Kelvo asks how to turn the camera on.
assert(dialog() == "CLOCK_ON", "the turn-on dialog opens")
for _, line in ipairs(transcript()) do
    if line.kind == "status" and line.text:find("Camera Head found", 1, true) then say("head: %s", line.text) end
end
picture("1-before")

-- First way: through the video set-up.
turnOn(kByVideoSetup)
frames(200)
say("live: %s", status())
say("frames delivered %d, shown %d, lost %d", state("FramesDelivered"), state("FramesShown"), state("FramesLost"))
picture("2-live")

-- A warm scene, then a uniform source.
sim.source("scene")
frames(3)
command(kFitContrast)
frames(2)
say("contrast %d, brightness %d", state("Contrast"), state("Brightness"))
picture("3-scene")

-- Frozen, the cursor reads counts.
command(kFreeze)
say("title: %s", title())
command(kImageCursor)
mouse(400, 300)
say("read-out: %s", status())
say("and the count under it: %d", pixel(state("CursorX"), state("CursorY")))
picture("4-frozen")
command(kImageCursor)

-- Zoom to 16 and back.
local zoom = state("Xzoom")
while state("Xzoom") < 16 do command(200) end
picture("5-zoom")
while state("Xzoom") > zoom do command(201) end
command(kFreeze)

-- Colour map, contrast and brightness, live.
command(kColour)
press("panel", 315, "up")
press("panel", 315, "right")
frames(2)
say("contrast %d, brightness %d", state("Contrast"), state("Brightness"))
picture("6-colour")
press("panel", 315, "down")
press("panel", 315, "left")
command(kGray)

-- Off; then the large array, and back.
turnOff()
changeCamera(0)
turnOn(kByVideoSetup)
frames(20)
command(kFitContrast)
frames(2)
say("a frame of %d x %d", state("Hroi"), state("Vroi"))
picture("8-large-array")
turnOff()
changeCamera(1)

-- Second way: with the last calibration.
writeSet("last.cal")
turnOn(kByLastCalibration)
frames(20)
turnOff()

-- Third way: with a calibration of the operator's choice.
writeSet("MORNING.CAL")
command(kTurnOn)
press(kBySelectedCalibration)
say("file dialog: %s", file().title)
choose(data .. "/MORNING.CAL")
assert(state("CameraOn") == 1 and state("LiveVideo") == 1)
frames(20)
command(kFitContrast)
frames(2)
picture("9-after")
turnOff()

local log = io.open(data .. "/CommLog.txt", "rb")
if log then
    local _, lines = log:read("a"):gsub("WriteRead%d+=", "")
    log:close()
    say("%d transactions with the head in CommLog.txt", lines)
end

-- The end.
command(kExit)
say("asked: %s", (box().text:gsub("\n", "")))
answer("yes")

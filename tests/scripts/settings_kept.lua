-- When a setting reaches its file: some at once, some at exit alone. The next start reads them back.
local check = require "check"
local files = require "files"
answer("ok")
local ini, camera = datadir() .. "/kelvo.ini", datadir() .. "/camera.ini"

-- The value of a key in a section, as a plain reader finds it.
function value(path, section, key)
  local inside = false
  for line in (readfile(path) or ""):gmatch("[^\r\n]+") do
    local name = line:match("^%[(.-)%]")
    if name then inside = name == section end
    local found = inside and line:match("^" .. key .. "=(.*)$")
    if found then return found end
  end
end
local function written() wait(1500) end

check.eq(value(ini, "Setup", "ActiveCamera"), "2")
local contrast, brightness = state("Contrast"), state("Brightness")
check.eq(value(ini, "Display", "Contrast"), tostring(contrast))

-- A colour map of the menu is for this session.
command(144)
written()
check.eq(value(ini, "Display", "ImageColor"), "1230")

-- The panel's levels wait; leaving the trackball writes them.
press("panel", 315, "up")
press("panel", 315, "left")
written()
check.eq(value(ini, "Display", "Contrast"), tostring(contrast))
check.eq(value(ini, "Display", "Brightness"), tostring(brightness))
key("F10")
check.eq(state("TrackballMode"), 1)
written()
check.eq(value(ini, "Display", "Contrast"), tostring(contrast), "entering writes nothing")
key("F10")
check.eq(state("TrackballMode"), 0)
written()
check.eq(value(ini, "Display", "Contrast"), tostring(contrast + 1))
check.eq(value(ini, "Display", "Brightness"), tostring(brightness - 10))

-- A picture that is seen as it is, so that no contrast is found for it.
local ramp = files.image(datadir() .. "/../ramp.img", { width = 160, height = 120 }, 1, function(_, x) return 100 * x end)
drop(ramp)
-- The pan is written as it moves, zoom and offsets at exit.
key("Home")
key("+")
key("Shift+Down")
written()
check.eq(value(camera, "Camera.2", "Xpan"), tostring(state("Xpan")))
check.eq(value(camera, "Camera.2", "Xzoom"), "3")
check.eq(value(camera, "Camera.2", "Yoffset"), "0")
check.eq(state("Xzoom"), 4)

press("panel", 315, "up")
written()
check.eq(value(ini, "Display", "Contrast"), tostring(contrast + 1))
command(119)
answer("yes")
check.eq(value(ini, "Display", "Contrast"), tostring(contrast + 2))
check.eq(value(ini, "Display", "Brightness"), tostring(brightness - 10))
check.eq(value(camera, "Camera.2", "Xzoom"), "4")
check.eq(value(camera, "Camera.2", "Yzoom"), "4")
check.eq(value(camera, "Camera.2", "Xoffset"), tostring(state("Xoffset")))
check.eq(value(camera, "Camera.2", "Yoffset"), tostring(state("Yoffset")))

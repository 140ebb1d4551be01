-- A change of camera while one is on: menu, panel and the hint of Exit tell what the program's state is, and what a camera lacks is gone
-- from the menu only as long as it is chosen.
local check = require "check"
local files = require "files"
local video = require "video"

local file = state("CameraFilePath")
local shipped = readfile(file)
local section = shipped:match("%[Camera%.2%]\r?\n(.-)\n%[Camera%.3%]")
files.write(file, shipped .. "\n[Camera.5]\n" .. section:gsub("BufferCapture=1", "BufferCapture=0") .. "\n")

local function expect_agreement(what)
  check.eq(menu(169).text:match("^&Turn Vantir (%a+)"), state("CameraOn") == 1 and "off" or "on", what)
  check.eq(checked("panel", 1013), state("DisplayEnabled") == 1, what)
  check.eq(menu(103) ~= nil, state("BufferCapture") ~= 0, what)
  local hint = state("CameraOn") == 1 and " This will end your Kelvo session (the IR camera will remain on)"
    or " This will end your Kelvo session (the IR camera is now off)"
  local front = dialog()
  if not front then
    command(119)
    check.eq(status(), hint, what)
    answer("no")
  end
end

local function change_to(number)
  command(123)
  pick(1598, number - 1)
  press(1)
  check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes")
  check.eq(state("ActiveCamera"), number)
  check.eq(state("CameraOn"), 0)
  check.eq(dialog(), "CLOCK_ON")
  expect_agreement("after the change to camera " .. number)
  press(2)
  expect_agreement("nothing turned on")
end

local host_ram = menu(103)
video.turn_on()
expect_agreement("on")
key("F11")
key("F11")
check.eq(state("ImageColor"), 1232)

change_to(5)
check.eq(menu(103), nil)
check.eq(state("ImageColor"), 1232, "the colours that were chosen by the key")
command(144)
check.eq(state("ImageColor"), 1231)

change_to(2)
check.eq(menu(103), host_ram)
check.eq(state("ImageColor"), 1231, "and by the menu")

-- A turn-on draws each frame, whatever the box was.
check("panel", 1013, false)
check.eq(state("DisplayEnabled"), 0)
expect_agreement("display off")
command(169)
video.turn_on()
check.eq(state("DisplayEnabled"), 1)
expect_agreement("on again")

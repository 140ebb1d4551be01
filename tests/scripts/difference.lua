-- View > Difference...: of the live and the frozen picture, to itself and to a frame of a file; what is saved and read stays the frame; off with the reason
-- told where the picture becomes another one.
local tick = check
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local unchanged = require "unchanged"

local kLive, kFile, kName, kBrowse, kFrame, kOff, kNow = 22201, 22202, 22203, 22204, 22205, 22206, 22207
local width, height = 320, 256

-- ---- Without a picture of the camera

if dialog() == "CLOCK_ON" then press(2) end
command(2220)
check.answer_box("There is no picture of the camera on view.", "ok")

command(169)
calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
sim.source("high", 30)
frames(2)
command(140)  -- frozen
check.eq(state("LiveVideo"), 0)

-- The shades of the picture on the screen, in a part of it that nothing covers.
local function shades()
  local seen, list = {}, {}
  for y = 10, 400, 60 do
    for x = 10, 400, 40 do
      local shade = table.concat({ screen(x, state("PanelHeight") + y) }, ",")
      if not seen[shade] then list[#list + 1] = shade end
      seen[shade] = true
    end
  end
  return list
end

-- ---- Frozen against itself: 0 everywhere, and nothing but the picture has changed

local function picture() return state("DifferenceSource") ~= "", state("StatusMark") end
local before = unchanged.snapshot()
command(2220)
check.eq({ dialog(), text(kNow), checked(kLive), checked(kFile) }, { "DIFFER", "No difference is shown.", true, false })
check.eq({ enabled(kOff), enabled(kName), enabled(kBrowse), enabled(kFrame) }, { false, false, false, false })
press(2)
unchanged.expect(before, unchanged.snapshot(), {}, {}, "cancelled")
local count = pixel(30, 40)
command(2004)  -- contrast that shows the noise
assert(#shades() > 5)
before = unchanged.snapshot()
command(2220)
press(1)
check.eq(dialog(), nil)
check.eq({ picture() }, { true, "Difference" })
check.holds(status(), "The picture shows the difference to the live picture of ")
check.eq(pixel(30, 40), count, "a script reads the frame")
screenshot("zero.png")
check.eq(#shades(), 1, "one shade, that of no difference")
unchanged.expect(before, unchanged.snapshot(),
  { DifferenceSource = "the reference", StatusMark = "says so", StatusText = "says so" }, {}, "a difference on view")


-- In the middle of the shades.
local none = shades()[1]
for _, channel in ipairs { none:match("(%d+),(%d+),(%d+)") } do check.near(tonumber(channel), 127, 3) end

-- ---- A running picture: counts above the reference, while another source comes

command(2220)
check.holds(text(kNow), "On view: the difference to the live picture of ")
press(kOff)
check.eq({ dialog(), picture() }, { nil, false, "" })
check.eq(status(), "The picture shows the frame again.")
command(140)
sim.source("low", 20)
frames(3)
command(2220)
press(1)
frames(2)
check.eq({ picture() }, { true, "Difference" })
sim.source("low", 24)
frames(3)
screenshot("four_degrees.png")

-- What is saved is the frame.
command(140)
local frozen = pixel(100, 100)
command(106)
check.eq(dialog(), "SAVE")
set(1460, datadir() .. "/frame.img")
press(1)
check.eq({ dialog(), box() and box().text }, {})
local bytes = readfile(datadir() .. "/frame.img")
check.eq((string.unpack("<i2", bytes, 513 + 2 * (100 * width + 100))), frozen)
check.eq(state("StatusMark"), "Difference")

-- A file on view is shown as it is.
files.image(datadir() .. "/other.img", { width = width, height = height, cold = 7000, cold_c = 20, hot = 7400, hot_c = 25 }, 1, function() return 7000 end)
drop(datadir() .. "/other.img")
check.eq({ state("ViewingFile"), picture() }, { 1, true, "" })
command(2220)
check.answer_box("There is no picture of the camera on view.", "ok")
command(140)
frames(2)
check.eq({ state("ViewingFile"), picture() }, { 0, true, "Difference" })

-- ---- A frame of a file, and each that won't do

command(2220)
press(kFile)
check.eq({ enabled(kName), enabled(kBrowse), enabled(kFrame) }, { true, true, true })
local function refused(name, frame, told)
  set(kName, name)
  set(kFrame, frame)
  press(1)
  check.answer_box(told, "ok")
  check.eq({ dialog(), picture() }, { "DIFFER", true, "Difference" })
end
files.image(datadir() .. "/small.img", { width = 40, height = 30 }, 1, function() return 5 end)
files.image(datadir() .. "/raw.img", { width = width, height = height }, 1, function() return 7000 end)
refused("", "0", "Please name the file of the reference.")
refused(datadir() .. "/none.img", "0", "none.img can't be opened.")
refused(datadir() .. "/small.img", "0", "The frames are 40 x 30 pixels, those of the camera 320 x 256.")
refused(datadir() .. "/raw.img", "0", "The picture is corrected, and the file's frames aren't. Calibration, Apply to data... corrects them.")
refused(datadir() .. "/other.img", "1", "Please enter a frame from 0 to 0.")
refused(datadir() .. "/other.img", "-1", "Please enter the number of a frame, from 0.")
refused(datadir() .. "/other.img", "one", "Please enter the number of a frame, from 0.")
press(kBrowse)
cancel()
set(kFrame, "0")
local refusals = 0
for n = 1, 20 do
  sim.fault("memory", n)
  press(1)
  sim.fault("memory", 0)
  if not box() then break end
  check.answer_box(box().text:find("memory", 1, true) and box().text or "no memory", "ok")
  check.eq(dialog(), "DIFFER")
  refusals = refusals + 1
end
assert(refusals >= 3, refusals)
check.eq({ dialog(), state("DifferenceSource") }, { nil, "frame 0 of other.img" })

-- ---- The read-out under the pointer: the value less the reference's 7000 counts

command(140)
pick("panel", 1256, 0)
command(151)
mouse(200, state("PanelHeight") + 200)
wait(300)
local x, y, value = status():match("x= *(%d+)  y= *(%d+)  Difference in [^=]*=(%-?%d+) ")
assert(x, status())
check.eq(tonumber(value), pixel(tonumber(x), tonumber(y)) - 7000)
command(151)

-- ---- Off, with the reason, where the picture becomes another one

local function ends(change, reason)
  command(2220)
  press(1)
  check.eq(state("StatusMark"), "Difference")
  change()
  check.eq({ picture() }, { false, "" })
  check.eq(status(), "The difference is off: " .. reason .. ".")
end
command(140)
frames(1)
ends(function()
  command(122)
  tick(1300, true)
  press(1)
  answer("yes")
end, "the picture lies another way now")

-- The camera's picture as a picture file: frozen, live, and as the difference that is shown in its place, whose scale says so.
local check = require "check"
local calibration = require "calibration"
local picture_file = require "picture_file"
local dir = datadir()

calibration.turn_on()
calibration.two_point(20, 25, 4)
while box() do answer("ok") end
while state("Xzoom") > 1 do key("-") end
frames(2)
key("F2")
check.eq({ state("LiveVideo"), state("CalType") }, { 0, 2 })
local columns, rows = state("Hactive"), state("Vactive")

local seen = export { out = dir .. "/frozen.png", to = "png" }
check.eq({ seen.format, seen.form, seen.columns, seen.rows, seen.frames, #seen.files }, { "png", "counts", columns, rows, 1, 1 })
picture_file.expect_screen(dir .. "/frozen.png", columns, rows)

-- To itself there is no difference: one color.
command(2220)
press(1)
check.eq(state("StatusMark"), "Difference")
export { out = dir .. "/none.png", scale = true }
picture_file.expect_screen(dir .. "/none.png", columns, rows)
local color = picture_file.read(dir .. "/none.png")
for _, place in ipairs { { 0, 0 }, { 17, 90 }, { columns - 1, rows - 1 } } do check.eq({ color(place[1], place[2]) }, { color(0, 0) }) end
check.holds(readfile(dir .. "/frozen.png"), "PNG")
local tool = io.popen("identify -format '%[Description]' '" .. dir .. "/none.png'")
check.holds(tool:read("a"), '"difference_to": "' .. state("DifferenceSource") .. '"')
tool:close()
tool = io.popen("identify -format '%[Description]' '" .. dir .. "/frozen.png'")
assert(not tool:read("a"):find("difference_to", 1, true))
tool:close()
-- What is exported as values stays the frame.
export { out = dir .. "/frame.npy" }
check.eq(string.unpack("<i2", readfile(dir .. "/frame.npy"), 129), pixel(0, 0))

-- Another source in front of the camera: the difference is seen, and exported as it is seen.
sim.source("high", 24)
key("F2")
frames(3)
key("F2")
command(2004)  -- a contrast that suits it
check.eq(state("StatusMark"), "Difference")
export { out = dir .. "/warmer.png", time = true }
picture_file.expect_screen(dir .. "/warmer.png", columns, rows)

-- Live the picture is one that the camera delivered, whole.
key("F2")
frames(2)
check.eq(export { out = dir .. "/live.png", scale = true, time = true, draw_regions = true }.frames, 1)
local _, width, height = picture_file.read(dir .. "/live.png")
assert(width > columns and height > rows)

-- The line plot of live and frozen video: what it tells is what the frame holds; a file gives way to live data; the board fails.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local line = require "line"
local unchanged = require "unchanged"

calibration.turn_on()
calibration.two_point(20, 35, 4)
answer("ok")
sim.source("scene", 25)
frames(3)
check.eq({ state("Hroi"), state("Vroi"), state("LiveVideo") }, { 320, 256, 1 })

local function open()
  command(161)
  check.eq(dialog(), "LINEPLOT")
end

-- The figures are those of the frame on view, in counts.
local function expect_line(x1, y1, x2, y2, what)
  check.eq(line.shown(), line.report(line.points(x1, y1, x2, y2), pixel), what)
end

-- --- Live -------------------------------------------------------------------------------------------------------------------------

local lost = state("FramesLost")
open()
check.eq({ checked(318), text(408), text(411) }, { true, "319", "255" })
wait(510)
check.eq(text(601), "Temperature (\u{B0}C) vs Line Pixel Number")
press(301)
check.eq(dialog(), "LINEAXIS")
pick(1256, 0)
press(1)
check.eq({ dialog(), text(601), state("DisplayUnit") }, { "LINEPLOT", "Signal (Counts) vs Line Pixel Number", 0 })
wait(30)
expect_line(0, 0, 319, 255)
local seen = {}
for _ = 1, 10 do
  wait(30)
  expect_line(0, 0, 319, 255)
  seen[text(321)] = true
end
assert(next(seen, next(seen)), "the figures follow live video")
check.eq(state("FramesLost"), lost)

-- The mark goes into the copy that is drawn, not into the frame.
set(402, "20") set(405, "200") set(408, "30") set(411, "200")
wait(30)
for x = 20, 30 do
  assert(pixel(x, 199) ~= 0 and pixel(x, 201) ~= 0)
  local zoom = state("Xzoom")
  check.eq((screen(x * zoom + 1, state("PanelHeight") + 199 * zoom + 1)), 0, "beside the line at " .. x)
end

-- --- Frozen by the box ------------------------------------------------------------------------------------------------------------

check(318, false)
check.eq({ checked(318), state("LiveVideo"), title() }, { false, 0, "Kelvo - frozen" })
local figures = line.shown()
wait(300)
check.eq(line.shown(), figures, "the last frame stays")
expect_line(20, 200, 30, 200)
for _, ends in ipairs { { 0, 0, 319, 0 }, { 319, 255, 0, 17 }, { 5, 5, 5, 5 }, { 100, 10, 140, 250 } } do
  for place, id in ipairs { 402, 405, 408, 411 } do set(id, "" .. ends[place]) end
  expect_line(ends[1], ends[2], ends[3], ends[4], check.show(ends))
end
check(318, true)
check.eq({ checked(318), state("LiveVideo") }, { true, 1 })
wait(30)
expect_line(100, 10, 140, 250)
press(338)
check.eq({ dialog(), state("LiveVideo") }, { nil, 1 })
frames(2)

-- --- Frozen before: left as it was, but for the keys ------------------------------------------------------------------------------

command(140)
check.eq(state("LiveVideo"), 0)
local before = unchanged.snapshot()
open()
check.eq(checked(318), false)
wait(600)
expect_line(100, 10, 140, 250)
press(338)
unchanged.expect(before, unchanged.snapshot(), {}, { LineSettings = "the axis follows the data" })

-- With the box set it runs again, also after Exit.
open()
check(318, true)
check.eq(state("LiveVideo"), 1)
press(338)
check.eq(state("LiveVideo"), 1)

-- --- A file gives way -------------------------------------------------------------------------------------------------------------

drop(files.image(datadir() .. "/large.img", { width = 400, height = 300, low = 100, high = 12000 }, 1, function(_, x, y) return 500 + x + y end))
check.eq({ state("ViewingFile"), state("LiveVideo") }, { 1, 0 })
open()
check.eq(checked(318), false)
wait(600)
set(408, "399") set(411, "299")
check.eq(line.shown(), line.report(line.points(100, 10, 399, 299), function(x, y) return 500 + x + y end))
check(318, true)
check.eq({ state("ViewingFile"), state("LiveVideo"), checked(318) }, { 0, 1, true })
check.eq({ text(402), text(405), text(408), text(411) }, { "159", "127", "39", "31" }, "a line outside the picture begins anew")
for id, range in pairs { [401] = { 159, 0, 319 }, [404] = { 127, 0, 255 }, [407] = { 39, 0, 319 }, [410] = { 31, 0, 255 } } do check.eq({ position(id) }, range, id) end
wait(30)
expect_line(159, 127, 39, 31)
check(318, false)
check.eq({ state("ViewingFile"), state("LiveVideo") }, { 0, 0 })
expect_line(159, 127, 39, 31)
check(318, true)
press(338)
check.eq(state("LiveVideo"), 1)

-- --- While something records ------------------------------------------------------------------------------------------------------

record { name = "line_%03d", frames = 200, wait = false }
open()
wait(700)
set(402, "3")
wait(100)
expect_line(3, 127, 39, 31)
press(338)
check.eq(dialog(), nil)
for _ = 1, 100 do
  if recorder().state == "idle" then break end
  wait(100)
end
local run = recorder()
check.eq({ run.frames, run.lost, run.state }, { 200, 0, "idle" })

-- --- The board fails --------------------------------------------------------------------------------------------------------------

if state("LiveVideo") == 0 then command(140) end
local ini = unchanged.snapshot()
open()
wait(600)
set(402, "77")
local mark = check.mark()
sim.fault("icp_read_area")
wait(100)
local told = {}
while box() do
  told[#told + 1] = box().text
  answer("ok")
  if #told > 20 then break end
end
sim.fault("icp_read_area", false)
local texts = table.concat(told, "|")
check.holds(texts, "Video Data Acquisition Failed, Hardware error")
check.eq(dialog(), nil)
check.seen("close", { name = "LINEPLOT", result = 0 }, mark + 1)
for key, value in pairs(ini) do
  if key:find("^kelvo.ini %[LinePlot%]") then check.eq(unchanged.snapshot()[key], value, key) end
end

-- The line plot of stored frames: every edit and bar, the set-up, saving, Cancel, and what fails. No camera is on.
local check = require "check"
local files = require "files"
local line = require "line"
local unchanged = require "unchanged"

local kHint = "Viewing Line Plot Statistics"

-- Nothing is on view and the camera is off.
check.eq(dialog(), "CLOCK_ON")
press(2)
command(161)
check.eq({ dialog(), box() and box().text, status() }, { nil, nil, "There is nothing to measure: open an image or turn the camera on" })

local function count(x, y) return 1000 + 7 * x + 40 * y + (x * y) % 13 end
local image = files.image(datadir() .. "/ramp.img", { width = 40, height = 30 }, 1, function(_, x, y) return count(x, y) end)
local image_bytes = readfile(image)
drop(image)
check.eq(state("ViewingFile"), 1)

local function open()
  command(161)
  check.eq(dialog(), "LINEPLOT")
end

local function expect_line(x1, y1, x2, y2, what)
  check.eq({ text(402), text(405), text(408), text(411) }, { "" .. x1, "" .. y1, "" .. x2, "" .. y2 }, what)
  check.eq({ position(401), position(404), position(407), position(410) }, { x1, y1, x2, y2, 0, 29 }, what)
  check.eq(line.shown(), line.report(line.points(x1, y1, x2, y2), count), what)
end

local function shown_title() return text(601) end

-- --- Opening, and every edit and bar ----------------------------------------------------------------------------------------------

local at_start = unchanged.snapshot()
open()
check.seen("dialog", { name = "LINEPLOT" })
check.eq(status(), kHint)
check.eq({ checked(318), text(402), text(405), text(408), text(411), text(321) }, { false, "0", "0", "39", "29", "" })
for id, last in pairs { [401] = 39, [404] = 29, [407] = 39, [410] = 29 } do check.eq({ position(id) }, { (id < 407) and 0 or last, 0, last }, id) end
wait(499)
check.eq(text(321), "", "the first tick comes after 500 ms")
wait(2)
check.eq(shown_title(), "Signal (Counts) vs Line Pixel Number")
expect_line(0, 0, 39, 29)

set(402, "5")
check.eq(status(), kHint)
expect_line(5, 0, 39, 29)
set(405, "20")
check.eq(status(), kHint)
set(408, "3")
check.eq(status(), "Viewing Image Statistics")
set(411, "2")
check.eq(status(), kHint)
expect_line(5, 20, 3, 2)

-- Typing 12 over 5 passes through 1.
set(402, "1")
check.eq(position(401), 1)
set(402, "12")
expect_line(12, 20, 3, 2)

-- An edit without a number keeps the place, and shows it again when it is left.
for _, typed in ipairs { "", "-", "what?" } do
  set(402, typed)
  check.eq({ box() and box().text, position(401) }, { nil, 12, 0, 39 }, typed)
end
set(405, "21")
expect_line(12, 21, 3, 2)

-- Outside the picture.
for _, refused in ipairs { { 402, "40", "X range: 0 to 39" }, { 405, "30", "Y range: 0 to 29" }, { 408, "-1", "X range: 0 to 39" }, { 411, "99999", "Y range: 0 to 29" } } do
  set(refused[1], refused[2])
  check.answer_box(refused[3], "ok", "Kelvo message")
  check.eq(status(), refused[3], "the focus is on the edit")
end
expect_line(12, 21, 3, 2)

scroll(401, 39)
scroll(404, 0)
scroll(407, 0)
check.eq(status(), "Viewing Image Statistics")
scroll(410, 29)
check.eq(status(), kHint)
expect_line(39, 0, 0, 29)
local mark = check.mark()
scroll(410, 29)
check.eq(#check.lines("status", mark + 1), 0, "a place that stays is no change")

-- Lines of every kind: one pixel, level, upright, 45 degrees, flat and steep, there and back.
for _, ends in ipairs { { 7, 9, 7, 9 }, { 3, 5, 30, 5 }, { 30, 5, 3, 5 }, { 8, 2, 8, 28 }, { 8, 28, 8, 2 }, { 5, 5, 20, 20 }, { 20, 5, 5, 20 }, { 0, 0, 39, 1 }, { 39, 29, 38, 0 }, { 0, 0, 6, 5 } } do
  for place, id in ipairs { 402, 405, 408, 411 } do set(id, "" .. ends[place]) end
  expect_line(ends[1], ends[2], ends[3], ends[4], check.show(ends))
end
check.eq(line.report(line.points(7, 9, 7, 9), count)[2], "", "one point has no deviation")

-- --- The mark in the picture ------------------------------------------------------------------------------------------------------

for place, id in ipairs { 402, 405, 408, 411 } do set(id, "" .. ({ 10, 12, 14, 12 })[place]) end
local function shade(x, y)
  local zoom = state("Xzoom")
  return (screen(x * zoom + 1, state("PanelHeight") + y * zoom + 1))
end
for x = 10, 14 do
  check.eq({ shade(x, 11), shade(x, 13) }, { 0, 0 }, "beside the line")
  check.eq(pixel(x, 11), count(x, 11), "the frame itself bears no mark")
end
check.eq({ shade(9, 12), shade(15, 12) }, { 255, 255 }, "before the start and behind the end")
check.eq(readfile(image), image_bytes)

-- --- Saving -----------------------------------------------------------------------------------------------------------------------

local before = unchanged.snapshot(true)
press(1606)
check.eq(file() ~= nil, true)
cancel()
unchanged.expect(before, unchanged.snapshot(true), { LastFileDirectory = "the folder that the first file dialog shows" }, { StatusText = "a tick follows" })

local function save(name)
  press(1606)
  choose(datadir() .. "/" .. name)
  check.eq({ dialog(), box() and box().text }, { "LINEPLOT" }, name)
  return readfile(datadir() .. "/" .. name)
end
for place, id in ipairs { 402, 405, 408, 411 } do set(id, "" .. ({ 2, 3, 30, 10 })[place]) end
local bmp, png, csv = save("line.bmp"), save("line.png"), save("line.csv")

local points = line.points(2, 3, 30, 10)
local rows = {}
for row in csv:gmatch("([^\n]*)\n") do rows[#rows + 1] = row end
check.eq({ rows[1], rows[2], rows[5] }, { "# line: (2,3) to (30,10)", "# unit: Signal (Counts)", "index,column,row,counts,value" })
check.eq({ ("%4.3f"):format(rows[3]:match("^# mean: (.*)$")), ("\u{B1}%.3f"):format(rows[4]:match("^# deviation: (.*)$")) }, { text(321), text(322) })
check.eq(#rows, 5 + #points)
for i, at in ipairs(points) do
  local c = count(at[1], at[2])
  check.eq(rows[5 + i], ("%d,%d,%d,%d,%d"):format(i - 1, at[1], at[2], c, c))
end

-- Both pictures have the size of the dialog; the trace is red on white.
local width, height = string.unpack("<i4i4", bmp, 19)
check.eq(bmp:sub(1, 2), "BM")
check.eq({ string.unpack(">I4I4", png, 17) }, { width, height, 25 })
check.eq(png:sub(1, 8), "\x89PNG\r\n\x1a\n")
local first, red, white = string.unpack("<I4", bmp, 11), 0, 0
for y = 0, height - 1 do
  for x = 0, width - 1 do
    local at = first + 1 + y * ((3 * width + 3) // 4 * 4) + 3 * x
    local b, g, r = bmp:byte(at, at + 2)
    if r == 255 and g == 0 and b == 0 then red = red + 1 elseif r == 255 and g == 255 and b == 255 then white = white + 1 end
  end
end
assert(red > 200 and white > 50000, red .. " red, " .. white .. " white")

-- The disk fails at each step: told, and the file that stood there stays, whole and alone.
wait(1100)
for _, name in ipairs { "line.bmp", "line.png", "line.csv" } do
  local bytes, names, steps = readfile(datadir() .. "/" .. name), listdir(datadir()), 0
  repeat
    sim.fault("disk", steps + 1)
    press(1606)
    choose(datadir() .. "/" .. name)
    check.eq(box() and box().buttons[1], "yes", "the name stands already")
    answer("yes")
    local failed = box() ~= nil
    if failed then
      answer("ok")
      steps = steps + 1
      check.eq({ readfile(datadir() .. "/" .. name) == bytes, dialog() }, { true, "LINEPLOT" }, name .. ", step " .. steps)
      check.eq(listdir(datadir()), names, name .. ", step " .. steps)
    end
  until not failed
  sim.fault("disk", 0)
  assert(steps >= 3 and steps < 20, ("%s: %d steps"):format(name, steps))
end

press(339)
check.eq({ dialog(), enabled(108) }, { "DIBPRINT", false }, "a plot has no caption")
press(2)
check.eq(dialog(), "LINEPLOT")

-- --- The set-up -------------------------------------------------------------------------------------------------------------------

local function settings() return state("LineSettings") end
wait(100)
check.eq(settings(), { 2, 3, 30, 10, settings()[5], settings()[6], 1, 1, 1 })
local low, high = math.huge, 0
for _, at in ipairs(points) do
  low, high = math.min(low, count(at[1], at[2])), math.max(high, count(at[1], at[2]))
end
check.eq({ settings()[5], settings()[6] }, { low, high }, "the axis follows the data")

press(301)
check.eq({ dialog(), status() }, { "LINEAXIS", "Setup Line Plot axes" })
check.eq({ text(342), text(343), enabled(342), enabled(343), checked(340), checked(341), checked(347) }, { "" .. high, "" .. low, false, false, true, true, true })
check(347, false)
check.eq(settings()[8], 0)
check(341, false)
check.eq(settings()[9], 0)
check(340, false)
check.eq({ settings()[7], enabled(342), enabled(343), settings()[5], settings()[6] }, { 0, true, true, low, high })
set(342, "2000")
set(343, "900")
check.eq({ settings()[5], settings()[6] }, { 900, 2000 })
-- What isn't a number or would turn the axis over is passed over, and leaving the field shows the bound in force.
for _, typed in ipairs { "", "much", "900", "-17" } do set(342, typed) end
check.eq(settings()[6], 2000)
set(343, "2000")
check.eq({ settings()[5], text(342) }, { 900, "2000" })
set(342, "99999")
check.eq({ settings()[6], text(343) }, { 16383, "900" }, "held to the range")
press(9)
check.eq((help()), 1058)
check.eq(dialog(), "LINEAXIS")
press(2)
check.eq({ dialog(), status() }, { "LINEPLOT", kHint })
check.eq(settings(), { 2, 3, 30, 10, low, high, 1, 1, 1 }, "Cancel brings it all back")

press(301)
check(341, false)
check(340, false)
set(342, "5000")
set(343, "10")
press(1)
check.eq(settings(), { 2, 3, 30, 10, 10, 5000, 0, 1, 0 })
wait(1100)
check.holds(readfile(datadir() .. "/kelvo.ini"), "[LinePlot]")
check.holds(readfile(datadir() .. "/kelvo.ini"), "Yautoscale=0")
press(9)
check.eq((help()), 370)

-- --- Leaving ----------------------------------------------------------------------------------------------------------------------

mark = check.mark()
press(338)
check.eq(dialog(), nil)
check.seen("close", { name = "LINEPLOT", result = 1 }, mark + 1)
check.eq(shade(12, 11) == 0, false, "the mark is gone")
local at_end = unchanged.snapshot()
local kept = { LineSettings = "what was chosen", LastFileDirectory = "the folder that was looked at", SelectedPaths = "the file that was saved last" }
for key, value in pairs { Xstart = "2", Ystart = "3", Xend = "30", Yend = "10", Yautoscale = "0", Xgridlines = "1", Ygridlines = "0" } do
  local name = "kelvo.ini [LinePlot] " .. key
  check.eq(at_end[name], value, name)
  kept[name] = "written at Exit"
end
for _, name in ipairs { "line.bmp", "line.png", "line.csv" } do kept["file " .. name] = "saved" end
unchanged.expect(at_start, at_end, kept)

-- The next time the line and the switches are there again, the axis begins over the whole range.
open()
check.eq(settings(), { 2, 3, 30, 10, 0, 16383, 0, 1, 0 })

-- Without a camera there is no live data.
check(318, true)
check.eq({ checked(318), status() }, { false, "There is no live data: the camera is off" })
wait(600)
mark = check.mark()
key("Esc")
check.eq(dialog(), nil)
check.seen("close", { name = "LINEPLOT", result = 1 }, mark + 1)

-- --- Memory is refused ------------------------------------------------------------------------------------------------------------

before = unchanged.snapshot()
sim.fault("memory", 1)
command(161)
check.answer_box("Failure to allocate video memory!", "ok", "Kelvo message")
check.eq(dialog(), nil)
unchanged.expect(before, unchanged.snapshot())

open()
wait(600)
local figures = line.shown()
local requests = 0
for n = 1, 12 do
  sim.fault("memory", n)
  set(402, "" .. (10 + n))
  if box() then
    check.answer_box("Failure to allocate Intensity memory!", "ok", "Kelvo message")
    check.eq(line.shown(), figures, "the last plot stays")
    requests = requests + 1
  end
  sim.fault("memory", 0)
  set(402, "2")
  figures = line.shown()
end
assert(requests > 0, "no request for the samples was refused")
press(338)

-- --- Small and odd pictures -------------------------------------------------------------------------------------------------------

for _, size in ipairs { { 1, 1 }, { 40, 1 }, { 1, 30 }, { 600, 2 } } do
  local w, h = size[1], size[2]
  drop(files.image(datadir() .. ("/small%dx%d.img"):format(w, h), { width = w, height = h }, 1, function(_, x, y) return 5 + x + y end))
  open()
  wait(600)
  for _, id in ipairs { 402, 408 } do
    set(id, "" .. w)
    check.answer_box(("X range: 0 to %d"):format(w - 1), "ok")
  end
  for _, id in ipairs { 405, 411 } do
    set(id, "" .. h)
    check.answer_box(("Y range: 0 to %d"):format(h - 1), "ok")
  end
  set(402, "0") set(405, "0") set(408, "" .. w - 1) set(411, "" .. h - 1)
  check.eq(line.shown(), line.report(line.points(0, 0, w - 1, h - 1), function(x, y) return 5 + x + y end), w .. " x " .. h)
  press(338)
end

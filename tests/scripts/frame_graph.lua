-- The frame graph, from the host frames and from a file: each refusal in its order, figures reckoned here, all that it saves, and every way out.
local check = require "check"
local video = require "video"
local files = require "files"
local unchanged = require "unchanged"

local kStore, kFile, kRow, kColumn, kMin, kMax, kStart, kEnd, kSqrt, kAutoscale = 1380, 1381, 1382, 1383, 1384, 1385, 1386, 1387, 1388, 1389
local kUnits, kSave, kExit, kGraph = 1256, 1606, 1620, 1622
local width, height = 320, 256
local values = { 1000, 1020, 990, 1020, 990, 1040, 1003, 1001 }

-- Mean, sample deviation, and the extremes with the first frames that reach them.
local function figures(list, first)
  local sum, squares, low, high = 0, 0, 1, 1
  for _, value in ipairs(list) do sum = sum + value end
  local mean = sum / #list
  for i, value in ipairs(list) do
    squares = squares + (value - mean) ^ 2
    if value < list[low] then low = i end
    if value > list[high] then high = i end
  end
  return { mean = mean, deviation = math.sqrt(squares / (#list - 1)), low = list[low], low_at = first + low - 1, high = list[high], high_at = first + high - 1 }
end

local function expect_figures(list, first, format)
  local f = figures(list, first)
  check.eq({ text(321), text(322) }, { ("%.3f"):format(f.mean), "±" .. ("%.3f"):format(f.deviation) })
  check.eq({ text(325), text(324), text(328), text(327) }, { format:format(f.low), tostring(f.low_at), format:format(f.high), tostring(f.high_at) })
end

local function graph_appears(mark, title_of)
  check.eq({ dialog(), box() and box().text }, { "GRAPH" })
  check.seen("dialog", { name = "GRAPH", text = title_of }, mark)
  check.eq({ status(), text(321) }, { "Frame orTime Vs Intensity Graph", "" }, "nothing before the first tick")
  wait(600)
end

-- Eight frames in the store: the pixel at row 40, column 30 goes as the values, every other one stands at 7.
video.turn_on()
files.image(datadir() .. "/burst.buf", { width = width, height = height, frames = #values }, #values,
  function(frame, x, y) return x == 30 and y == 40 and values[frame + 1] or 7 end)
command(103)
check.eq(enabled(1358), false, "nothing is stored")
press(1356)
choose(datadir() .. "/burst.buf")
press(1)
check.eq({ dialog(), state("FramesInBuffer"), enabled(1358) }, { "BUFFER", #values, true })

-- ---- As it opens

press(1358)
press(kExit)
local before = unchanged.snapshot()
local mark = check.mark()
press(1358)
check.eq({ dialog(), status() }, { "BUF_GRAF", " Enter parameters for graphing selected buffer board memory area." })
check.seen("dialog", { name = "BUF_GRAF", text = "Graph selected buffer board data" }, mark)
check.eq({ text(kRow), text(kColumn), text(kMin), text(kMax), text(kStart), text(kEnd) }, { "64", "64", "0", "16383", "0", "7" })
check.eq({ checked(kStore), checked(kFile), checked(kSqrt), checked(kAutoscale) }, { false, false, false, true })
check.eq({ enabled(kMin), enabled(kMax), text(21501), text(21503) }, { false, false, "8 frames", "0 to 16383" })

-- ---- Fields: the range while they have the focus, and what lies outside

check(kAutoscale, false)
check.eq({ enabled(kMin), enabled(kMax) }, { true, true })
local fields = {
  { kRow, "256", "Pixel Row range: 0 to 255", "Pixel Row must be in range: 0 to 255" },
  { kColumn, "320", "Pixel Column range: 0 to 319", "Pixel Column must be in range: 0 to 319" },
  { kStart, "-1", "Min Frame range: 0 to 7", "Min Frame range: 0 to 7" },
  { kEnd, "8", "Max Frame range: 0 to 7", "Max Frame must be in range: 0 to 7" },
  { kMin, "16384", "Min intensity range: 0 to 16383", "Min intensity range: 0 to 16383" },
  { kMax, "much", "Max intensity range: 0 to 16383", "Max intensity range: 0 to 16383" },
}
for _, field in ipairs(fields) do
  local stood = text(field[1])
  set(field[1], field[2])
  check.eq(status(), field[3])
  press(kGraph)
  check.answer_box(field[4], "ok", "Kelvo message")
  check.eq({ text(field[1]), dialog(), box() }, { stood, "BUF_GRAF" })
end
check(kAutoscale, true)

-- ---- Out again, by each way: nothing has changed

press(kExit)
check.eq({ dialog(), status() }, { "BUFFER", " Use Alt + underlined menu item or trackball to select menu item" })
unchanged.expect(before, unchanged.snapshot(), nil, nil, "left by Exit")
for _, leave in ipairs { function() key("Esc") end, cancel } do
  press(1358)
  set(kRow, "3")
  check(kSqrt, true)
  press(kStore)
  leave()
  check.eq(dialog(), "BUFFER")
  unchanged.expect(before, unchanged.snapshot(), nil, nil, "cancelled")
end

-- ---- The checks of the graph, each before the next one

press(1358)
local function refuse(text_of, caption)
  press(kGraph)
  check.answer_box(text_of, "ok", caption or "Kelvo message")
  check.eq({ dialog(), box() }, { "BUF_GRAF" })
end
check(kAutoscale, false)
set(kMin, "500")
set(kMax, "501")
set(kStart, "4")
set(kEnd, "4")
refuse("Max Frame must be in range: 0 to 7")
set(kEnd, "5")
refuse("Max & min intensity must differ by at least 3.", "QVF Vantir")
set(kMax, "502")
refuse("There must be at least 3 frames to graph.")
set(kMax, "501")
check(kAutoscale, true)
refuse("There must be at least 3 frames to graph.")
set(kEnd, "6")
refuse("A Source for data must be chosen.")
wait(1100)
check.holds(readfile(datadir() .. "/kelvo.ini"), "[GRAPHICS]\nPixelRow=64\nPixelCol=64\nyClipMin=500\nyClipMax=501\nSqrtTime=0\nAutoscale=1\n", "kept before they are checked")

-- ---- The graph of the host frames

set(kRow, "40")
set(kColumn, "30")
set(kStart, "1")
set(kEnd, "7")
press(kStore)
mark = check.mark()
press(kGraph)
graph_appears(mark, "Signal (Counts) vs Frame Number: 7 Frames, Pixel=(40,30)")
local shown = table.move(values, 2, #values, 1, {})
expect_figures(shown, 1, "%d")
check.eq({ text(21510), text(21511), text(21512) }, { "Buffer board memory", "1 to 7", "row 40, column 30" })
check.eq({ state("GraphFirstFrame"), state("GraphLastFrame"), state("GraphFrames"), state("GraphSource") }, { 1, 7, 7, 1380 })

-- ---- Saved in three forms; Cancel and a full disk leave nothing

local inside = unchanged.snapshot(true)
press(kSave)
check.eq({ file().title, file().filters[1] }, { "Save File", "Bitmap Files (*.bmp)" })
cancel()
check.eq(dialog(), "GRAPH")
unchanged.expect(inside, unchanged.snapshot(true), { LastFileDirectory = nil }, { LastFileDirectory = "the folder that was shown" }, "a save that was cancelled")
for _, name in ipairs { "full.bmp", "full.png", "full.csv" } do
  press(kSave)
  sim.fault("disk full")
  choose(datadir() .. "/" .. name)
  sim.fault("disk full", false)
  check.eq(box() and box().caption, "Error", name)
  answer("ok")
  check.eq({ dialog(), readfile(datadir() .. "/" .. name) }, { "GRAPH" }, name)
end

local function save(name)
  press(kSave)
  choose(datadir() .. "/" .. name)
  check.eq({ dialog(), box() and box().text }, { "GRAPH" })
  return assert(readfile(datadir() .. "/" .. name), name)
end
local bitmap = save("graph.bmp")
local offset, across, down = string.unpack("<I4", bitmap, 11), string.unpack("<i4i4", bitmap, 19)
check.eq({ bitmap:sub(1, 2), (string.unpack("<I2", bitmap, 29)) }, { "BM", 24 })
local red, white = 0, 0
local row_bytes = (across * 3 + 3) // 4 * 4
for y = 0, down - 1 do
  for x = 0, across - 1 do
    local pixel_of = bitmap:sub(offset + 1 + y * row_bytes + 3 * x, offset + 3 + y * row_bytes + 3 * x)
    if pixel_of == "\0\0\255" then red = red + 1 elseif pixel_of == "\255\255\255" then white = white + 1 end
  end
end
assert(red > 300, "a red line from side to side: " .. red)
assert(white > across * down / 4, "on white: " .. white)
local picture = save("graph.png")
local png_across, png_down = string.unpack(">I4I4", picture, 17)
check.eq({ picture:sub(1, 8), png_across, png_down }, { "\137PNG\r\n\26\n", across, down })

local f = figures(shown, 1)
local lines = {}
for line in save("graph.csv"):gmatch("[^\n]*\n") do lines[#lines + 1] = line:sub(1, -2) end
check.eq({ lines[1], lines[2], lines[3] }, { "# source: Buffer board memory", "# pixel: row 40, column 30", "# unit: Signal (Counts)" })
check.near(tonumber(lines[4]:match("^# mean: (.*)$")), f.mean, 1e-4)
check.near(tonumber(lines[5]:match("^# deviation: (.*)$")), f.deviation, 1e-5)
check.eq({ lines[6], #lines }, { "frame,counts,value", 6 + #shown })
for i, value in ipairs(shown) do check.eq(lines[6 + i], ("%d,%d,%d"):format(i, value, value)) end

press(kExit)
check.eq({ dialog(), status() }, { "BUF_GRAF", " Use Alt + underlined menu item or trackball to select menu item" })

-- ---- A pixel that doesn't change, over square roots

set(kColumn, "31")
check(kSqrt, true)
press(kGraph)
wait(600)
check.eq({ text(321), text(322), text(325), text(324), text(328), text(327) }, { "7.000", "0", "7", "1", "7", "1" })
cancel()
check.eq(dialog(), "BUF_GRAF")

-- ---- A file: its own size, range and calibration, and more frames than a burst has

local ramp = {}
for frame = 0, 1499 do ramp[frame + 1] = 1000 + frame % 500 end
files.image(datadir() .. "/long.buf", { width = 4, height = 3, cold = 1000, cold_c = 10, hot = 2000, hot_c = 60, low = 900, high = 3000 }, #ramp,
  function(frame, x, y) return x == 2 and y == 1 and ramp[frame + 1] or 0 end)
files.write(datadir() .. "/broken.buf", "no header")
press(kFile)
check.eq(file().filters[1], "BufferBoard Files (*.buf)")
cancel()
check.eq({ dialog(), checked(kStore), checked(kFile), text(21502) }, { "BUF_GRAF", true, false, "" })
press(kFile)
choose(datadir() .. "/broken.buf")
check.answer_box("Error reading Image File Header\n" .. datadir() .. "/broken.buf", "ok", "Kelvo message")
check.eq({ dialog(), checked(kStore), checked(kFile) }, { "BUF_GRAF", true, false })
local header = state("ImageHeader")
press(kFile)
choose(datadir() .. "/long.buf")
check.eq({ checked(kStore), checked(kFile), text(21502), state("ImageHeader") }, { false, true, datadir() .. "/long.buf", header })
check.eq({ text(kRow), text(kColumn), text(kEnd), text(21503) }, { "1", "2", "7", "900 to 3000" }, "the middle, and the file's range")
check.eq({ text(kMin), text(kMax) }, { "900", "900" })
check.eq(items(kUnits), { "Signal (Counts)", "Signal (V)", "Temperature (°C)", "Temperature (°K)", "Temperature (°F)" })
pick(kUnits, 2)
check.eq({ text(21503), state("DisplayUnit") }, { "5.000 to 110.000", 2 })
set(kStart, "100")
set(kEnd, "1499")
check(kSqrt, false)
mark = check.mark()
press(kGraph)
graph_appears(mark, "Temperature (°C) vs Frame Number: 1400 Frames, Pixel=(1,2)")
local degrees = {}
for frame = 100, 1499 do degrees[#degrees + 1] = 10 + (ramp[frame + 1] - 1000) * 50 / 1000 end
expect_figures(degrees, 100, "%.3f")
check.holds(save("long.csv"), "\n100,1100,15\n101,1101,15.05\n", "counts and degrees")
press(kExit)

-- One that is another by now, or cut.
local bytes = readfile(datadir() .. "/long.buf")
files.write(datadir() .. "/long.buf", bytes:sub(1, 20000))
press(kGraph)
wait(600)
check.answer_box("Failed to read entire file\n" .. datadir() .. "/long.buf", "ok", "Kelvo message")
check.eq({ dialog(), text(321) }, { "GRAPH", "" })
press(kExit)
os.remove(datadir() .. "/long.buf")
press(kGraph)
wait(600)
check.answer_box("The file is gone, or another one than was chosen. Please choose it again.\n" .. datadir() .. "/long.buf", "ok", "Kelvo message")
press(kExit)

-- ---- Back to the store, which has fewer frames

press(kStore)
check.eq({ text(kEnd), checked(kStore), items(kUnits) }, { "7", true, { "Signal (Counts)", "Signal (V)" } })
refuse("Min Frame range: 0 to 7")
press(kExit)
check.eq({ dialog(), state("DisplayUnit") }, { "BUFFER", 0 })

-- Kept for the next time, within what the camera has.
press(1358)
check.eq({ text(kRow), text(kColumn), checked(kStore), text(kStart), text(kEnd) }, { "1", "2", true, "0", "7" })
press(kExit)
press(2)

-- A window opened anew graphs what is captured, loaded or replayed from then on.
command(103)
check.eq({ state("FramesInBuffer"), enabled(1358) }, { #values, false })
check(1348, true)
check.eq(enabled(1358), false)
check(1348, false)
check.eq(enabled(1358), true)
press(2)

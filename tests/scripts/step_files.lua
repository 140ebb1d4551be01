-- Numbered files of real frames: on from run8 over run9 to run10, and back again.
local check = require "check"
answer("ok")
local dir = datadir()
local bytes = readfile(dir .. "/sample.seq")
local width, height = string.unpack("<i2i2", bytes, 3)
local frame_bytes = 2 * width * height
local function frames(first, count) return bytes:sub(513 + first * frame_bytes, 512 + (first + count) * frame_bytes) end
local function stored(frame, x, y) return (string.unpack("<i2", bytes, 513 + 2 * ((frame * height + y) * width + x))) end

-- Each file begins elsewhere in the recording.
local starts = { [8] = 0, [9] = 20, [10] = 40 }
local lengths = { [8] = 2, [9] = 3, [10] = 1 }
for number, start in pairs(starts) do
  local file = assert(io.open(dir .. "/run" .. number .. ".seq", "wb"))
  file:write(bytes:sub(1, 512), frames(start, lengths[number]))
  file:close()
end

local function on_view(number, frame)
  local what = "run" .. number .. ", frame " .. frame
  check.eq(state("LoadName"), dir .. "/run" .. number .. ".seq", what)
  check.eq(state("CurrentFrame"), frame, what)
  check.eq(state("LastFrame"), lengths[number] - 1, what)
  check.eq(title(), "Kelvo - run" .. number)
  for _, place in ipairs { { 0, 0 }, { 77, 41 }, { width - 1, height - 1 } } do
    check.eq(pixel(place[1], place[2]), stored(starts[number] + frame, place[1], place[2]), what)
  end
end

command(113)
choose(dir .. "/run8.seq")
local way = { { 8, 0 }, { 8, 1 }, { 9, 0 }, { 9, 1 }, { 9, 2 }, { 10, 0 } }
on_view(8, 0)
for i = 2, #way do
  command(114)
  on_view(table.unpack(way[i]))
end

-- There is no run11.
local mark = check.mark()
command(114)
check.seen("beep", { sound = "information" }, mark + 1)
on_view(10, 0)

for i = #way - 1, 1, -1 do
  command(115)
  on_view(table.unpack(way[i]))
end

-- Nor a run7: the beep sounds, and run8 stays the file to step from.
mark = check.mark()
command(115)
check.seen("beep", { sound = "information" }, mark + 1)
check.eq(box(), nil)
check.eq(state("LoadName"), dir .. "/run8.seq")
check.eq(pixel(77, 41), stored(0, 77, 41), "the picture stays")

-- A run7 that is cut within its header is told of, and the step back leaves all as it was.
local cut = assert(io.open(dir .. "/run7.seq", "wb"))
cut:write(bytes:sub(1, 100))
cut:close()
command(113)
choose(dir .. "/run8.seq")
command(115)
for _ = 1, 2 do
  check.answer_box("Error reading Image File Header\n" .. dir .. "/run7.seq", "ok", "Kelvo message")
end
check.eq(box(), nil)
check.eq(state("LoadName"), dir .. "/run8.seq")
check.eq(state("CurrentFrame"), 1, "the last frame of the file on view")
check.eq(pixel(77, 41), stored(0, 77, 41), "the picture stays")

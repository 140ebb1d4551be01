-- The example that run.sh shows where there is no display: it runs to its end and leaves its pictures, what was saved, the calibration
-- with its report, and the head's byte log. The next start (next_start.lua) comes up with the calibration.
local check = require "check"
local top = assert(arg[0]:match("^(.*)/tests/scripts/"), arg[0])
arg[1] = datadir():match("^(.*)/data$")

-- What is exported is seen before on the screen: the counts of its first frame, its middle one and its last one, for first_light_test.py.
local function keep_seen(out, frame)
  local counts = {}
  for y = 0, 255 do
    for x = 0, 319 do counts[#counts + 1] = string.pack("<i2", pixel(x, y)) end
  end
  local seen <close> = assert(io.open(("%s.%d.seen"):format(out, frame), "wb"))
  seen:write(table.concat(counts))
end
local function go_to(frame)
  command(2000)
  set(1001, tostring(frame))
  press(1)
  check.eq({ state("CurrentFrame"), dialog(), box() }, { frame })
end
local write_frames = export
function export(settings)
  if settings.of == "file" then
    local before = state("CurrentFrame")
    for _, frame in ipairs { 0, settings.count // 2, settings.count - 1 } do
      go_to(settings.first + frame)
      keep_seen(settings.out, frame)
    end
    go_to(before)
  else
    keep_seen(settings.out, 0)
  end
  return write_frames(settings)
end
assert(loadfile(top .. "/examples/first-light.lua"))()
for _, name in ipairs {
  "01-before", "02-scope", "03-raw", "04-raw-scene", "05-calibration", "06-result", "07-bad-detectors", "08-corrected",
  "09-corrected-scene", "10-colour", "11-zoom", "12-large-array", "13-replay", "14-recorder", "15-recording", "16-corrected-later",
  "17-saved-image", "18-histogram", "19-line-plot", "20-image-math", "21-print", "22-frame-graph",
  "23-noise", "24-traces", "netd", "trace",
} do
  check.eq(readfile(name .. ".png"):sub(2, 4), "PNG", name)
end
check.eq(readfile("scope.bmp"):sub(1, 2), "BM")
-- The recorded second before the trigger and the 5 s after it, less the frame that was cut, and the journals of both.
local pictures, frame = math.ceil(6 * state("FrameRate")) - 1, 80 + 2 * 320 * 256
for _, name in ipairs { "cut.seq", "even.seq" } do
  check.near(#readfile(name), 512 + pictures * frame, frame, name)
  check.eq((#readfile(name) - 512) % frame, 0, name)
  assert(#readfile(name .. ".frames") > pictures * 64 - 64, name)
end
for _, name in ipairs { "scene.img", "run1.seq", "run2.seq", "run3.seq", "difference.img" } do
  check.eq(#readfile(name), 512 + 2 * 320 * 256, name)
end
check.eq(readfile("scene.pdf"):sub(1, 5), "%PDF-")
check.eq({ #readfile("scene16.tif"), #readfile("scene8.tif") }, { 782 + 2 * 320 * 256, 782 + 320 * 256 })
for _, name in ipairs { "Last", "morning" } do
  for _, extension in ipairs { "gai", "off", "noi", "dcm", "bad", "cal" } do
    assert(readfile("data/" .. name .. "." .. extension), name .. "." .. extension)
  end
end
check.holds(readfile("data/Last.report.txt"), "Residual non-uniformity")
-- What is printed is read in a terminal.
for _, line in ipairs(check.lines("print")) do
  for text in (line.text .. "\n"):gmatch("([^\n]*)\n") do assert(#text <= 120 and not text:find("&", 1, true), text) end
end
check.eq(state("FramesLost"), 0)
check.seen("box", { text = "\nDo you wish to exit?" })

-- The log holds the identification, the first transaction of a turn-on and the clocks going off.
local log = readfile(datadir() .. "/CommLog.txt")
check.holds(log, "Write000=20 00 00 00 OK")
check.holds(log, "=90 30 00 00 OK  90 30 00 00 OK", "clocks on")
check.holds(log, "=90 10 00 00 OK  90 10 00 00 OK", "clocks off")

-- Traces of the picture: of a file, against what stands in it, and of live video, beside a recording and alone; the plot's figures, the file, each way out.
local script_text, script_press, script_pick, script_set, script_enabled = text, press, pick, set, enabled
local check = require "check"
local figures_file = require "figures_file"
local files = require "files"
local video = require "video"

local kTraces, kSave = 2240, 1606
local kLive, kStop, kFile, kRegion, kFigure = 22401, 22402, 22403, 22404, 22405
local kSource, kFrames, kTime, kGaps, kMean, kDeviation, kOfFrames = 22407, 22408, 22409, 22410, 22411, 22412, 22413
local kUnit, kFirst, kLast, kLeaveOut, kMessage, kPixels = 22414, 22415, 22416, 22417, 22418, 22419
local kSpectrum = 4

local function at(name) return datadir() .. "/" .. name end
-- The window stays open beside the main one.
local function text(id) return script_text("TRACES", id) end
local function press(id) script_press("TRACES", id) end
local function pick(id, index) script_pick("TRACES", id, index) end
local function set(id, typed) script_set("TRACES", id, typed) end
local function enabled(id) return script_enabled("TRACES", id) end
local function buttons() return { enabled(kLive), enabled(kStop), enabled(kFile), enabled(kSave) } end
local function figures_in(name) return figures_file.read(at(name)) end
local function save(name)
  press(kSave)
  choose(at(name))
  check.eq({ dialog(), box() }, {})
  return figures_in(name)
end

-- ---- A file: twelve frames of 4 x 2 at 50 Hz, frame n of n and 10 n, but for one pixel of 10 n + 8.

assert(dialog() == "CLOCK_ON", dialog())
script_press(2)
command(kTraces)
check.seen("dialog", { name = "TRACES" })
check.eq({ dialog(), text(kFrames), text(kGaps) }, { nil, "0", "-" })
check.eq(buttons(), { false, false, false, false }, "nothing to trace")
check.eq({ text(kFirst), enabled(kFirst) }, { "", false })
command(kTraces)  -- to the front

files.image(at("steps.seq"), { width = 4, height = 2, frames = 12, rate = 50 }, 12, function(frame, x, y)
  if y == 0 then return frame end
  return 10 * frame + (x == 3 and 8 or 0)
end)
drop(at("steps.seq"))
wait(300)
check.eq({ text(kFirst), text(kLast) }, { "0", "11" }, "it follows the view")
check.eq(buttons(), { false, false, true, false })
press(kFile)
check.eq({ text(kFrames), text(kTime), text(kGaps), text(kSource) }, { "12", "0.220 s", "none", at("steps.seq") })
-- Frame n: mean (4 n + 40 n + 8) / 8 = 5.5 n + 1, over the frames 31.25; their deviation 5.5 sqrt(13).
check.eq({ text(kMean), text(kDeviation) }, { "31.250", ("%.3f"):format(5.5 * math.sqrt(13)) })
pick(kFigure, 3)
check.eq(text(kMean), "63.000", "the maximum, 10 n + 8, but 8 of frame 0: (660 + 96) / 12")
pick(kFigure, 0)
local rows, notes = save("steps.csv")
check.holds(notes, "# source: " .. at("steps.seq"))
check.holds(notes, "# frames traced: 12\n# gaps: 0")
check.eq(rows[1], { "frame", "number", "seconds", "utc", "missing", "picture mean", "picture deviation", "picture minimum", "picture maximum" })
check.eq(#rows, 13)
for n = 0, 11 do
  local row, mean, squares = rows[n + 2], 5.5 * n + 1, 0
  for x = 0, 3 do squares = squares + (n - mean) ^ 2 + (10 * n + (x == 3 and 8 or 0) - mean) ^ 2 end
  check.eq({ row[1], row[2], row[3], row[4], row[5] }, { tostring(n + 1), tostring(n + 1), ("%.9f"):format(n / 50), "", "0" })
  check.eq({ tonumber(row[6]) == mean, math.abs(tonumber(row[7]) - math.sqrt(squares / 7)) < 1e-12 }, { true, true }, "frame " .. n)
  check.eq({ row[8], row[9] }, { tostring(n), tostring(10 * n + 8) })
end

pick(kFigure, kSpectrum)
check.eq(text(kOfFrames), "1 to 12 of 12 frames")
rows, notes = save("spectrum.csv")
check.holds(notes, "# window: Hann")
check.eq({ rows[1][1], rows[1][2], #rows }, { "hertz", "picture amplitude", 8 })
check.eq({ tonumber(rows[2][1]), tonumber(rows[8][1]) }, { 0, 25 }, "up to half the rate")
pick(kFigure, 0)
press(kSave)
cancel()
check.eq({ dialog(), text(kFrames) }, { nil, "12" })
press(2)
command(kTraces)
check.eq(text(kFrames), "12", "it stands until the next one")

-- A part of it, and what makes none.
set(kFirst, "3")
set(kLast, "5")
press(kFile)
check.eq({ text(kFrames), text(kMean) }, { "3", "23.000" }, "5.5 n + 1 of frames 3, 4 and 5")
rows, notes = save("part.csv")
check.holds(notes, "# frames: 3 to 5, counted from 0, of 12")
check.eq({ #rows, rows[2][1], rows[2][2] }, { 4, "1", "4" })
for _, range in ipairs { { "-1", "6" }, { "4", "12" }, { "6", "4" }, { "", "4" }, { "1", "x" }, { "1.5", "4" } } do
  set(kFirst, range[1])
  set(kLast, range[2])
  press(kFile)
  check.eq({ text(kMessage), text(kFrames) }, { "Please enter frames from 0 to 11, the first one not behind the last one.", "3" }, range[1])
end
set(kFirst, "0")
set(kLast, "11")
press(kFile)
check.eq({ text(kMessage), text(kFrames) }, { "", "12" })
press(2)

-- ---- Live video: as many frames as the camera gave, recorded or not.

command(169)
video.turn_on()
record { directory = datadir(), name = "beside", frames = 100, wait = false }
wait(300)
command(kTraces)
check.eq(buttons(), { true, false, false, true })
press(kLive)
check.eq({ buttons(), text(kSource) }, { { false, true, false, false }, "live video" })
wait(1000)
assert(tonumber(text(kFrames)) > 20, text(kFrames))
check.eq(recorder().state, "recording")
wait(3000)
local run = recorder()
check.eq({ run.ended, run.frames, run.lost, run.exit_code }, { "complete", 100, 0, 0 })
press(kStop)
check.eq(buttons(), { true, false, false, true })
check.eq(text(kGaps), "none")
rows, notes = save("live.csv")
check.eq(tostring(#rows - 1), text(kFrames), "a row a frame")
check.holds(notes, "# head settings: ")
check.holds(notes, "# camera: ")
for i = 3, #rows do
  check.eq(tonumber(rows[i][2]), tonumber(rows[i - 1][2]) + 1, "each frame of the camera")
  assert(tonumber(rows[i][3]) > tonumber(rows[i - 1][3]))
  assert(rows[i][4]:match("^%d%d%d%d%-%d%d%-%d%dT%d%d:%d%d:%d%d%.%d+Z$"), rows[i][4])
end
press(2)

-- The recorded frames are the same as those of the trace.
local of_trace = {}
for i = 2, #rows do of_trace[rows[i][2]] = rows[i] end
drop(run.files[1])
command(kTraces)
press(kFile)
check.eq({ text(kFrames), text(kGaps) }, { "100", "none" })
local both = 0
for i, row in ipairs(save("file.csv")) do
  local same = i > 1 and of_trace[row[2]]
  if same then
    both = both + 1
    check.eq(row[4], same[4], "its time")
    check.eq(row[6], same[6], "its mean: nothing is corrected, and the picture has the same pixels in any order")
  end
end
assert(both > 60, both)
-- The command line writes the same file.
check.eq(batch("export", "--traces", run.files[1], datadir() .. "/batch.csv"), 0)
check.eq(readfile(datadir() .. "/batch.csv"), readfile(datadir() .. "/file.csv"))
press(2)

-- Not beside a dialog that may want the board for itself.
command(140)
command(kTraces)
command(121)
press(kLive)
check.eq({ text(kMessage), enabled(kStop) }, { "Not while another dialog waits: leave that one first.", false })
script_press(1)
press(2)

-- A window that is closed ends the trace.
command(140)
command(kTraces)
press(kLive)
wait(300)
check.fails(function() command(121) end, "disabled")
key("Ctrl+V")
check.answer_box("Not while live video is traced.", "ok", "Kelvo message")
press(2)
check.seen("close", { name = "TRACES" })
command(121)
check.eq({ dialog(), box() }, { "QVF1058" })
script_press(2)

-- Traces of real regions over live video, beside what the operator does meanwhile: recordings, freezing, a file, other regions; lost frames, memory
-- that is refused, bad pixels left out, and a source that swings. Each figure is held against the same frame out of a recording.
local tick = check
local check = require "check"
local figures_file = require "figures_file"
local calibration = require "calibration"
local recordings = require "recordings"

local kLive, kStop, kFile, kRegion, kFigure = 22401, 22402, 22403, 22404, 22405
local kFrames, kTime, kGaps, kOfFrames = 22408, 22409, 22410, 22413
local kUnit, kFirst, kLast, kLeaveOut, kMessage, kPixels, kSave = 22414, 22415, 22416, 22417, 22418, 22419, 1606

local function at(name) return datadir() .. "/" .. name end
local function get(id) return text("TRACES", id) end
local function push(id) press("TRACES", id) end
local function save(name)
  push(kSave)
  choose(at(name))
  check.eq({ dialog(), box() }, {})
  return figures_file.read(at(name))
end
local single = figures_file.single
local function go_to(frame)
  command(2000)
  set(1001, tostring(frame))
  press(1)
end

calibration.turn_on()
calibration.two_point(20, 25, 8)
answer("ok")
sim.source("scene")
frames(2)
local kRate = 48.8281  -- 48 MHz over 3840 x 256 clocks; the journal has it to the nanosecond
regions {
  { name = "plate", x1 = 30, y1 = 20, x2 = 60, y2 = 50 },
  { name = "disc", shape = "ellipse", x1 = 100, y1 = 60, x2 = 141, y2 = 95 },
  { name = "spot", shape = "point", x1 = 7, y1 = 9, x2 = 7, y2 = 9 },
}
local first_regions = regions()

-- ---- Bad pixels left out, in degrees; a recording beside it.

command(2240)
tick("TRACES", kLeaveOut, true)
push(kLive)
check.eq(items("TRACES", kUnit), { "counts", "V", "°C", "°K", "°F" })
check.eq({ enabled("TRACES", kLive), enabled("TRACES", kLeaveOut), enabled("TRACES", kStop) }, { false, false, true })
wait(300)
local run = record { directory = datadir(), name = "beside", pixels = "corrected", frames = 40, limit = 5000 }
check.eq({ run.ended, run.frames, run.lost }, { "complete", 40, 0 })

-- ---- The picture frozen, a file on view, other regions: the trace goes on with those of its start.

local function grows(what)
  local before = tonumber(get(kFrames))
  wait(600)
  assert(tonumber(get(kFrames)) - before > 20, what)
end
command(140)
check.eq(state("LiveVideo"), 0)
grows("frozen")
drop(run.files[1])
check.eq(state("ViewingFile"), 1)
grows("with a file on view")
check.eq({ enabled("TRACES", kFile), enabled("TRACES", kFirst) }, { false, false })
check.eq(get(kMessage), "")
regions { { name = "other", x1 = 0, y1 = 0, x2 = 3, y2 = 3 } }
grows("with other regions")
check.eq(get(kMessage), "The regions have changed: the trace goes on with those that it began with.")
check.eq(items("TRACES", kRegion), { "plate", "disc", "spot" })
regions(first_regions)
wait(300)
check.eq(get(kMessage), "")
push(kStop)
check.eq(get(kGaps), "none")

-- As many points as frames came, one behind the other.
pick("TRACES", kUnit, 2)
local rows, notes = save("live.csv")
check.holds(notes, "# unit: °C\n")
check.holds(notes, "# bad pixels: left out: those that the camera knows")
check.holds(notes, "# gaps: 0")
check.eq(tostring(#rows - 1), get(kFrames))
for i = 3, #rows do
  check.eq({ tonumber(rows[i][2]) - tonumber(rows[i - 1][2]), rows[i][5] }, { 1, "0" }, i)
end
check.near((#rows - 2) / tonumber(rows[#rows][3]), kRate, 0.001)

-- The 40 frames of the recording are among them, each with the figures of the regions' table.
local row_of = {}
for i = 2, #rows do row_of[tonumber(rows[i][2])] = rows[i] end
pick("panel", 1256, 2)
command(2210)
press("regions", 22116)
choose(at("Last.cal"))
check.eq({ state("LeaveBadDetectorsOut"), state("BadDetectorSet") }, { 1, at("Last.cal") })
local left_out = 0
for i, number in ipairs(recordings.numbers(run.files[1])) do
  local row = assert(row_of[number], number)
  go_to(i - 1)
  for k, name in ipairs { "plate", "disc" } do
    local figures, column = stats(name), 2 + 4 * k
    check.near(tonumber(row[column]), figures.unit_mean, 1e-9)
    check.near(tonumber(row[column + 1]), figures.unit_deviation, 1e-9)
    check.eq({ single(tonumber(row[column + 2])), single(tonumber(row[column + 3])) }, { figures.unit_min, figures.unit_max })
    if i == 1 then
      left_out = left_out + figures.left_out
      check.holds(notes, ("# %s: %d pixels, %d bad one"):format(name, figures.pixels, figures.left_out))
    end
  end
end
assert(left_out > 2, left_out)

-- The file gives the same, frame by frame; a part of it too.
wait(300)
check.eq({ get(kFirst), get(kLast) }, { "0", "39" })
set("TRACES", kFirst, "10")
set("TRACES", kLast, "29")
push(kFile)
check.eq(get(kFrames), "20")
for i, row in ipairs(save("file.csv")) do
  if i > 1 then
    local live = row_of[tonumber(row[2])]
    for column = 6, 13 do check.near(tonumber(row[column]), tonumber(live[column]), 1e-9) end
    check.eq(row[4], live[4], "its moment")
  end
end
press("regions", 2)
tick("TRACES", kLeaveOut, false)
command(140)

-- ---- A frame that is lost leaves the gap open.

push(kLive)
wait(400)
sim.fault("icp_read_area", 3)
wait(400)
check.answer_box("icp_read_area() Error", "ok", "ITEX Board Error!")  -- of the live picture
push(kStop)
check.eq(get(kGaps), "1, 1 frame missing")
rows, notes = save("lost.csv")
local missing = 0
for i = 3, #rows do
  local step = tonumber(rows[i][2]) - tonumber(rows[i - 1][2])
  check.eq(tonumber(rows[i][5]), step - 1)
  missing = missing + step - 1
  if step > 1 then check.holds(notes, ("# gap: before frame %s: 1 missing"):format(rows[i][1])) end
end
check.eq(missing, 1)
check.eq(tonumber(rows[#rows][2]) - tonumber(rows[2][2]) + 1, #rows - 1 + missing, "each frame is there or told")

-- ---- A source that swings once in twelve frames: the spectrum's peak.

sim.source("low", 21)
push(kLive)  -- the picture, which had stopped with the frame that couldn't be read, is live again
check.eq(state("LiveVideo"), 1)
for _ = 1, 25 do
  sim.source("low", 21)
  frames(6)
  sim.source("low", 23)
  frames(6)
end
push(kStop)
pick("TRACES", kRegion, 1)
pick("TRACES", kFigure, 4)
check.eq(get(kGaps), "none")
rows, notes = save("spectrum.csv")
check.eq(rows[1], { "hertz", "plate amplitude", "disc amplitude", "spot amplitude" })
check.holds(notes, "# unit: °C\n")
for column = 2, 3 do
  local peak = 3
  for i = 4, #rows do
    if tonumber(rows[i][column]) > tonumber(rows[peak][column]) then peak = i end
  end
  local line = tonumber(rows[3][1])
  check.near(tonumber(rows[peak][1]), kRate / 12, line, "a line of " .. line .. " Hz")
  -- A square wave of +-1 K has a fundamental of 4 / pi; a Hann window between two lines leaves 0.85 of it.
  local amplitude = tonumber(rows[peak][column])
  assert(amplitude > 0.8 * 4 / math.pi and amplitude < 1.05 * 4 / math.pi, amplitude)
end
pick("TRACES", kFigure, 0)

-- ---- No memory for it: at the start, and behind a recording.

sim.fault("memory", 1)
push(kLive)
check.answer_box("There is not enough memory to trace the regions.", "ok")
sim.fault("memory", 0)
local stood = get(kFrames)
check.eq(stood, get(kFrames))
push(kLive)
wait(300)
record { directory = datadir(), name = "short", frames = 400, wait = false }
wait(300)
sim.fault("memory", 1)
record("stop")
check.eq(sim.fault_to_come("memory"), 0)
wait(600)
check.answer_box("The trace was ended: there was no memory to go on with it after a recording. What was traced stands.", "ok")
assert(tonumber(get(kFrames)) > 20)
check.eq({ enabled("TRACES", kLive), enabled("TRACES", kStop), enabled("TRACES", kSave) }, { true, false, true })

-- ---- Turned off: not while it runs; then there is nothing to trace.

push(kLive)
check.fails(function() command(169) end, "disabled")
push(kStop)
local frames_then = get(kFrames)
command(169)
answer("yes")
wait(300)
check.eq({ enabled("TRACES", kLive), get(kFrames) }, { false, frames_then })

-- The program's end closes it while it runs.
command(169)
press(1070)
if dialog() == "QVF1058" then press(1) end
if dialog() == "CALIB" then press(2) end
wait(300)
push(kLive)
wait(200)
command(119)
check.eq({ box().text, box().caption }, { "Live video is traced, and no file has the trace.\nEnd it and quit?", "QVF Vantir" })
answer("cancel")
grows("it goes on")
command(119)
answer("ok")
check.seen("close", { name = "TRACES" })

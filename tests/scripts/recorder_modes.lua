-- Each mode of the recorder by record{}: lengths, an interval, a clock time, what is recorded, triggers of every kind with what came before
-- them, names, splits; what it refuses; and that each frame is told of. 320 x 256 pixels, in virtual time: every number is exact.
local check = require "check"
local recordings = require "recordings"
local video = require "video"

local function at(name) return datadir() .. "/" .. name end

assert(dialog() == "CLOCK_ON", dialog())
press(2)
check.fails(function() record{ frames = 5, limit = 1000 } end, "record: No camera is on.")
check.eq(box(), nil, "a script is told by the failure alone")
command(169)
video.turn_on()
frames(2)
local rate = state("FrameRate")

local function balanced(run)
  check.eq(run.delivered, run.frames + run.passed_over + run.lost_by_board + run.lost_by_ring, "delivered")
end

-- --- Lengths ------------------------------------------------------------------------------------------------------------------

local run = record{ frames = 25, name = "count", limit = 5000 }
check.eq({ run.state, run.ended, run.frames, run.lost, run.exit_code }, { "idle", "complete", 25, 0, 0 })
check.eq(run.verdict, ("25 frames, none lost, %.1f s"):format(25 / rate))
check.eq(run.files, { at("count.seq") })
recordings.expect_steps(recordings.numbers(run.files[1]), 25, 1)
balanced(run)
check.holds(status(), " Recorded: 25 frames, none lost")

run = record{ seconds = 0.5, name = "time", limit = 5000 }
recordings.expect_steps(recordings.numbers(run.files[1]), math.floor(0.5 * rate + 0.5), 1)

-- Until the limit: it is stopped, and that isn't a fault.
run = record{ name = "limit", limit = 300 }
check.eq({ run.ended, run.exit_code, run.message }, { "stopped", 0, "" })
check.near(run.frames, 0.3 * rate, 2)

-- A tick each 3.9 frames: the first frame behind each of the first nine is the fourth, the eighth, the twelfth...
run = record{ frames = 10, interval = 3.9 / rate, name = "interval", limit = 5000 }
recordings.expect_steps(recordings.numbers(run.files[1]), 10, 4, "one an interval")
balanced(run)
check.eq(recordings.journal(run.files[1]).records[2].passed, 3)

-- From a clock time on, three seconds from now.
local begin = os.date("*t", math.floor(recordings.journal(run.files[1]).records[10].utc / 1e9) + 3)
run = record{ start = ("%02d:%02d:%02d"):format(begin.hour, begin.min, begin.sec), frames = 5, name = "later", wait = false }
check.eq({ run.state, run.frames }, { "waiting", 0 })
wait(4000)
run = recorder()
check.eq({ run.ended, run.frames }, { "complete", 5 })
local first = recordings.journal(run.files[1]).records[1].utc
check.eq(os.date("%H:%M:%S", first // 1000000000), ("%02d:%02d:%02d"):format(begin.hour, begin.min, begin.sec))
assert(first % 1000000000 < 1e9 / rate + 1e6, "the first frame of that second")

-- --- What is recorded ---------------------------------------------------------------------------------------------------------

run = record{ frames = 3, pixels = "both", name = "both", sample = "die 4", comment = "cooled\ntwice", limit = 5000 }
check.eq(recordings.numbers(at("both.seq")), recordings.numbers(at("both_cal.seq")))
check.eq(run.frames, 3)
local head = recordings.journal(at("both.seq")).head
check.holds(head, "SampleName=die 4\n")
check.holds(head, "Comment=cooled\\ntwice\n")
check.holds(head, "Pixels=raw\n")
check.holds(recordings.journal(at("both_cal.seq")).head, "Pixels=corrected\n")
run = record{ frames = 3, pixels = "corrected", name = "one", limit = 5000 }
check.eq({ readfile(at("one.seq")), run.files }, { nil, { at("one_cal.seq") } })

-- No name is taken twice.
record{ frames = 2, name = "same", limit = 5000 }
local before = readfile(at("same.seq"))
run = record{ frames = 4, name = "same", limit = 5000 }
check.eq(readfile(at("same.seq")), before)
assert(run.files[1] ~= at("same.seq"), run.files[1])

-- A new file before one grows beyond 1 MB: 6 frames of 164 kB; no frame falls between two.
run = record{ frames = 15, split_gb = 0.001, name = "split", limit = 5000 }
check.eq(run.files, { at("split.seq"), at("split-2.seq"), at("split-3.seq") })
local all = {}
for _, path in ipairs(run.files) do
  for _, number in ipairs(recordings.numbers(path)) do all[#all + 1] = number end
end
recordings.expect_steps(all, 15, 1, "over the files")

-- --- Triggers -----------------------------------------------------------------------------------------------------------------

-- By hand: 20 frames before it, 30 from it on, a mark.
record{ trigger = "button", before_frames = 20, frames = 30, name = "hand", wait = false }
check.eq(recorder().state, "armed")
check.fails(function() record("mark") end, "a mark needs a recording that runs")
wait(1000)
check.eq(recorder().before, 20)
record("trigger")
wait(100)
record("mark")
key("Ctrl+M")
check.eq(status(), " Mark 2")
wait(1000)
run = recorder()
check.eq({ run.ended, run.frames, run.marks, run.lost }, { "complete", 50, 2, 0 })
recordings.expect_steps(recordings.numbers(run.files[1]), 50, 1, "before and after")
local records = recordings.journal(run.files[1]).records
for i, record in ipairs(records) do check.eq(record.trigger, i == 21, "trigger frame " .. i) end
check.fails(function() record("trigger") end, "the recorder isn't armed for a trigger by hand")

-- The key does the same; two events, two files, numbered by the pattern.
record{ trigger = "button", frames = 5, events = 2, name = "key_{n:03}", wait = false }
for event = 1, 2 do
  check.eq({ recorder().state, recorder().event }, { "armed", event })
  key("Ctrl+T")
  check.eq(status(), " Triggered")
  wait(200)
end
check.eq(recorder().files, { at("key_001.seq"), at("key_002.seq") })
check.eq({ recorder().ended, recorder().frames }, { "complete", 10 })

-- The board's input.
record{ trigger = "input", frames = 5, before = 0.1, name = "input", wait = false }
wait(500)
check.fails(function() record("trigger") end, "the recorder isn't armed for a trigger by hand")
check.eq(sim.lines().trigger_on, 1)
sim.trigger()
wait(500)
check.eq({ recorder().ended, recorder().frames, sim.lines().trigger_on }, { "complete", 5 + math.ceil(0.1 * rate), 0 })

-- The mean of a rectangle: the source goes from 20 to 60 degrees, and the window lies above the first.
sim.source("low", 20)
frames(3)
local sum, count = 0, 0
for y = 100, 109 do
  for x = 100, 119 do sum, count = sum + pixel(x, y), count + 1 end
end
local cold = sum / count
record{ trigger = "mean", rectangle = { 100, 100, 119, 109 }, window = { cold + 200, 32767 }, frames = 5, name = "mean", wait = false }
wait(500)
check.eq(recorder().state, "armed")
check.near(recorder().mean, cold, 5, "the mean while it waits")
sim.source("low", 60)
wait(500)
check.eq({ recorder().ended, recorder().frames }, { "complete", 5 })

-- The external signal; one that comes before it is armed again stays.
record{ trigger = "signal", frames = 5, events = 2, name = "signal_{n}", wait = false }
wait(300)
check.eq(recorder().state, "armed")
signal()
signal()
wait(500)
check.eq({ recorder().ended, recorder().frames, #recorder().files }, { "complete", 10, 2 })

-- --- Refusals -----------------------------------------------------------------------------------------------------------------

local names = listdir(datadir())
local function refused(table, why)
  table.limit = 1000
  check.fails(function() record(table) end, why)
  check.eq(recorder().state, "idle")
end
refused({ frame = 5 }, 'record: no setting "frame"')
refused({ frames = "many" }, 'record: "frames" can\'t have that value')
refused({ pixels = "grey" }, 'record: "pixels" can\'t have that value')
refused({ rectangle = { 1, 2, 3 } }, 'record: "rectangle" can\'t have that value')
refused({ rectangle = { 0, 0, 1, 5000 } }, 'record: "rectangle" can\'t have that value')
refused({ 5 }, 'record: no setting "[number]"')
refused({ frames = 5, seconds = 1 }, "record: give frames or seconds, not both")
refused({ frames = 0 }, "record: A recording of n frames needs at least one.")
refused({ seconds = 0 }, "record: A recording of n seconds needs more than 0 s.")
refused({ frames = 5, sync = -1 }, "record: A time or a number is below 0.")
refused({ frames = 5, start = "noon" }, "record: The start time isn't a time of day like 14:30:00.")
refused({ frames = 5, name = "{when}" }, "record: The name pattern makes no file name.")
refused({ frames = 5, directory = at("none") }, "record: The directory of the recordings isn't there.")
refused({ frames = 5, interval = 1, trigger = "button", before_frames = 5 }, "record: A pre-trigger keeps every frame")
refused({ frames = 5, trigger = "button", before_frames = 1000000000 }, "record: The ring holds at most ")
refused({ frames = 5, trigger = "mean", window = { 2, 1 } }, "record: The window of the mean has its low end above its high one.")
refused({ frames = 5, trigger = "mean", rectangle = { 0, 0, 400, 10 } }, "record: The rectangle of the mean lies outside the picture.")
check.fails(function() record{ frames = 5 } end, "record: give a limit in ms, or wait = false")
check.fails(function() record("again") end, 'record: no word "again"')
check.fails(function() record(5) end, "table expected")
check.fails(function() batch("bake") end, "batch: no such command: bake")
command(120)
refused({ frames = 5 }, "record: Something else is open that may need the camera: close it first.")
press(2)
record{ name = "running", wait = false }
check.fails(function() record{ frames = 5, limit = 10 } end, "record: A recording runs already.")
record("stop")
check.eq(#listdir(datadir()), #names + 2, "refusals leave no file")

-- --- Afterwards ---------------------------------------------------------------------------------------------------------------

check.eq(batch("recover", at("running.seq")), 0)
local file = assert(io.open(at("cut.seq"), "wb"))
file:write(readfile(at("split.seq")):sub(1, -1001))
file:close()
file = assert(io.open(at("cut.seq.frames"), "wb"))
file:write(readfile(at("split.seq.frames")))
file:close()
check.eq(batch("recover", at("cut.seq")), 1)
recordings.expect_steps(recordings.numbers(at("cut.seq")), 5, 1, "the last frame was cut")
check.eq(batch("recover", at("nothing.seq")), 2)

-- A recording that a region triggers: a step of the source, the frames before it, and the region renamed, moved or deleted while it waits.
local check = require "check"
local calibration = require "calibration"
local recordings = require "recordings"

calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")

sim.source("low", 21)
frames(3)
local plate = { name = "plate", shape = "ellipse", x1 = 100, y1 = 60, x2 = 141, y2 = 95 }
regions { plate }
command(140)
local before = stats("plate").mean
command(140)
sim.source("low", 23)
frames(3)
command(140)
local level = (before + stats("plate").mean) / 2
assert(level - before > 100, level - before)
command(140)
sim.source("low", 21)
frames(3)

local function armed(name, pass, events)
  record { directory = datadir(), name = name, pixels = "corrected", trigger = "region", region = "plate", level = level, pass = pass or "rising",
           before_frames = 12, frames = 8, events = events or 1, wait = false }
  wait(600)
  check.eq({ recorder().state, recorder().before }, { "armed", 12 })
end
-- The trigger frame is the first whose mean has passed the level; the frames before it are there.
local function expect_step(path, rises)
  recordings.expect_steps(recordings.numbers(path), 20, 1, path)
  for i, frame in ipairs(recordings.journal(path).records) do check.eq(frame.trigger, i == 13, "frame " .. i) end
  drop(path)
  for frame = 0, 19 do
    command(2000)
    set(1001, tostring(frame))
    press(1)
    local mean = stats(plate).mean
    check.eq(mean > level, rises == (frame >= 12), ("frame %d: %g"):format(frame, mean))
  end
  command(140)
  check.eq(state("LiveVideo"), 1)
end

armed("rising")
check.near(recorder().mean, before, 20)
sim.source("low", 23)
wait(1000)
local run = recorder()
check.eq({ run.ended, run.frames, run.lost, run.exit_code }, { "complete", 20, 0, 0 })
expect_step(run.files[1], true)

armed("falling", "falling")
sim.source("low", 21)
wait(1000)
check.eq(recorder().ended, "complete")
expect_step(recorder().files[1], false)

-- Renamed, moved and taken away: it waits for the region that it was armed with.
for _, change in ipairs {
  function() regions { { name = "other", shape = "ellipse", x1 = 100, y1 = 60, x2 = 141, y2 = 95 } } end,
  function() regions { { name = "plate", x1 = 0, y1 = 0, x2 = 1, y2 = 1 } } end,
  function() regions {} end,
} do
  regions { plate }
  armed("changed")
  change()
  wait(400)
  check.eq(recorder().state, "armed")
  check.near(recorder().mean, before, 20)
  sim.source("low", 23)
  wait(1000)
  check.eq(recorder().ended, "complete")
  expect_step(recorder().files[1], true)
  sim.source("low", 21)
  frames(3)
end

-- One that isn't there is told before anything begins, by script and in the window, which goes on naming it.
check.fails(function() record { trigger = "region", region = "plate", level = level, name = "none", wait = false } end, "There is no region plate.")
regions { plate }
command(2060)
set("recorder", 21020, datadir())
set("recorder", 21022, "by_hand")
pick("recorder", 21040, 5)
check.eq({ enabled("recorder", 21051), items("recorder", 21051) }, { true, { "plate" } })
pick("recorder", 21051, 0)
regions { { name = "left" } }
wait(400)
check.eq(items("recorder", 21051), { "left", "plate" })
check.eq(picked("recorder", 21051), 1)
press("recorder", 21001)
check.holds(text("recorder", 21005), "There is no region plate.")
check.eq(recorder().state, "idle")
regions { plate }
set("recorder", 21053, ("%.0f"):format(level))
wait(400)
press("recorder", 21001)
wait(300)
check.eq(recorder().state, "armed")
press("recorder", 21002)
press("recorder", 2)

-- A recorded sequence plays by the true times of its frames; the slider seeks.
local check = require "check"
local files = require "files"
local journal = require "journal"
answer("ok")

local kPlay, kPosition, kSpeed, kBackwards, kLoop = 20200, 20201, 20203, 20204, 20205
local dir = datadir()
local function frame() return state("CurrentFrame") end

-- Frames at 0, 10, 20, 120, 130, 230 and 1230 ms: two pauses and a long one. The header's 100 Hz count for nothing.
local times = { 0, 10, 20, 120, 130, 230, 1230 }
local frames = journal.numbered { 1, 2, 3, 4, 5, 6, 7 }
for i, ms in ipairs(times) do frames[i].ns = 7000000000 + ms * 1000000 end
local path = journal.sequence(dir .. "/run.seq", frames, journal.closing(7, 0))
drop(path)

-- Which frame is on view so many milliseconds after playing began, in steps.
local function seen(moments)
  local found, now = {}, 0
  key("Space")
  for i, moment in ipairs(moments) do
    wait(moment - now)
    found[i], now = frame(), moment
  end
  if text("player", kPlay) == "Stop" then key("Space") end
  return found
end

check("player", kLoop, false)
for _ = 1, 2 do -- twice the same
  scroll("player", kPosition, 0)
  check.eq(seen { 5, 15, 25, 115, 125, 135, 225, 235, 1225, 1235, 1300 }, { 0, 1, 2, 2, 3, 4, 4, 5, 5, 6, 6 })
  check.eq(text("player", kPlay), "Play", "it ends with the last frame")
end

-- Twice as fast; at a quarter; backwards the pauses come the other way round.
pick("player", kSpeed, 3)
scroll("player", kPosition, 0)
check.eq(seen { 4, 9, 55, 62, 66, 114, 117, 613, 617 }, { 0, 1, 2, 3, 4, 4, 5, 5, 6 })
pick("player", kSpeed, 0)
scroll("player", kPosition, 2)
check.eq(seen { 395, 405, 435, 445 }, { 2, 3, 3, 4 })
pick("player", kSpeed, 2)
check("player", kBackwards, true)
scroll("player", kPosition, 6)
check.eq(seen { 995, 1005, 1095, 1105, 1115, 1205, 1215, 1225, 1235 }, { 6, 5, 5, 4, 3, 3, 2, 1, 0 })
check("player", kBackwards, false)

-- Around: from the last frame to the first is a frame's period, 10 ms.
check("player", kLoop, true)
scroll("player", kPosition, 5)
check.eq(seen { 995, 1005, 1015, 1025, 1035 }, { 5, 6, 0, 1, 2 })

-- A chosen frame, a speed or a direction while it plays: on from there and then.
scroll("player", kPosition, 2)
key("Space")
wait(50)
key("Ctrl+Up")
wait(45)
check.eq(frame(), 2, "half of the pause is over at the old speed; the pause begins anew at the new one")
wait(7)
check.eq(frame(), 3)
key("Ctrl+Down")
scroll("player", kPosition, 1)
check.eq(text("player", kPlay), "Play", "the slider stops it")
key("Space")
command(2053)
wait(12)
check.eq(frame(), 0)
command(2053)
key("Space")

-- Frames that are closer than can be shown are skipped: 40 in a millisecond.
local close = {}
for i = 1, 400 do close[i] = { number = i, ns = i * 25000, utc_ns = 0 } end
drop(journal.sequence(dir .. "/close.seq", close, journal.closing(400, 0)))
local mark = check.mark()
key("Space")
wait(5)
check.eq(frame(), 200, "5 ms are 200 frames of 25 us")
key("Space")
local shown = {}
for _, line in ipairs(check.lines("status", mark + 1)) do
  local at = line.text:match("FrameNum:(%d+)")
  if at then shown[at] = true end
end
local count = 0
for _ in pairs(shown) do count = count + 1 end
assert(count <= 7, count .. " frames were shown")

-- Times that can't be true, missing ones and a journal that is too short: a frame's period in their place.
local odd = journal.numbered { 1, 2, 3, 4, 5, 6 }
odd[2].ns = odd[1].ns - 5
odd[3].ns = math.maxinteger
odd[4].ns = math.mininteger
odd[5].flags = 8
table.remove(odd)
path = journal.sequence(dir .. "/odd.seq", odd, journal.closing(6, 0))
journal.append(path, (journal.frames({ { number = 6 } }, 5)))
drop(path)
check.holds(status(), "its journal tells of 5 of 6 frames")
check.eq(seen { 5, 15, 25, 35, 45, 55, 65 }, { 0, 1, 2, 3, 4, 5, 0 })

-- A sequence without a journal plays as ever, each frame in turn, and its slider seeks.
drop(files.image(dir .. "/plain.seq", { width = 8, height = 8, rate = 50 }, 5, journal.count))
check.eq(seen { 15, 25, 45, 65 }, { 0, 1, 2, 3 })
scroll("player", kPosition, 4)
check.eq({ frame(), pixel(0, 0) }, { 4, journal.count(4, 0, 0) })

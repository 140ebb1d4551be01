-- The histogram of live video: it follows the frames, freezes and sets free, leaves a file for the camera, and ends where the board fails.
local check = require "check"
local files = require "files"
local video = require "video"

local kX, kWidth, kLive, kSetup, kSave, kExit = 309, 314, 318, 301, 1606, 338

sim.source("low", 20)
video.turn_on()
check.eq({ dialog(), state("LiveVideo") }, { nil, 1 })
local function report() return { text(321), text(322), text(325), text(324), text(328), text(327) } end

command(160)
check.eq({ dialog(), checked(kLive), title() }, { "HISTGRAM", true, "Kelvo" })
check.eq(text(321), "", "the first frame comes after half a second")
wait(600)
local first = report()
frames(2)
assert(not check.same(report(), first), "noise moves the figures with each frame")
check.eq(state("FramesLost"), 0)

-- What is told is what the frame holds: mean and extremes of the rectangle, pixel by pixel.
check(kLive, false)
check.eq({ state("LiveVideo"), title() }, { 0, "Kelvo - frozen" })
local frozen = report()
wait(300)
check.eq(report(), frozen)
local function single(number) return (string.unpack("f", string.pack("f", number))) end
local function reckoned(x, y, columns, rows)
  local sum, number, least, most = 0, 0, nil, nil
  for row = y + 1 - (rows + 1) // 2, y + rows // 2 do
    for column = x + 1 - (columns + 1) // 2, x + columns // 2 do
      local count = pixel(column, row)
      sum, number = sum + count, number + 1
      if not least or count < least then least = count end
      if not most or count > most then most = count end
    end
  end
  return { ("%.3f"):format(single(single(sum) / single(number))), tostring(least), tostring(most) }
end
check.eq({ text(321), text(325), text(328) }, reckoned(160, 128, 80, 64))
set(kWidth, "31")
check.eq({ text(321), text(325), text(328) }, reckoned(160, 128, 31, 64))
check(kLive, true)
wait(100)
check.eq({ state("LiveVideo"), checked(kLive) }, { 1, true })

-- The figures that are saved are those that stood when the button was pressed.
local told = text(321)
press(kSave)
wait(500)
choose(datadir() .. "/live.csv")
local csv = readfile(datadir() .. "/live.csv")
check.holds(csv, "# file: live\n")
check.eq(("%.3f"):format(tonumber(csv:match("# mean: ([%d.]+)"))), told)
assert(text(321) ~= told, "the plot went on")

-- The setup over a plot that goes on.
press(kSetup)
local moving = state("HistSettings.YplotMax")
check(340, false)
set(342, "5000")
wait(200)
check.eq(state("HistSettings.YplotMax"), 5000)
press(2)
wait(50)
check.eq(state("HistSettings.Yautoscale"), 1)
assert(moving)
press(kExit)
check.eq({ dialog(), state("LiveVideo") }, { nil, 1 })
local shown = state("FramesShown")
frames(3)
assert(state("FramesShown") > shown, "live video goes on")

-- Frozen before: it stays frozen, and the picture is clean again.
command(140)
check.eq(state("LiveVideo"), 0)
local place = { screen(3 * 120, 3 * 96) }
command(160)
check.eq(checked(kLive), false)
wait(600)
press(kExit)
check.eq({ state("LiveVideo"), screen(3 * 120, 3 * 96) }, { 0, table.unpack(place) })

-- From a file to live data: size, range and title are the camera's.
files.image(datadir() .. "/small.img", { width = 40, height = 30, frames = 1 }, 1, function(_, x, y) return 100 + x + y end)
command(107)
choose(datadir() .. "/small.img")
command(160)
wait(600)
check.eq({ text(kX), checked(kLive) }, { "19", false })
check(kLive, true)
wait(100)
check.eq({ state("ViewingFile"), state("LiveVideo"), checked(kLive), title() }, { 0, 1, true, "Kelvo" })
check.eq(select(3, position(308)), state("Hroi") - 1)
set(kX, "300")
check.eq(state("HistSettings.Xposition"), 300)
frames(1)

-- A recording takes every frame while the plot looks at one now and then, frozen or not.
check.eq(text(321) ~= "", true)
press(kExit)
record{ name = "beside", frames = 60, wait = false }
command(160)
wait(700)
check(kLive, false)
wait(200)
check(kLive, true)
wait(1500)
press(kExit)
local run = recorder()
check.eq({ run.ended, run.frames, run.lost, state("FramesLost") }, { "complete", 60, 0, 0 })
command(160)
wait(600)

-- The board fails: it is told, and the plot ends.
sim.fault("icp_read_area", true)
wait(200)
local told_failure
for _ = 1, 5 do
  if not box() then break end
  told_failure = told_failure or box().text == "Video Data Acquisition Failed, Hardware error"
  answer("ok")
end
check.eq({ dialog(), told_failure }, { nil, true })
sim.fault("icp_read_area", false)

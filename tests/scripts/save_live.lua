-- Saving with the camera on: live and frozen, images and sequences. The array has no noise here, so that each frame is as the other
-- and what is saved can be held against what is seen. Without a calibration the counts are saved in readout order.
local check = require "check"
local video = require "video"
local dir = datadir()

local function counts_of(path, frame)
  local bytes = readfile(path)
  local n = string.unpack("<i2", bytes, 3) * string.unpack("<i2", bytes, 5)
  return function(i) return (string.unpack("<i2", bytes, 513 + 2 * ((frame or 0) * n + i))) end
end

-- Live, a sample on the edge between two counts may fall to either side from frame to frame, and no more than a few do.
local function expect_readout(path, frame)
  local count = counts_of(path, frame)
  local spread = {}
  local others = 0
  for i = 0, 320 * 256 - 1 do
    if count(i) ~= raw(i) then
      check.near(count(i), raw(i), state("LiveVideo"), path .. " sample " .. i)
      others = others + 1
    end
    spread[count(i)] = true
  end
  assert(others < 100, others)
  assert(next(spread, next(spread)), "a picture, not one value")
end

local function save_image(name, frames)
  command(106)
  check.eq(dialog(), "SAVE")
  set(1460, name)
  set(1488, frames or "1")
  press(1)
end

local function expect_size(path, frames)
  check.eq(#readfile(path), 512 + frames * 2 * 320 * 256, path)
end

video.turn_on()
frames(3)
local first = raw(0)
frames(3)
check.eq(raw(0), first, "the array is quiet")

-- Live.
local mark = check.mark()
save_image("live")
check.eq(box(), nil)
check.seen_in_order("status", { "Collecting image to save", " Writing image to file" }, mark)
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
expect_size(dir .. "/live.img", 1)
expect_readout(dir .. "/live.img")
check.eq(state("FilePathBuf"), dir .. "/live.img")

-- Averaged: the mean of equal frames is the frame.
save_image("mean", "20")
check.eq(box(), nil)
check.eq((string.unpack("<i2", readfile(dir .. "/mean.img"), 55)), 20)
expect_readout(dir .. "/mean.img")
check.eq(state("FramesToAverageImage"), 20)

-- Kept, then replaced.
save_image("live.img")
check.answer_box(dir .. "/live.img\nFile already exists, replace it?", "no", "Kelvo message")
save_image("live.img")
check.answer_box(dir .. "/live.img\nFile already exists, replace it?", "yes")
check.eq(box(), nil)

-- A cancelled dialog leaves the status line.
command(106)
press(2)
check.eq(box(), nil)

-- A sequence: the number goes up with each file.
command(108)
check.eq({ text(1486), text(1488), checked(1784) }, { "0", "1", false })
set(1460, "run3")
set(1486, "8")
press(1)
check.eq(state("SeqFilePath"), dir .. "/run.seq")
for _ = 1, 3 do command(109) end
check.eq(box(), nil)
check.eq({ state("SeqNumber"), state("SeqNumberStart") }, { 11, 8 })
for number = 8, 10 do expect_readout(dir .. "/run" .. number .. ".seq") end

-- Frozen: the frame is the one that stands, and a sequence asks first.
key("F2")
check.eq(state("LiveVideo"), 0)
save_image("still")
check.eq(box(), nil)
expect_readout(dir .. "/still.img")
save_image("still2", "4")
check.answer_box("Number of frames to average is 4, but image is frozen.", "no", "Capture Only One Frame?")
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
check.eq(readfile(dir .. "/still2.img"), nil)

local question = "IMAGE IS FROZEN!\nIt will be saved as \n" .. dir .. "/run11.seq\nDo you want to do this?"
key("F5")
check.answer_box(question, "cancel", "Kelvo message")
check.eq(state("SeqNumber"), 11)

-- Two frames in one file, and the number stays.
command(108)
set(1460, "many")
check(1784, true)
press(1)
for _ = 1, 2 do
  command(109)
  check.answer_box("IMAGE IS FROZEN!\nIt will be saved as \n" .. dir .. "/many11.seq\nDo you want to do this?", "ok")
end
check.eq(box(), nil)
check.eq(state("SeqNumber"), 11)
expect_size(dir .. "/many11.seq", 2)
expect_readout(dir .. "/many11.seq", 0)
expect_readout(dir .. "/many11.seq", 1)

-- On view the stored picture shows what was saved.
local saved = counts_of(dir .. "/still.img")
drop(dir .. "/still.img")
check.eq({ state("ViewingFile"), box() }, { 1 })
for i = 0, 320 * 256 - 1, 97 do check.eq(pixel(i % 320, i // 320), saved(i)) end

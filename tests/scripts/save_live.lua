-- Saving with the camera on: live and frozen, images and sequences, without a calibration and with one. The array stands in the dark
-- and has no noise here, so that each frame is as the other and what is saved can be held against what is seen, count for count.
-- Without a calibration the counts are saved in readout order; with one the file is the picture.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local video = require "video"
local dir = datadir()
local width, height = 320, 256

local function counts_of(path, frame)
  local bytes = assert(readfile(path), path)
  local n = string.unpack("<i2", bytes, 3) * string.unpack("<i2", bytes, 5)
  return function(i) return (string.unpack("<i2", bytes, 513 + 2 * ((frame or 0) * n + i))) end
end

local function expect_readout(path, frame)
  local count = counts_of(path, frame)
  local spread = {}
  for i = 0, width * height - 1 do
    local value = count(i)
    if value ~= raw(i) then check.eq(value, raw(i), path .. " sample " .. i) end
    spread[value] = true
  end
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
  check.eq(#readfile(path), 512 + frames * 2 * width * height, path)
end

video.turn_on()
frames(3)
local first = {}
for i = 0, width * height - 1 do first[i] = raw(i) end
frames(3)
for i = 0, width * height - 1 do
  if raw(i) ~= first[i] then check.eq(raw(i), first[i], "the array is quiet") end
end

-- Live.
local mark = check.mark()
save_image("live")
check.eq(box(), nil)
check.seen_in_order("status", { "Collecting image to save", " Writing image to file" }, mark)
check.holds(status(), " Saved live.img: 1 frame, ")
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
local function expect_view(path)
  local saved = counts_of(path)
  drop(path)
  check.eq({ state("ViewingFile"), box() }, { 1 })
  for i = 0, width * height - 1 do
    local shown = pixel(i % width, i // width)
    if shown ~= saved(i) then check.eq(shown, saved(i), path .. " pixel " .. i) end
  end
end
expect_view(dir .. "/still.img")
key("F2")
check.eq(state("LiveVideo"), 1)

-- ---- With a calibration

-- Gains and offsets differ from detector to detector; what a picture must be is worked out here from the raw counts.
local gains, offsets = {}, {}
for i = 0, width * height - 1 do
  gains[i] = 0.5 + i * 37 % 101 / 64
  offsets[i] = i * 53 % 401 - 200
end
-- Each bad pixel, by row and column, and its first neighbour to the right.
local bad = { { 0, 0 }, { 5, 17 }, { 100, 200 }, { 255, 318 } }
local is_bad = {}
for _, place in ipairs(bad) do is_bad[place[1] * width + place[2]] = true end

local function write_set(name, cal_type)
  local gain, offset, order, list = {}, {}, {}, {}
  for i = 0, width * height - 1 do
    gain[i + 1] = string.pack("<f", gains[i])
    offset[i + 1] = string.pack("<i2", offsets[i])
    order[i + 1] = string.pack("<I4", i)
  end
  for i, place in ipairs(bad) do list[i] = string.format("%4d,%4d\n", place[1], place[2]) end
  files.calibration(dir .. "/" .. name .. ".cal", 1, 1, 1, 0)
  files.write(dir .. "/" .. name .. ".gai", table.concat(gain))
  files.write(dir .. "/" .. name .. ".off", table.concat(offset))
  files.write(dir .. "/" .. name .. ".dcm", table.concat(order))
  files.write(dir .. "/" .. name .. ".bad", table.concat(list))
  local settings = readfile(dir .. "/" .. name .. ".cal")
  settings = settings:gsub("CalType=2", "CalType=" .. cal_type):gsub("BadDetFile=", "BadDetFile=" .. name .. ".bad")
  files.write(dir .. "/" .. name .. ".cal", settings .. "PRSfile=nearccw.prs\nSubstBadPixels=0\n")
end

local function load_set(name)
  command(133)
  calibration.choose(dir .. "/" .. name .. ".cal")
  check.eq({ box() and box().text, dialog() }, {})
end

local flags = { columns = 1300, rows = 1302, left = 1304, bad = 1306 }
local turned = {}
local function turn(wanted)
  turned = wanted
  command(122)
  check.eq(dialog(), "GEOMETRY")
  for flag, id in pairs(flags) do check(id, wanted[flag] == true) end
  press(1604)
  press(1)
  check.eq({ box() and box().text, dialog() }, {})
end

local function toward_zero(value) return value >= 0 and math.floor(value) or math.ceil(value) end

-- The count of image pixel i before it is turned.
local function corrected(i, cal_type)
  if turned.bad and is_bad[i] then i = i + 1 end
  local difference = raw(i) - offsets[i]
  return cal_type == 2 and toward_zero(difference / gains[i]) or difference
end

-- Every pixel of the file is that of the screen, and what the set makes of the raw counts.
local function expect_picture(path, cal_type, frame)
  local count = counts_of(path, frame)
  for y = 0, height - 1 do
    for x = 0, width - 1 do
      local value = count(y * width + x)
      if value ~= pixel(x, y) then check.eq(value, pixel(x, y), path .. " pixel " .. x .. "," .. y) end
      if not turned.left then  -- an oblong picture folds as it is rotated: the screen is the measure
        local column = turned.columns and width - 1 - x or x
        local row = turned.rows and height - 1 - y or y
        local expected = corrected(row * width + column, cal_type)
        if value ~= expected then check.eq(value, expected, path .. " detector of pixel " .. x .. "," .. y) end
      end
    end
  end
end

local function save_sequence(name, number, answer_to)
  command(108)
  set(1460, name)
  set(1486, tostring(number))
  set(1488, "1")
  check(1784, false)
  press(1)
  command(109)
  if answer_to then
    assert(box() and box().text:find("Do you want to do this?", 1, true), box() and box().text)
    answer(answer_to)
  end
  check.eq(box() and box().text, nil)
  return dir .. "/" .. name .. number .. ".seq"
end

local run = 0
local function expect_saved_as_seen(cal_type)
  run = run + 1
  local what = "cal" .. run
  frames(2)
  save_image(what)
  check.eq(box(), nil)
  frames(1)
  expect_picture(dir .. "/" .. what .. ".img", cal_type)
  save_image(what .. "mean", "3")
  expect_picture(dir .. "/" .. what .. "mean.img", cal_type)
  expect_picture(save_sequence("l", run), cal_type)
  local header = readfile(dir .. "/" .. what .. ".img")
  check.eq({ (string.unpack("<i2", header, 25)), (string.unpack("<i2", header, 31)) }, { 3000, 9000 }, "the set's sources")

  key("F2")
  save_image(what .. "still")
  expect_picture(dir .. "/" .. what .. "still.img", cal_type)
  expect_picture(save_sequence("f", run, "ok"), cal_type)

  -- What lies on the disk shows the same picture again, and is saved again as it is.
  expect_view(dir .. "/" .. what .. "still.img")
  save_image(what .. "copy")
  check.eq(box(), nil)
  check.eq(readfile(dir .. "/" .. what .. "copy.img"), readfile(dir .. "/" .. what .. "still.img"))
  key("F2")
  check.eq({ state("LiveVideo"), state("ViewingFile") }, { 1, 0 })
end

-- Turned, but not calibrated: the screen shows the turned picture, live and frozen, and the file keeps the order of the readout.
turn { columns = true, rows = true }
frames(2)
save_image("plain")
expect_readout(dir .. "/plain.img")
local function expect_turned_screen()
  for y = 0, height - 1 do
    for x = 0, width - 1 do
      local sample = raw((height - 1 - y) * width + width - 1 - x)
      if pixel(x, y) ~= sample then check.eq(pixel(x, y), sample, "turned pixel " .. x .. "," .. y) end
    end
  end
end
expect_turned_screen()
key("F2")
save_image("plainstill")
expect_readout(dir .. "/plainstill.img")
expect_turned_screen()
expect_view(dir .. "/plainstill.img")
key("F2")
turn {}

write_set("two", 2)
write_set("one", 1)
for cal_type, name in ipairs { "one", "two" } do
  load_set(name)
  check.eq(state("CalType"), cal_type)
  for _, wanted in ipairs { {}, { bad = true }, { columns = true, bad = true }, { rows = true }, { left = true },
                            { columns = true, rows = true, left = true, bad = true } } do
    turn(wanted)
    expect_saved_as_seen(cal_type)
  end
  turn {}
end

-- The cursor is on the screen and not in the file.
key("F2")
mouse(150, 200)
command(151)
check.eq({ screen((state("CursorX") + 1) * state("Xzoom") + 1, state("PanelHeight") + state("CursorY") * state("Yzoom") + 1) },
  { 255, 255, 255 }, "the cross")
save_image("cursor")
check.eq(box(), nil)
command(151)
expect_picture(dir .. "/cursor.img", state("CalType"))

-- A picture that is turned while it is frozen is saved as it then stands on the screen.
turn { columns = true, bad = true }
save_image("turned")
check.eq(box(), nil)
expect_picture(dir .. "/turned.img", state("CalType"))

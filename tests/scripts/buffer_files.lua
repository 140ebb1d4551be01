-- Buffer files: what is saved is what was captured, byte by byte, and what is loaded goes where the dialog says.
local check = require "check"
local video = require "video"
local files = require "files"

local kFirst, kLast, kTop, kLeft, kBottom, kRight, kLoadAt = 1371, 1372, 1374, 1375, 1376, 1377, 1614
local kStored, kSave, kLoad, kReplay, kPause, kBar, kRate = 1332, 1354, 1356, 1348, 1353, 1011, 1350
local width, height = 320, 256

local function word(bytes, at) return (string.unpack("<I2", bytes, at + 1)) end
local function fields(with_place)
  local values = {}
  for _, id in ipairs { kFirst, kLast, kTop, kLeft, kBottom, kRight, with_place and kLoadAt } do values[#values + 1] = text(id) end
  return values
end

video.turn_on()
command(103)
set(1342, "3")
set(1344, "1")
pick(1340, 1)
set(1342, "2")
set(1336, "AB")
press(1352)
check.eq(text(kStored), "5")

-- ---- Saved whole

local whole = datadir() .. "/whole.buf"
press(kSave)
check.eq({ file().title, file().filters[1], status() }, { "Save File", "BufferBoard Files (*.buf)", "Enter filename to save image file to" })
choose(datadir() .. "/whole")
check.eq({ dialog(), text(1370) }, { "BUF_SAVE", whole })
check.eq(fields(), { "0", "4", "0", "0", "255", "319" })
local hints = {
  [kFirst] = "Start Frame Range:0 to 4", [kLast] = "End Frame Range:0 to 4", [kTop] = "Upper left Row Range:0 to 255",
  [kLeft] = "Upper Left Column Range:0 to 319", [kBottom] = "Lower Right Row Range:0 to 255", [kRight] = "Lower Right Column Range:0 to 319",
}
for id, hint in pairs(hints) do
  set(id, text(id))
  check.eq(status(), hint)
end
local mark = check.mark()
press(1)
check.eq({ dialog(), box() }, { "BUFFER" })
check.seen_in_order("status", { " Wait - Storing frames to disk from Buffer Board." }, mark)
check.holds(status(), "Saved whole.buf: 5 frames")
local bytes = readfile(whole)
check.eq(#bytes, 512 + 5 * 2 * width * height)
check.eq({ word(bytes, 64), word(bytes, 66), word(bytes, 68) }, { 3, 2, 0 }, "Frames of A and B")
check.eq({ word(bytes, 88), word(bytes, 90), word(bytes, 92) }, { 1, 0, 0 }, "Skip of A and B")
check.eq({ word(bytes, 2), word(bytes, 4), word(bytes, 6), word(bytes, 50), word(bytes, 52) }, { width, height, 2, 255, 319 })

-- Each replayed frame is the file's.
check(kReplay, true)
press(kPause)
for frame = 0, 4 do
  scroll(kBar, frame)
  for _, place in ipairs { { 0, 0 }, { 319, 0 }, { 17, 200 }, { 319, 255 } } do
    local at = 512 + 2 * (frame * width * height + place[2] * width + place[1])
    check.eq(pixel(place[1], place[2]), (string.unpack("<i2", bytes, at + 1)), "frame " .. frame)
  end
end
check(kReplay, false)

-- ---- A rectangle of two frames, packed

press(kSave)
choose(datadir() .. "/part.buf")
for id, value in pairs { [kFirst] = "1", [kLast] = "2", [kTop] = "10", [kLeft] = "20", [kBottom] = "12", [kRight] = "23" } do set(id, value) end
press(1)
check.eq({ dialog(), box() and box().text }, { "BUFFER" })
local part = readfile(datadir() .. "/part.buf")
check.eq(#part, 512 + 2 * 2 * 12)
local row_bytes = {}
for frame = 1, 2 do
  for row = 10, 12 do
    local at = 512 + 2 * (frame * width * height + row * width + 20)
    row_bytes[#row_bytes + 1] = bytes:sub(at + 1, at + 8)
  end
end
check.eq(part:sub(513), table.concat(row_bytes))

-- It is an image file as any other.
press(2)
drop(whole)
check.eq({ state("ViewingFile"), state("ImageHeader.FrameCount"), box() }, { 1, 5 })
check.eq(pixel(17, 200), (string.unpack("<i2", bytes, 512 + 2 * (200 * width + 17) + 1)))
key("F2")

-- ---- Loaded: frames 2 to 5 go into the slots 2 to 5, and four frames count

files.image(datadir() .. "/seven.buf", { width = width, height = height, frames = 7 }, 7, function(frame) return 2000 + frame end)
command(103)
press(1360)
press(kLoad)
check.eq({ file().title, status() }, { "Open File", "Select image file to view" })
choose(datadir() .. "/seven.buf")
check.eq(dialog(), "BUF_LOAD")
check.eq(fields(true), { "0", "6", "0", "0", "255", "319", "0" })
hints = {
  [kFirst] = "Start Frame range 0 - 6", [kLast] = "End Frame range 0 - 6", [kTop] = "Upper row range 0 - 255",
  [kLeft] = "Upper Column range 0 - 319", [kBottom] = "Lower Row range 1 - 255", [kRight] = "Lower right col range 1 - 319",
  [kLoadAt] = "Starting Image frame range 0 - 63",
}
for id, hint in pairs(hints) do
  set(id, text(id))
  check.eq(status(), hint)
end
set(kFirst, "2")
set(kLast, "5")
mark = check.mark()
press(1)
check.seen("status", { text = " Wait - Loading frames from disk to Buffer Board memory." }, mark)
check.eq({ dialog(), box(), state("FramesInBuffer"), state("HostFrameNext"), text(kStored) }, { "BUFFER", nil, 4, 4, "4" })
check(kReplay, true)
press(kPause)
for frame = 2, 3 do
  scroll(kBar, frame)
  check.eq(pixel(9, 9), 2000 + frame)
end
check(kReplay, false)

-- The place counts on, held to the store.
press(kLoad)
choose(datadir() .. "/seven.buf")
set(kLoadAt, "3")
press(1)
check.eq({ state("BufferLoadAt"), state("FramesInBuffer"), state("HostFrameNext") }, { 3, 10, 10 })
press(kLoad)
choose(datadir() .. "/seven.buf")
set(kLoadAt, "1000")
press(1)
check.eq({ state("FramesInBuffer"), state("HostFrameNext") }, { 64, 64 })

-- ---- What doesn't fit is refused when the store is asked, and nothing changes

local function transfer()
  local values = {}
  for _, name in ipairs { "FirstFrame", "LastFrame", "RectTop", "RectLeft", "RectBottom", "RectRight", "LoadAt" } do
    values[#values + 1] = state("Buffer" .. name)
  end
  return values
end
local chosen_before = transfer()
check.eq(chosen_before, { 0, 6, 0, 0, 255, 319, 1000 })
files.image(datadir() .. "/wide.buf", { width = 400, height = 100, frames = 1 }, 1, function() return 1 end)
press(kLoad)
choose(datadir() .. "/wide.buf")
check.eq(fields(true), { "0", "0", "0", "0", "99", "399", "0" })
press(1)
check.answer_box("ICP-PCI frame grabber error", "ok", "Buffer Board Error")
check.eq({ dialog(), state("FramesInBuffer"), state("HostFrameNext") }, { "BUFFER", 64, 64 })
check.eq(transfer(), chosen_before, "range, rectangle and place of the last load")

-- ---- Each refusal of the fields, one after the other

press(kLoad)
choose(datadir() .. "/seven.buf")
local numbers = {
  { kFirst, "Start frame must be 0 to # of frames in buffer." }, { kLast, "End Frame must be greater than or equal to Start Frame." },
  { kTop, "Upper row must be an integer." }, { kLeft, "Left column must be an integer." },
  { kBottom, "Lower row must be an integer." }, { kRight, "Right column must be an integer." },
  { kLoadAt, "Right column must be an integer." },
}
for _, row in ipairs(numbers) do
  local before = text(row[1])
  set(row[1], "none")
  press(1)
  check.answer_box(row[2], "ok", "Not a valid Number")
  check.eq({ text(row[1]), dialog() }, { before, "BUF_LOAD" })
end
local rows_refused = "Upper row must be a # less than the lower row."
local columns_refused = "Left column must be a # less than the right column."
local frames_refused = "End Frame must be greater than or equal to Start Frame."
local pairs_of = {
  { kTop, kBottom, "200", "100", rows_refused }, { kTop, kBottom, "0", "256", rows_refused }, { kTop, kBottom, "-1", "5", rows_refused },
  { kLeft, kRight, "5", "4", columns_refused }, { kLeft, kRight, "0", "320", columns_refused },
  { kFirst, kLast, "3", "2", frames_refused }, { kFirst, kLast, "0", "7", frames_refused }, { kFirst, kLast, "-1", "3", frames_refused },
}
for _, row in ipairs(pairs_of) do
  local before = { text(row[1]), text(row[2]) }
  set(row[1], row[3])
  set(row[2], row[4])
  press(1)
  check.answer_box(row[5], "ok")
  check.eq({ text(row[1]), text(row[2]), dialog() }, { before[1], before[2], "BUF_LOAD" }, row[5])
end
press(2)
check.eq({ dialog(), state("FramesInBuffer") }, { "BUFFER", 64 })

press(kSave)
choose(datadir() .. "/never.buf")
numbers = {
  { kTop, "Upper row is an invalid number." }, { kLeft, "Left column is an invalid number." },
  { kBottom, "Lower row is an invalid number." }, { kRight, "Right column is an invalid number." },
}
for _, row in ipairs(numbers) do
  set(row[1], "")
  press(1)
  check.answer_box(row[2], "ok", "Not a valid Number")
end
press(2)
check.eq(readfile(datadir() .. "/never.buf"), nil)

-- A file that has gone while its dialog was open.
press(kLoad)
choose(datadir() .. "/wide.buf")
os.remove(datadir() .. "/wide.buf")
press(1)
check.answer_box("Failed to open file\n" .. datadir() .. "/wide.buf", "ok", "Read Image Header Error")
check.eq(dialog(), "BUF_LOAD")
press(2)
press(2)

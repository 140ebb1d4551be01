-- Image math as an operator without a camera does it: the dialog's fields, each refusal and failure, what is written, what stays as it was.
local check = require "check"
local files = require "files"
local unchanged = require "unchanged"

local data = datadir()
local kConstant1, kFrame1, kConstant2, kFrame2, kConstant3, kResult, kBrowse = 701, 702, 704, 705, 706, 707, 111
local first, second, result = data .. "/first.seq", data .. "/second.img", data .. "/result.img"
local function count(frame, x, y) return 1000 * (frame + 1) + 10 * y + x end
files.image(first, { width = 8, height = 4, frames = 3, low = -5, high = 4000 }, 3, count)
files.image(second, { width = 8, height = 4, low = 10, high = 9000 }, 1, function(_, x, y) return 8 * y + x end)

local function fields()
  return { text(kConstant1), text(kFrame1), text(kConstant2), text(kFrame2), text(kConstant3), text(kResult) }
end
local function fill(c1, frame1, c2, frame2, c3, name)
  for id, value in pairs { [kConstant1] = c1, [kFrame1] = frame1, [kConstant2] = c2, [kFrame2] = frame2, [kConstant3] = c3, [kResult] = name } do
    set(id, value)
  end
end
local function samples(path)
  local bytes, list = assert(readfile(path)), {}
  for at = 513, #bytes, 2 do list[#list + 1] = string.unpack("<i2", bytes, at) end
  return list
end
local function header(path) return readfile(path):sub(1, 512) end
-- Ok is refused by a box with a sound, and the dialog stays.
local function refused(box_text, caption)
  local mark = check.mark()
  press(1)
  check.eq(box() and box().icon, "exclamation", box_text)
  check.answer_box(box_text, "ok", caption)
  check.eq(#check.lines("beep", mark + 1), 1, box_text)
  check.eq(dialog(), "IMGMATH")
end

-- --- Opening: without keys nothing is left in, and everything is 0.
answer("ok")
local before = unchanged.snapshot()
command(162)
check.eq(dialog(), "IMGMATH")
check.eq(fields(), { "0.000", "", "0.000", "", "0.000", "" })
press(2)
check.eq(dialog(), nil)
unchanged.expect(before, unchanged.snapshot())

-- With keys; a text that is no number counts as 0.
local ini = readfile(data .. "/kelvo.ini")
files.write(data .. "/kelvo.ini", ini .. "\n[ImageMath]\nConstant1=1.23456\nFrame1=" .. first .. "\nConstant2=none\nFrame2=b.img\nConstant3=-2\nResult=c.img\n")
before = unchanged.snapshot()
command(162)
check.eq(fields(), { "1.235", first, "0.000", "b.img", "-2.000", "c.img" })
fill("7", "a", "8", "b", "9", "c")
cancel()
check.eq(dialog(), nil)
unchanged.expect(before, unchanged.snapshot(), nil, { StatusText = "after the window's own button the hint stays" })
files.write(data .. "/kelvo.ini", ini)

-- --- Browse fills the name that was left last: a constant stands for its frame.
command(162)
local function browse(expected)
  press(kBrowse)
  check.eq(file().filters[1], "Image Files (*.img)")
  choose(second)
  check.eq(text(expected), second)
end
browse(kFrame1)
for _, pair in ipairs { { kConstant2, kFrame2 }, { kConstant3, kResult }, { kConstant1, kFrame1 }, { kFrame2, kFrame2 }, { kResult, kResult }, { kFrame1, kFrame1 } } do
  set(pair[1], pair[1] == pair[2] and "x" or "1")
  browse(pair[2])
end
press(kBrowse)
cancel()
check.eq(text(kFrame1), second)

-- --- What won't do.
for number, id in ipairs { kConstant1, kConstant2, kConstant3 } do
  fill("1", first, "1", second, "1", result)
  for _, wrong in ipairs { "", "one", "nan", "inf", "1e39", "." } do
    set(id, wrong)
    refused("Invalid constant " .. number, "Kelvo message")
    check.eq(text(id), "0.000")
  end
end
fill("1", first, "1", second, "0", "")
refused("Invalid result file name!", "File Error")
set(kResult, "  ")
refused("Invalid result file name!", "File Error")
-- A source can't be the result, by any name; the question about writing over it doesn't come.
os.execute(("ln -sf '%s' '%s/link.img'; ln -f '%s' '%s/hard.img'"):format(first, data, second, data))
for _, name in ipairs { first, "first.SEQ", data .. "/link.img", data .. "/hard.img" } do
  set(kResult, name)
  refused("Invalid result file name!", "File Error")
end
for _, name in ipairs { data .. "/gone/result.img", data } do
  set(kResult, name)
  press(1)
  if box().caption == "Add Extension?" then answer("no") end
  check.answer_box("Unable to create result file!", "ok", "File Error")
  check.eq(dialog(), "IMGMATH")
end

-- --- The extension is asked for, and added or not.
fill("0", "", "0", "", "40000", data .. "/plain")
press(1)
check.eq(box().icon, "question")
check.answer_box("Add .img as file extension?", "no", "Add Extension?")
check.eq({ dialog(), box() }, {})
local side = state("Hactive") * state("Vactive")
check.eq(#samples(data .. "/plain"), side)
check.eq(samples(data .. "/plain")[side], -25536)  -- 40000 - 65536
check.eq(status(), side .. " samples wrapped")
check.eq(readfile(data .. "/plain.img"), nil)
command(162)
check.eq(fields(), { "0.000", "", "0.000", "", "0.000", "" })
fill("0", "", "0", "", "-7.9", data .. "/plain.tif")
press(1)
check.answer_box("Add .img as file extension?", "yes", "Add Extension?")
check.eq(samples(data .. "/plain.tif.img")[1], -7)
check.holds(status(), "Saved plain.tif.img: 1 frame, ")
for _, name in ipairs { "/upper.IMG", "/other.seq", "/third.Buf" } do
  command(162)
  fill("0", "", "0", "", "1", data .. name)
  press(1)
  check.eq({ dialog(), box() }, {}, name)
  check.eq(samples(data .. name)[1], 1)
end

-- --- A sequence and an image: the shorter one repeats its last frame; the range spans both.
command(162)
fill("1", first, "-0.5", second, "0.25", result)
press(1)
check.eq({ dialog(), box() }, {})
check.holds(status(), "Saved result.img: 3 frames, ")
check.eq({ string.unpack("<i2i2", header(result), 113) }, { -5, 9000, 117 })
check.eq(string.unpack("<I4", header(result), 43), 1)  -- FrameCount
local got = samples(result)
check.eq(#got, 3 * 32)
for frame = 0, 2 do
  for place = 0, 31 do
    local exact = count(frame, place % 8, place // 8) - 0.5 * place + 0.25
    check.eq(got[32 * frame + place + 1], math.floor(exact), "frame " .. frame .. " place " .. place)
  end
end

-- --- No to the question leaves all as it was; so does No twice, and Cancel.
before = unchanged.snapshot()
command(162)
fill("1", first, "0", "", "0", result)
for _ = 1, 2 do
  press(1)
  check.eq({ box().icon, box().default }, { "question", "no" })
  check.answer_box("Result file already exists!\nWrite over it?", "no", "Overwrite file?")
  check.eq({ dialog(), fields() }, { "IMGMATH", { "1", first, "0", "", "0", result } })
end
press(2)
unchanged.expect(before, unchanged.snapshot())
check.eq(samples(result), got)
command(162)
fill("1", first, "0", "", "0", result)
press(1)
answer("yes")
check.eq({ dialog(), box() }, {})
check.eq(samples(result)[32], count(0, 7, 3))

-- --- Each failure: its text, its caption, the dialog stays, and files and state are as before.
files.write(data .. "/short.img", ("\0"):rep(100))
files.write(data .. "/cut.img", header(second) .. "\0")
before = unchanged.snapshot()
local failures = {
  { "gone.img", "Failure to open %s file!", "File Error!" },
  { "short.img", "Failure to read %s ImageHeader!", "File Read Error!" },
  { "cut.img", "Failure to read %s image data!", "File Read Error!" },
}
command(162)
for _, each in ipairs(failures) do
  for number = 1, 2 do
    local bad = data .. "/" .. each[1]
    fill("1", number == 1 and bad or second, "1", number == 2 and bad or second, "0", data .. "/none.img")
    refused(each[2]:format("Source" .. number), each[3])
  end
end
for number = 1, 2 do  -- there is no camera
  fill("1", number == 1 and "" or second, "1", number == 2 and "" or second, "0", data .. "/none.img")
  refused("Failure to read Source" .. number .. "!", "Data Read Error!")
end
local words = { "Source1", "Source2", "Result" }
for number, word in ipairs(words) do
  fill("1", second, "1", second, "0", data .. "/none.img")
  sim.fault("memory", number)
  refused("Failure to allocate && lock memory for " .. word .. "!", "Global Memory Error!")
  sim.fault("memory", 0)
end
press(2)
unchanged.expect(before, unchanged.snapshot())
check.eq(readfile(data .. "/none.img"), nil)

-- --- An unused name is never looked at.
command(162)
fill("0", data .. "/gone.img", "2", second, "0", result)
press(1)
answer("yes")
check.eq({ dialog(), box() }, {})
check.eq(samples(result)[32], 62)

-- --- Escape stops a run of several frames: told, with what was written beside, and the former result stands.
local former = readfile(result)
before = unchanged.snapshot()
command(162)
fill("1", first, "0", "", "0", result)
sim.fault("escape", 3)  -- the first look comes before the first frame
press(1)
answer("yes")
check.eq({ box().icon, box().caption }, { "information", "Image Math" })
local where = "\nWhat was written stays in " .. data .. "/.result.img.new"
local stopped = tonumber(box().text:match("^Stopped before frame (%d)%."))
check.answer_box("Stopped before frame " .. stopped .. "." .. where, "ok")
check.eq(#readfile(data .. "/.result.img.new"), 512 + (stopped - 1) * 64)
check.eq({ dialog(), readfile(result) == former }, { "IMGMATH", true })
press(2)
unchanged.expect(before, unchanged.snapshot(), { ["file .result.img.new"] = "what was written" })

-- --- Unlike frames: single ones in memory order, several fail at the second, and what was written stays beside.
files.image(data .. "/small.img", { width = 4, height = 6 }, 1, function() return 5 end)
command(162)
fill("1", first, "1", data .. "/small.img", "0", data .. "/unlike.img")
refused("Failure to read Source1 (Frame 2) image data!\nWhat was written stays in " .. data .. "/.unlike.img.new", "File Read Error!")
check.eq(#readfile(data .. "/.unlike.img.new"), 512 + 2 * 16)
fill("1", second, "1", data .. "/small.img", "0", data .. "/unlike.img")
press(1)
check.eq({ dialog(), box() }, {})
check.eq({ #samples(data .. "/unlike.img"), samples(data .. "/unlike.img")[16] }, { 16, 20 })

-- --- With a file on view a source without a name is its frame; the picture and its header stay.
drop(first)
command(114)
check.eq(state("CurrentFrame"), 1)
local title_before, low = title(), state("ImageHeader.DisplayLow")
before = unchanged.snapshot()
command(162)
fill("1", "", "1", second, "0", data .. "/viewed.img")
press(1)
check.eq({ dialog(), box() }, {})
got = samples(data .. "/viewed.img")
for place = 0, 31 do check.eq(got[place + 1], count(1, place % 8, place // 8) + place) end
check.eq({ title(), state("ImageHeader.DisplayLow"), pixel(3, 2) }, { title_before, low, count(1, 3, 2) })
check.eq({ string.unpack("<i2i2", header(data .. "/viewed.img"), 113) }, { 10, 9000, 117 })  -- the screen adds no range
unchanged.expect(before, unchanged.snapshot(), { StatusText = "what was written", ["file viewed.img"] = "the result" })
-- Nothing in use: zeros of the size on view.
command(162)
fill("0", "", "0", "", "0", data .. "/zeros.img")
press(1)
check.eq({ #readfile(data .. "/zeros.img"), samples(data .. "/zeros.img")[32] }, { 512 + 64, 0 })

-- --- Frames behind frame headers, floats, and their result on view.
files.write(data .. "/headed.seq", files.header { width = 2, height = 1, prefix = 80, frames = 2 } .. ("h"):rep(80) .. string.pack("<i2i2", 1, 2)
  .. ("h"):rep(80) .. string.pack("<i2i2", 3, 4))
files.write(data .. "/float.flt", files.header { width = 2, height = 1, sample_bytes = 4, data_type = 8 } .. string.pack("<ff", 1.5, -0.7))
command(162)
fill("1", data .. "/headed.seq", "10", data .. "/float.flt", "0", data .. "/mixed.seq")
press(1)
check.eq({ dialog(), box() }, {})
check.eq(samples(data .. "/mixed.seq"), { 21, 2, 23, 4 })
drop(data .. "/mixed.seq")
check.eq({ state("ImageHeader.FrameCount"), pixel(0, 0) }, { 2, 21 })

-- --- Help, by its button.
command(162)
press(9)
check.eq((help()), 372)
screenshot("image_math.png")
press(2)

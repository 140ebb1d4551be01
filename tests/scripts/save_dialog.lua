-- The SAVE dialog as an operator works it: patterns, lists, a directory that is made, each refusal and each question with each answer.
local check = require "check"
local files = require "files"
local dir = datadir()
local work = dir .. "/work"
answer("ok")
if dialog() then press(2) end

local kName, kPath, kFiles, kDirectories, kFrames, kBegin = 1460, 1462, 1464, 1466, 1488, 1486
local kMultiFrame, kAverage, kDeviation = 1784, 1002, 1471
local kImg, kSeq, kAny, kBuf = 1468, 1470, 1484, 1480

drop(files.image(dir .. "/view.img", { width = 16, height = 8 }, 1, function(_, x, y) return 100 * y + x end))
check.eq(state("ViewingFile"), 1)

local function open_images() command(106) check.eq(dialog(), "SAVE") end
local function open_sequences() command(108) check.eq(dialog(), "SAVE") end
local function stays(what)
  check.eq({ box() and box().text, dialog() }, { nil, "SAVE" }, what)
end

-- A directory is made on the way: first refused, then agreed to.
open_images()
set(kName, "work/first")
press(1)
check.answer_box("work/", "no", "Create new directory?")
stays("no")
check.eq({ text(kPath), text(kName) }, { dir, "work/first" })
press(1)
check.eq(box().buttons, { "yes", "no" })
check.answer_box("work/", "yes", "Create new directory?")
check.eq({ box(), dialog() }, {})
check.eq({ #readfile(work .. "/first.img"), state("FilePathBuf") }, { 512 + 2 * 16 * 8, work .. "/first.img" })
for _, name in ipairs { "s7.seq", "b.buf", "plain" } do files.write(work .. "/" .. name, "x") end

-- One that can't be made.
open_images()
check.eq({ text(kPath), text(kName), text(1608) }, { work, "*.img", state("Description") })
check.eq({ checked(1600), checked(1602), enabled(1602) }, { true, false, false })
set(kName, "plain/second")
local mark = check.mark()
press(1)
check.answer_box("plain/", "yes", "Create new directory?")
check.answer_box("plain/", "ok", "Unable to make new directory!")
check.eq(#check.lines("beep", mark + 1), 1)
stays("can't be made")
check.eq(text(kPath), work)

-- Each pattern refills the list; what isn't for images is disabled.
check.eq({ enabled(kMultiFrame), enabled(kBegin), enabled(kFrames), enabled(kAverage), enabled(kDeviation) },
  { false, false, true, false, false })
for _, row in ipairs { { kSeq, { "s7.seq" } }, { kBuf, { "b.buf" } }, { kAny, { "b.buf", "first.img", "plain", "s7.seq" } },
                       { kImg, { "first.img" } } } do
  press(row[1])
  check.eq(items(kFiles), row[2], "pattern " .. row[1])
  check.eq({ checked(kImg), checked(kSeq), checked(kAny), checked(kBuf) },
    { row[1] == kImg, row[1] == kSeq, row[1] == kAny, row[1] == kBuf })
end
set(kName, "*.S*")
press(1)
check.eq(items(kFiles), { "s7.seq" })
set(kName, "f?rst.img")
press(1)
stays("a question mark does nothing")
check.eq({ items(kFiles), text(kName) }, { { "s7.seq" }, "f?rst.img" })

-- Directories by selection and Ok, up and down; the name in the field waits.
set(kName, "third")
check.eq(items(kDirectories), { "[..]" })
pick(kDirectories, 0)
press(1)
check.eq({ text(kPath), text(kName) }, { dir, "third" })
for index, name in ipairs(items(kDirectories)) do
  if name == "[work]" then pick(kDirectories, index - 1) end
end
press(1)
check.eq(text(kPath), work)

-- Frames to average, images: both texts, a beep each.
for _, row in ipairs { { "", "0 <= Number of frames to average <= 9999" }, { "two", "0 <= Number of frames to average <= 9999" },
                       { "0", "1 <= Number of frames to average <= 1000" }, { "1001", "1 <= Number of frames to average <= 1000" } } do
  set(kFrames, row[1])
  mark = check.mark()
  press(1)
  check.answer_box(row[2], "ok", "Kelvo message")
  check.eq(#check.lines("beep", mark + 1), 1)
  stays(row[1])
end
set(kFrames, "1000")
set(kName, "q:\\third")
press(1)
check.answer_box("Invalid drive letter in name.", "ok", "File Error")
stays("drive")

-- Cancel: the directory of the opening, and nothing was stored.
press(2)
check.eq({ dialog(), state("FramesToAverageImage") }, { nil, 1 })
open_images()
check.eq(text(kPath), work)
press(9)
check.eq(help(), 257)
cancel()
check.eq(dialog(), nil)

-- The list gives the name; an image that stands there is asked for when it is saved.
open_images()
pick(kFiles, 0)
check.eq(text(kName), "first.img")
press(1)
check.answer_box(work .. "/first.img\nFile already exists, replace it?", "no", "Kelvo message")
check.eq({ box(), dialog() }, {})

-- A name with the prefix of the directory above, as old names have it, stays in this one; without an ending it gets that of the pattern.
open_images()
press(kAny)
set(kName, "..\\old")
press(1)
check.eq({ box(), dialog(), state("FilePathBuf") }, { nil, nil, work .. "/old" })
open_images()
set(kName, "../up.x")
press(1)
check.eq({ box(), state("FilePathBuf") }, { nil, dir .. "/up.x" })

-- Sequences: a name that stands there, both answers; each number that is refused.
open_sequences()
check.eq({ enabled(kMultiFrame), enabled(kBegin), enabled(kFrames), enabled(kAverage), enabled(kDeviation) },
  { true, true, true, false, false })
check.eq({ text(kName), text(kBegin), text(kFrames), checked(kMultiFrame) }, { "*.seq", "0", "1", false })
set(kName, "work/s7")
press(1)
check.eq(box().default, "cancel")
check.answer_box("File already exists, replace it?", "cancel", "Kelvo message")
stays("cancelled")
for _, row in ipairs { { kFrames, "x", "0 <= Number of frames to average <= 9999" }, { kFrames, "1001", "1 <= Number of frames to average <= 1000" },
                       { kFrames, "5" },
                       { kBegin, "", "0 <= Beginning sequence number <= 9999" }, { kBegin, "-1", "0 <= Beginning sequence number <= 9999" },
                       { kBegin, "10000", "0 <= Beginning sequence number <= 9999" } } do
  set(row[1], row[2])
  if row[3] then
    press(1)
    check.answer_box("File already exists, replace it?", "ok", "Kelvo message")
    check.answer_box(row[3], "ok", "Kelvo message")
    stays(row[2])
    check.eq(text(kPath), dir, "the name is still meant from here")
  end
end
check.eq({ state("SeqNumber"), state("SeqNumberStart"), state("FramesToAverageSeq") }, { 0, 0, 5 })
set(kBegin, "9999")
check(kMultiFrame, true)
wait(1500)  -- settings reach the disk within a second
check.holds(readfile(dir .. "/kelvo.ini"), "MultiFrame=1")
check(kMultiFrame, false)
wait(1500)  -- settings reach the disk within a second
check.holds(readfile(dir .. "/kelvo.ini"), "MultiFrame=0")
press(1)
check.answer_box("File already exists, replace it?", "ok", "Kelvo message")
check.eq({ box(), dialog() }, {})
check.eq({ state("SeqFilePath"), state("SeqNumber"), state("SeqNumberStart"), state("FramesToAverageSeq") },
  { work .. "/s.seq", 9999, 9999, 5 })

-- The numbered file that stands there: No moves on to the next number.
files.write(work .. "/s9999.seq", "kept")
command(109)
answer("yes")
check.answer_box(work .. "/s9999.seq\nFile already exists, replace it?", "no", "Kelvo message")
check.eq({ box(), state("SeqNumber"), readfile(work .. "/s9999.seq") }, { nil, 10000, "kept" })
command(109)
answer("yes")
check.eq({ box(), state("SeqNumber") }, { nil, 10001 })
check.eq(#readfile(work .. "/s10000.seq"), 512 + 2 * 2 * 16 * 8)
open_sequences()
set(kName, "s")
set(kBegin, "9999")
press(1)
command(109)
answer("yes")
check.answer_box(work .. "/s9999.seq\nFile already exists, replace it?", "yes")
check.eq({ box(), state("SeqNumber") }, { nil, 10000 })
check.eq(#readfile(work .. "/s9999.seq"), 512 + 3 * 2 * 16 * 8, "each save counts one frame more of the file on view")

-- A stem of seven takes one digit.
open_sequences()
set(kName, "abcdefg")
set(kBegin, "9")
press(1)
command(109)
answer("yes")
check.eq({ box(), state("SeqNumber") }, { nil, 10 })
command(109)
answer("yes")
check.answer_box(work .. "/abcdefg.seq\nSequence number, 10, too large for given base filename", "ok", "Kelvo message")
check.eq({ box(), state("SeqNumber") }, { nil, 10 })

-- For the eye.
open_sequences()
screenshot("save.png")
press(2)

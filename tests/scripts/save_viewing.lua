-- Saving a stored frame: what is saved are the pixels on the screen, with the cursor off or on, under the header of the file on view.
local check = require "check"
local files = require "files"
local dir = datadir()
answer("ok")

local source = files.image(dir .. "/five.seq", { width = 30, height = 20, frames = 5 }, 5,
  function(frame, x, y) return 1000 * frame + 40 * y + x end)
drop(source)
command(2000)
set(1001, "0")
press(1)
mouse(100, 200)
command(151)
check.eq(state("ImageCursorOn"), 1)

command(106)
set(1460, "copy")
press(1)
check.eq(box(), nil)
local bytes = readfile(dir .. "/copy.img")
check.eq(#bytes, 512 + 2 * 600)
check.eq((string.unpack("<I4", bytes, 43)), 5, "the file's own count of frames")
command(151)
for y = 0, 19 do
  for x = 0, 29 do
    local count = string.unpack("<i2", bytes, 513 + 2 * (30 * y + x))
    check.eq(count, pixel(x, y))
    check.eq(count, 40 * y + x, "the cursor isn't in it")
  end
end

-- A file of five frames: the new one lies behind five empty places.
command(108)
set(1460, "abc")
set(1486, "0")
press(1)
command(109)
check.answer_box("YOU ARE VIEWING A FILE!\nIt will be saved as\n" .. dir .. "/abc0.seq\nDo you want to do this?", "no")
command(109)
check.answer_box("YOU ARE VIEWING A FILE!\nIt will be saved as\n" .. dir .. "/abc0.seq\nDo you want to do this?", "yes")
check.eq(box(), nil)
bytes = readfile(dir .. "/abc0.seq")
check.eq(#bytes, 512 + 6 * 1200)
check.eq((string.unpack("<I4", bytes, 43)), 6)
check.eq(bytes:sub(513, 512 + 5 * 1200), string.rep("\0", 5 * 1200))
check.eq((string.unpack("<i2", bytes, 513 + 5 * 1200 + 2)), 1)

-- Names of sequences.
local function name(typed)
  command(108)
  set(1460, typed)
  press(1)
end
name("123")
check.answer_box("A sequence name must contain at least\none numeric letter.", "ok", "Kelvo message")
check.eq(state("SeqFilePath"), dir .. "/abc.seq")
name("abcdefgh")
check.answer_box("A sequence name must be 7 or\nfewer characters long.", "ok", "Kelvo message")
name("a123")
check.eq(state("SeqFilePath"), dir .. "/a.seq")
name("abc")
check.eq(state("SeqFilePath"), dir .. "/abc.seq")

-- Another directory, made on the way; the next dialog opens there.
command(106)
set(1460, "new/there")
press(1)
check.answer_box("new/", "yes", "Create new directory?")
check.eq(box(), nil)
check.eq(state("FilePathBuf"), dir .. "/new/there.img")
check.eq(#readfile(dir .. "/new/there.img"), 512 + 1200)
command(106)
check.eq({ text(1462), items(1464), items(1466) }, { dir .. "/new", { "there.img" }, { "[..]" } })
pick(1466, 0)
press(1)
check.eq(text(1462), dir)
press(2)

-- What can't be made is said.
command(106)
set(1460, "*.seq")
press(1)
check.eq(dialog(), "SAVE")
set(1460, "q:\\x.img")
press(1)
check.answer_box("Invalid drive letter in name.", "ok", "File Error")
press(2)

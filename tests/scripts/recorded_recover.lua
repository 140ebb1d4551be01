-- A recording that wasn't closed is offered to be made whole, once: Yes, No, Cancel, Escape, and what can't be had back.
local check = require "check"
local files = require "files"
local journal = require "journal"
answer("ok")

local dir = datadir()
local question = " wasn't closed when it was recorded.\n\nMake it whole? Each whole frame stays as it is. No shows the file without changing it."

-- As a kill leaves it: four frames and part of a fifth, whose record stands; the header counts none.
local function killed(name)
  local path = journal.sequence(dir .. "/" .. name, journal.numbered { 1, 2, 3, 7 })
  local picture, record = journal.frames({ { number = 8 } }, 4)
  journal.append(path, picture:sub(1, 100))
  journal.append(path .. ".frames", record)
  return path
end
local function both(path) return { readfile(path), readfile(path .. ".frames") } end
local function on_view() return { state("ViewingFile"), state("ViewFilePath"), pixel(0, 0), status(), title(), text("player", 21100), listdir(dir) } end

-- Another recording is on view before; what is told of it stays.
drop(journal.sequence(dir .. "/before.seq", journal.numbered { 1, 3 }, journal.closing(2, 0)))
check.eq(text("player", 21100), "1 gap...")

-- Cancel opens nothing, whichever way the file comes, and asks again.
local path = killed("run.seq")
local files_before, view_before = both(path), on_view()
local ways = {
  function() drop(path) end,
  function() command(107) choose(path) end,
  function() command(113) choose(path) end,
}
for number, open in ipairs(ways) do
  open()
  check.eq({ box().text, box().caption, box().buttons }, { "run.seq" .. question, "Kelvo message", { "yes", "no", "cancel" } }, "way " .. number)
  answer("cancel")
  check.eq({ on_view(), both(path) }, { view_before, files_before }, "way " .. number)
end

command(2057)
check.eq({ dialog(), text(21101) }, { "RECORDED", "2 frames, 1 gap, 1 frame lost" })
press(2)

-- Escape while the frames are checked: nothing has changed.
drop(path)
sim.fault("escape", true)
answer("yes")
sim.fault("escape", false)
check.eq({ box(), on_view(), both(path) }, { nil, view_before, files_before })

-- No shows it as it is, and isn't asked again.
drop(path)
answer("no")
check.eq({ state("CurrentFrame"), text("player", 20202), both(path) }, { 0, "frame 0 of 4", files_before })
check.holds(status(), "not closed, 1 gap, 3 frames lost")
drop(path)
check.eq(box(), nil)
command(2057)
check.eq(text(21102), "It wasn't closed: the program that recorded it was stopped.")
press(2)

-- Yes makes it whole: the part of a frame and its record go, the header counts, the journal is closed.
path = killed("whole.seq")
local killed_bytes = both(path)
drop(path)
answer("yes")
check.eq({ box(), state("ViewFilePath"), text("player", 20202) }, { nil, path, "frame 0 of 4" })
check.holds(status(), "msec   1 gap, 3 frames lost")
local sequence, records = readfile(path), readfile(path .. ".frames")
check.eq(#sequence, 512 + 4 * (80 + 128))
check.eq(string.unpack("<I4", sequence, 43), 4)
check.eq(sequence:sub(513), killed_bytes[1]:sub(513, #sequence))
check.eq(records, killed_bytes[2]:sub(1, 64 + 4 * 64) .. journal.closing(4, 6))
command(2057)
check.eq(text(21102), "It was cut short, and made whole afterwards.")
press(2)
drop(path)
check.eq(box(), nil, "it is whole")

-- Frames that don't fit their checksums stay, and are told; so is a disk that refuses. The file is shown.
path = dir .. "/bad.seq"
local frames = journal.numbered { 1, 2, 3 }
frames[2].crc = 99
journal.sequence(path, frames)
drop(path)
answer("yes")
check.answer_box("bad.seq was made whole, but 1 frame doesn't fit its checksum.", "ok", "Kelvo message")
check.eq({ text("player", 20202), readfile(path .. ".frames"):sub(-64) }, { "frame 0 of 3", journal.closing(3, 6) })
command(114)
check.holds(status(), "checksum wrong")

path = killed("full.seq")
killed_bytes = both(path)
drop(path)
sim.fault("disk full", true)
answer("yes")
sim.fault("disk full", false)
check.answer_box("full.seq couldn't be made whole: the disk refuses the repair.", "ok", "Kelvo message")
check.eq(text("player", 20202), "frame 0 of 4")

-- With the file comes the question, also at a start or in another's hands: OpenStoredFile is one way. Stepping to it asks nothing.
journal.sequence(dir .. "/step1.seq", journal.numbered { 1 }, journal.closing(1, 0))
journal.sequence(dir .. "/step2.seq", journal.numbered { 5, 6 })
command(113)
choose(dir .. "/step1.seq")
command(114)
check.eq({ box(), state("ViewFilePath") }, { nil, dir .. "/step2.seq" })
check.holds(status(), "AllFramesNum:5 ")
check.holds(status(), "not closed, no gaps")

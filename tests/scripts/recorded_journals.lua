-- Whatever lies beside a sequence as its journal, the picture is shown and a clear line says what is wrong.
local check = require "check"
local files = require "files"
local journal = require "journal"
answer("ok")

local kGaps = 21100
local dir = datadir()
local frames = journal.numbered { 1, 2, 3, 5 }
local path = dir .. "/run.seq"
local closing = journal.closing(4, 1)
journal.sequence(path, frames, closing)
local whole = readfile(path .. ".frames")
local head, records = whole:sub(1, 64), whole:sub(65)
local function record(i) return records:sub(64 * i - 63, 64 * i) end

-- The journal as given; each frame is shown, and nothing is asked.
local function viewed(bytes)
  files.write(path .. ".frames", bytes)
  local mark = check.mark()
  drop(path)
  check.eq({ box(), state("ViewingFile"), state("CurrentFrame") }, { nil, 1, 0 })
  local first = status()
  for at = 0, 3 do
    if at > 0 then command(114) end
    check.eq(pixel(7, 7), journal.count(at, 7, 7))
  end
  check.eq(#check.lines("box", mark + 1), 0)
  command(2057)
  check.eq(dialog(), "RECORDED")
  press(2)
  return first
end
local function says(bytes, words, button)
  check.holds(viewed(bytes), words)
  check.eq(text("player", kGaps), button)
end

says(whole, "1 gap, 1 frame lost", "1 gap...")

-- It isn't one, it is damaged, or of another sequence: the frames' own headers tell then.
local frame_header = "FrameNum:0 AllFramesNum:1 Thu Jan  1 00:00:00.000 1970 100.0Hz 2.500msec   "
for _, bytes in ipairs { "", "x", "KVFRAMES", files.noise(5)(1000), ("\0"):rep(200) } do
  says(bytes, frame_header .. "what lies beside it is no journal", "Journal...")
end
says("KVFRAMES" .. string.pack("<I4", 2) .. whole:sub(13), frame_header .. "its journal is of a later version", "Journal...")
says(whole:sub(1, 20) .. "?" .. whole:sub(22), frame_header .. "its journal is damaged", "Journal...")
says("KVFRAMES" .. string.pack("<I4I4", 1, 0xFFFFFFC0) .. whole:sub(17), frame_header .. "its journal is damaged", "Journal...")
says(journal.head(8, 9) .. records, frame_header .. "its journal belongs to another sequence", "Journal...")
says(journal.head(16, 4) .. records, frame_header .. "its journal belongs to another sequence", "Journal...")

-- Too short, too long, torn, and with more behind its end.
says(head .. record(1) .. record(2) .. journal.closing(2, 1), "no gaps; its journal tells of 2 of 4 frames", "No gaps...")
says(head .. closing, frame_header .. "no gaps; its journal tells of 0 of 4 frames", "No gaps...")
says(head .. records:sub(1, 256) .. record(4) .. closing, "1 gap, 1 frame lost; its journal tells of 5 of 4 frames", "1 gap...")
-- Where the end can't be read, it wasn't closed: that is asked once.
files.write(path .. ".frames", head .. record(1) .. ("\1"):rep(64) .. record(3) .. record(4) .. closing)
drop(path)
check.holds(box().text, "run.seq wasn't closed when it was recorded.")
answer("no")
says(head .. record(1) .. ("\1"):rep(64) .. record(3) .. record(4) .. closing, "no gaps; its journal is damaged from frame 1 on", "No gaps...")
says(whole .. "more", "1 gap, 1 frame lost; its journal goes on behind its end", "1 gap...")

-- Of another recording of the same size: the checksums tell.
local other = journal.numbered { 1, 2, 3, 4 }
for i, frame in ipairs(other) do frame.crc = 12345 + i end
says(journal.head(8, 8) .. select(2, journal.frames(other)) .. journal.closing(4, 1), "msec   checksum wrong   no gaps", "No gaps...")

-- Hostile numbers and times.
local hostile = {}
for i = 1, 4 do
  hostile[i] = { number = i == 2 and math.maxinteger or math.mininteger, ns = math.mininteger, utc_ns = i % 2 == 0 and math.maxinteger or math.mininteger,
    ms = 0 / 0, flags = 0x7F, board = 0xFFFFFFFF, ring = 0xFFFFFFFF, passed = 0xFFFFFFFF, mark = 0xFFFFFFFF }
end
viewed(head .. select(2, journal.frames(hostile)) .. journal.closing(4, 99, { board = 0xFFFFFFFF }))
command(2057)
check.eq(text(21102), "It was closed for a reason unknown to this version.")
press(2)
key("Space")
wait(100)
key("Space")

-- Each byte that turns, and each length.
for at = 1, #whole, 13 do
  files.write(path .. ".frames", whole:sub(1, at - 1) .. string.char(whole:byte(at) ~ 0xFF) .. whole:sub(at + 1))
  drop(path)
  check.eq({ pixel(7, 7), box() }, { journal.count(0, 7, 7) })
end

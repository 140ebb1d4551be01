-- Recorded sequences for scripts, made byte by byte as docs/formats.md lays them out: NAME.seq with a header in front of each frame, and its
-- journal NAME.seq.frames.
local files = require "files"

local journal = {}

-- CRC-32C, bit by bit as it is defined.
local kTable = {}
for byte = 0, 255 do
  local rest = byte
  for _ = 1, 8 do rest = rest & 1 == 1 and (rest >> 1) ~ 0x82F63B78 or rest >> 1 end
  kTable[byte] = rest
end
function journal.crc32c(bytes)
  local rest = 0xFFFFFFFF
  for i = 1, #bytes do rest = kTable[(rest ~ bytes:byte(i)) & 0xFF] ~ (rest >> 8) end
  return rest ~ 0xFFFFFFFF
end
assert(journal.crc32c("123456789") == 0xE3069283)

function journal.head(columns, rows, texts)
  local text = ""
  for _, line in ipairs(texts or {}) do text = text .. line .. "\n" end
  local bytes = (64 + #text + 63) // 64 * 64
  local first = "KVFRAMES" .. string.pack("<I4I4I4I4I4I4I4", 1, bytes, 64, 2 * columns * rows, columns, rows, #text) .. string.rep("\0", 24)
  local rest = text .. string.rep("\0", bytes - 64 - #text)
  return first .. string.pack("<I4", journal.crc32c(first .. "\0\0\0\0" .. rest)) .. rest
end

-- frame: number, ns (monotonic), utc_ns, and what isn't 0 of flags, board, ring, passed, mark, crc.
function journal.record(frame)
  local bytes = string.pack("<i8i8i8fI4I4I4I4I4I4I4I4", frame.number or 0, frame.ns or 0, frame.utc_ns or 0, frame.ms or 0, frame.flags or 0,
    frame.board or 0, frame.ring or 0, frame.passed or 0, 0, frame.mark or 0, 0, frame.crc or 0)
  return bytes .. string.pack("<I4", journal.crc32c(bytes))
end

function journal.closing(frames, why, fields)
  fields = fields or {}
  fields.number, fields.flags, fields.mark = frames, 128, why
  return journal.record(fields)
end

local kWidth, kHeight = 8, 8
-- The counts of frame `at`, from 0, at (x, y).
function journal.count(at, x, y) return 5000 + 100 * (at % 100) + 10 * y + x end

function journal.pixels(at)
  local parts = {}
  for y = 0, kHeight - 1 do
    for x = 0, kWidth - 1 do parts[#parts + 1] = string.pack("<i2", journal.count(at, x, y)) end
  end
  return table.concat(parts)
end

local kTimeText = "Thu Jan  1 00:00:00.000 1970\n"

-- The bytes of the frames from first on, each behind its own header, and of their records. frames: a list as journal.record takes it; the
-- pixels' checksum is put in where none is given.
function journal.frames(frames, first)
  local pictures, records = {}, {}
  for i, frame in ipairs(frames) do
    local at = (first or 0) + i - 1
    local pixels = journal.pixels(at)
    frame.crc = frame.crc or journal.crc32c(pixels)
    pictures[i] = string.pack("<z", kTimeText) .. string.pack("<i4i4f", at, frame.number % 0x7FFFFFFF, frame.ms or 0) .. string.rep("\0", 38) .. pixels
    records[i] = journal.record(frame)
  end
  return table.concat(pictures), table.concat(records)
end

-- Both files; closing: nil as a kill leaves them, else the last record.
function journal.sequence(path, frames, closing, texts)
  local pictures, records = journal.frames(frames)
  files.write(path, files.header { width = kWidth, height = kHeight, prefix = 80, rate = 100, frames = closing and #frames or 0 } .. pictures)
  files.write(path .. ".frames", journal.head(kWidth, kHeight, texts) .. records .. (closing or ""))
  return path
end

-- More bytes at a file's end.
function journal.append(path, bytes)
  local file = assert(io.open(path, "ab"))
  assert(file:write(bytes))
  file:close()
end

-- Frames with these numbers by the camera, 10 ms from one to the next number. What is missing between two is the board's.
local kSecond = 1767225600 -- 1 January 2026, 00:00 UTC
function journal.numbered(numbers)
  local frames, last = {}, nil
  for _, number in ipairs(numbers) do
    frames[#frames + 1] = { number = number, ns = number * 10000000, utc_ns = kSecond * 1000000000 + number * 10000000, ms = 2.5, board = last and number - last - 1 or 0 }
    last = number
  end
  return frames
end

-- A time in the system's words, worked out by the machine's own C library.
function journal.time(frame)
  local seconds, ms = frame.utc_ns // 1000000000, frame.utc_ns // 1000000 % 1000
  return os.date("%a %b %e %H:%M:%S", seconds) .. (".%03d"):format(ms) .. os.date(" %Y", seconds)
end

return journal

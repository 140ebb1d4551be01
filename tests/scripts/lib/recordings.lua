-- What the recorder leaves on the disk, taken apart by the layout of docs/formats.md alone.
local check = require "check"

local recordings = { kFrameBytes = 80 + 2 * 320 * 256 }

local kTrigger, kMarked, kClosing = 1, 2, 128

-- The journal beside a sequence: head (its text), records (number, utc, flags, board, ring, passed, mark) and closing.
function recordings.journal(path)
  local bytes = assert(readfile(path .. ".frames"), path)
  check.eq(bytes:sub(1, 8), "KVFRAMES")
  local start, length = string.unpack("<I4", bytes, 13), string.unpack("<I4", bytes, 33)
  local journal = { head = bytes:sub(65, 64 + length), records = {} }
  for at = start + 1, #bytes - 63, 64 do
    local number, time, utc, _, flags, board, ring, passed, _, mark = string.unpack("<i8i8i8fI4I4I4I4I4I4", bytes, at)
    local record = { number = number, time = time, utc = utc, flags = flags, board = board, ring = ring, passed = passed, mark = mark,
      trigger = flags & kTrigger ~= 0, marked = flags & kMarked ~= 0 }
    if flags & kClosing ~= 0 then journal.closing = record else table.insert(journal.records, record) end
  end
  return journal
end

-- The board's numbers of a sequence's frames, by its journal; the sequence holds as many frames, each with that number.
function recordings.numbers(path)
  local bytes, numbers = assert(readfile(path), path), {}
  for place, record in ipairs(recordings.journal(path).records) do
    numbers[place] = record.number
    check.eq(string.unpack("<i4", bytes, 512 + (place - 1) * recordings.kFrameBytes + 35), record.number, "frame " .. place .. " of " .. path)
  end
  check.eq(#bytes, 512 + #numbers * recordings.kFrameBytes, "whole frames in " .. path)
  return numbers
end

-- From one frame to the next by its journal, in ms: the middle one of all steps, so that a camera that was late now and then still has its rate.
function recordings.middle_step(path)
  local records, steps = recordings.journal(path).records, {}
  for i = 2, #records do steps[i - 1] = (records[i].time - records[i - 1].time) / 1e6 end
  table.sort(steps)
  return steps[(#steps + 1) // 2]
end

-- So many numbers, each that much behind the one before.
function recordings.expect_steps(numbers, count, step, what)
  check.eq(#numbers, count, what)
  for i = 2, #numbers do check.eq(numbers[i] - numbers[i - 1], step, (what or "") .. " frame " .. i) end
end

-- The names in a directory that end in .seq.
function recordings.sequences(directory)
  local found = {}
  for _, name in ipairs(listdir(directory)) do
    if name:find("%.seq$") then found[#found + 1] = name end
  end
  return found
end

return recordings

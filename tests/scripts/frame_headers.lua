-- A sequence with a header in front of each frame: which frame, when, with which integration time.
local check = require "check"
local files = require "files"
answer("ok")

local texts = { "Sat Nov 21 12:34:05.250 2026\n", "Sat Nov 21 12:34:05.300 2026\n", "Sat Nov 21 12:34:05.375 2026\n" }
local elapsed = { 0, 3, 65536 + 7 }
local width, height = 12, 6
local parts = { files.header { width = width, height = height, prefix = 80, rate = 20.25 } }
for frame = 0, 2 do
  parts[#parts + 1] = string.pack("<z", texts[frame + 1]) .. string.pack("<i4i4f", frame, elapsed[frame + 1], 1.5 + frame)
    .. string.rep("\0", 38)
  for i = 0, width * height - 1 do parts[#parts + 1] = string.pack("<i2", 1000 * frame + i) end
end
local path = files.write(datadir() .. "/timed.seq", table.concat(parts))
check.eq(#readfile(path), 512 + 3 * (80 + 2 * width * height))

command(113)
choose(path)
check.eq(state("ImageHeader.FrameCount"), 3)
check.eq(state("ImageHeader.ImageHeaderDataOffset"), 80)
for frame = 0, 2 do
  if frame > 0 then command(114) end
  check.eq(state("CurrentFrame"), frame)
  check.eq(pixel(0, 0), 1000 * frame, "the samples begin behind the frame's header")
  check.eq(pixel(width - 1, height - 1), 1000 * frame + width * height - 1)
  -- 28 characters of the time: all but the line feed. Of the elapsed frames the low 16 bits.
  check.holds(status(), string.format("Viewing %s FrameNum:%d AllFramesNum:%d %s 20.2Hz %.3fmsec", path, frame,
    elapsed[frame + 1] % 65536, texts[frame + 1]:sub(1, 28), 1.5 + frame))
end

-- Of an older version the same file has no such headers.
local bytes = readfile(path)
local old = files.write(datadir() .. "/older.img", bytes:sub(1, 40) .. string.pack("<i2", 7) .. bytes:sub(43))
drop(old)
check.eq(state("ImageHeader.ImageHeaderDataOffset"), 0)
check.eq(pixel(0, 0), (string.unpack("<i2", texts[1])))

-- Saving what is seen: one image, a range of frames under numbered names, a rectangle.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()

-- The bytes of a saved 8-bit bitmap: width, height, and the pixel at x, y from the top.
local function bitmap(path)
  local bytes = assert(readfile(path), "no file " .. path)
  check.eq(bytes:sub(1, 2), "BM")
  local size, offset = string.unpack("<I4", bytes, 3), string.unpack("<I4", bytes, 11)
  check.eq(size, #bytes)
  local header, width, height, planes, bits = string.unpack("<I4i4i4I2I2", bytes, 15)
  check.eq({ header, planes, bits, offset }, { 40, 1, 8, 14 + 40 + 1024 })
  local row = (width + 3) // 4 * 4
  return width, height, function(x, y) return bytes:byte(offset + (height - 1 - y) * row + x + 1) end
end
local function shown(count) return state("DisplayLut")[count + 1] end

local image = files.image(dir .. "/one.img", { width = 5, height = 3 }, 1, function(_, x, y) return 2600 + 10 * y + x end)
drop(image)
command(116)
check.eq(file().title, "Save File")
check.eq(file().filters[1], "Bitmap Files (*.bmp)")
choose(dir .. "/one.bmp")
local width, height, at = bitmap(dir .. "/one.bmp")
check.eq({ width, height }, { 5, 3 })
for y = 0, 2 do
  for x = 0, 4 do check.eq(at(x, y), shown(2600 + 10 * y + x)) end
end

-- A file of that name is asked about.
command(116)
choose(dir .. "/one.bmp")
check.holds(box().text, "already exists")
answer("no")
cancel()

local sequence = files.image(dir .. "/run1.seq", { width = 6, height = 4 }, 12,
  function(frame, x, y) return 2650 + frame * 5 + y + x end)
drop(sequence)
command(116)
check.eq(dialog(), "FRAMES")
key("2")
check.eq(text(1001), "2")
set(1002, "1")
set(1003, "4")
set(1004, "3")
set(1005, "1")
set(1006, "11")
press(1)
choose(dir .. "/part.bmp")
for frame = 1, 11 do
  width, height, at = bitmap(string.format("%s/part%02d.bmp", dir, frame - 1))
  check.eq({ width, height }, { 3, 3 })
  for y = 0, 2 do
    for x = 0, 2 do check.eq(at(x, y), shown(2650 + frame * 5 + (y + 1) + (x + 2)), "frame " .. frame) end
  end
end
check.eq(state("CurrentFrame"), 0, "the frame that was on view is again")

-- Wrong numbers are named; Cancel ends.
command(116)
set(1006, "12")
press(1)
check.answer_box("Last frame must be a number from 0 to 11.", "ok")
press(2)
check.eq(dialog(), nil)
command(116)
check.eq({ text(1005), text(1006) }, { "0", "0" }, "the frame on view")
press(1)
cancel()
check.eq(readfile(dir .. "/run1.bmp"), nil)

-- The disk is full at the first step, the second, and so on: those that were written are whole and told, the others aren't there.
local frames_wanted, seen = 4, {}
local n, came = 0, true
while came do
  n = n + 1
  for frame = 0, frames_wanted - 1 do os.remove(("%s/full%d.bmp"):format(dir, frame)) end
  command(116)
  set(1005, "2")
  set(1006, "5")
  press(1)
  sim.fault("disk", n)
  choose(dir .. "/full.bmp")
  came = sim.fault_to_come("disk") == 0
  sim.fault("disk", 0)
  check.eq(box() ~= nil, came, "step " .. n)
  if came then answer("ok") end
  local written = 0
  for frame = 0, frames_wanted - 1 do
    local path = ("%s/full%d.bmp"):format(dir, frame)
    if readfile(path) then
      check.eq(frame, written, "in their order")
      check.eq((bitmap(path)), 6)
      written = written + 1
    end
  end
  for _, name in ipairs(listdir(dir)) do assert(not name:find("full%d%.bmp."), name) end
  check.eq({ dialog(), file(), written == frames_wanted }, { nil, nil, not came })
  if written > 0 then
    local named = written == 1 and "full0.bmp:" or ("full0.bmp to full%d.bmp"):format(written - 1)
    check.holds(status(), came and (" Saved %d of 4 bitmaps, %s"):format(written, named)
      or " Saved 4 bitmaps, full0.bmp to full3.bmp")
  else
    assert(not status():find("Saved"), status())
  end
  seen[written] = true
end
for written = 0, frames_wanted do assert(seen[written], written .. " were never written") end

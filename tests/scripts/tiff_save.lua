-- The stored frame on view as TIFF files of 8 and 16 bits: every sample, the range, what is told of it; refusals and Cancel.
local check = require "check"
local files = require "files"
local tiff = require "tiff"
local unchanged = require "unchanged"
answer("ok")
local dir = datadir()

-- Without a file and a camera there is nothing to save, and no name is asked for.
for _, id in ipairs { 125, 126 } do
  local before = unchanged.snapshot()
  command(id)
  check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
  check.eq(file(), nil)
  unchanged.expect(before, unchanged.snapshot())
end

local function count(frame, x, y) return 2000 * frame + 37 * y + x - 500 end
drop(files.image(dir .. "/run.seq", { width = 61, height = 47, low = 0, high = 2047, cold = 800, cold_c = 20, hot = 1600, hot_c = 25.5, rate = 60 },
  3, count))
key("F7")
check.eq(state("CurrentFrame"), 1)
command(151)  -- the cursor is on the screen and not in the file

local function save(id, name)
  command(id)
  check.eq(file().title, "Save File")
  check.eq(status(), "Enter filename to save image file to")
  check.eq({ file().filters[1], file().filters[#file().filters] }, { "All Files (*.*)", "TIFF Files (*.tif)" })
  choose(dir .. "/" .. name)
end

local function described(hot, cold)
  return ("Kelvo Thermal Image\nFrameRate=60.00Hz IntegrationTime=0.000ms\nIhot=%d Thot=25.500C\nIcold=%d Tcold=20.000C"):format(hot, cold)
end

save(126, "plain")  -- a bare name
check.eq(box() and box().text, nil)
check.eq(status(), (" Saved plain.tif: %.1f kB in %s"):format((782 + 2 * 61 * 47) / 1000, dir))
local picture = tiff.read(dir .. "/plain.tif")
check.eq({ picture.width, picture.height, picture.bits, picture.bytes }, { 61, 47, 16, 782 + 2 * 61 * 47 })
for y = 0, 46 do
  for x = 0, 60 do check.eq(picture.at(x, y), pixel(x, y) & 0xFFFF) end
end
check.eq(picture.at(0, 0), count(1, 0, 0))
check.eq(picture.description, described(1600, 800))
check.eq({ picture.tags[280], picture.tags[281], picture.tags[282], picture.tags[271]:match("^[^\0]*") }, { 0, 2047, { 1, 1 }, "Kelvo" })

-- Of 8 bits: 8 counts a gray value.
save(125, "bytes.tif")
check.eq(box() and box().text, nil)
picture = tiff.read(dir .. "/bytes.tif")
check.eq({ picture.width, picture.height, picture.bits, picture.bytes }, { 61, 47, 8, 782 + 61 * 47 })
local held = 0
for y = 0, 46 do
  for x = 0, 60 do
    local value = count(1, x, y) // 8
    if value > 255 then value, held = 255, held + 1 end
    check.eq(picture.at(x, y), value)
  end
end
assert(held > 0, "some don't fit")
check.eq(status(), (" Saved bytes.tif, %d samples held at 0 or 255: %.1f kB in %s"):format(held, (782 + 61 * 47) / 1000, dir))
check.eq(picture.description, described(200, 100))
check.eq({ picture.tags[280], picture.tags[281] }, { 0, 255 })

-- Negative counts: as they are, which others read as large ones; in bytes held at 0.
command(115)
check.eq(state("CurrentFrame"), 0)
save(126, "negative.tif")
check.eq(tiff.read(dir .. "/negative.tif").at(0, 0), 65036)
save(125, "negative8.tif")
check.eq(tiff.read(dir .. "/negative8.tif").at(0, 0), 0)
check.holds(status(), " samples held at 0 or 255: ")

-- Cancelled, and a name that isn't to be replaced: all is as it was.
local before = unchanged.snapshot()
for _, id in ipairs { 125, 126 } do
  command(id)
  cancel()
  check.eq({ box(), file() }, {})
  unchanged.expect(before, unchanged.snapshot(), nil, nil, "cancelled " .. id)
  command(id)
  choose(dir .. "/plain")
  check.answer_box(dir .. "/plain.tif already exists.\nDo you want to replace it?", "no", "Save File")
  cancel()
  unchanged.expect(before, unchanged.snapshot(), nil, nil, "not replaced " .. id)
end
save(125, "plain.tif")
check.answer_box(dir .. "/plain.tif already exists.\nDo you want to replace it?", "yes")
check.eq(tiff.read(dir .. "/plain.tif").bits, 8)

-- Where it can't be written: told, and what stands there stays.
before = unchanged.snapshot()
for _, id in ipairs { 125, 126 } do
  command(id)
  sim.fault("disk", true)
  choose(dir .. "/plain.tif")
  answer("yes")
  check.answer_box("Failed to save file: " .. dir .. "/plain.tif", "ok", "Kelvo message")
  sim.fault("disk", false)
  unchanged.expect(before, unchanged.snapshot(), nil, { StatusText = "what an earlier save wrote is no longer told" }, "disk " .. id)
end
sim.fault("memory", true)
command(126)
choose(dir .. "/none.tif")
sim.fault("memory", false)
check.answer_box("Failure to allocate video memory!", "ok", "Kelvo message")
check.eq(readfile(dir .. "/none.tif"), nil)

-- A file that plays stops.
command(2001)
check.eq(text("player", 20200), "Stop")
save(126, "playing.tif")
check.eq(text("player", 20200), "Play")

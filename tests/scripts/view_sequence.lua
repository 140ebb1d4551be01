-- The sample sequence: opening, stepping to its end and beyond, zooming, status, title, cursor, pixels.
local check = require "check"
answer("ok")

command(114)  -- nothing is named yet: the dialog of 113 opens
check.eq(file().title, "Open File")
check.eq(file().filters[1], "Sequence Files (*.seq)")
check.eq(status(), "Select image file to view")
local sample = datadir() .. "/sample.seq"
choose(sample)
check.eq(state("ViewingFile"), 1)
check.eq(state("CurrentFrame"), 0)
check.eq(title(), "Kelvo - sample")
check.holds(status(), "Viewing Sequence " .. sample .. "  FrameNum: 0 ")
local last = state("LastFrame")
check.eq(last + 1, state("ImageHeader.FrameCount"))

-- The counts are those of the file, which a few lines here read by hand.
local bytes = readfile(sample)
local width, height = string.unpack("<i2i2", bytes, 3)
local function stored(frame, x, y) return (string.unpack("<i2", bytes, 513 + 2 * ((frame * height + y) * width + x))) end
for _, place in ipairs { { 0, 0 }, { 80, 60 }, { width - 1, height - 1 } } do
  check.eq(pixel(place[1], place[2]), stored(0, place[1], place[2]))
end
check.eq(raw(width), stored(0, 0, 1))
check.eq(pixel(width, 0), nil)

for _ = 1, last do command(114) end
check.eq(state("CurrentFrame"), last)
check.eq(pixel(10, 20), stored(last, 10, 20))
check.holds(status(), "FrameNum: " .. last)

-- Beyond the end: "sample" ends in a letter, and the next name isn't there.
local mark = check.mark()
command(114)
check.seen("beep", { sound = "information" }, mark + 1)
check.eq(box(), nil)
check.eq(state("LoadName"), sample)
check.eq(pixel(10, 20), stored(last, 10, 20), "the picture stays")

command(114)
check.eq(state("CurrentFrame"), 1)
command(115)
check.eq(state("CurrentFrame"), 0)

-- Each image pixel is a block of zoom x zoom device pixels, gray as the look-up table has it.
local lut = state("DisplayLut")
local function gray(x, y) return lut[stored(0, x, y) + 1] end
local top = state("PanelHeight")
for zoom = 3, 6 do
  check.eq(state("Xzoom"), zoom)
  for _, place in ipairs { { 0, 0 }, { 7, 3 }, { 50, 40 } } do
    local x, y = place[1], place[2]
    for _, corner in ipairs { { 0, 0 }, { zoom - 1, zoom - 1 } } do
      local r, g, b = screen(x * zoom + corner[1], top + y * zoom + corner[2])
      check.eq({ r, g, b }, { gray(x, y), gray(x, y), gray(x, y) }, "zoom " .. zoom .. " pixel " .. x .. "," .. y)
    end
  end
  key("+")
end

-- The cursor reads counts as the file has them.
command(151)
check.eq(menu(151).checked, true)
mouse(300, 300)
local x, y, value = status():match("^x=%s*(%d+)  y=%s*(%d+)  Signal=(%d+) Counts     $")
assert(x, "a read-out, not " .. status())
check.eq(tonumber(value), stored(0, tonumber(x), tonumber(y)))
command(151)
check.eq(menu(151).checked, false)
check.holds(status(), "Viewing Sequence")

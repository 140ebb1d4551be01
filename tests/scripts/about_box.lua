-- The About box: its lines, its clock, its picture, its failure.
local check = require "check"
answer("ok")
local mark = check.mark()

-- The start picture as its file has it: 8 or 24 bits a pixel, the lowest line first.
local bytes = readfile(datadir() .. "/kelvo220.bmp")
local data_start, width, height, bits = ("<I4"):unpack(bytes, 11), ("<i4"):unpack(bytes, 19), ("<i4"):unpack(bytes, 23),
  ("<I2"):unpack(bytes, 29)
local function picture(x, y)
  local line = data_start + (height - 1 - y) * ((width * bits // 8 + 3) // 4 * 4)
  local at = line + x * bits // 8 + 1
  if bits == 8 then at = 54 + 4 * bytes:byte(at) + 1 end
  return { bytes:byte(at + 2), bytes:byte(at + 1), bytes:byte(at) }
end
local left = (state("ClientWidth") - width) // 2
local top = (state("ClientHeight") - height) // 2 - 30
-- Points all over it, among them bright and dark ones; the window behind it is of one colour.
local points = {}
for y = 3, height - 4, height // 9 do
  for x = 3, width - 4, width // 13 do points[#points + 1] = { x, y } end
end
local function shown_of_picture()
  local shown, unlike = 0, 0
  local background = { screen(left - 5, top - 5) }
  for _, point in ipairs(points) do
    local wanted = picture(point[1], point[2])
    if check.same({ screen(left + point[1], top + point[2]) }, wanted) then shown = shown + 1 end
    if not check.same(wanted, background) then unlike = unlike + 1 end
  end
  return shown, unlike
end
local before, unlike = shown_of_picture()
assert(unlike > #points // 2, "the picture differs from the window")
assert(before <= #points - unlike, "it isn't there yet")

command(196)
check.eq((shown_of_picture()), #points, "the start picture stands behind the dialog")
check.eq(dialog(), "ABOUT")
check.seen("dialog", { name = "ABOUT", text = "About Kelvo for IC-PCI frame grabber" }, mark + 1)
check.eq(status(), " Press OK to close 'About QVF Kelvo' dialog box")
check.holds(text(1001), "2.20")
check.eq(text(1002), "Total = 1024 kB")
check.holds(text(1003), "Contiguous = ")
check.eq(text(1004), "Free System Resources = 0%")
-- What runs here, and whose it is.
local out = assert(io.popen("'" .. arg[1] .. "' --version"))
local version = out:read("l")
out:close()
check.eq(text(1006):match("^(Kelvo [%d.]+), with Qt 6%.%d+%.%d+$"), version)
check.eq(text(1007), "Data directory: " .. datadir())
for _, part in ipairs { "Qt 6", "Lua 5.4 (MIT License)", "Highway", "libpng", "sample.seq" } do check.holds(text(1008), part) end
screenshot("about.png")
local clock = text(1005)
wait(900)
check.eq((shown_of_picture()), #points, "for a second")
wait(100)
assert(text(1005) ~= clock, "the clock goes")
wait(100)
check.eq(dialog(), "ABOUT")
assert(shown_of_picture() <= #points - unlike, "then it goes, and the dialog stays")
press(1)
check.eq(dialog(), nil)

-- Closed before: the picture goes with the dialog.
command(196)
check.eq((shown_of_picture()), #points)
press(1)
assert(shown_of_picture() <= #points - unlike)

sim.fault("load dialog ABOUT", true)
command(196)
check.answer_box("Unable to display dialog", "ok", "System Error")
assert(shown_of_picture() <= #points - unlike)

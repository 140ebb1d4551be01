-- The camera's picture on a page: it stands still while the dialog is open, and what the page holds is what is seen, pixel by pixel, turned as the
-- image is, with and without the image cursor on the screen. The page's picture is taken out of it by another tool (poppler-utils).
local check = require "check"
local video = require "video"
local dir = datadir()

while box() do answer("ok") end
video.turn_on()
frames(3)
command(2004)

-- Width, height and r, g, b at x, y of the one picture in a page.
local function picture_of(path)
  assert(os.execute(("pdfimages '%s' '%s'"):format(path, path)))
  local bytes = assert(readfile(path .. "-000.ppm"), "no picture in " .. path)
  local width, height, at = bytes:match("^P6%s+(%d+)%s+(%d+)%s+255%s()")
  width, height = math.tointeger(width), math.tointeger(height)
  check.eq(#bytes, at - 1 + 3 * width * height)
  return width, height, function(x, y) return bytes:byte(at + 3 * (y * width + x), at + 3 * (y * width + x) + 2) end
end

local function print_into(name)
  command(117)
  check.eq(dialog(), "DIBPRINT")
  press(1)
  choose(dir .. "/" .. name)
  check.eq({ dialog(), box() and box().text, (status()) }, { nil, nil, " Printed into " .. dir .. "/" .. name })
  return dir .. "/" .. name
end

local function expect_seen(path)
  local width, height, at = picture_of(path)
  check.eq({ width, height }, { state("Hroi"), state("Vroi") })
  local look_up, grays = state("DisplayLut"), {}
  for y = 0, height - 1 do
    for x = 0, width - 1 do
      local shown = look_up[pixel(x, y) + 1]
      local r, g, b = at(x, y)
      if r ~= shown or g ~= shown or b ~= shown then check.eq({ r, g, b }, { shown, shown, shown }, path .. " pixel " .. x .. "," .. y) end
      grays[shown] = true
    end
  end
  assert(next(grays, next(grays)), "a picture, not one gray")
end

-- Live: it stands still, and goes on whichever way the dialog is left.
command(117)
check.eq(dialog(), "DIBPRINT")
local shown = state("FramesShown")
wait(500)
check.eq(state("FramesShown"), shown)
press(2)
frames(3)
assert(state("FramesShown") > shown, "live video goes on")
print_into("live.pdf")
check.eq((picture_of(dir .. "/live.pdf")), state("Hroi"))
shown = state("FramesShown")
frames(3)
assert(state("FramesShown") > shown, "live video goes on")

-- Frozen, and turned, without a calibration.
key("F2")
check.eq(state("LiveVideo"), 0)
expect_seen(print_into("frozen.pdf"))
key("F2")
command(122)
for id, on in pairs { [1300] = true, [1302] = true } do check(id, on) end
press(1604)
press(1)
frames(2)
key("F2")
expect_seen(print_into("turned.pdf"))

-- The cursor is on the screen and not on the page.
mouse(150, 200)
command(151)
expect_seen(print_into("cursor.pdf"))

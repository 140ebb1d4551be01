-- Image math with the camera's own frames: live, frozen, in the midst of a recording, and where the board fails.
local check = require "check"
local calibration = require "calibration"
local unchanged = require "unchanged"

local data = datadir()
calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
local columns, rows = state("Hactive"), state("Vactive")

local function samples(path)
  local bytes, list = assert(readfile(path)), {}
  for at = 513, #bytes, 2 do list[#list + 1] = string.unpack("<i2", bytes, at) end
  check.eq(#list, columns * rows, path)
  return list
end
local function open_filled(c1, c2, name)
  command(162)
  check.eq(dialog(), "IMGMATH")
  for id, value in pairs { [701] = c1, [702] = "", [704] = c2, [705] = "", [706] = "0", [707] = data .. "/" .. name } do set(id, value) end
end

-- Frozen: the frame on the screen, corrected, pixel for pixel, and twice the same.
command(140)
check.eq(state("LiveVideo"), 0)
open_filled("1", "0", "frozen.img")
press(1)
check.eq({ dialog(), box() }, {})
local frozen = samples(data .. "/frozen.img")
for y = 0, rows - 1, 7 do
  for x = 0, columns - 1, 5 do check.eq(frozen[y * columns + x + 1], pixel(x, y), x .. ", " .. y) end
end
open_filled("1", "-1", "nothing.img")
press(1)
for _, sample in ipairs(samples(data .. "/nothing.img")) do check.eq(sample, 0) end

-- Live: two new frames, which differ by their noise alone.
command(140)
check.eq(state("LiveVideo"), 1)
open_filled("1", "-1", "noise.img")
press(1)
check.eq({ dialog(), box(), state("LiveVideo") }, { nil, nil, 1 })
local sum, squares = 0, 0
for _, sample in ipairs(samples(data .. "/noise.img")) do sum, squares = sum + sample, squares + sample * sample end
local n = columns * rows
check.near(sum / n, 0, 1)
assert(squares / n > 1 and squares / n < 40000, squares / n)

-- A board that gives no frame: told, and nothing is written.
for _, fault in ipairs { "icp_wait_vb", "icp_read_area" } do
  open_filled("1", "0", "none.img")
  sim.fault(fault, true)
  press(1)
  local told = {}
  while box() do
    told[#told + 1] = box().text
    check.eq(box().icon, "exclamation")
    answer("ok")
  end
  sim.fault(fault, false)
  check.eq({ dialog(), told[#told] }, { "IMGMATH", "Failure to read Source1!" }, fault)
  check.eq(readfile(data .. "/none.img"), nil)
  press(2)
  if state("LiveVideo") == 0 then command(140) end
  check.eq(state("LiveVideo"), 1, fault)
end

-- No recording begins while the dialog is open, and while one runs the item is grey: its frames and its file are its own.
command(162)
check.fails(function() record { name = "held", wait = false } end, "Something else is open that may need the camera: close it first.")
press(2)
record { name = "held", wait = false }
frames(3)
check.eq(menu(162).enabled, false)
check.fails(function() command(162) end, "command 162 is disabled in the menu")
check.eq(record("stop").lost, 0)
check.eq(menu(162).enabled, true)

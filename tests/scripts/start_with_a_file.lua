-- A start with a stored file shows it and doesn't ask for the camera that hangs there; what was found to show it by is
-- said, and isn't stored.
local check = require "check"
local before = readfile(datadir() .. "/kelvo.ini")
wait(2000)
check.eq({ dialog(), box() }, { nil, nil })
check.eq({ title(), state("ViewingFile"), state("CameraOn") }, { "Kelvo - sample", 1, 0 })
check.eq(menu(169).text, "&Turn Vantir on ")

-- The shipped levels show counts 2648 to 3184 as black: shades stand in the picture none the less.
check.holds(status(), "sample.seq")
check.holds(status(), "Contrast fitted to the picture")
local shades = {}
for y = 0, 110, 10 do
  for x = 0, 150, 10 do shades[(screen(2 * x, 60 + 2 * y))] = true end
end
local count = 0
for _ in pairs(shades) do count = count + 1 end
assert(count > 20, count .. " shades")

-- The next frame keeps what was found, and what the operator does himself is his.
local contrast, brightness = state("Contrast"), state("Brightness")
key("F7")
check.eq({ state("CurrentFrame"), state("Contrast"), state("Brightness") }, { 1, contrast, brightness })
check.holds(status(), "Contrast fitted to the picture")
if arg[1] == "changed" then
  press("panel", 315, "up")
  check.eq({ state("Contrast"), state("Brightness") }, { contrast + 1, brightness })
  key("F7")
  assert(not status():find("fitted"), status())
end

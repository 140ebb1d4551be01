-- Calibration sets on the simulated camera: refused, loaded, saved under another name, loaded again.
local check = require "check"
local calibration = require "calibration"
local files = require "files"

local data = state("DefaultDir")
local start_hint = " Use Alt + underlined menu item or trackball to select menu item"

-- Without a camera there is nothing to load for, and without a calibration nothing to save.
press(2)
command(133)
check.answer_box("Camera must be on in order\nto load a calibration", "ok", "Kelvo message")
command(132)
check.answer_box("A calibration must be loaded\nin order to save it.", "ok", "Kelvo Message")
command(130)
check.answer_box("Camera must be turned on before calibrating", "ok", "Kelvo Message")

-- The camera comes on with the set that lies there as the last one.
files.calibration(data .. "/last.cal", state("Hroi"), state("Vroi"), 2, 100)
files.calibration(data .. "/other.cal", state("Hroi"), state("Vroi"), 1, 0)
command(169)
press(1072)
check.eq(box(), nil)
check.eq(dialog(), nil)
check.eq(state("CalType"), 2)

frames(3)

-- Every pixel on the screen is (raw - 100) / 2, toward zero.
command(140)
local function pixels_follow(gain, offset)
  local width = state("Hroi")
  for _, place in ipairs({ { 0, 0 }, { 7, 3 }, { width - 1, 1 }, { width // 2, state("Vroi") - 1 } }) do
    local x, y = place[1], place[2]
    local corrected = (raw(y * width + x) - offset) / gain
    local whole = corrected >= 0 and math.floor(corrected) or math.ceil(corrected)
    check.eq(pixel(x, y), whole, "pixel " .. x .. "," .. y)
  end
end
pixels_follow(2, 100)
command(140)

-- Saved under another name: the same bytes, and the new name is in force.
command(132)
check.eq({ dialog(), text(1462) }, { "CAL_SAVE", data })
calibration.choose(data .. "/kept")
check.eq(box(), nil)
check.eq(state("CalSettings.CalFile"), data .. "/kept.cal")
local function bytes(name)
  local handle = assert(io.open(data .. "/" .. name, "rb"))
  local all = handle:read("a")
  handle:close()
  return all
end
for _, extension in ipairs({ ".gai", ".off", ".dcm" }) do
  assert(bytes("kept" .. extension) == bytes("last" .. extension), extension .. " differs")
end
check.holds(bytes("kept.cal"), "GainFile=kept.gai")
check.holds(bytes("kept.cal"), "CalFile=" .. data .. "/kept.cal")

-- Over a set that stands: asked first; Cancel leaves the selection open.
command(132)
calibration.choose(data .. "/other.cal")
check.answer_box("File already exists, replace it?", "cancel", "Kelvo message")
check.eq(dialog(), "CAL_SAVE")
press(2)
check.eq(state("CalSettings.CalFile"), data .. "/kept.cal")

-- A set that can't be copied is told, and nothing of it stays.
os.remove(data .. "/kept.dcm")
command(132)
calibration.choose(data .. "/third")
check.answer_box("Failed to save file: " .. data .. "/third.cal", "ok", "Kelvo File Error!")
check.eq(io.open(data .. "/third.cal"), nil)
check.eq(io.open(data .. "/third.gai"), nil)
check.eq(state("CalSettings.CalFile"), data .. "/kept.cal")

-- By the menu; one whose offsets are missing is refused, and the former coefficients were partly replaced.
command(133)
calibration.choose(data .. "/other.cal")
check.eq(box(), nil)
check.eq(status(), start_hint)
frames(3)
command(140)
pixels_follow(1, 0)
command(140)
os.remove(data .. "/other.off")
command(133)
calibration.choose(data .. "/other.cal")
check.answer_box("Failed to open file: " .. data .. "/other.off", "ok", "Kelvo message")

-- From within the calibration dialog.
command(130)
check.eq(dialog(), "CALIB")
press(1222)
check.eq(dialog(), "CAL_OPEN")
calibration.choose(data .. "/last.cal")
check.eq(box(), nil)
check.eq(dialog(), nil)
check.eq(state("CalSettings.CalFile"), data .. "/last.cal")

-- What the video set-up leaves in the camera head: each control in its register at once, Cancel and a failed read as it was on entry, the
-- close button as it stands, Ok in the settings. Then the same of the advanced dialog.
local check = require "check"
local scope = require "scope"
local video = require "video"

local kRows, kColumns = 256, 320

-- The counters of an integration index for the whole array, as they go over the wire: three steps of four lines first, five steps a line
-- for the last fifteen, single columns in fours.
local function counters(index)
  local steps = (kRows - 16) // 4
  local fine = index - 3 * steps
  local lines, columns
  if fine < 0 then
    lines, columns = 2 + (kRows - 1) // 4 * 4 - index // 3 * 4, (2 - index % 3) * ((kColumns - 1) // 2)
  elseif fine < 75 then
    lines, columns = 15 - fine // 5, (4 - fine % 5) * ((kColumns - 1) // 4)
  else
    lines, columns = 0, (kColumns // 4 - 1 + 75 + 3 * steps - index) * 4
  end
  return (lines + 2) & 0xFF, (columns + 3) // 4
end

local function key_of_section(name)
  local section = readfile(state("CameraFilePath")):match("%[Camera%." .. state("ActiveCamera") .. "%](.-)\n%[") or
                  readfile(state("CameraFilePath")):match("%[Camera%." .. state("ActiveCamera") .. "%](.*)")
  return section:match("\n" .. name .. "=([^\r\n]*)")
end

local function differing(a, b)
  local names = {}
  for name, value in pairs(a) do
    if b[name] ~= value then names[#names + 1] = name end
  end
  table.sort(names)
  return names
end

-- --- The set-up -----------------------------------------------------------------------------------------------------

video.turn_on()
frames(2)
local entry = sim.head()
local lines, columns = counters(10)
check.eq({ entry.clock, entry.integration_rows, entry.integration_columns, entry.gain, entry.offset }, { 5, lines, columns, 0, 128 })

local function open()
  command(121)
  check.eq(dialog(), "QVF1058")
  check.eq(differing(sim.head(), entry), {}, "opening sends what is in force")
end

local function move_all()
  pick(scope.kFrameRates, 9)
  check.eq(sim.head().clock, 2 + 9)
  for _, index in ipairs { 0, 31, 200, 320, 30 } do
    pick(scope.kIntegrations, index)
    local rows, cols = counters(index)
    check.eq({ sim.head().integration_rows, sim.head().integration_columns }, { rows, cols }, "index " .. index)
  end
  scroll(scope.kOffsetBar, 0)
  check.eq({ text(scope.kOffsetText), sim.head().offset }, { "255", 255 })
  scroll(scope.kOffsetBar, 85)
  check.eq({ text(scope.kOffsetText), sim.head().offset }, { "170", 170 })
  local codes = { [0] = 0, 8, 4, 2, 12, 10, 6, 1, 14, 9, 5, 3, 13, 11, 7, 15 }
  for gain = 0, 15 do
    scroll(scope.kGainBar, 15 - gain)
    check.eq({ text(scope.kGainText), sim.head().gain }, { tostring(gain), codes[gain] })
  end
  scroll(scope.kGainBar, 15 - 6)
  check.eq(differing(sim.head(), entry), { "clock", "gain", "integration_columns", "integration_rows", "offset" })
end

wait(1500)  -- settings reach the disk within a second
local setup = readfile(state("IniFilePath"))
open()
move_all()
press(2)
check.eq({ box(), dialog() }, {})
check.eq(differing(sim.head(), entry), {}, "after Cancel")
check.eq({ state("FrameRate"), state("IndexFrameRate"), state("LiveVideo") }, { 48.828125, 3, 1 })
wait(1500)
check.eq({ key_of_section("IndexFrameRate"), key_of_section("QVF1058_Gain0"), key_of_section("QVF1058_DAC0") }, { "3", "0", "128" })
check.eq(readfile(state("IniFilePath")), setup)
frames(3)

-- The board says nothing more: told, and the head as it was.
open()
move_all()
sim.fault("icp_wait_vb")
wait(1500)
check.answer_box("Timeout waiting for vertical blank!", "ok", "icp_wait_vb() Error!")
sim.fault("icp_wait_vb", false)
check.answer_box("Bad status on GetVideoData().  Error reading image processor!", "ok", "Kelvo message")
check.eq({ box(), dialog() }, {})
check.eq(differing(sim.head(), entry), {}, "after a failed read")
frames(3)

-- The window's own close button sends nothing.
open()
move_all()
local moved = sim.head()
cancel()
check.eq({ box(), dialog() }, {})
check.eq(differing(sim.head(), moved), {}, "after the close button")
wait(1500)
check.eq(readfile(state("IniFilePath")), setup)
frames(3)

-- The next opening sends the stored gain and offset; what the lists chose stands.
command(121)
check.eq({ text(scope.kOffsetText), text(scope.kGainText), picked(scope.kFrameRates), picked(scope.kIntegrations) }, { "128", "0", 9, 30 })
check.eq(differing(sim.head(), moved), { "gain", "offset" })
scroll(scope.kOffsetBar, 85)
scroll(scope.kGainBar, 15 - 6)
press(1)
check.eq({ box(), dialog() }, {})
check.eq(differing(sim.head(), moved), {}, "after Ok")
wait(1500)
for name, value in pairs {
  IndexFrameRate = "9", IndexIntegrationTime = "30,10,10,10", QVF1058_Gain0 = "6", QVF1058_DAC0 = "170", QVF1058_AdDelay = "0",
  QVF1058_LineStartDelay = "15", QVF1058_FrameStartDelay = "15", DetBias = "15", PedBias = "3", ColGain = "4", FlipRows = "0", FlipCols = "0",
  FastFrame = "1", ColStart = "0", RowStart = "0", Vactive = "256", Hactive = "320", fFrameRate = "24.414062",
} do
  check.eq(key_of_section(name), value, name)
end
setup = readfile(state("IniFilePath"))
for _, line in ipairs { "FrameRate=24.414062", "IndexFrameRate=9", "IntTime=30", "VideoGain1=6", "VideoGain4=6", "VideoOffset1=170", "VideoOffset4=170" } do
  check.holds(setup, line)
end

-- --- The advanced dialog --------------------------------------------------------------------------------------------

-- The dead detectors of a part of the array.
local dead = {}
for y = 40, 139 do
  for x = 72, 199 do
    if sim.truth(x, y).dead then dead[#dead + 1] = { x = x, y = y } end
  end
end
assert(#dead > 20)

command(121)
press(scope.kAdvanced)
check.eq(dialog(), "ADVANCED")
entry = sim.head()
for _, id in ipairs { 1375, 1374, 314, 316, 9101, 9102, 9110, 9108, 9109, 9104, 9105, 9106, 9107, 9111, 9112, 9114 } do
  check.eq(enabled(id), false, id)
end
check(9113, true)
check.eq(enabled(9106), false, "a head with one order of pixels")

-- Each field reaches its register after its time, and not before.
local function delayed(id, value, milliseconds, register, expected)
  local before = sim.head()
  set(id, value)
  wait(milliseconds - 50)
  check.eq(differing(sim.head(), before), {}, id .. " too early")
  wait(100)
  check.eq(sim.head()[register], expected, id)
end
delayed(9110, "6", 500, "detector_bias", 6)
delayed(9108, "1", 500, "pedestal_bias", 1)
delayed(9109, "3", 500, "column_gain", 3)
delayed(9101, "9", 1000, "delays", 0x99)
delayed(1375, "64", 1000, "left", 64)
check.eq(sim.head().right, 64 + 320 - 1)
delayed(1374, "32", 1000, "top", 32)
delayed(314, "160", 1000, "right", 64 + 160 - 1)
delayed(316, "100", 1000, "bottom", 32 + 104 - 1)
check.eq({ sim.head().columns, sim.head().rows, state("Hroi"), state("Vroi") }, { 160, 104, 160, 100 })

-- A further key starts the time again.
set(9110, "1")
wait(400)
set(9110, "12")
wait(400)
check.eq(sim.head().detector_bias, 6)
wait(150)
check.eq(sim.head().detector_bias, 12)

-- Boxes at once.
for id, register in pairs { [9111] = "flip_columns", [9112] = "flip_rows", [9104] = "test_mode" } do
  check(id, true)
  check.eq(sim.head()[register], 1, register)
  check(id, false)
  check.eq(sim.head()[register], 0, register)
end

-- Cancel gives the head and the picture back what they had.
press(2)
check.eq(dialog(), "QVF1058")
check.eq(differing(sim.head(), entry), {}, "after Cancel of the advanced dialog")
check.eq({ state("Hroi"), state("Vroi"), text(1377), state("FrameRate") }, { 320, 256, "81920", 24.4140625 })
frames(3)

-- With Ok the window stands, while live: dead detectors are where they are on the array.
press(scope.kAdvanced)
check(9113, true)
set(1375, "64")
set(1374, "32")
set(314, "160")
set(316, "120")
press(1)
check.eq(text(1377), tostring(160 * 120))
scroll(scope.kOffsetBar, 127)
scroll(scope.kGainBar, 15)
frames(3)
press(1)
check.eq({ box(), dialog() }, {})
check.eq({ sim.head().left, sim.head().right, sim.head().top, sim.head().bottom }, { 64, 223, 32, 151 })
sim.source("high", 35)
frames(3)
command(140)
local counts = {}
for y = 0, 119 do
  for x = 0, 159 do counts[#counts + 1] = pixel(x, y) end
end
table.sort(counts)
local median = counts[#counts // 2]
assert(median > 1000 and median < 15000, median)
for _, place in ipairs(dead) do
  local count = pixel(place.x - 64, place.y - 32)
  assert(math.abs(count - median) > 500, place.x .. ", " .. place.y .. ": " .. count .. " beside " .. median)
end
command(140)
frames(2)

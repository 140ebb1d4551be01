-- The voltage calibration on the simulated camera, with a known voltage at its inputs: each refusal, No, Yes, and that the camera's true values
-- are found again (docs/accuracy.md has the limits).
local check = require "check"
local calibration = require "calibration"
local unchanged = require "unchanged"

local kVoltage, kCommand = 101, 2071
local kZeroBox = "Set all channel inputs to 0 volts DC.\n\n     Press OK."
local data = datadir()

-- Without a camera there is nothing to measure.
press(2)
command(kCommand)
check.answer_box("Camera must be turned on before calibrating", "ok", "Kelvo Message")
command(169)
calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ dialog(), box(), state("CalType") }, { nil, nil, 2 })

-- What the camera is made of stands in its file.
local cnf = readfile(data .. "/insb320.cnf")
local function of_camera(key) return cnf:match("%f[%S]" .. key:gsub("[/]", "%%%0") .. "%s*=%s*([^\r\n]+)") end
local true_per_count = {}
for text_of in (of_camera("VoltsPerCountVsGain") or
    "-0.000400,-0.000311,-0.000282,-0.000246,-0.000236,-0.000210,-0.000197,-0.000179,-0.000173,-0.000159,-0.000151,-0.000140,-0.000137,-0.000128,-0.000123,-0.000113")
    :gmatch("[^,%s]+") do
  true_per_count[#true_per_count + 1] = tonumber(text_of)
end
local true_per_offset = tonumber(of_camera("Volts/Offset") or "0.01")
local true_zero = tonumber(of_camera("A/Doffset") or "8200")
check.eq(#true_per_count, 16)

-- Cancel before anything is measured.
local before = unchanged.snapshot()
command(kCommand)
check.answer_box(kZeroBox, "cancel", "Oscilloscope Voltage Calibration")
check.eq({ dialog(), box() }, {})
unchanged.expect(before, unchanged.snapshot())

-- 0 V at all gains; the dialog waits then.
local head_before = sim.head()
sim.source("volts", 0)
local mark = check.mark()
command(kCommand)
check.eq(status(), " Set input voltage on all channels to zero volts DC")
answer("ok")
check.eq({ dialog(), box() }, { "CALVOLT" })
check.eq(status(), " Apply DC voltage to input channels; Enter voltage value; Press OK")
check.seen_in_order("status", { " Measuring signal at zero volts DC", " Measuring signal at 0 VDC and Gain=0",
  " Measuring signal at 0 VDC and Gain=15" }, mark)
check.eq({ state("CalType"), state("LiveVideo") }, { 0, 1 })

-- Each refusal: nothing is measured, the dialog waits on.
for _, typed in ipairs { "", "volts", "0.52", "-0.52", "1e3", "nan" } do
  set(kVoltage, typed)
  mark = check.mark()
  press(1)
  check.answer_box("DC voltage must be between -0.5 V and +0.5 V.", "ok", "Warning")
  check.eq(#check.lines("beep", mark + 1), 1, typed)
  check.eq(dialog(), "CALVOLT")
end

-- A voltage that isn't there: 0 volts a count is no measurement.
set(kVoltage, "0.0")
press(1)
check.answer_box("Unable to get signal at gain & offset - try again.", "ok", "ERROR!")
check.eq({ dialog(), status() }, { "CALVOLT", " Apply DC voltage to input channels; Enter voltage value; Press OK" })

-- A head that falls silent in the middle of the gains: told, and the next Ok begins at gain 0 again.
sim.source("volts", 0.505)
set(kVoltage, "0.505")
sim.fault("head silent", true)
press(1)
while box() and box().caption ~= "ERROR!" do answer("ok") end
check.answer_box("Unable to get signal at gain & offset - try again.", "ok", "ERROR!")
sim.fault("head silent", false)
check.eq(dialog(), "CALVOLT")

-- 0.505 V is taken, though the operator is told 0.5; No goes back to the voltage, and nothing was kept.
local keys = readfile(data .. "/camera.ini")
mark = check.mark()
press(1)
check.eq(box().caption, "Voltage calibration results")
check.seen_in_order("status", { " Measuring signal at 0.505 VDC and Gain=0", " Measuring signal at 0.505 VDC and Gain=15" }, mark)
check.eq({ box().buttons }, { { "yes", "no" } })
answer("no")
check.eq(dialog(), "CALVOLT")

-- Kept.
local function measure(volts)
  sim.source("volts", volts)
  set(kVoltage, ("%.3f"):format(volts))
  press(1)
  check.eq(box() and box().caption, "Voltage calibration results")
  local zero, per_offset, per_count = box().text:match("^ADoffset%[2%] = (%S+) counts\nVolt/Offset = (%S+)\nVolt/CountAtGain%[2%] = (%S+)$")
  -- The third value is gain 0's.
  check.near(tonumber(per_count), true_per_count[1], 1e-6)
  check.near(tonumber(per_offset), true_per_offset, 0.003 * true_per_offset)
  check.near(tonumber(zero), true_zero, 0.3)
  answer("yes")
  check.eq({ dialog(), box() }, {})
end
measure(0.3)

local function expect_true_values()
  local measured = state("VoltsPerCountVsGain")
  for gain = 1, 16 do
    check.near(measured[gain], true_per_count[gain], math.abs(0.001 * true_per_count[gain]), "gain " .. gain - 1)
  end
  check.near(state("VoltsOffset"), true_per_offset, 0.003 * true_per_offset)
  check.near(state("ADoffset"), true_zero, 0.1)
end
expect_true_values()

-- The keys, in the section that CameraNum names: as shipped that of the camera which is shipped as the active one.
wait(1100)
local function key_of(section, key)
  local body = readfile(data .. "/camera.ini"):gsub("\r", ""):match("%[" .. section:gsub("%.", "%%.") .. "%]\n(.-)\n%[")
    or readfile(data .. "/camera.ini"):gsub("\r", ""):match("%[" .. section:gsub("%.", "%%.") .. "%]\n(.*)$")
  return body:match("%f[%S]" .. key .. "=([^\n]*)")
end
local number = readfile(data .. "/kelvo.ini"):match("CameraNum=(%d+)")
check.eq(tonumber(number), state("ActiveCamera"))
local printed = {}
for _, volts in ipairs(true_per_count) do printed[#printed + 1] = ("%f"):format(volts) end
check.eq(key_of("Camera." .. number, "VoltsPerCountVsGain"), table.concat(printed, ","))
check.eq(key_of("Camera." .. number, "Volts/Offset"), ("%f"):format(state("VoltsOffset")))
check.eq(key_of("Camera." .. number, "A/Doffset"), ("%f"):format(state("ADoffset")))

-- Gain and offset of before are on the head again, and the operator is told where he stands.
local head = sim.head()
check.eq({ head.gain, head.offset }, { head_before.gain, head_before.offset })
check.eq(status(), " The camera is uncalibrated now: Calibration, Load previous... brings a calibration back")
check.eq({ state("CalType"), state("LiveVideo") }, { 0, 1 })

-- The other sign, and a cancelled run: the values of before stay.
sim.source("volts", 0)
command(kCommand)
answer("ok")
measure(-0.5)
expect_true_values()
local kept = { state("VoltsPerCountVsGain"), state("VoltsOffset"), state("ADoffset") }
wait(1100)
local file_before = readfile(data .. "/camera.ini")
command(kCommand)
answer("ok")
press(2)
check.eq({ dialog(), box() }, {})
check.eq({ state("VoltsPerCountVsGain"), state("VoltsOffset"), state("ADoffset") }, kept)
wait(1100)
check.eq(readfile(data .. "/camera.ini"), file_before)
check.eq(status(), " The camera is uncalibrated now: Calibration, Load previous... brings a calibration back")

-- A head that doesn't answer at 0 V ends the dialog.
sim.fault("head silent", true)
command(kCommand)
answer("ok")
local told
while box() do
  told = box().text
  if told == "Unable to get signal - try again." then check.eq(box().caption, "ERROR!") sim.fault("head silent", false) end
  answer("ok")
end
check.eq({ dialog(), box() }, {})
assert(check.find("box", { text = "Unable to get signal - try again." }))

-- So does a board that gives no frame.
sim.fault("icp_wait_vb", true)
command(kCommand)
answer("ok")
local texts = {}
while box() do
  texts[box().text] = box().caption
  if box().text == "Unable to get signal - try again." then sim.fault("icp_wait_vb", false) end
  answer("ok")
end
check.eq(texts["Video Data Acquisition Failed, Hardware error"], "GetCalVoltSignal() Error")
check.eq({ dialog(), box() }, {})

-- The video set-up on the simulated camera: the scope shows the signal, each change reaches the head at once, Cancel takes it back, OK keeps
-- it, and a window that the advanced dialog sets survives a restart (video_setup_again.lua).
local check = require "check"
local video = require "video"

local kFrameRates, kIntegrations, kUnits = 624, 626, 1256
local kOffsetText, kOffsetBar, kGainText, kGainBar = 641, 651, 655, 660
local kUnity, kAdvanced, kPrint, kSave = 670, 1020, 339, 1606

local function median(count)
  local values = {}
  for i = 0, count - 1 do values[#values + 1] = raw(i * 157 % (state("Hroi") * state("Vroi"))) end
  table.sort(values)
  return values[#values // 2]
end

-- The first set-up comes by itself after the turn-on.
sim.source("low", 20)
check.eq(dialog(), "CLOCK_ON")
local mark = check.mark()
press(1070)
check.eq(box(), nil)
check.eq(dialog(), "QVF1058")
check.seen("dialog", { name = "QVF1058", text = "Signal (Counts) vs Pixel Number" }, mark)
check.seen_in_order("status", {
  " Use video oscilloscope to set up Kelvo video parameters",
  "Initialize decommutation array",
  "Reorder decommutation memory",
  "Download decommutation memory to RAM",
  "Set unity gain and offset",
  "Start acquiring data",
  "Set valid units",
  " Use Alt + underlined menu item or trackball to select menu item",
}, mark)
check.eq({ text(602), text(607), text(612) }, { "16383", "8191", "0" })
check.eq({ text(1375), text(1377) }, { "0", "81920" })
check.eq(#items(kFrameRates), 62)
check.eq(items(kFrameRates)[picked(kFrameRates) + 1], "48.8")

-- Frames go on behind it, and none counts as lost.
local shown = state("FramesShown")
frames(20)
assert(state("FramesShown") >= shown + 20)
check.eq(state("FramesLost"), 0)

-- A shorter integration time lowers the signal of a detector that looks at a source.
frames(2)
local long = median(500)
pick(kIntegrations, #items(kIntegrations) - 1)
frames(3)
local short = median(500)
assert(short ~= long, "the signal follows the integration time: " .. long .. ", " .. short)
pick(kIntegrations, 10)
frames(3)

-- So does the offset.
local before = median(500)
scroll(kOffsetBar, 107)
check.eq(text(kOffsetText), "148")
frames(3)
assert(median(500) ~= before, "the signal follows the offset")
scroll(kGainBar, 12)
check.eq(text(kGainText), "3")

-- Volts.
local volts = nil
for i, name in ipairs(items(kUnits)) do if name == "Signal (V)" then volts = i - 1 end end
pick(kUnits, volts)
local top = text(602)
check.holds(top, ".")
scroll(kGainBar, 0)
assert(text(602) ~= top, "the axis follows the gain")
pick(kUnits, 0)
scroll(kGainBar, 12)

-- The plot as a file, and on paper: there is no printer here, so it becomes a page in a file.
press(kSave)
choose("scope.bmp")
check.eq(readfile("scope.bmp"):sub(1, 2), "BM")
press(kPrint)
check.eq({ dialog(), enabled(108), enabled(21802), checked(21802) }, { "DIBPRINT", false, false, true })
press(1)
choose("scope.pdf")
check.eq({ dialog(), readfile("scope.pdf"):sub(1, 5) }, { "QVF1058", "%PDF-" })
assert(not readfile("scope.pdf"):find("DCTDecode", 1, true), "the plot is exact")

press(kUnity)
check.eq(box(), nil)
check.eq(state("CalType"), 0)
screenshot("scope.png")

-- Cancel takes all of it back.
press(2)
video.pass_set_up()
check.eq(dialog(), nil)
check.eq({ state("CameraOn"), state("LiveVideo") }, { 1, 1 })
frames(5)
command(121)
check.eq({ text(kOffsetText), text(kGainText), picked(kIntegrations) }, { "128", "0", 10 })

-- OK keeps it.
scroll(kOffsetBar, 107)
pick(kFrameRates, 9)
press(1)
check.eq(dialog(), nil)
frames(5)
local ini = readfile(state("IniFilePath"))
check.holds(ini, "IndexFrameRate=9")
check.holds(ini, "VideoOffset1=148")
command(121)
check.eq({ text(kOffsetText), picked(kFrameRates) }, { "148", 9 })

-- A window: the advanced dialog applies it a second after the last digit. What is out of range returns.
press(kAdvanced)
check.eq(dialog(), "ADVANCED")
check.eq(enabled(314), false)
check(9113, true)
set(314, "7")
wait(1100)
check.eq(text(314), "320")
set(314, "160")
set(316, "128")
wait(900)
check.eq(state("Hroi"), 320, "not yet")
wait(200)
check.eq({ state("Hroi"), state("Vroi") }, { 160, 128 })
-- A level only half a second.
set(9110, "9")
wait(400)
set(9110, "10")
wait(600)
screenshot("advanced.png")
press(1)
check.eq(dialog(), "QVF1058")
check.eq(text(1377), "20480")
frames(5)
screenshot("window.png")
press(1)
frames(5)
check.eq(raw(160 * 128), nil)
assert(pixel(159, 127), "frames of the new size")

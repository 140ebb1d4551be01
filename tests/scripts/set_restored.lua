-- A calibration at a frame rate, integration time, gain and offset of its own; then all four are changed, and the next start
-- (set_restored_again.lua), which the command line tells to load the set, has to bring them back. At this start there is no set yet.
local check = require "check"
local calibration = require "calibration"
local registers = require "registers"

local kFrameRates, kIntegrations, kOffsetBar, kGainBar = 624, 626, 651, 660

check.answer_box("Failed to get ActiveCamera from calibration file:\n" .. state("DefaultDir") .. "/last.cal", "ok", "Kelvo message")
check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes", "Turn off camera?")
check.eq(state("CameraOn"), 0)

-- Set up as nothing else here is: neither as shipped, nor as a file without the keys would have it.
local function set_up(rate, integration, offset, gain)
  assert(dialog() == "QVF1058", dialog() or box() and box().text)
  pick(kFrameRates, rate)
  pick(kIntegrations, integration)
  scroll(kOffsetBar, 255 - offset)
  scroll(kGainBar, 15 - gain)
  press(1)
end
command(169)
press(1070)
local as_shipped = sim.head()
set_up(7, 100, 133, 2)
local chosen = sim.head()
for _, name in ipairs { "clock", "gain", "offset" } do assert(chosen[name] ~= as_shipped[name], name) end
assert(chosen.integration_rows ~= as_shipped.integration_rows or chosen.integration_columns ~= as_shipped.integration_columns)
check.eq(dialog(), "CALIB")
calibration.two_point(20, 25, 30)
answer("ok")
check.eq({ box(), dialog() }, {})
check.eq(sim.head(), chosen)
frames(3)
local spread, middle = registers.spread()
assert(spread >= 3 and spread < 10, spread)
local rate = state("FrameRate")
registers.keep(datadir() .. "/expected.txt", sim.head(), { spread = spread, middle = middle, rate = rate })
local set = readfile(datadir() .. "/Last.cal")
for _, line in ipairs { "IndexFrameRate=7", "IntTime=100", "VideoGain1=2", "VideoOffset1=133", ("FrameRate=%f"):format(rate) } do
  check.holds(set, "\n" .. line .. "\n")
end

command(121)
set_up(3, 20, 120, 1)
assert(not check.same(sim.head(), chosen))
frames(3)
check.eq(readfile(datadir() .. "/Last.cal"), set, "the set stays as it was made")

-- "Keep fitted": contrast and brightness follow live video, and the settings keep the operator's own.
local check = require "check"
local files = require "files"
local video = require "video"

local function kept()
  local text = readfile(datadir() .. "/kelvo.ini")
  return { text:match("\n%s*Contrast=(%d+)"), text:match("\n%s*Brightness=(%d+)") }
end

-- The counts that a two-hundredth of the pixels lie at or below, and at or above.
local function central()
  local counts = {}
  for i = 0, state("Hroi") * state("Vroi") - 1 do counts[#counts + 1] = raw(i) end
  table.sort(counts)
  local outside = (#counts - 1) // 200
  return counts[1 + outside], counts[#counts - outside]
end
-- The ends of the window of counts that the table in force spreads.
local function window()
  local first, last
  for count, gray in ipairs(state("DisplayLut")) do
    if gray > 0 and not first then first = count - 1 end
    if gray < 255 then last = count - 1 end
    if count > 16383 then break end
  end
  return first, last
end
local function expect_fitted(what)
  local low, high = central()
  local first, last = window()
  local near = 0.08 * (high - low) + 40
  check.near(first, low, near, what)
  check.near(last, high, near, what)
end

video.turn_on()
sim.source("low", 20)
frames(5)
local before = kept()
local own = { state("Contrast"), state("Brightness") }
command(2043)
check.eq(menu(2043).checked, true)
wait(400)
check.eq(state("OwnFitInForce"), 1)
expect_fitted("at 20 degrees")
local first = { state("Contrast"), state("Brightness") }
sim.source("low", 45)
wait(700)
expect_fitted("at 45 degrees")
assert(check.show { state("Contrast"), state("Brightness") } ~= check.show(first), "it follows")

-- Neither the trackball nor a second of time writes what wasn't chosen.
key("F10")
key("F10")
wait(2500)
check.eq(kept(), before)

-- A hand on the levels ends it, and they are the operator's.
press("panel", 315, "up")
local chosen = { state("Contrast"), state("Brightness") }
sim.source("low", 20)
wait(1000)
check.eq(menu(2043).checked, false)
check.eq({ state("Contrast"), state("Brightness") }, chosen)
check.eq(state("OwnFitInForce"), 0)

-- On again to the end; the next start has the operator's own.
press("panel", 315, "up")
key("F10")
key("F10")
wait(1500)
check.eq(kept(), { tostring(state("Contrast")), tostring(state("Brightness")) }, "chosen by hand they are kept")
command(2043)
wait(600)
sim.source("low", 35)
wait(600)
check.eq(state("OwnFitInForce"), 1)
files.write(datadir() .. "/chosen.txt", table.concat(kept(), " "))

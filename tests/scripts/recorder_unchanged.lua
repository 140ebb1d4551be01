-- The recorder's window that is opened and closed, refused at every turn, or can't begin for want of memory or disk, leaves everything as it was:
-- state, settings files, all other files, the head's registers, the menu.
local check = require "check"
local unchanged = require "unchanged"
local video = require "video"

local kRecord, kLamp, kStart, kStop, kMessage, kClose = 2060, 21000, 21001, 21002, 21005, 2
local kDirectory, kBrowse, kName, kLength, kUnit = 21020, 21021, 21022, 21030, 21031

video.turn_on()
frames(5)
wait(1200)  -- live video tells its rate
local before = unchanged.snapshot()
local may = { StatusText = "live video tells its rate again" }
for name in pairs(before) do
  if name:find("^ImageHeader") then may[name] = "a live frame has none of its own: it is filled for what is saved" end
end
local function expect(what) unchanged.expect(before, unchanged.snapshot(), {}, may, what) end
local function idle() check.eq({ text("recorder", kLamp), enabled("recorder", kStart), menu(106).enabled }, { "○ Idle", true, true }) end

command(kRecord)
wait(1000)
press("recorder", kClose)
expect("opened and closed")

command(kRecord)
set("recorder", kDirectory, datadir())
set("recorder", kName, "run_{n}")
pick("recorder", kUnit, 1)
press("recorder", kClose)
before = unchanged.snapshot()  -- these are kept from here on
command(kRecord)

-- Refused, and cancelled.
pick("recorder", kUnit, 1)
for _, typed in ipairs { "", "0", "-3", "1.5", "many" } do
  set("recorder", kLength, typed)
  press("recorder", kStart)
  check.holds(text("recorder", kMessage), "Length in frames: please enter a whole number from 1")
end
set("recorder", kLength, "1000")
press("recorder", kBrowse)
cancel()
for _, name in ipairs { "", "..", "a/b", "{when}", "{n" } do
  set("recorder", kName, name)
  press("recorder", kStart)
  check.holds(text("recorder", kMessage), "Not started. The name pattern makes no file name.")
end
set("recorder", kName, "run_{n}")
idle()
expect("refused")

-- The disk takes no file.
sim.fault("disk")
press("recorder", kStart)
sim.fault("disk", false)
check.eq(text("recorder", kMessage), "Not started. No file can be made in the directory of the recordings.")
idle()
expect("no file can be made")

-- Memory is refused at each of the requests in turn, until there is no more.
local refusals = 0
repeat
  sim.fault("memory", refusals + 1)
  press("recorder", kStart)
  local refused = text("recorder", kLamp) == "○ Idle"
  sim.fault("memory", 0)
  if refused then
    refusals = refusals + 1
    if box() then check.answer_box("Unable to allocate memory to store data to disk!", "ok", "Kelvo Warning") end
    check.eq(text("recorder", kMessage), "Not started. Unable to allocate memory to store data to disk!")
    idle()
    expect("memory " .. refusals)
  end
until not refused
assert(refusals >= 1, refusals)
check.eq(text("recorder", kLamp), "● Recording")
press("recorder", kStop)
press("recorder", kClose)

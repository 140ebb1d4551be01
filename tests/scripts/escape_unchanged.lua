-- A command that gathers many frames (arg[1], a row below), with Escape pressed at its first look for it, at its second, and so on until it goes through. What was
-- stopped has left state, settings files, other files and the head's registers as they were; afterwards it all goes through.
local check = require "check"
local calibration = require "calibration"
local operations = require "operations"
local unchanged = require "unchanged"

local stopped = "Stopped by Esc. What was there before is as it was."
-- What the operator has chosen and accepted in the command's own dialog stands.
local chosen_run = {
  ["CalSettings.ChosenType"] = "the run that is chosen", ["CalSettings.NumSources"] = "the run that is chosen", ["kelvo.ini [Calibration] CalType"] = "the run that is chosen",
}
local chosen_save = { FilePathBuf = "the name that is chosen", FramesToAverageImage = "chosen" }
local rows = {
  two_point = { is = operations.rows.two_point },
  one_point = { is = operations.rows.one_point, may = chosen_run },
  update = { is = operations.rows.update },
  average = { is = operations.rows.average, may = chosen_save },
  sequence = {
    is = {
      run = function() command(109) end,
      dialogs = {},
      done = function(after, before) return after.SeqNumber == before.SeqNumber + 1 end,
    },
    prepare = function()
      command(108)
      check.eq(dialog(), "SAVE")
      set(1460, datadir() .. "/escape.seq")
      set(1488, "4")
      press(1)
      command(109)
      check.eq({ dialog(), box() }, {})
    end,
  },
}
local row = assert(rows[arg[1]], arg[1])

calibration.turn_on()
calibration.two_point(20, 25, 2)
answer("ok")
command(132)
set(1460, datadir() .. "/base.cal")
press(1)
check.eq({ dialog(), box(), state("CalType") }, { nil, nil, 2 })
if row.prepare then row.prepare() end

local function was_stopped(boxes)
  for _, each in ipairs(boxes) do
    if each.text == stopped then return true end
  end
  return false
end

local function load_base()
  if state("CalSettings.CalFile") == datadir() .. "/base.cal" and arg[1] ~= "update" then return end
  command(133)
  check.eq(dialog(), "CAL_OPEN")
  set(1460, datadir() .. "/base.cal")
  press(1)
  check.eq({ dialog(), box() and box().text, state("CalType") }, { nil, nil, 2 })
end

local stops, n = 0, 1
while true do
  if row.is.setup then row.is.setup() end
  local before = unchanged.snapshot()
  operations.arm = function() sim.fault("escape", n) end
  if not row.is.arms then operations.arm() end
  local boxes = operations.go(row.is)
  local came = sim.fault_to_come("escape") == 0
  sim.fault("escape", 0)
  local after = unchanged.snapshot(true)
  if not came then
    assert(row.is.done(after, before), "without Escape it is done")
    break
  end
  if was_stopped(boxes) then
    stops = stops + 1
    check.holds(after.StatusText, "Use Alt + underlined menu item")
    before.StatusText = after.StatusText  -- what stood there told of an earlier command
    unchanged.expect(before, after, {}, row.may, ("%s, Escape at look %d"):format(arg[1], n))
    check.eq(state("StatusField"), "")
  else
    assert(row.is.done(after, before), ("%s, Escape at look %d: neither stopped nor done, told %s"):format(arg[1], n, check.show(boxes)))
    load_base()  -- every frame was there, or the run was done and only measured what it has come to
  end
  n = n + 1
end
assert(stops >= 3, stops)

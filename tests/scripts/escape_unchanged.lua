-- A command that gathers many frames (arg[1], a row below), with Escape pressed at its first look for it, at its second, and so on until it goes through. What was
-- stopped has left state, settings files, other files and the head's registers as they were; afterwards it all goes through. An export has the frames up
-- to there, and nothing else has changed.
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

-- What is measured stands in a dialog, which stays open; the last figures stand there still.
rows.noise = { is = operations.rows.noise }
rows.noise_file = { is = operations.rows.noise_long_file, prepare = operations.rows.noise_long_file.prepare }

-- Frames for other programs: before the first one none is made, and afterwards those that are there.
local kFrames = 4
local function whole_frames(after)
  local bytes, about = after["file out.npy"], after["file out.json"]
  if not bytes or not about then return nil end
  local frames = (#bytes - 128) / (2 * 320 * 256)
  check.holds(bytes, ("'shape': (%d, 256, 320)"):format(frames))
  check.holds(about, ('"frames": %d,'):format(frames))
  return frames
end
local export_row = {
  setup = function()
    for _, name in ipairs { "out.npy", "out.json" } do os.remove(datadir() .. "/" .. name) end
    if state("ViewingFile") == 0 then drop(datadir() .. "/raw.seq") end
  end,
  done = function(after) return whole_frames(after) == kFrames end,
}
local function prepare_export()
  require("files").image(datadir() .. "/raw.seq", { width = 320, height = 256, frames = kFrames }, kFrames, function(frame) return 4000 + frame end)
end
local frames_written = { ["file out.npy"] = "the frames up to there", ["file out.json"] = "of them" }
rows.export = {
  is = {
    setup = export_row.setup, done = export_row.done,
    run = function() command(2200) end,
    dialogs = {
      EXPORT = function(times)
        if times > 1 then return press(2) end
        set(22006, datadir() .. "/out.npy")
        press(1)
      end,
    },
  },
  prepare = prepare_export,
  may = { LastFileDirectory = "of the file", StatusText = "how many frames it has", ["file out.npy"] = frames_written["file out.npy"],
    ["file out.json"] = frames_written["file out.json"] },
  stopped = function(_, _, after)
    local frames = whole_frames(after)
    if not frames then return true end
    if frames == kFrames then return false end
    check.eq(after.StatusText, (" Stopped: out.npy has %d of %d frames"):format(frames, kFrames))
    return true
  end,
}
local call_stopped
rows.export_call = {
  is = {
    setup = export_row.setup, done = export_row.done, dialogs = {},
    run = function()
      local written = export { of = "file", file = datadir() .. "/raw.seq", out = datadir() .. "/out.npy" }
      call_stopped = written.stopped and written.frames or nil
    end,
  },
  prepare = prepare_export,
  may = frames_written,
  leaves_line = true,  -- it tells of the file on view
  stopped = function(_, _, after)
    if call_stopped then check.eq(whole_frames(after) or 0, call_stopped) end
    return call_stopped ~= nil
  end,
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

local function was_stopped(boxes, mark, after)
  if row.stopped then return row.stopped(boxes, mark, after) end
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
  local mark = check.mark()
  local boxes = operations.go(row.is)
  local came = sim.fault_to_come("escape") == 0
  sim.fault("escape", 0)
  local after = unchanged.snapshot(true)
  if not came then
    assert(row.is.done(after, before), "without Escape it is done")
    break
  end
  if was_stopped(boxes, mark, after) then
    stops = stops + 1
    if not (row.leaves_line or row.may and row.may.StatusText) then check.holds(after.StatusText, "Use Alt + underlined menu item") end
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

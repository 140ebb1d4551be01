-- An operation (arg[1], a row of lib/operations.lua) with a fault of one kind (arg[2]) at its first step, its second, and so on until it goes
-- through. Whatever fails, the operator is told, or all is done; what he was told failed has left nothing but what the row names; what was
-- saved before can be loaded, and the operation goes through afterwards. arg[3]: at least so many steps can fail. arg[4]: no later step, where
-- live video takes them too.
local check = require "check"
local calibration = require "calibration"
local operations = require "operations"
local unchanged = require "unchanged"

local row, kind = assert(operations.rows[arg[1]], arg[1]), arg[2]:gsub("%.", " ")
local least = tonumber(arg[3])
local kMostSteps = tonumber(arg[4] or 200)

calibration.turn_on()
calibration.two_point(20, 25, 2)
answer("ok")
command(132)
set(1460, datadir() .. "/base.cal")
press(1)
check.eq({ dialog(), box(), state("CalType") }, { nil, nil, 2 })
if row.prepare then row.prepare() end
local base = {}
for _, extension in ipairs { ".gai", ".off", ".dcm", ".bad", ".noi", ".cal" } do base[extension] = readfile(datadir() .. "/base" .. extension) end

-- What a replacement of a set's files couldn't clear away: the next one would, be it one that fails, and how many reads an operation takes isn't always
-- the same, since settings that nobody has written for a tenth of a second aren't read again.
local function clear_away()
  os.remove(datadir() .. "/.calibration.journal")
  for _, name in ipairs { "base", "copy", "Last" } do
    for _, extension in ipairs { ".gai", ".off", ".dcm", ".bad", ".noi", ".cal", ".report.txt" } do
      os.remove(("%s/.%s%s.former"):format(datadir(), name, extension))
    end
  end
end

-- The set of data/base.cal, as it was at first, in force.
local function begin_anew()
  clear_away()
  for extension, bytes in pairs(base) do
    local out <close> = assert(io.open(datadir() .. "/base" .. extension, "wb"))
    out:write(bytes)
  end
  if state("CameraOn") == 0 then
    command(169)
    press(1074)
  else
    if state("LiveVideo") == 0 then command(140) end
    command(133)
  end
  check.eq(dialog(), "CAL_OPEN")
  set(1460, datadir() .. "/base.cal")
  press(1)
  check.eq({ dialog(), box() and box().text }, {}, "base.cal is loaded")
  check.eq({ state("CalType"), state("CameraOn"), state("LiveVideo") }, { 2, 1, 1 })
  if row.setup then row.setup() end
end

local function judge(n, before, after, told, beeps)
  local what = ("%s, %s at step %d, told %s: "):format(arg[1], kind, n, check.show(told))
  local differences = unchanged.differences(before, after)
  local beyond = operations.uncovered(differences, row.writes)
  local undone = operations.uncovered(differences, row.kept)
  local done = row.done(after, before) and not beyond
  if done and not (row.ends and #told > 0) then return end
  assert(#told + beeps > 0 or (row.untold or {})[kind], what .. "nothing was said, and it isn't done: " .. tostring(beyond))
  if not undone then return end
  for _, text_of in ipairs(told) do
    for known, so in pairs(row.told or {}) do
      if text_of:sub(1, #known) == known then
        local left = operations.uncovered(differences, so.kept)
        assert(not left, what .. tostring(left))
        return
      end
    end
  end
  error(("%s%s; to be done it lacks %s"):format(what, undone, beyond or "what it is for"))
end

-- Each step in the long run. Otherwise the first ones and each seventh, or under the sanitizers (KELVO_SPARSE) each thirteenth: replacing
-- a file takes four steps, so that of several files all come.
local full, sparse = os.getenv("KELVO_LONG") == "full", os.getenv("KELVO_SPARSE")
local first, stride = sparse and 4 or 8, sparse and 13 or 7
local function next_step(n)
  if full or n < first then return n + 1 end
  return n + stride
end

local struck, n = 0, 1
while n <= kMostSteps do
  begin_anew()
  local before = unchanged.snapshot()
  operations.arm = function() sim.fault(kind, n) end
  if not row.arms then operations.arm() end
  local boxes, beeps = operations.go(row)
  local came = sim.fault_to_come(kind) == 0
  sim.fault(kind, 0)
  judge(n, before, unchanged.snapshot(true), operations.told(row, boxes), beeps)
  if not came then break end
  struck, n = n, next_step(n)
end
local passed_over = sparse and not full and stride - 1 or 0
assert(struck + passed_over >= least and (arg[4] or struck < kMostSteps), ("%d steps failed, expected %d at least"):format(struck, least))

-- Nothing is lost: both sets can be loaded, and without a fault it all goes through.
begin_anew()
operations.arm = function() end
local before = unchanged.snapshot()
check.eq(operations.told(row, (operations.go(row))), {})
assert(row.done(unchanged.snapshot(), before))
if state("CameraOn") == 1 then
  command(133)
  set(1460, datadir() .. "/Last.cal")
  press(1)
  check.eq({ dialog(), box() and box().text, state("CalType") ~= 0 }, { nil, nil, true })
end

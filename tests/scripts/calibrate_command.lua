-- kelvo calibrate makes of the frames that a run in the window has read what that run made of them: the lists byte for byte, the .cal but for names.
-- With two sources and with one, with the picture turned, with a list of bad detectors, and without replacement.
local check = require "check"
local calibration = require "calibration"

local kFrames = 12
local kPermanentFile, kReplaceBad = 1200, 1306
local data = "data/"
local kLists = { ".gai", ".off", ".noi", ".dcm", ".bad" }

local function exists(path)  -- beside the settings
  local file = io.open(datadir() .. "/" .. path, "rb")
  if file then file:close() end
  return file ~= nil
end

-- Keys of a .cal but those that name its files, in order.
local function settings_of(path)
  local lines = {}
  for line in readfile(path):gmatch("[^\r\n]+") do
    local key = line:match("^(%w+)=")
    local names = { CalFile = true, BadDetFile = true, DecomFile = true, GainFile = true, OffsetFile = true }
    if not names[key] then lines[#lines + 1] = line end
  end
  return lines
end

local function expect_same_set(window, command, lists)
  for _, extension in ipairs(kLists) do
    local there = exists(window .. extension)
    check.eq(there, lists[extension] ~= nil, window .. extension)
    check.eq(exists(command .. extension), there, command .. extension)
    if there then assert(readfile(data .. window .. extension) == readfile(data .. command .. extension), command .. extension) end
  end
  check.eq(settings_of(data .. command .. ".cal"), settings_of(data .. window .. ".cal"))
  for key, extension in pairs { BadDetFile = ".bad", DecomFile = ".dcm", GainFile = ".gai", OffsetFile = ".off" } do
    local name = lists[extension] and command .. extension or ""
    check.holds(readfile(data .. command .. ".cal"), key .. "=" .. name .. "\n")
  end
end

local function calibrate(out, frames, ...)
  local words = { "calibrate", "--data", datadir(), "--camera", tostring(state("ActiveCamera")), "--frames", frames, "--out", datadir() .. "/" .. out, ... }
  return batch(table.unpack(words))
end
local function kept(number) return datadir() .. "/kept" .. number .. ".seq" end

local all = { [".gai"] = 1, [".off"] = 1, [".noi"] = 1, [".dcm"] = 1, [".bad"] = 1 }
local unreplaced = { [".gai"] = 1, [".off"] = 1, [".dcm"] = 1 }
local cases = {
  two = { points = 2, lists = all, flags = {} },
  turned = { points = 2, lists = all, listed = true, turned = true },
  two_unreplaced = { points = 2, lists = unreplaced, unreplaced = true, flags = { "--keep-bad" } },
  one = { points = 1, lists = all, flags = {} },
  one_unreplaced = { points = 1, lists = unreplaced, unreplaced = true, flags = { "--keep-bad" } },
}
local case = cases[arg[1]]

-- Before the start: settings that know of nothing but how the picture lies.
if case.turned then
  local settings = assert(io.open("data/kelvo.ini", "wb"))
  settings:write("[Display]\nMirrorHoriz=1\nMirrorVert=1\nRotateCCW=0\n")
  settings:close()
end

calibration.turn_on()
if case.listed then
  local list = assert(io.open(datadir() .. "/Perm.bad", "wb"))
  for column = 40, 80 do list:write(("%4d,%4d\n"):format(17, column)) end
  list:close()
  press(kPermanentFile)
  case.flags = { "--bad-list", datadir() .. "/Perm.bad" }
end
if case.unreplaced then press(kReplaceBad) end

-- What the run reads is kept: the first file is the low source's.
sim.fault("keep frames")
local window = case.points == 2 and "Last" or "last"
if case.points == 2 then
  calibration.two_point(20, 25, kFrames)
else
  calibration.accept(1, kFrames)
  calibration.at_low(20, 20)
end
answer("ok")
sim.fault("keep frames", false)
check.eq({ box(), dialog() }, {})
check.eq(state("CalType"), case.points)

local sources = { "--low", kept(1), "--tlow", "20" }
if case.points == 2 then sources = { "--low", kept(1), "--high", kept(2), "--tlow", "20", "--thigh", "25" } end
local words = { table.unpack(sources) }
for _, flag in ipairs(case.flags) do words[#words + 1] = flag end
check.eq(calibrate("made.cal", "0:" .. kFrames, table.unpack(words)), 0)
expect_same_set(window, "made", case.lists)
check.holds(readfile(data .. "made.cal"), "IntensityCold=" .. state("IntensityCold") .. "\n")

-- It isn't all the same: one frame less makes other lists. A set that stands isn't written over.
local offsets = readfile(data .. "made.off")
check.eq(calibrate("made.cal", "0:" .. kFrames, table.unpack(words)), 2)
check.eq(calibrate("other.cal", "1:" .. kFrames, table.unpack(words)), 0)
assert(readfile(data .. "other.gai") ~= readfile(data .. "made.gai") or readfile(data .. "other.off") ~= offsets)
check.eq(readfile(data .. "made.off"), offsets)

-- The program takes it for a set of its own, and the picture is as even as with the window's; where bad detectors are left in it, they blink.
frames(3)
local before = calibration.unevenness()
command(133)
calibration.choose(datadir() .. "/made.cal")
check.eq({ box(), dialog() }, {})
check.eq(state("CalType"), case.points)
frames(3)
if not case.unreplaced then check.near(calibration.unevenness(), before, 0.1 * before) end

-- A file or a directory that goes between the dialog's opening and its Ok, or becomes another thing: it is told, the dialog stays, and whatever else there
-- is stays as it was.
local check = require "check"
local calibration = require "calibration"
local files = require "files"
local unchanged = require "unchanged"

local width, height = 320, 256
local function at(name) return datadir() .. "/" .. name end
local function recording(name, frames)
  local held = {}
  for i = 1, frames do held[i] = string.pack("<i2", 8000 + 3 * i):rep(width * height) end
  files.write(at(name), files.header { width = width, height = height, frames = frames } .. table.concat(held))
end
-- A directory, with the files in it.
local function make(name) screenshot(at(name .. "/made.png")) end
local function remove(name)
  local is_folder, inside = pcall(listdir, at(name))
  for _, each in ipairs(is_folder and inside or {}) do assert(os.remove(at(name) .. "/" .. each)) end
  assert(os.remove(at(name)))
end

calibration.turn_on()
calibration.two_point(20, 25, 2)
answer("ok")
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
command(132)
set(1460, at("base.cal"))
press(1)

-- From the main window into a dialog, something goes, Ok: one box that holds what is told. The dialog is left with leave, otherwise by Cancel.
local function case(what, begin, goes, accept, told, leave)
  begin()
  local before, front = unchanged.snapshot(), dialog()
  goes()
  local without = unchanged.snapshot()  -- what has gone is not the program's doing
  accept()
  if not box() then error(what .. ": no box; on the line: " .. status(), 2) end
  check.holds(box().text, told, what)
  answer(box().default)
  if file() then cancel() end  -- a name that it refused
  check.eq(box(), nil, what)
  if front then check.eq(dialog(), front, what) end
  local after = unchanged.snapshot()
  for name in pairs(without) do
    if not check.same(without[name], before[name]) then before[name] = without[name] end
  end
  for name in pairs(before) do
    if without[name] == nil and name:find("^file ") then before[name] = nil end
  end
  unchanged.expect(before, after, {}, { StatusText = "the hint of the dialog" }, what)
  if leave then leave() elseif dialog() then press(2) end
  check.eq({ dialog(), box() }, {}, what)
end



-- ---- Export

local function view_three()
  recording("three.seq", 3)
  drop(at("three.seq"))
  check.eq({ state("ViewingFile"), box() }, { 1 })
end
local function export_into(name)
  return function()
    view_three()
    command(2200)
    check.eq(dialog(), "EXPORT")
    set(22006, at(name))
  end
end
local function ok() press(1) end
for _, ending in ipairs { ".npy", ".tif", ".fits", ".h5" } do
  make("target")
  case("the target's directory has gone, " .. ending, export_into("target/out" .. ending), function() remove("target") end, ok, "can't be written")
  make("target/out" .. ending)
  case("the target is a directory, " .. ending, export_into("target/out" .. ending), function() end, function()
    ok()
    if box() and box().text:find("already exists", 1, true) then answer("yes") end
  end, "target/out" .. ending)
  remove("target/out" .. ending)
  remove("target")
  case("the source has gone, " .. ending, export_into("out" .. ending), function() remove("three.seq") end, ok, "three.seq")
  case("the source is cut, " .. ending, export_into("out" .. ending), function()
    files.write(at("three.seq"), readfile(at("three.seq")):sub(1, 512 + 3 * width * height))
  end, ok, "three.seq")
  case("the source is another file, " .. ending, export_into("out" .. ending), function() files.write(at("three.seq"), "no image") end, ok, "three.seq")
  check.eq(readfile(at("out" .. ending)), nil)
end

-- By a script's call.
for what, wrong in pairs {
  ["the directory has gone"] = { out = at("target/out.npy") },
  ["the source has gone"] = { of = "file", file = at("gone.seq"), out = at("out.npy") },
  ["the set has gone"] = { of = "file", file = at("three.seq"), out = at("out.npy"), as = "celsius", set = at("gone.cal") },
  ["the target is the source"] = { of = "file", file = at("three.seq"), out = at("three.seq"), to = "npy", replace = true },
} do
  recording("three.seq", 3)
  local before = unchanged.snapshot()
  check.fails(function() export(wrong) end, "export: ", what)
  unchanged.expect(before, unchanged.snapshot(), {}, {}, what)
end

-- ---- Noise

command(140)
if state("LiveVideo") == 0 then command(140) end
check.eq(state("LiveVideo"), 1)
local function noise_of(name, set_name)
  return function()
    recording("noise.seq", 3)
    command(2230)
    press(22302)
    set(22303, at(name))
    set(22305, set_name and at(set_name) or "")
    set(22307, "3")
  end
end
case("noise: the file has gone", noise_of("noise.seq"), function() remove("noise.seq") end, ok, "noise.seq can't be opened.")
case("noise: the file is cut", noise_of("noise.seq"), function()
  files.write(at("noise.seq"), readfile(at("noise.seq")):sub(1, 512 + 3 * width * height))
end, ok, "noise.seq")
local base = readfile(at("base.cal"))
case("noise: the set has gone", noise_of("noise.seq", "base.cal"), function() remove("base.cal") end, ok, "base.cal can't be opened.")
files.write(at("base.cal"), base)
make("target")
case("noise: the folder has gone", function()
  noise_of("noise.seq")()
  press(1)
  check.eq(text(22316), "3 raw frames")
  press(1606)
end, function() remove("target") end, function() choose(at("target/noise.csv")) end, "Path does not exist.")

-- ---- Difference

local function difference_to(name)
  return function()
    files.write(at(name), files.header { width = width, height = height, frames = 1, cold = state("IntensityCold"), cold_c = 20, hot = state("IntensityHot"), hot_c = 25 }
      .. string.pack("<i2", 8000):rep(width * height))
    command(2220)
    press(22202)
    set(22203, at(name))
  end
end
case("difference: the file has gone", difference_to("even.img"), function() remove("even.img") end, ok, "even.img can't be opened.")
case("difference: the file is cut", difference_to("even.img"), function()
  files.write(at("even.img"), readfile(at("even.img")):sub(1, 600))
end, ok, "even.img")

-- ---- Traces

local function traces()
  view_three()
  command(2240)
end
local function trace() press("TRACES", 22403) end
local function close_traces() press("TRACES", 2) end
case("traces: the file has gone", traces, function() remove("three.seq") end, trace, "file on view", close_traces)
case("traces: the file is another one", traces, function() files.write(at("three.seq"), "no image") end, trace, "file on view", close_traces)
make("target")
case("traces: the folder has gone", function()
  traces()
  trace()
  check.eq(text("TRACES", 22408), "3")
  press("TRACES", 1606)
end, function() remove("target") end, function() choose(at("target/trace.csv")) end, "Path does not exist.", close_traces)

-- ---- Regions

regions { { name = "plate", x1 = 3, y1 = 2, x2 = 20, y2 = 12 } }
wait(1100)
local function regions_file(id)
  return function()
    command(2210)
    press("regions", 22119)
    choose(at("kept.regions"))
    if box() then answer("yes") end  -- it stands already
    press("regions", id)
    assert(file())
  end
end
local function close_regions() press("regions", 2) end
case("regions: the file has gone", regions_file(22118), function() remove("kept.regions") end, function() choose(at("kept.regions")) end, "kept.regions",
  close_regions)
case("regions: the file is another one", regions_file(22118), function() files.write(at("kept.regions"), "{") end, function() choose(at("kept.regions")) end,
  "kept.regions", close_regions)
make("target")
case("regions: the folder has gone", regions_file(22119), function() remove("target") end, function() choose(at("target/kept.regions")) end, "Path does not exist.",
  close_regions)
check.eq(#regions(), 1)

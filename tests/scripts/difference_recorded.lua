-- What leaves the program, and what is measured, while the picture shows a difference, is what it would be without one: the same hand does the same to the same
-- camera in each start, and all files of the third, with a difference, equal those of the second, without one, byte for byte. The first start leaves the settings.
local check = require "check"
local calibration = require "calibration"

local kLive, kPictureOff = 22201, 2
local base = datadir():gsub("/data$", "")
local starts = 0
for _, name in ipairs(listdir(base)) do
  if name:find("^start%d$") then starts = starts + 1 end
end
local kShown = starts == 2
local dir = base .. "/start" .. starts + 1
assert(os.execute("mkdir -p '" .. dir .. "' && ln -sfn '" .. dir .. "' '" .. base .. "/out'"))
dir = base .. "/out"  -- of one name in all settings

local measured = {}
local function note(name, value)
  if type(value) == "table" then
    local keys = {}
    for key in pairs(value) do keys[#keys + 1] = key end
    table.sort(keys)
    for _, key in ipairs(keys) do note(name .. "." .. key, value[key]) end
    return
  end
  measured[#measured + 1] = name .. " = " .. tostring(value)
end

calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ box(), state("CalType") }, { nil, 2 })
sim.source("low", 22)
frames(3)
command(2004)
command(2220)
press(kLive)
press(kShown and 1 or kPictureOff)
sim.source("low", 24)
frames(4)
check.eq(state("StatusMark"), kShown and "Difference" or "")
regions{ { name = "spot", x1 = 100, y1 = 80, x2 = 140, y2 = 120 }, { name = "oval", shape = "ellipse", x1 = 10, y1 = 20, x2 = 80, y2 = 60 } }

-- The running picture: a recording of both kinds of pixels.
local status = record{ directory = dir, name = "both", pixels = "both", frames = 20, limit = 5000 }
check.eq({ status.frames, status.lost }, { 20, 0 })
check.eq(state("StatusMark"), kShown and "Difference" or "")

-- The frozen one: every way in which a frame leaves the program, and everything that measures it.
command(140)
check.eq(state("LiveVideo"), 0)
local picture = dir .. "/screen.png"
screenshot(picture)
local function save(id, name)
  command(id)
  if file() then choose(dir .. "/" .. name) else
    set(1460, dir .. "/" .. name)
    press(1)
  end
  check.eq({ box() and box().text, dialog() }, {}, name)
end
save(106, "frame.img")
save(116, "frame.bmp")
save(125, "frame8.tif")
save(126, "frame16.tif")
for _, as in ipairs { "counts", "celsius" } do
  for _, to in ipairs { "npy", "csv" } do note(to, export{ out = dir .. "/" .. as .. "." .. to, as = as }.frames) end
end
for _, name in ipairs { "spot", "oval" } do note(name, stats(name)) end
for _, at in ipairs { { 0, 0 }, { 100, 100 }, { 319, 255 } } do note("pixel", pixel(at[1], at[2])) end

-- The histogram's and the line plot's figures.
local kPlaces = { [160] = { [309] = 120, [311] = 100, [314] = 30, [316] = 20 }, [161] = { [402] = 3, [405] = 4, [408] = 200, [411] = 150 } }
for _, id in ipairs { 160, 161 } do
  command(id)
  local front = dialog()
  assert(front, box() and box().text or id)
  for control, place in pairs(kPlaces[id]) do set(control, tostring(place)) end
  wait(600)
  for _, control in ipairs(controls()) do
    if control.kind == "label" then note(front .. "." .. control.id, text(control.id)) end
  end
  press(1606)
  choose(dir .. "/" .. front .. ".csv")
  check.eq(box() and box().text, nil)
  cancel()
  check.eq(dialog(), nil)
end
local list = assert(io.open(dir .. "/measured.txt", "w"))
list:write(table.concat(measured, "\n"), "\n")
list:close()
assert(#measured > 40, #measured)

if kShown then
  local other = base .. "/start2"
  local names = listdir(other)
  check.eq(listdir(dir), names)
  assert(#names >= 14, #names)
  for _, name in ipairs(names) do
    local same = readfile(other .. "/" .. name) == readfile(dir .. "/" .. name)
    check.eq(same, name ~= "screen.png", name)  -- the picture on the screen alone is another one
  end
end

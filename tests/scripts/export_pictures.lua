-- Pictures for other programs: each pixel has its color on the screen, and what stands beside the frame leaves it as it is. A frame a file, all asked about
-- at once; Escape leaves whole ones. From the dialog and by a script.
local check = require "check"
local files = require "files"
local picture_file = require "picture_file"
answer("ok")
local dir = datadir()
local kWhat, kFirst, kLast, kForm, kFormat, kName, kScale, kTime, kRegions = 22001, 22002, 22003, 22004, 22005, 22006, 22010, 22011, 22012
local kWidth, kHeight = 260, 200
local function count(frame, x, y) return 4000 + 1000 * frame + 20 * y + 11 * x end
drop(files.image(dir .. "/run.seq", { width = kWidth, height = kHeight, rate = 25, cold = 3000, cold_c = 20, hot = 9000, hot_c = 25 }, 3, count))
while state("Xzoom") > 1 do key("-") end
command(145)  -- colors

local function ticks() return { enabled(kScale), enabled(kTime), enabled(kRegions) } end
local function chosen() return { checked(kScale), checked(kTime), checked(kRegions) } end

-- ---- The dialog: the ticks are of pictures

command(2200)
check.eq(items(kFormat)[6], "PNG, a picture a frame")
pick(kFormat, 3)
check.eq(ticks(), { false, false, false })
pick(kFormat, 5)
check.eq({ ticks(), text(kName) }, { { true, true, true }, "run.png" })
set(kName, dir .. "/run.npy")
check.eq(ticks(), { false, false, false })
set(kName, dir .. "/seen.png")
check.eq({ ticks(), chosen() }, { { true, true, true }, { false, false, false } })

-- ---- The picture on view, as it is seen

pick(kWhat, 1)
pick(kForm, 3)
press(1)
check.answer_box("A picture is made of counts: please choose counts or corrected counts.", "ok")
pick(kForm, 0)
press(1)
check.eq({ dialog(), box() and box().text }, { nil, nil })
check.holds(status(), " Saved seen.png: 1 frame, ")
picture_file.expect_screen(dir .. "/seen.png", kWidth, kHeight)
local _, width, height = picture_file.read(dir .. "/seen.png")
check.eq({ width, height }, { kWidth, kHeight })

-- ---- With scale and time; they are offered again

command(2200)
check.eq({ picked(kFormat), chosen() }, { 5, { false, false, false } })
pick(kWhat, 1)
set(kName, dir .. "/more.png")
press(kScale)
press(kTime)
press(1)
picture_file.expect_screen(dir .. "/more.png", kWidth, kHeight)
_, width, height = picture_file.read(dir .. "/more.png")
assert(width > kWidth and height > kHeight)
command(2200)
check.eq(chosen(), { true, true, false })
press(kScale)
press(2)
command(2200)
check.eq(chosen(), { true, true, false })
press(2)

-- ---- Regions, as the screen draws them

local drawn = { { name = "Lid", shape = "rectangle", x1 = 40, y1 = 50, x2 = 90, y2 = 100 },
  { name = "Rim", shape = "ellipse", x1 = 120, y1 = 60, x2 = 200, y2 = 150 }, { name = "cut", shape = "line", x1 = 5, y1 = 190, x2 = 100, y2 = 120 },
  { name = "P", shape = "point", x1 = 240, y1 = 30 } }
regions(drawn)
check.eq(export { out = dir .. "/regions.png", draw_regions = true }.frames, 1)
-- The edges of letters are smoothed another way on a screen.
local function in_a_name(x, y)
  for _, region in ipairs(drawn) do
    local left, top = region.x1 + 3, math.min(region.y1, region.y2 or region.y1) - 3
    if x >= left and x < left + 30 and y < top and y >= top - 20 then return true end
  end
  return false
end
picture_file.expect_screen(dir .. "/regions.png", kWidth, kHeight, in_a_name)
export { out = dir .. "/plain.png" }
local with, without = picture_file.read(dir .. "/regions.png"), picture_file.read(dir .. "/plain.png")
for _, region in ipairs(drawn) do
  local written = 0
  for y = 0, kHeight - 1 do
    for x = region.x1 + 3, math.min(region.x1 + 30, kWidth) - 1 do
      local red, green, blue = with(x, y)
      local r, g, b = without(x, y)
      if in_a_name(x, y) and (red ~= r or green ~= g or blue ~= b) then written = written + 1 end
    end
  end
  assert(written > 50, region.name)
end
regions {}
check.fails(function() export { out = dir .. "/none.png", draw_regions = dir .. "/none.regions" } end, "export: \"draw_regions\" can't have that value")
check.fails(function() export { out = dir .. "/none.npy", scale = true } end, "export: \"scale\", \"time\" and \"draw_regions\" are of pictures")
check.fails(function() export { out = dir .. "/none.png", as = "celsius" } end, "export: A picture is made of counts: please choose counts or corrected counts.")
check.eq(readfile(dir .. "/none.png"), nil)

-- ---- A frame a file

command(2200)
set(kFirst, "1")
set(kName, "run.png")
press(1)
check.eq({ dialog(), box() and box().text }, { nil, nil })
check.holds(status(), " Saved 2 bitmaps, run-000001.png to run-000002.png: ")
local first, second = readfile(dir .. "/run-000001.png"), readfile(dir .. "/run-000002.png")
check.eq(readfile(dir .. "/run-000000.png"), nil)
command(2200)
set(kName, dir .. "/run.png")
press(1)
check.answer_box(dir .. "/run-000001.png and 1 more already exist.\nDo you want to replace them?", "no", "Export")
check.eq({ dialog(), readfile(dir .. "/run-000001.png"), readfile(dir .. "/run-000000.png") }, { "EXPORT", first, nil })
sim.fault("escape", 3)
press(1)
answer("yes")
sim.fault("escape", 0)
check.holds(status(), " Saved 1 of 3 bitmaps, run-000000.png: ")
check.eq(readfile(dir .. "/run-000001.png"), first, "what wasn't come to stays")
check.eq(readfile(dir .. "/run-000002.png"), second, "what wasn't come to stays")
for frame = 0, 2 do
  command(2000)
  set(1001, tostring(frame))
  press(1)
  check.eq(state("CurrentFrame"), frame)
  picture_file.expect_screen(("%s/run-%06d.png"):format(dir, frame), kWidth, kHeight)
end

-- ---- A failure in the midst of them is told, with what is whole

local told
for step = 1, 60 do
  if not dialog() then
    command(2200)
    set(kName, dir .. "/part.png")
  end
  for frame = 0, 2 do os.remove(("%s/part-%06d.png"):format(dir, frame)) end
  sim.fault("disk", step)
  press(1)
  sim.fault("disk", 0)
  told = box() and box().text
  if told then answer("ok") end
  if told and told:find("; ", 1, true) and told:find("part-000002.png can't be written", 1, true) then break end
end
check.eq(told:match("^(.-):"), dir .. "/part-000002.png can't be written")
check.eq(told:match("; (.*)$"), dir .. "/part-000000.png to " .. dir .. "/part-000001.png before it stand whole")
check.eq({ dialog(), readfile(dir .. "/part-000002.png") }, { "EXPORT", nil })
picture_file.read(dir .. "/part-000001.png")
press(2)

-- ---- By a script

local made = export { of = "file", file = dir .. "/run.seq", first = 1, count = 2, out = dir .. "/by script.png", scale = true, time = true }
check.eq({ made.format, made.frames, made.files[1], made.files[2] }, { "png", 2, dir .. "/by script-000001.png", dir .. "/by script-000002.png" })
check.fails(function() export { of = "file", file = dir .. "/run.seq", out = dir .. "/by script.png" } end,
  "export: " .. dir .. "/by script-000001.png stands already")
